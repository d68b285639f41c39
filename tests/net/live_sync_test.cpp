#include "live_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

size_t CountBlocks(const GalleryNode* gallery) {
    size_t n = 0;
    for (const GalleryNode* cls : gallery->dirChildren)
        if (cls) n += cls->fileChildren.size();
    return n;
}

}  // namespace

// Every broken reply of the service falls back on the catalogues and keeps what the tree had,
// for the first tree, a full fetch, a class fetch and a class summary. Then, with the service
// sound, the summary, the full fetch and an added gallery follow the hour rule.
TEST(LiveSync, BrokenRepliesFallBackAndSoundOnesFollowTheHourRule) {
    test::LiveWorld w;
    TestStore reference;
    test::BuildAndAdopt(reference);
    EXPECT_EQ(w.Count("/gallery/g_all_s"), 1);
    GalleryNode* gallery = reference.root->dirChildren[0];
    const size_t blocks = CountBlocks(gallery);
    ASSERT_GT(blocks, 0u);
    EXPECT_EQ(ReadGalleryVersion(w.live.galleries[0]), reference.galleryVersions[w.live.galleries[0]]);
    const std::u16string clsPath = gallery->dirChildren[0]->Path();
    const size_t classBlocks = gallery->dirChildren[0]->fileChildren.size();

    // A failed transfer (every transport fault is one, as the transport's test shows), an
    // empty reply and one that is no markup.
    const std::pair<const char*, service::Fault> cases[] = {
        {"404", {.status = 404}}, {"empty", {.emptyBody = true}}, {"not xml", {.body = "<html><body>busy</body>"}}};
    for (const auto& [what, fault] : cases) {
        SCOPED_TRACE(what);
        w.faults().set("/gallery/*", fault);
        TestStore store;
        test::BuildAndAdopt(store);
        EXPECT_EQ(store.syncBusy.load(), 0);
        ASSERT_EQ(store.root->dirChildren.size(), 1u);
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        EXPECT_FALSE(FetchGalleryFull(store, w.live.galleries[0], false));
        EXPECT_EQ(CountBlocks(store.root->dirChildren[0]), blocks);
        FetchClassItems(store, clsPath);
        EXPECT_EQ(FindNodeByPath(store.root, clsPath)->fileChildren.size(), classBlocks);
        store.root->dirChildren[0]->refreshTick -= kGalleryFreshMs + 1;
        RefreshClassSummary(store, w.live.galleries[0]);
        EXPECT_EQ(store.root->dirChildren[0]->dirChildren.size(), gallery->dirChildren.size());
        EXPECT_TRUE(store.staleClasses.empty());
    }
    w.faults().clearAll();
    const long summaries = w.Count("/gallery/g_cs_s"), classFetches = w.Count("/gallery/g_cs");
    // Within the hour no summary is sent; after it, a class older here is marked stale.
    RefreshClassSummary(reference, w.live.galleries[0]);
    EXPECT_EQ(w.Count("/gallery/g_cs_s"), summaries);
    GalleryNode* cls = gallery->dirChildren[0];
    cls->version -= 1;
    gallery->refreshTick -= kGalleryFreshMs + 1;
    RefreshClassSummary(reference, w.live.galleries[0]);
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
    EXPECT_FALSE(FetchGalleryFull(reference, w.live.galleries[1], false));
    EXPECT_TRUE(FetchGalleryFull(reference, w.live.galleries[1], true));
    ASSERT_EQ(reference.root->dirChildren.size(), 2u);
    GalleryNode* added = reference.root->dirChildren[1];
    const size_t classes = added->dirChildren.size();
    EXPECT_GT(classes, 0u);
    EXPECT_TRUE(FileExists(CataloguePath(w.live.galleries[1])));
    // An added gallery reads its catalogue within the hour and fetches after it.
    const long before = w.Count("/gallery/g_all");
    for (int64_t past : {kGalleryFreshMs - 50, kGalleryFreshMs + 50}) {
        ClearChildren(added);
        reference.galleryFetchTicks[w.live.galleries[1]] = GetTickCount() - static_cast<uint32_t>(past);
        OpenAddedGallery(reference, w.live.galleries[1]);
        EXPECT_EQ(w.Count("/gallery/g_all"), before + (past > kGalleryFreshMs));
        EXPECT_EQ(added->dirChildren.size(), classes);
    }
}

TEST(LiveSync, ForcedRefreshRemovesDownloadedClassesOnce) {
    test::LiveWorld w;
    auto settings = w.live.handle.settings();
    settings.forceRefresh = true;
    w.live.handle.setSettings(settings);
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
