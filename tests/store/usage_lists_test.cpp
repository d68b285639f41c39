#include <gtest/gtest.h>

#include <sys/stat.h>

#include "store/usage_lists.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Lists = StoreFixture;

const std::string kHead = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r";
const std::string kTail = "</root>\r";

std::vector<std::u16string> Paths(const std::vector<GalleryNode*>& nodes) {
    std::vector<std::u16string> out;
    for (auto* n : nodes) out.push_back(n->Path());
    return out;
}

TEST(ListFile, ExactBytesAndTheLimit) {
    GalleryNode a(kRootName, u"/d/Orsolen/G/C/a.dwg", u"a", kKindFile, false, false, 0);
    GalleryNode b(kRootName, u"/d/x&y/门.DWG", u"门", kKindFile, false, false, 0);
    EXPECT_EQ(ComposeListFile({&a, nullptr, &b}), ReadBytes(SourceDir() + "/tests/store/data/two_entries.xml"));
    EXPECT_EQ(ComposeListFile({}), ReadBytes(SourceDir() + "/tests/store/data/empty_list.xml"));

    // 501 entries: the first 500 are written, the last (oldest) is dropped.
    std::vector<GalleryNode> nodes;
    nodes.reserve(501);
    for (int i = 0; i < 501; ++i)
        nodes.emplace_back(kRootName, u"/p/" + W(std::to_string(i)) + u".dwg", u"", kKindFile, false, false, 0);
    std::vector<GalleryNode*> ptrs;
    for (auto& n : nodes) ptrs.push_back(&n);
    const std::string text = ComposeListFile(ptrs);
    size_t count = 0;
    for (size_t pos = 0; (pos = text.find("<Item ", pos)) != std::string::npos; ++pos) ++count;
    EXPECT_EQ(count, 500u);
    EXPECT_NE(text.find("\"/p/499.dwg\""), std::string::npos);
    EXPECT_EQ(text.find("\"/p/500.dwg\""), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - kTail.size()), kTail);
}

TEST_F(Lists, RememberRecentMovesToTheFront) {
    RememberRecent(store, u"/b/one.dwg", u"one");
    RememberRecent(store, u"/b/two.dwg", u"two");
    // A stray duplicate, as an older list could hold: every copy goes.
    AddChild(store.root, new GalleryNode(kRootName, u"/b/one.dwg", u"one", kKindFile, false, false, 0), false);
    RememberRecent(store, u"/b/one.dwg", u"one");
    ASSERT_EQ(store.root->fileChildren.size(), 2u);
    EXPECT_EQ(Paths(store.root->fileChildren), (std::vector<std::u16string>{u"/b/one.dwg", u"/b/two.dwg"}));
    GalleryNode* e = store.root->fileChildren[0];
    EXPECT_EQ(e->OwnerName(), kRootName);
    EXPECT_EQ(e->name, u"one");
    EXPECT_EQ(e->parent, store.root);
    EXPECT_TRUE(IsFile(*e));

    GalleryStore bare;
    RememberRecent(bare, u"/b/x.dwg", u"x");  // no root: nothing, no crash
    EXPECT_EQ(bare.root, nullptr);
}

TEST_F(Lists, SaveWritesRecentAndCommonListsButNotCollections) {
    const std::u16string a = rootPath + u"/G/C/a.dwg";
    const std::u16string b = rootPath + u"/G/C/b.dwg";
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* mine = AddGallery(u"我的收藏");
    GalleryNode* empty = AddGallery(u"Empty");
    AddChild(g, new GalleryNode(kCommonUseTag, b, u"b", kKindFile, false, false, 0), false);
    AddChild(mine, new GalleryNode(kCommonUseTag, a, u"a", kKindFile, false, false, 0), false);
    CreateDirectories(g->Path());
    CreateDirectories(mine->Path());
    CreateDirectories(empty->Path());
    RememberRecent(store, b, u"b");
    RememberRecent(store, a, u"a");

    // A read-only old file is replaced all the same.
    WriteBytes(U8(rootPath + u"/RecentlyUse.xml"), "old");
    chmod(U8(rootPath + u"/RecentlyUse.xml").c_str(), 0444);

    SaveRecentList(store);
    EXPECT_EQ(ReadBytes(U8(rootPath + u"/RecentlyUse.xml")),
              kHead + "<Item path=\"" + U8(a) + "\" />\r<Item path=\"" + U8(b) + "\" />\r" + kTail);
    EXPECT_EQ(ReadBytes(U8(g->Path() + u"/CommonUse.xml")), kHead + "<Item path=\"" + U8(b) + "\" />\r" + kTail);
    EXPECT_EQ(ReadBytes(U8(empty->Path() + u"/CommonUse.xml")), kHead + kTail);
    EXPECT_FALSE(FileExists(mine->Path() + u"/CommonUse.xml"));

    GalleryStore bare;
    SaveRecentList(bare);  // no root: nothing
}

TEST_F(Lists, LoadFiltersAndKeepsFileOrder) {
    const std::u16string a = rootPath + u"/G/C/a.dwg";
    const std::u16string upper = rootPath + u"/G/C/Upper.DWG";
    const std::u16string gone = rootPath + u"/G/C/gone.dwg";
    const std::u16string text = rootPath + u"/G/C/notes.txt";
    Touch(a);
    Touch(upper);
    Touch(text);
    WriteBytes(U8(rootPath + u"/RecentlyUse.xml"),
               kHead + "<Item path=\"" + U8(upper) + "\" />\r<Item path=\"\" />\r<Item path=\"" + U8(gone) +
                   "\" />\r<Item path=\"" + U8(text) + "\" />\r<Item other=\"x\" />\r<Item path=\"" + U8(a) +
                   "\" />\r" + kTail);
    LoadRecentList(store);
    ASSERT_EQ(Paths(store.root->fileChildren), (std::vector<std::u16string>{upper, a}));
    EXPECT_EQ(store.root->fileChildren[0]->name, u"Upper");
    EXPECT_EQ(store.root->fileChildren[0]->OwnerName(), kRootName);

    // The dropped entry leaves the file at the next save.
    SaveRecentList(store);
    EXPECT_EQ(ReadBytes(U8(rootPath + u"/RecentlyUse.xml")),
              kHead + "<Item path=\"" + U8(upper) + "\" />\r<Item path=\"" + U8(a) + "\" />\r" + kTail);

    // Reloading replaces what is in memory rather than adding to it.
    RememberRecent(store, rootPath + u"/unsaved.dwg", u"unsaved");
    ReloadRecentList(store);
    EXPECT_EQ(Paths(store.root->fileChildren), (std::vector<std::u16string>{upper, a}));

    // A file deleted since is not shown after the next start.
    RemoveFile(upper);
    GalleryStore next;
    next.root = new GalleryNode(u"", rootPath, kRootName, kKindDir, false, false, 0);
    LoadRecentList(next);
    EXPECT_EQ(Paths(next.root->fileChildren), (std::vector<std::u16string>{a}));
    SubtreeDeleter()(next.root);
}

TEST_F(Lists, BrokenOrMissingFilesGiveEmptyLists) {
    LoadRecentList(store);
    EXPECT_TRUE(store.root->fileChildren.empty());
    const std::u16string a = rootPath + u"/a.dwg";
    Touch(a);
    const std::string cases[] = {
        "",
        "not xml at all",
        kHead + "<Item path=\"" + U8(a) + "\" />\r",  // cut before </root>
        kHead.substr(0, kHead.size() - 7) + "<list><Item path=\"" + U8(a) + "\" /></list>\r",
    };
    for (const auto& bytes : cases) {
        WriteBytes(U8(rootPath + u"/RecentlyUse.xml"), bytes);
        LoadRecentList(store);
        EXPECT_TRUE(store.root->fileChildren.empty()) << bytes;
    }
}

}  // namespace
}  // namespace marrowfin::test
