#include <gtest/gtest.h>

#include <sys/stat.h>

#include "store/usage_lists.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Lists = StoreFixture;

const std::string kHead = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r";
const std::string kTail = "</root>\r";

std::string ListOf(const std::vector<std::u16string>& paths) {
    std::string s = kHead;
    for (const auto& p : paths) s += "<Item path=\"" + U8(p) + "\" />\r";
    return s + kTail;
}

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
    // 501 entries: the last (oldest) is dropped.
    std::vector<GalleryNode> nodes;
    nodes.reserve(501);
    std::vector<GalleryNode*> ptrs;
    std::vector<std::u16string> first500;
    for (int i = 0; i < 501; ++i) {
        nodes.emplace_back(kRootName, u"/p/" + W(std::to_string(i)), u"", kKindFile, false, false, 0);
        ptrs.push_back(&nodes.back());
        if (i < 500) first500.push_back(nodes.back().Path());
    }
    EXPECT_EQ(ComposeListFile(ptrs), ListOf(first500));
}

// Remember, save, load (filtered), reload: the recent list and the common-use lists on disk.
TEST_F(Lists, RecentAndCommonListsThroughTheirFiles) {
    const std::u16string a = rootPath + u"/G/C/a.dwg", b = rootPath + u"/G/C/b.dwg", upper = rootPath + u"/G/C.x/Up.v2.DWG";
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* mine = AddGallery(u"我的收藏");
    GalleryNode* empty = AddGallery(u"Empty");
    AddChild(g, new GalleryNode(kCommonUseTag, b, u"b", kKindFile, false, false, 0), false);
    AddChild(mine, new GalleryNode(kCommonUseTag, a, u"a", kKindFile, false, false, 0), false);
    for (auto* n : {g, mine, empty}) CreateDirectories(n->Path());
    RememberRecent(store, upper, u"Up");
    RememberRecent(store, b, u"b");
    // A stray duplicate, as an older list could hold: every copy goes to the front once.
    AddChild(store.root, new GalleryNode(kRootName, upper, u"Up", kKindFile, false, false, 0), false);
    RememberRecent(store, upper, u"Up");
    RememberRecent(store, a, u"a");
    EXPECT_EQ(Paths(store.root->fileChildren), (std::vector<std::u16string>{a, upper, b}));
    EXPECT_EQ(store.root->fileChildren[0]->parent, store.root);

    // A read-only old file is replaced all the same; collections keep no common-use list.
    WriteBytes(U8(rootPath + u"/RecentlyUse.xml"), "old");
    chmod(U8(rootPath + u"/RecentlyUse.xml").c_str(), 0444);
    SaveRecentList(store);
    EXPECT_EQ(ReadBytes(U8(rootPath + u"/RecentlyUse.xml")), ListOf({a, upper, b}));
    EXPECT_EQ(ReadBytes(U8(g->Path() + u"/CommonUse.xml")), ListOf({b}));
    EXPECT_EQ(ReadBytes(U8(empty->Path() + u"/CommonUse.xml")), ListOf({}));
    EXPECT_FALSE(FileExists(mine->Path() + u"/CommonUse.xml"));

    // Loading keeps the file's order and drops empty, missing and non-block entries.
    Touch(a);
    Touch(upper);
    Touch(rootPath + u"/G/C/notes.txt");
    WriteBytes(U8(rootPath + u"/RecentlyUse.xml"), ListOf({upper, u"", b, rootPath + u"/G/C/notes.txt", a}));
    ReloadRecentList(store);  // replaces what is in memory
    EXPECT_EQ(Paths(store.root->fileChildren), (std::vector<std::u16string>{upper, a}));
    EXPECT_EQ(store.root->fileChildren[0]->name, u"Up.v2");  // the last dot of the last name

    // A gallery added to the tree reads its common-use list; a class does not.
    CreateDirectories(rootPath + u"/H/C");
    WriteBytes(U8(rootPath + u"/H/CommonUse.xml"), ListOf({a}));
    WriteBytes(U8(rootPath + u"/H/C/CommonUse.xml"), ListOf({a}));
    GalleryNode* h = AddGallery(u"H");
    ASSERT_EQ(h->fileChildren.size(), 1u);
    EXPECT_EQ(h->fileChildren[0]->OwnerName() + h->fileChildren[0]->name, std::u16string(kCommonUseTag) + u"a");
    EXPECT_TRUE(AddClass(h, u"C", 1, u"")->fileChildren.empty());

    GalleryStore bare;  // no root: nothing, no crash
    RememberRecent(bare, a, u"a");
    SaveRecentList(bare);
    EXPECT_EQ(bare.root, nullptr);
}

TEST_F(Lists, BrokenOrMissingFilesGiveEmptyLists) {
    const std::u16string a = rootPath + u"/a.dwg";
    Touch(a);
    const std::string cases[] = {
        "", "not xml at all",
        kHead + "<Item path=\"" + U8(a) + "\" />\r",  // cut before </root>
        kHead.substr(0, kHead.size() - 7) + "<list><Item path=\"" + U8(a) + "\" /></list>\r",
    };
    LoadRecentList(store);
    EXPECT_TRUE(store.root->fileChildren.empty());
    for (const auto& bytes : cases) {
        WriteBytes(U8(rootPath + u"/RecentlyUse.xml"), bytes);
        LoadRecentList(store);
        EXPECT_TRUE(store.root->fileChildren.empty()) << bytes;
    }
}

}  // namespace
}  // namespace marrowfin::test
