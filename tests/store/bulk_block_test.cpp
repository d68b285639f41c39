// Blocks read in bulk store their name only; what follows from the class
// must read the same as a stored value on every road that looks at it.

#include <gtest/gtest.h>

#include "store/gallery_tree.h"

namespace marrowfin {
namespace {

struct BulkTree {
    OwnedNode root{new GalleryNode(u"", u"/r", kRootName, kKindDir, false, false, 0)};
    GalleryNode* gallery = new GalleryNode(kRootName, u"/r/G", u"G", kKindDir, false, false, 0);
    GalleryNode* cls = new GalleryNode(u"G", u"/r/G/C", u"C", kKindDir, false, false, 0);
    GalleryNode* a = NewBlock(u"a.dwg", true, false, 10);
    GalleryNode* b = NewBlock(u"b.dwg", false, true, 20);
    BulkTree() {
        AddChild(root.get(), gallery, false);
        AddChild(gallery, cls, false);
        cls->remoteBase = u"http://h/c";
        AddChild(cls, a, false);
        AddChild(cls, b, false);
    }
};

TEST(BulkBlock, PathOwnerAndUrlFollowTheClassAndLookupsFindThem) {
    BulkTree t;
    EXPECT_EQ(t.b->Path(), u"/r/G/C/b.dwg");
    EXPECT_EQ(t.b->OwnerName(), u"C");
    EXPECT_EQ(DownloadUrl(*t.b), u"http://h/c/b.dwg");
    EXPECT_TRUE(t.b->PathIs(u"/r/G/C/b.dwg"));
    EXPECT_FALSE(t.b->PathIs(u"/r/G/Cb.dwg"));    // the slash is part of the path
    EXPECT_FALSE(t.b->PathIs(u"/r/G/C/xb.dwg"));  // a longer last name
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/b.dwg", true), t.b);
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/a.dwg", true), t.a);
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/", true), nullptr);
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/b.dwgx", true), nullptr);
    EXPECT_EQ(FindNodeByPath(t.root.get(), u"/r/G/C"), t.cls);

    // A common-use entry of the same path is skipped, the bulk block found.
    auto* common = new GalleryNode(kCommonUseTag, u"/r/G/C/b.dwg", u"b.dwg", kKindFile, false, false, 0);
    AddChild(t.gallery, common, true);
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/b.dwg", true), t.b);
    std::vector<GalleryNode*> hits;
    FilterBlocks(t.root.get(), u"B.DWG", hits);
    EXPECT_EQ(hits, (std::vector<GalleryNode*>{t.b}));
}

TEST(BulkBlock, RenamingOrTakingOutKeepsWhatTheBlockHad) {
    BulkTree t;
    // A renamed block keeps its extension and the URL of its old name.
    RenameNode(t.a, u"z");
    EXPECT_EQ(t.a->name, u"z");
    EXPECT_EQ(t.a->Path(), u"/r/G/C/z.dwg");
    EXPECT_EQ(DownloadUrl(*t.a), u"http://h/c/a.dwg");
    EXPECT_EQ(t.a->OwnerName(), u"C");
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/C/z.dwg", true), t.a);

    // A renamed class carries its bulk blocks along.
    RenameNode(t.cls, u"D");
    EXPECT_EQ(t.b->Path(), u"/r/G/D/b.dwg");
    EXPECT_EQ(t.a->Path(), u"/r/G/D/z.dwg");
    EXPECT_EQ(FindBlockByPath(t.root.get(), u"/r/G/D/b.dwg", true), t.b);

    // Taken out, a block keeps its path, owner and URL without a parent.
    ASSERT_TRUE(RemoveChild(t.cls, t.b));
    OwnedNode out(t.b);
    EXPECT_EQ(out->parent, nullptr);
    EXPECT_EQ(out->Path(), u"/r/G/D/b.dwg");
    EXPECT_EQ(out->OwnerName(), u"D");
    EXPECT_EQ(DownloadUrl(*out), u"http://h/c/b.dwg");
    EXPECT_EQ(t.cls->fileChildren, (std::vector<GalleryNode*>{t.a}));
}

TEST(NodeText, CopiesCompareAndSurviveSelfAssignment) {
    NodeText empty;
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_EQ(empty, u"");
    NodeText text(u"门窗_1.dwg");
    NodeText copy = text;
    EXPECT_NE(copy.data(), text.data());  // a deep copy
    EXPECT_EQ(copy, text);
    copy = copy;
    EXPECT_EQ(copy, u"门窗_1.dwg");
    copy = std::u16string_view(copy).substr(2);  // assigned from a view of itself
    EXPECT_EQ(copy, u"_1.dwg");
    EXPECT_LT(copy, text);
    EXPECT_EQ(u"/" + text, u"/门窗_1.dwg");
    NodeText moved = std::move(text);
    EXPECT_EQ(moved.size(), 8u);
    copy = NodeText();
    EXPECT_TRUE(copy.empty());
}

TEST(ChildArray, KeepsOrderThroughInsertEraseAndGrowth) {
    std::vector<GalleryNode> nodes(40);
    ChildArray children;
    EXPECT_TRUE(children.empty());
    EXPECT_EQ(children.begin(), children.end());
    for (auto& n : nodes) children.push_back(&n);
    ASSERT_EQ(children.size(), 40u);
    EXPECT_EQ(children.back(), &nodes[39]);
    children.insert(children.begin() + 1, &nodes[39]);
    children.erase(children.end() - 1);
    children.erase(children.begin() + 2, children.begin() + 40);
    EXPECT_EQ(children, (std::vector<GalleryNode*>{&nodes[0], &nodes[39]}));
    ChildArray copy = children;
    std::vector<GalleryNode*> taken = std::exchange(children, {});
    EXPECT_TRUE(children.empty());
    EXPECT_EQ(copy, taken);
    EXPECT_THROW((void)copy.at(2), std::out_of_range);
}

}  // namespace
}  // namespace marrowfin
