// The library's entry without a QApplication: the first synchronisation on
// its own thread, host texts copied at the boundary, and the neutral answers
// a host gets when it calls too early.
#include <gtest/gtest.h>

#include <thread>

#include "host/library_entry.h"
#include "host/string_arg.h"
#include "marrowfin/marrowfin.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/threads.h"
#include "net/gallery_sync.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_paths.h"
#include "store/tree_update.h"
#include "support/temp_home.h"

using namespace marrowfin;

TEST(LibraryEntry, FirstSynchroBuildsTheTreeOnItsThreadAndNoPanelIsMadeWithoutTheHostsApplication) {
    marrowfin::test::TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");  // no service: galleries stay empty
    ASSERT_TRUE(AddGalleryToShowList(u"门窗") && AddGalleryToShowList(u"Furniture"));
    GalleryStore store;
    ASSERT_TRUE(StartFirstTree(store));
    while (store.syncBusy.load() != 0) std::this_thread::yield();
    EXPECT_EQ(store.root, nullptr);  // nothing reaches the tree before its owner takes it
    ASSERT_EQ(AdoptTreeUpdates(store).size(), 1u);
    ASSERT_TRUE(store.root && store.root->dirChildren.size() == 2u);
    EXPECT_EQ(store.root->dirChildren[0]->name, u"门窗");
    for (const GalleryNode* g : store.root->dirChildren)  // listed galleries get their folders, and no catalogue
        EXPECT_TRUE(g->dirChildren.empty() && DirectoryExists(g->Path()) && !FileExists(CataloguePath(g->name)));
    // (An empty list gives an empty root at once: the panel's start-up test.)
    DestroySubtree(store.root);
    delete store.root;

    std::u16string buffer = u"D:\\图库\\门窗";
    const std::u16string path = TakeHostPath(buffer.c_str());
    buffer.assign(buffer.size(), u'x');  // the host reuses its buffer
    EXPECT_TRUE(path == u"D:/图库/门窗" && TakeHostText(nullptr).empty());
    // A host that calls too early gets the neutral answers, not an aborted process.
    show();
    ShowGallery(u"\\门窗", u"UpdateShow");
    SearchBrindleRes(u"门", u"");
    ResetClass(u"我的收藏");
    ShowBoutiqueGallery();
    AddMoreGallery(nullptr);
    HideGallery();
    CloseGallery();
    // (The answers without a panel: the end-to-end test of a panel gone with its window.)
    EXPECT_TRUE(PanelSingleton().isNull() && GetGallery() == 0);
    // No thread to be had: no exception for the host, and nothing is left marked busy for the panel to wait on.
    FailThreadStartsForTests(1);
    FirstSynchro();
    EXPECT_EQ(GalleryStore::Instance().syncBusy.load(), 0);
}
