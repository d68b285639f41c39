#include <gtest/gtest.h>

#include <dlfcn.h>

#include "host/library_entry.h"
#include "host/string_arg.h"
#include "store/gallery_store.h"

using namespace marrowfin;

TEST(LibraryEntry, FirstSynchroMarksTheStoreBusyUntilItsThreadEnds) {
    EXPECT_EQ(PanelSingleton(), nullptr);  // no panel until an export makes one
    GalleryStore store;
    std::thread t = StartFirstSynchro(store);
    // Busy from the call on, so a panel that starts next waits for it.
    t.join();
    EXPECT_EQ(store.syncBusy.load(), 0);
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
    void* lib = dlopen(MARROWFIN_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(lib, nullptr) << dlerror();
    auto first = reinterpret_cast<void (*)()>(dlsym(lib, "FirstSynchro"));
    ASSERT_NE(first, nullptr);
    first();
    // Internal names stay hidden.
    EXPECT_EQ(dlsym(lib, "_ZN9marrowfin14PanelSingletonEv"), nullptr);
    // The library is not unloaded: its detached thread may still be finishing.
}
