#include "live_world.h"

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

// A fresh home with the service running and the sample's first gallery listed; the first tree built.
struct OneGalleryWorld {
    TempHome home;
    std::string data = test::SampleLibrary();
    std::vector<std::u16string> names = test::GalleryNames(data);
    service::ServiceHandle svc = test::StartLiveService(data);
    long Count(const char* path) { return svc.counters().get(path).count; }
    OneGalleryWorld() { AddGalleryToShowList(names[0]); }
};

}  // namespace

// Every broken reply of the service falls back on the catalogues and keeps what the tree had,
// for the first tree, a full fetch, a class fetch and a class summary. Then, with the service
// sound, the summary, the full fetch and an added gallery follow the hour rule.
TEST(LiveSync, BrokenRepliesFallBackAndSoundOnesFollowTheHourRule) {
    OneGalleryWorld w;
    test::ShortTimeouts timeouts;
    TestStore reference;
    test::BuildAndAdopt(reference);
    EXPECT_EQ(w.Count("/gallery/g_all_s"), 1);
    GalleryNode* gallery = reference.root->dirChildren[0];
    const size_t blocks = CountBlocks(gallery);
    ASSERT_GT(blocks, 0u);
    const GalleryNode* first = gallery->dirChildren[0]->fileChildren[0];
    EXPECT_EQ(DownloadUrl(*first), first->parent->remoteBase + u"/" + first->name);
    EXPECT_EQ(ReadGalleryVersion(w.names[0]), reference.galleryVersions[w.names[0]]);
    const std::u16string clsPath = gallery->dirChildren[0]->Path();
    const size_t classBlocks = gallery->dirChildren[0]->fileChildren.size();

    const std::pair<const char*, service::Fault> cases[] = {
        {"404", {.status = 404}}, {"500", {.status = 500}}, {"empty", {.emptyBody = true}},
        {"truncated", {.truncateAt = 200}}, {"dropped", {.drop = true}},
        {"not xml", {.body = "<html><body>busy</body>"}}, {"hold past the time-out", {.holdMs = 3000}},
    };
    for (const auto& [what, fault] : cases) {
        SCOPED_TRACE(what);
        w.svc.faults().set("/gallery/*", fault);
        TestStore store;
        test::BuildAndAdopt(store);
        EXPECT_EQ(store.syncBusy.load(), 0);
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        EXPECT_FALSE(FetchGalleryFull(store, w.names[0], false));
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        FetchClassItems(store, clsPath);
        EXPECT_EQ(FindNodeByPath(store.root, clsPath)->fileChildren.size(), classBlocks);
        store.root->dirChildren[0]->refreshTick -= kGalleryFreshMs + 1;
        RefreshClassSummary(store, w.names[0]);
        EXPECT_EQ(store.root->dirChildren[0]->dirChildren.size(), gallery->dirChildren.size());
        EXPECT_TRUE(store.staleClasses.empty());
        w.svc.faults().releaseHeld();
    }
    w.svc.faults().clearAll();
    const long summaries = w.Count("/gallery/g_cs_s"), classFetches = w.Count("/gallery/g_cs");
    // Within the hour no summary is sent; after it, a class older here is marked stale.
    RefreshClassSummary(reference, w.names[0]);
    EXPECT_EQ(w.Count("/gallery/g_cs_s"), summaries);
    GalleryNode* cls = gallery->dirChildren[0];
    cls->version -= 1;
    gallery->refreshTick -= kGalleryFreshMs + 1;
    RefreshClassSummary(reference, w.names[0]);
    EXPECT_EQ(w.Count("/gallery/g_cs_s"), summaries + 1);
    EXPECT_EQ(reference.staleClasses.size(), 1u);
    cls = FindNodeByPath(reference.root, clsPath);
    ASSERT_NE(cls, nullptr);
    EXPECT_EQ(cls->fileChildren.size(), classBlocks);  // the old node with its blocks survives

    // Opening it fetches the class once; its folder goes.
    ASSERT_TRUE(CreateDirectories(clsPath));
    OpenClass(reference, clsPath);
    OpenClass(reference, clsPath);
    EXPECT_EQ(w.Count("/gallery/g_cs"), classFetches + 1);
    EXPECT_TRUE(reference.staleClasses.empty());
    EXPECT_FALSE(DirectoryExists(clsPath));
    EXPECT_EQ(cls->fileChildren.size(), classBlocks);

    // A full fetch of a gallery not in the tree adds it only when asked to.
    EXPECT_FALSE(FetchGalleryFull(reference, w.names[1], false));
    EXPECT_TRUE(FetchGalleryFull(reference, w.names[1], true));
    ASSERT_EQ(reference.root->dirChildren.size(), 2u);
    GalleryNode* added = reference.root->dirChildren[1];
    const size_t classes = added->dirChildren.size();
    EXPECT_GT(classes, 0u);
    EXPECT_TRUE(FileExists(CataloguePath(w.names[1])));
}

TEST(LiveSync, ForcedRefreshRemovesDownloadedClassesOnce) {
    OneGalleryWorld w;
    auto settings = w.svc.settings();
    settings.forceRefresh = true;
    w.svc.setSettings(settings);
    // Runs: without catalogues nothing is forced; then the classes look outdated, their
    // folders go and downver becomes 1; with downver 1 nothing is forced any more.
    const std::pair<bool, int> runs[] = {{true, -1}, {false, 1}, {true, 1}};
    std::u16string classPath;
    for (const auto& [kept, downver] : runs) {
        TestStore store;
        test::BuildAndAdopt(store);
        if (!classPath.empty()) {
            EXPECT_EQ(DirectoryExists(classPath), kept);
        }
        EXPECT_EQ(GetOptionInt(u"downver", -1), downver);
        classPath = store.root->dirChildren[0]->dirChildren[0]->Path();
        ASSERT_TRUE(CreateDirectories(classPath));
        ASSERT_TRUE(WriteFileAtomic(classPath + u"/old.dwg", std::string(2000, 'x')));
    }
}

TEST(LiveSync, FirstStartWithoutNetworkGivesEmptyGalleries) {
    TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");  // a closed port
    AddGalleryToShowList(u"门窗");
    AddGalleryToShowList(u"Furniture");
    TestStore store;
    test::BuildAndAdopt(store);
    EXPECT_EQ(store.syncBusy.load(), 0);
    ASSERT_EQ(store.root->dirChildren.size(), 2u);
    for (const GalleryNode* g : store.root->dirChildren) {
        EXPECT_TRUE(g->dirChildren.empty());
        EXPECT_TRUE(DirectoryExists(g->Path()));  // listed galleries get their folders
    }
    EXPECT_FALSE(FileExists(CataloguePath(u"门窗")));
    // An empty list: nothing to ask, the run ends at once with an empty root.
    TempHome other;
    TestStore empty;
    test::BuildAndAdopt(empty);
    ASSERT_NE(empty.root, nullptr);
    EXPECT_TRUE(empty.root->dirChildren.empty());
    EXPECT_TRUE(DirectoryExists(StoreRoot()));
}
