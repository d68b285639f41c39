#include <gtest/gtest.h>

#include <dlfcn.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "host/library_entry.h"
#include "marrowfin/marrowfin.h"
#include "host/string_arg.h"
#include "platform/profile.h"
#include "platform/threads.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "net/gallery_sync.h"
#include "store/gallery_tree.h"
#include "store/tree_update.h"
#include "store/show_list.h"
#include "support/temp_home.h"

using namespace marrowfin;

TEST(LibraryEntry, FirstSynchroBuildsTheTreeOnItsThread) {
    marrowfin::test::TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");  // no service: galleries stay empty
    AddGalleryToShowList(u"门窗");
    EXPECT_TRUE(PanelSingleton().isNull());  // no panel until an export makes one
    GalleryStore store;
    // No thread to be had: nothing is left marked busy for the panel to wait on.
    FailThreadStartsForTests(1);
    EXPECT_FALSE(StartFirstTree(store));
    EXPECT_EQ(store.syncBusy.load(), 0);
    ASSERT_TRUE(StartFirstTree(store));
    EXPECT_EQ(store.syncBusy.load(), 1);  // busy before the worker runs
    while (store.syncBusy.load() != 0) std::this_thread::yield();
    EXPECT_EQ(store.root, nullptr);  // nothing reaches the tree before its owner takes it
    ASSERT_EQ(AdoptTreeUpdates(store).size(), 1u);
    ASSERT_NE(store.root, nullptr);
    ASSERT_EQ(store.root->dirChildren.size(), 1u);
    EXPECT_EQ(store.root->dirChildren[0]->name, u"门窗");
    DestroySubtree(store.root);
    delete store.root;
    EXPECT_EQ(&GalleryStore::Instance(), &GalleryStore::Instance());
}

TEST(LibraryEntry, HostTextsAreCopiedAndSeparatorsTurned) {
    std::u16string buffer = u"D:\\图库\\门窗";
    const std::u16string path = TakeHostPath(buffer.c_str());
    buffer.assign(buffer.size(), u'x');  // the host reuses its buffer
    EXPECT_EQ(path, u"D:/图库/门窗");
    EXPECT_EQ(TakeHostText(nullptr), u"");
}

TEST(LibraryEntry, TheSharedLibraryLoadsAndRunsFirstSynchro) {
    marrowfin::test::TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
    void* lib = dlopen(MARROWFIN_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    auto first = reinterpret_cast<void (*)()>(dlsym(lib, "FirstSynchro"));
    ASSERT_NE(first, nullptr);
    first();
    // The library's own store makes the store folder on its synchronisation thread.
    const std::string storeRoot = home.documentsDir() + "/Orsolen";
    for (int i = 0; i < 500 && !std::filesystem::is_directory(storeRoot); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(std::filesystem::is_directory(storeRoot));
    // Internal names stay hidden.
    EXPECT_EQ(dlsym(lib, "_ZN9marrowfin14PanelSingletonEv"), nullptr);
    // The library is not unloaded: its detached thread may still be finishing.
}

TEST(LibraryEntry, WithoutTheHostsApplicationNoPanelIsMade) {
    // A host that calls too early (no QApplication yet) gets the neutral
    // answers instead of an aborted process.
    marrowfin::test::TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
    show();
    ShowGallery(u"\\门窗", u"UpdateShow");
    SearchBrindleRes(u"门", u"");
    ResetClass(u"我的收藏");
    ShowBoutiqueGallery();
    HideGallery();
    CloseGallery();
    EXPECT_EQ(GetGallery(), 0u);
    EXPECT_TRUE(PanelSingleton().isNull());
    EXPECT_EQ(IsBlkBoutique(u"/a/b.dwg"), 0);
    EXPECT_EQ(IsDLLHwnd(1), 0);
    EXPECT_EQ(MarrowfinSendCopyData(0, 416, u"1&^&t"), 0);
    EXPECT_EQ(MarrowfinSendPanelControl(0, 5, 3), 0);
    // The export itself: a refused thread is no exception for the host.
    FailThreadStartsForTests(1);
    FirstSynchro();
    EXPECT_EQ(GalleryStore::Instance().syncBusy.load(), 0);
}
