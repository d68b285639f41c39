#include "live_world.h"

#include <thread>

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

size_t CountBlocks(const GalleryNode* gallery) {
    size_t n = 0;
    for (const GalleryNode* cls : gallery->dirChildren) n += cls ? cls->fileChildren.size() : 0;
    return n;
}

}  // namespace

// Every broken reply of the service falls back on the catalogues and keeps what the tree had,
// for the first tree, a full fetch, a class fetch and a class summary. Then, with the service
// sound, the summary, the full fetch and an added gallery follow the hour rule.
TEST(LiveSync, BrokenRepliesFallBackAndSoundOnesFollowTheHourRule) {
    LiveWorld w;
    const std::u16string first = w.live.galleries[0], second = w.live.galleries[1];
    TestStore reference;
    BuildAndAdopt(reference);
    GalleryNode* gallery = reference.root->dirChildren[0];
    const size_t blocks = CountBlocks(gallery), classBlocks = gallery->dirChildren[0]->fileChildren.size();
    const std::u16string clsPath = gallery->dirChildren[0]->Path();
    ASSERT_GT(blocks, 0u);  // (one request, versions written: the scripted first tree's test)

    // A failed transfer (every transport fault is one, as the transport's test shows), an
    // empty reply and one that is no markup.
    const std::pair<const char*, service::Fault> cases[] = {
        {"404", {.status = 404}}, {"empty", {.emptyBody = true}}, {"not xml", {.body = "<html><body>busy</body>"}}};
    for (const auto& [what, fault] : cases) {
        SCOPED_TRACE(what);
        w.faults().set("/gallery/*", fault);
        TestStore store;
        BuildAndAdopt(store);
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        EXPECT_EQ(std::make_pair(store.syncBusy.load(), CountBlocks(store.root->dirChildren[0])), std::make_pair(0, blocks));
        EXPECT_TRUE(!FetchGalleryFull(store, first, false) && CountBlocks(store.root->dirChildren[0]) == blocks);
        FetchClassItems(store, clsPath);
        EXPECT_EQ(FindNodeByPath(store.root, clsPath)->fileChildren.size(), classBlocks);
        store.root->dirChildren[0]->refreshTick -= kGalleryFreshMs + 1;
        RefreshClassSummary(store, first);
        EXPECT_EQ(std::make_pair(store.root->dirChildren[0]->dirChildren.size(), store.staleClasses.size()),
                  std::make_pair(gallery->dirChildren.size(), size_t{0}));
    }
    w.faults().clearAll();
    const long summaries = w.Count("/gallery/g_cs_s"), classFetches = w.Count("/gallery/g_cs");
    // After the hour (within it nothing is sent: the panel's page test), a class older here is
    // marked stale, and the old node keeps its blocks.
    gallery->dirChildren[0]->version -= 1;
    gallery->refreshTick -= kGalleryFreshMs + 1;
    RefreshClassSummary(reference, first);
    EXPECT_EQ(std::make_pair(w.Count("/gallery/g_cs_s"), reference.staleClasses.size()), std::make_pair(summaries + 1, size_t{1}));
    GalleryNode* cls = FindNodeByPath(reference.root, clsPath);
    ASSERT_NE(cls, nullptr);
    EXPECT_EQ(cls->fileChildren.size(), classBlocks);

    // Opening it fetches the class once; its folder goes.
    ASSERT_TRUE(CreateDirectories(clsPath));
    OpenClass(reference, clsPath);
    OpenClass(reference, clsPath);
    EXPECT_EQ(w.Count("/gallery/g_cs"), classFetches + 1);
    EXPECT_TRUE(reference.staleClasses.empty() && !DirectoryExists(clsPath) && cls->fileChildren.size() == classBlocks);

    // A full fetch of a gallery not in the tree adds it only when asked to; an added gallery
    // reads its catalogue within the hour and fetches after it.
    EXPECT_TRUE(!FetchGalleryFull(reference, second, false) && FetchGalleryFull(reference, second, true));
    ASSERT_EQ(reference.root->dirChildren.size(), 2u);
    GalleryNode* added = reference.root->dirChildren[1];
    const size_t classes = added->dirChildren.size();
    EXPECT_TRUE(classes > 0 && FileExists(CataloguePath(second)));
}

// Runs: without catalogues nothing is forced; then the classes look outdated, their folders
// go and downver becomes 1; with downver 1 nothing is forced any more.
TEST(LiveSync, ForcedRefreshRemovesDownloadedClassesOnce) {
    LiveWorld w;
    auto settings = w.live.handle.settings();
    settings.forceRefresh = true;
    w.live.handle.setSettings(settings);
    std::u16string classPath;
    for (const auto& [kept, downver] : {std::pair{true, -1}, {false, 1}, {true, 1}}) {
        TestStore store;
        BuildAndAdopt(store);
        EXPECT_TRUE((classPath.empty() || DirectoryExists(classPath) == kept) && GetOptionInt(u"downver", -1) == downver);
        classPath = store.root->dirChildren[0]->dirChildren[0]->Path();
        ASSERT_TRUE(CreateDirectories(classPath) && WriteFileAtomic(classPath + u"/old.dwg", std::string(2000, 'x')));
    }
}

// A cold start deposits the catalogues' tree before the service answers, and the answer
// then replaces it; with the service down the catalogues' tree is the only one.
TEST(LiveSync, AColdStartShowsTheCataloguesWhileTheServiceIsSlow) {
    LiveWorld w;
    size_t blocks = 0;
    {
        TestStore warm;  // writes the catalogues
        BuildAndAdopt(warm);
        blocks = CountBlocks(warm.root->dirChildren[0]);
    }
    w.faults().set("/gallery/g_all_s", {.holdMs = 10000});
    TestStore store;
    std::thread run([&] { BuildFirstTree(store, true); });
    std::vector<TreeChange> early;
    for (int i = 0; i < 500 && early.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        early = AdoptTreeUpdates(store);
    }
    ASSERT_EQ(early.size(), 1u);
    EXPECT_EQ(std::make_tuple(store.syncBusy.load(), CountBlocks(store.root->dirChildren[0]), store.galleryFetchTicks.size()),
              std::make_tuple(1, blocks, size_t{0}));
    w.faults().releaseHeld();
    run.join();
    EXPECT_EQ(AdoptTreeUpdates(store).size(), 1u);
    EXPECT_EQ(std::make_pair(store.galleryFetchTicks.size(), CountBlocks(store.root->dirChildren[0])), std::make_pair(size_t{1}, blocks));

    w.faults().set("/gallery/g_all_s", {.status = 500});
    TestStore down;
    BuildFirstTree(down, true);
    EXPECT_TRUE(AdoptTreeUpdates(down).size() == 1u && CountBlocks(down.root->dirChildren[0]) == blocks);
}
