#include <gtest/gtest.h>

#include "store/usage_lists.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Tree = StoreFixture;

std::vector<std::u16string> Names(const std::vector<GalleryNode*>& nodes) {
    std::vector<std::u16string> out;
    for (auto* n : nodes) out.push_back(n ? n->name : u"<null>");
    return out;
}

TEST(GalleryNode, TheRootIsTheParentlessNodeOfTheRootName) {
    GalleryNode block(u"Cls", u"/r/G/Cls/x.dwg", u"x.dwg", kKindFile, true, true, 4096);
    EXPECT_TRUE(IsFile(block));
    GalleryNode root(u"", u"/r", kRootName, kKindDir, false, false, 0);
    EXPECT_TRUE(IsRoot(root));
    EXPECT_FALSE(IsFile(root));
    GalleryNode other(u"", u"/r", u"Other", kKindDir, false, false, 0);
    EXPECT_FALSE(IsRoot(other));  // parentless, but not the root's name
    GalleryNode child(u"", u"/r", kRootName, kKindDir, false, false, 0);
    child.parent = &root;
    EXPECT_FALSE(IsRoot(child));  // the name alone does not make a root
}

TEST_F(Tree, AddChildKeepsOrderAndRefusesNull) {
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c = AddClass(g, u"C", 1, u"http://b");
    for (auto n : {u"a.dwg", u"b.dwg", u"c.dwg"}) AddBlock(c, n, 1, false);
    auto* front = new GalleryNode(u"C", c->Path() + u"/z.dwg", u"z.dwg", kKindFile, false, false, 0);
    EXPECT_TRUE(AddChild(c, front, true));
    EXPECT_EQ(Names(c->fileChildren), (std::vector<std::u16string>{u"z.dwg", u"a.dwg", u"b.dwg", u"c.dwg"}));
    EXPECT_EQ(front->parent, c);
    EXPECT_TRUE(c->dirChildren.empty());

    auto* sub = new GalleryNode(u"C", c->Path() + u"/S", u"S", kKindDir, false, false, 0);
    EXPECT_TRUE(AddChild(c, sub, true));
    EXPECT_EQ(c->dirChildren.size(), 1u);
    EXPECT_EQ(c->fileChildren.size(), 4u);

    EXPECT_FALSE(AddChild(c, nullptr, true));
    EXPECT_EQ(c->fileChildren.size(), 4u);
}

TEST_F(Tree, AddingAGalleryLoadsItsCommonUseListOnly) {
    // No CommonUse.xml: no file children.
    GalleryNode* bare = AddGallery(u"Bare");
    EXPECT_TRUE(bare->fileChildren.empty());

    const std::u16string block = rootPath + u"/G/C/a.dwg";
    Touch(block);
    WriteBytes(U8(rootPath + u"/G/CommonUse.xml"),
               "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r<Item path=\"" + U8(block) +
                   "\" />\r</root>\r");
    GalleryNode* g = AddGallery(u"G");
    ASSERT_EQ(g->fileChildren.size(), 1u);
    EXPECT_EQ(g->fileChildren[0]->OwnerName(), kCommonUseTag);
    EXPECT_EQ(g->fileChildren[0]->name, u"a");
    EXPECT_EQ(g->fileChildren[0]->parent, g);

    // A class is not a gallery: its folder's list is not read.
    WriteBytes(U8(rootPath + u"/G/C/CommonUse.xml"), ReadBytes(U8(rootPath + u"/G/CommonUse.xml")));
    GalleryNode* c = AddClass(g, u"C", 1, u"");
    EXPECT_TRUE(c->fileChildren.empty());
}

TEST_F(Tree, RemoveChildTakesTheFirstOfTheNameAndFreesNothing) {
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c = AddClass(g, u"C", 1, u"");
    GalleryNode* a1 = AddBlock(c, u"a.dwg", 1, false);
    GalleryNode* b = AddBlock(c, u"b.dwg", 1, false);
    GalleryNode* a2 = AddBlock(c, u"a.dwg", 2, false);
    GalleryNode probe(u"", u"", u"a.dwg", kKindFile, false, false, 0);
    EXPECT_TRUE(RemoveChild(c, &probe));
    EXPECT_EQ(c->fileChildren, (std::vector<GalleryNode*>{b, a2}));
    EXPECT_EQ(a1->size, 1);  // still alive: the caller owns it now
    EXPECT_EQ(a1->parent, nullptr);
    delete a1;
    // A dir probe looks in dirChildren only.
    GalleryNode dirProbe(u"", u"", u"b.dwg", kKindDir, false, false, 0);
    EXPECT_FALSE(RemoveChild(c, &dirProbe));
    EXPECT_EQ(c->fileChildren.size(), 2u);
}

TEST_F(Tree, LookupsByPath) {
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c1 = AddClass(g, u"C1", 1, u"");
    GalleryNode* c2 = AddClass(g, u"C2", 1, u"");
    GalleryNode* blk = AddBlock(c2, u"b.dwg", 1, false);
    // Common-use and recent entries pointing at the same block, ahead of it in the walk.
    AddChild(g, new GalleryNode(kCommonUseTag, blk->Path(), u"b", kKindFile, false, false, 0), true);
    auto* recent = new GalleryNode(kRootName, blk->Path(), u"b", kKindFile, false, false, 0);
    AddChild(store.root, recent, true);

    EXPECT_EQ(FindNodeByPath(store.root, c2->Path()), c2);
    EXPECT_EQ(FindNodeByPath(store.root, rootPath), store.root);
    EXPECT_EQ(FindNodeByPath(store.root, blk->Path()), nullptr);  // blocks are not dirs
    EXPECT_EQ(FindNodeByPath(store.root, c1->Path() + u"/"), nullptr);
    EXPECT_EQ(FindNodeByPath(store.root, rootPath + u"/g/C1"), nullptr);  // case-sensitive

    EXPECT_EQ(FindBlockByPath(store.root, blk->Path(), true), blk);
    // Without the flag the recent entry comes first.
    EXPECT_EQ(FindBlockByPath(store.root, blk->Path(), false), recent);
    // The common-use entry is never the answer, even when the class lacks the block.
    EXPECT_EQ(FindBlockByPath(g, blk->Path(), true), blk);
    const std::u16string only = rootPath + u"/G/C1/only.dwg";
    AddChild(g, new GalleryNode(kCommonUseTag, only, u"only", kKindFile, false, false, 0), false);
    EXPECT_EQ(FindBlockByPath(store.root, only, true), nullptr);
    EXPECT_EQ(FindBlockByPath(store.root, u"", true), nullptr);

    // Null slots are skipped by every walk.
    c1->fileChildren.push_back(nullptr);
    g->dirChildren.insert(g->dirChildren.begin(), nullptr);
    EXPECT_EQ(FindBlockByPath(store.root, blk->Path(), true), blk);
    EXPECT_EQ(FindNodeByPath(store.root, c2->Path()), c2);
    std::vector<GalleryNode*> out;
    FilterBlocks(store.root, u"", out);
    EXPECT_EQ(out.size(), 2u);  // recent entry and the block
    g->dirChildren.erase(g->dirChildren.begin());
    c1->fileChildren.pop_back();
}

TEST_F(Tree, FiltersFoldCaseAndSkipTheirEntries) {
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c = AddClass(g, u"C", 1, u"");
    GalleryNode* d = AddClass(g, u"D", 1, u"");
    GalleryNode* door = AddBlock(c, u"DoorFrame.dwg", 1, false);
    GalleryNode* win = AddBlock(c, u"Window.dwg", 1, false);
    GalleryNode* cn = AddBlock(d, u"木门OOR.dwg", 1, false);
    auto* common = new GalleryNode(kCommonUseTag, door->Path(), u"DoorFrame", kKindFile, false, false, 0);
    AddChild(g, common, false);
    auto* recent = new GalleryNode(kRootName, win->Path(), u"Window", kKindFile, false, false, 0);
    AddChild(store.root, recent, false);

    std::vector<GalleryNode*> out;
    FilterBlocks(store.root, u"oOr", out);
    EXPECT_EQ(out, (std::vector<GalleryNode*>{door, cn}));

    out.clear();
    FilterBlocks(store.root, u"", out);  // everything that is not a common-use entry, files first
    EXPECT_EQ(out, (std::vector<GalleryNode*>{recent, door, win, cn}));

    out.clear();
    FilterBlocksFromTop(store.root, u"", out);  // the root's recent list is left out
    EXPECT_EQ(out, (std::vector<GalleryNode*>{door, win, cn}));

    out.clear();
    FilterBlocksFromTop(g, u"win", out);  // below the root the own files count
    EXPECT_EQ(out, (std::vector<GalleryNode*>{win}));

    // Given directly, a file is tested by FilterBlocksFromTop only if it is a common-use entry.
    out.clear();
    FilterBlocksFromTop(common, u"door", out);
    FilterBlocksFromTop(door, u"door", out);
    EXPECT_EQ(out, (std::vector<GalleryNode*>{common}));
    out.clear();
    FilterBlocks(common, u"door", out);
    FilterBlocks(door, u"DOOR", out);
    EXPECT_EQ(out, (std::vector<GalleryNode*>{door}));

    out.clear();
    FilterBlocks(store.root, u"木门o", out);
    EXPECT_EQ(out, (std::vector<GalleryNode*>{cn}));
}

TEST_F(Tree, RenameNode) {
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c = AddClass(g, u"C", 1, u"");
    GalleryNode* b = AddBlock(c, u"a.b.dwg", 1, false);
    GalleryNode* sub = new GalleryNode(u"C", c->Path() + u"/S", u"S", kKindDir, false, false, 0);
    AddChild(c, sub, false);
    GalleryNode* deep = AddBlock(sub, u"d.dwg", 1, false);

    RenameNode(c, u"New");
    EXPECT_EQ(c->name, u"New");
    EXPECT_EQ(c->Path(), rootPath + u"/G/New");
    EXPECT_EQ(b->Path(), rootPath + u"/G/New/a.b.dwg");
    EXPECT_EQ(b->name, u"a.b.dwg");  // children keep their names
    EXPECT_EQ(sub->Path(), rootPath + u"/G/C/S");  // deeper levels untouched
    EXPECT_EQ(deep->Path(), rootPath + u"/G/C/S/d.dwg");

    RenameNode(b, u"z");
    EXPECT_EQ(b->name, u"z");
    EXPECT_EQ(b->Path(), rootPath + u"/G/New/z.dwg");  // the old extension with its dot

    GalleryNode* plain = AddBlock(c, u"noext", 1, false);
    const std::u16string before = plain->Path();
    RenameNode(plain, u"other");
    EXPECT_EQ(plain->name, u"noext");
    EXPECT_EQ(plain->Path(), before);

    // A dot only in front of the last separator is no extension either.
    auto* dotted = new GalleryNode(u"x", u"/r/a.b/file", u"file", kKindFile, false, false, 0);
    AddChild(c, dotted, false);
    RenameNode(dotted, u"other");
    EXPECT_EQ(dotted->Path(), u"/r/a.b/file");

    RenameNode(store.root, u"Elsewhere");
    EXPECT_EQ(store.root->name, kRootName);
    EXPECT_EQ(store.root->Path(), rootPath);
}

TEST_F(Tree, DestroyAndRebuild) {
    GalleryNode* g = AddGallery(u"G", true);
    GalleryNode* old1 = AddClass(g, u"One", 1, u"u1");
    AddBlock(old1, u"a.dwg", 1, false);
    GalleryNode* old2 = AddClass(g, u"Two", 5, u"u2");
    AddClass(g, u"Gone", 1, u"u3");

    // The server's order: Three (new), Two (same version), One (newer).
    auto cand = [&](const std::u16string& n, int v) {
        auto* c = new GalleryNode(g->name, g->Path() + u"/" + n, n, kKindDir, false, false, 0);
        c->version = v;
        return c;
    };
    RebuildClassList(store, g, {cand(u"Three", 2), cand(u"Two", 5), nullptr, cand(u"One", 4)});
    EXPECT_EQ(Names(g->dirChildren), (std::vector<std::u16string>{u"Three", u"Two", u"One"}));
    EXPECT_EQ(g->dirChildren[1], old2);
    EXPECT_EQ(g->dirChildren[2], old1);
    EXPECT_EQ(old1->fileChildren.size(), 1u);  // the block list survived
    EXPECT_EQ(old1->version, 1);               // the old node is kept as it was
    EXPECT_EQ(store.staleClasses.size(), 2u);
    EXPECT_EQ(store.staleClasses[g->Path() + u"/Three"], 2);
    EXPECT_EQ(store.staleClasses[g->Path() + u"/One"], 4);

    ClearChildren(g);
    EXPECT_TRUE(g->dirChildren.empty());
    EXPECT_TRUE(g->fileChildren.empty());
    EXPECT_EQ(g->name, u"G");
    EXPECT_EQ(g->Path(), rootPath + u"/G");
    EXPECT_TRUE(g->boutique);
    EXPECT_EQ(g->parent, store.root);

    GalleryNode* c = AddClass(g, u"C", 1, u"");
    AddBlock(c, u"x.dwg", 1, false);
    c->fileChildren.push_back(nullptr);
    DestroySubtree(g);
    EXPECT_TRUE(g->dirChildren.empty());
    EXPECT_TRUE(g->name.empty());
    EXPECT_TRUE(g->Path().empty());
    // The caller frees the node itself; the sanitizer build checks that nothing below leaked.
    store.root->dirChildren.clear();
    delete g;
}

}  // namespace
}  // namespace marrowfin::test
