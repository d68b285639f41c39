#include <gtest/gtest.h>


#include "fault_switches.h"
#include "net/curl_stack.h"
#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/ticks.h"
#include "request_counters.h"
#include "service_handle.h"
#include "short_timeouts.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "test_store.h"

using namespace marrowfin;
using marrowfin::test::TempHome;
using marrowfin::test::TestStore;

namespace {

size_t CountBlocks(const GalleryNode* gallery) {
    size_t n = 0;
    for (const GalleryNode* cls : gallery->dirChildren)
        if (cls) n += cls->fileChildren.size();
    return n;
}

// A fresh home with the service running and the sample's first gallery listed.
struct OneGalleryWorld {
    TempHome home;
    std::string data = test::SampleLibrary();
    std::vector<std::u16string> names = test::GalleryNames(data);
    service::ServiceHandle svc = test::StartLiveService(data);
    OneGalleryWorld() { AddGalleryToShowList(names[0]); }
};

}  // namespace

TEST(LiveSync, FirstTreeFromTheServiceThenFromCataloguesOffline) {
    TempHome home;
    const std::string data = test::SampleLibrary();
    const auto names = test::GalleryNames(data);
    ASSERT_GE(names.size(), 3u);
    auto svc = test::StartLiveService(data);
    AddGalleryToShowList(names[1]);
    AddGalleryToShowList(u"不存在的图库");  // listed but unknown to the service
    AddGalleryToShowList(names[0]);

    TestStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_EQ(store.syncBusy.load(), 0);
    ASSERT_NE(store.root, nullptr);
    ASSERT_EQ(store.root->dirChildren.size(), 3u);
    EXPECT_EQ(store.root->dirChildren[0]->name, names[1]);  // Show.xml's order
    EXPECT_TRUE(store.root->dirChildren[1]->dirChildren.empty());
    GalleryNode* gallery = store.root->dirChildren[2];
    ASSERT_FALSE(gallery->dirChildren.empty());
    const GalleryNode* cls = gallery->dirChildren[0];
    ASSERT_FALSE(cls->fileChildren.empty());
    const GalleryNode* block = cls->fileChildren[0];
    EXPECT_EQ(block->Path(), cls->Path() + u"/" + block->name);
    EXPECT_EQ(DownloadUrl(*block), cls->remoteBase + u"/" + block->name);
    EXPECT_GT(cls->version, 0);
    EXPECT_TRUE(FileExists(CataloguePath(names[0])));
    EXPECT_TRUE(store.galleryFetchTicks.count(names[0]));
    EXPECT_GT(ReadGalleryVersion(names[0]), 0);
    EXPECT_EQ(store.galleryVersions[names[0]], ReadGalleryVersion(names[0]));
    EXPECT_EQ(svc.counters().get("/gallery/g_all_s").count, 1);
    const size_t blocks = CountBlocks(gallery);

    // No network: the same tree comes back from the catalogues.
    svc.faults().set("*", {.status = 500});
    TestStore offline;
    BuildFirstTree(offline);
    AdoptTreeUpdates(offline);
    ASSERT_EQ(offline.root->dirChildren.size(), 3u);
    EXPECT_EQ(CountBlocks(offline.root->dirChildren[2]), blocks);
    EXPECT_EQ(offline.root->dirChildren[2]->dirChildren.size(), gallery->dirChildren.size());
    EXPECT_EQ(offline.syncBusy.load(), 0);

    // A run again on the same store keeps one root and rebuilds its galleries.
    svc.faults().clearAll();
    GalleryNode* firstRoot = store.root;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_EQ(store.root, firstRoot);
    EXPECT_EQ(store.root->dirChildren.size(), 3u);
}

TEST(LiveSync, ForcedRefreshRemovesDownloadedClassesOnce) {
    OneGalleryWorld w;
    auto settings = w.svc.settings();
    settings.forceRefresh = true;
    w.svc.setSettings(settings);

    // First run without catalogues: nothing to force, the refresh stays open.
    TestStore first;
    BuildFirstTree(first);
    AdoptTreeUpdates(first);
    EXPECT_EQ(GetOptionInt(u"downver", -1), -1);
    const std::u16string classPath = first.root->dirChildren[0]->dirChildren[0]->Path();
    ASSERT_TRUE(CreateDirectories(classPath));
    ASSERT_TRUE(WriteFileAtomic(classPath + u"/old.dwg", std::string(2000, 'x')));

    // Second run: the catalogue's classes look outdated, their folders go, downver becomes 1.
    TestStore second;
    BuildFirstTree(second);
    AdoptTreeUpdates(second);
    EXPECT_FALSE(DirectoryExists(classPath));
    EXPECT_EQ(GetOptionInt(u"downver", -1), 1);

    // Later runs with dv still "1" force nothing.
    ASSERT_TRUE(CreateDirectories(classPath));
    TestStore third;
    BuildFirstTree(third);
    AdoptTreeUpdates(third);
    EXPECT_TRUE(DirectoryExists(classPath));
}

TEST(LiveSync, SummaryMarksStaleClassesAndOpenClassFetchesThem) {
    OneGalleryWorld w;
    TestStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    GalleryNode* gallery = store.root->dirChildren[0];

    // Within the hour nothing is sent.
    RefreshClassSummary(store, w.names[0]);
    EXPECT_EQ(w.svc.counters().get("/gallery/g_cs_s").count, 0);

    // An hour and a millisecond later the summary goes out; make one class look old locally.
    GalleryNode* cls = gallery->dirChildren[0];
    const std::u16string clsPath = cls->Path();
    const size_t blocks = cls->fileChildren.size();
    cls->version -= 1;
    gallery->refreshTick -= kGalleryFreshMs + 1;
    RefreshClassSummary(store, w.names[0]);
    EXPECT_EQ(w.svc.counters().get("/gallery/g_cs_s").count, 1);
    ASSERT_EQ(store.staleClasses.count(clsPath), 1u);
    cls = FindNodeByPath(store.root, clsPath);
    ASSERT_NE(cls, nullptr);
    EXPECT_EQ(cls->fileChildren.size(), blocks);  // the old node with its blocks survives
    EXPECT_EQ(store.staleClasses.size(), 1u);

    // Opening it fetches the class; its folder goes; the catalogue is rewritten.
    ASSERT_TRUE(CreateDirectories(clsPath));
    OpenClass(store, clsPath);
    EXPECT_EQ(w.svc.counters().get("/gallery/g_cs").count, 1);
    EXPECT_EQ(store.staleClasses.count(clsPath), 0u);
    EXPECT_FALSE(DirectoryExists(clsPath));
    EXPECT_EQ(cls->fileChildren.size(), blocks);
    for (const GalleryNode* b : cls->fileChildren) EXPECT_FALSE(b->boutique);
    OpenClass(store, clsPath);  // not stale any more: nothing is sent
    EXPECT_EQ(w.svc.counters().get("/gallery/g_cs").count, 1);

    // A failed class request leaves the class as it was.
    w.svc.faults().set("/gallery/g_cs", {.status = 500});
    FetchClassItems(store, clsPath);
    EXPECT_EQ(cls->fileChildren.size(), blocks);
}

TEST(LiveSync, FullFetchAndAddedGalleryFollowTheHourRule) {
    OneGalleryWorld w;
    TestStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);

    EXPECT_FALSE(FetchGalleryFull(store, w.names[1], false));  // not in the tree
    EXPECT_TRUE(FetchGalleryFull(store, w.names[1], true));
    ASSERT_EQ(store.root->dirChildren.size(), 2u);
    EXPECT_FALSE(store.root->dirChildren[1]->dirChildren.empty());
    EXPECT_TRUE(FileExists(CataloguePath(w.names[1])));

    // A failed fetch keeps the classes the gallery has.
    const size_t classes = store.root->dirChildren[1]->dirChildren.size();
    w.svc.faults().set("/gallery/g_all", {.status = 500});
    EXPECT_FALSE(FetchGalleryFull(store, w.names[1], false));
    EXPECT_EQ(store.root->dirChildren[1]->dirChildren.size(), classes);
    w.svc.faults().clearAll();

    // OpenAddedGallery reads the catalogue within the hour, and fetches after it.
    GalleryNode* gallery = store.root->dirChildren[1];
    ClearChildren(gallery);
    const long before = w.svc.counters().get("/gallery/g_all").count;
    store.galleryFetchTicks[w.names[1]] = GetTickCount() - kGalleryFreshMs + 50;
    OpenAddedGallery(store, w.names[1]);
    EXPECT_EQ(w.svc.counters().get("/gallery/g_all").count, before);
    EXPECT_EQ(gallery->dirChildren.size(), classes);
    ClearChildren(gallery);
    store.galleryFetchTicks[w.names[1]] = GetTickCount() - kGalleryFreshMs - 50;
    OpenAddedGallery(store, w.names[1]);
    EXPECT_EQ(w.svc.counters().get("/gallery/g_all").count, before + 1);
    EXPECT_EQ(gallery->dirChildren.size(), classes);
}

TEST(LiveSync, FirstStartWithoutNetworkGivesEmptyGalleries) {
    TempHome home;
    // A closed port: every request fails at once.
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
    AddGalleryToShowList(u"门窗");
    AddGalleryToShowList(u"Furniture");
    TestStore store;
    BuildFirstTree(store);
    AdoptTreeUpdates(store);
    EXPECT_EQ(store.syncBusy.load(), 0);
    ASSERT_EQ(store.root->dirChildren.size(), 2u);
    for (const GalleryNode* g : store.root->dirChildren) {
        EXPECT_TRUE(g->dirChildren.empty());
        EXPECT_TRUE(DirectoryExists(g->Path()));  // listed galleries get their folders
    }
    EXPECT_FALSE(FileExists(CataloguePath(u"门窗")));
    // An empty list: nothing to ask, the run ends at once.
    TempHome other;
    TestStore empty;
    BuildFirstTree(empty);
    AdoptTreeUpdates(empty);
    ASSERT_NE(empty.root, nullptr);
    EXPECT_TRUE(empty.root->dirChildren.empty());
    EXPECT_TRUE(DirectoryExists(StoreRoot()));
}

TEST(LiveSync, EveryBrokenReplyFallsBackAndKeepsWhatTheTreeHad) {
    OneGalleryWorld w;
    test::ShortTimeouts timeouts;
    TestStore reference;
    BuildFirstTree(reference);
    AdoptTreeUpdates(reference);
    const size_t blocks = CountBlocks(reference.root->dirChildren[0]);
    const std::u16string clsPath = reference.root->dirChildren[0]->dirChildren[0]->Path();
    const size_t classBlocks = reference.root->dirChildren[0]->dirChildren[0]->fileChildren.size();

    struct Case { const char* what; service::Fault fault; };
    const Case cases[] = {
        {"404", {.status = 404}},
        {"500", {.status = 500}},
        {"empty", {.emptyBody = true}},
        {"truncated", {.truncateAt = 200}},
        {"dropped", {.drop = true}},
        {"not xml", {.body = "<html><body>busy</body>"}},
        {"hold past the time-out", {.holdMs = 3000}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        w.svc.faults().set("/gallery/*", c.fault);
        TestStore store;
        BuildFirstTree(store);
        AdoptTreeUpdates(store);
        EXPECT_EQ(store.syncBusy.load(), 0);
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        EXPECT_FALSE(FetchGalleryFull(store, w.names[0], false));
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        FetchClassItems(store, clsPath);
        EXPECT_EQ(FindNodeByPath(store.root, clsPath)->fileChildren.size(), classBlocks);
        store.root->dirChildren[0]->refreshTick -= kGalleryFreshMs + 1;
        RefreshClassSummary(store, w.names[0]);
        EXPECT_EQ(store.root->dirChildren[0]->dirChildren.size(), reference.root->dirChildren[0]->dirChildren.size());
        EXPECT_TRUE(store.staleClasses.empty());
        w.svc.faults().releaseHeld();
    }
}
