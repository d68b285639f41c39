#include <gtest/gtest.h>

#include "store/usage_lists.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Tree = StoreFixture;
using Nodes = std::vector<GalleryNode*>;

GalleryNode* Entry(const std::u16string& owner, const GalleryNode* block, GalleryNode* parent, bool front) {
    auto* n = new GalleryNode(owner, block->Path(), block->name.view().substr(0, 4), kKindFile, false, false, 0);
    AddChild(parent, n, front);
    return n;
}

TEST_F(Tree, ChildrenLookupsAndFilters) {
    GalleryNode orphan(u"", u"/r", kRootName, kKindDir, false, false, 0);
    orphan.parent = store.root;
    EXPECT_TRUE(IsRoot(*store.root));
    EXPECT_FALSE(IsRoot(orphan));  // the name alone does not make a root
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c1 = AddClass(g, u"C1", 1, u"");
    GalleryNode* c2 = AddClass(g, u"C2", 1, u"");
    GalleryNode* door = AddBlock(c1, u"DoorFrame.dwg", 1, false);
    GalleryNode* win = AddBlock(c1, u"Window.dwg", 1, false);
    GalleryNode* cn = AddBlock(c2, u"木门OOR.dwg", 1, false);
    // Common-use and recent entries for the same blocks, ahead of them in the walk.
    GalleryNode* common = Entry(kCommonUseTag, door, g, true);
    GalleryNode* recent = Entry(kRootName, win, store.root, true);
    EXPECT_EQ(g->fileChildren, Nodes{common});
    EXPECT_FALSE(AddChild(c2, nullptr, true));
    EXPECT_EQ(recent->parent, store.root);
    c1->fileChildren.push_back(nullptr);  // null slots are skipped by every walk
    g->dirChildren.insert(g->dirChildren.begin(), nullptr);

    EXPECT_EQ(FindNodeByPath(store.root, c2->Path()), c2);
    EXPECT_EQ(FindNodeByPath(store.root, rootPath), store.root);
    for (const std::u16string& path : {door->Path(), c1->Path() + u"/", rootPath + u"/g/C2"})
        EXPECT_EQ(FindNodeByPath(store.root, path), nullptr) << U8(path);  // dirs only, whole and case-sensitive
    EXPECT_EQ(FindBlockByPath(store.root, win->Path(), true), win);
    EXPECT_EQ(FindBlockByPath(store.root, win->Path(), false), recent);
    EXPECT_EQ(FindBlockByPath(g, door->Path(), true), door);  // the common-use entry is never the answer
    GalleryNode only(u"C2", rootPath + u"/G/C2/only.dwg", u"only", kKindFile, false, false, 0);
    Entry(kCommonUseTag, &only, g, false);
    EXPECT_EQ(FindBlockByPath(store.root, only.Path(), true), nullptr);
    EXPECT_EQ(FindBlockByPath(store.root, u"", true), nullptr);

    const std::tuple<GalleryNode*, const char16_t*, bool, Nodes> filters[] = {
        {store.root, u"oOr", false, {door, cn}},  // folds case, skips common-use entries
        {store.root, u"", false, {recent, door, win, cn}},
        {store.root, u"", true, {door, win, cn}},  // from the top: the recent list is left out
        {g, u"win", true, {win}},
        {common, u"door", true, {common}},  // given directly, a common-use entry counts from the top only
        {door, u"door", true, {}},
        {common, u"door", false, {}},
        {door, u"DOOR", false, {door}},
        {store.root, u"木门o", false, {cn}},
    };
    for (const auto& [from, text, top, expected] : filters) {
        Nodes out;
        (top ? FilterBlocksFromTop : FilterBlocks)(from, text, out);
        EXPECT_EQ(out, expected) << U8(text) << " from " << U8(from->name);
    }
    g->dirChildren.erase(g->dirChildren.begin());
    c1->fileChildren.pop_back();

    // RemoveChild takes the first of the name, of its kind, and frees nothing.
    GalleryNode* a1 = AddBlock(c2, u"a.dwg", 1, false);
    GalleryNode* a2 = AddBlock(c2, u"a.dwg", 2, false);
    EXPECT_FALSE(RemoveChild(c2, c1));
    EXPECT_TRUE(RemoveChild(c2, a2));
    EXPECT_EQ(c2->fileChildren, (Nodes{cn, a2}));
    EXPECT_EQ(a1->parent, nullptr);
    delete a1;
}

TEST_F(Tree, RenameNode) {
    GalleryNode* c = AddClass(AddGallery(u"G"), u"C", 1, u"");
    GalleryNode* b = AddBlock(c, u"a.b.dwg", 1, false);
    GalleryNode* sub = new GalleryNode(u"C", c->Path() + u"/S", u"S", kKindDir, false, false, 0);
    AddChild(c, sub, false);
    GalleryNode* deep = AddBlock(sub, u"d.dwg", 1, false);
    GalleryNode* plain = AddBlock(c, u"noext", 1, false);
    auto* dotted = new GalleryNode(u"x", u"/r/a.b/file", u"file", kKindFile, false, false, 0);
    AddChild(sub, dotted, false);

    RenameNode(c, u"New");  // children follow one level down, keeping their names
    RenameNode(b, u"z");    // the old extension with its dot stays
    RenameNode(plain, u"other");   // no extension: unchanged
    RenameNode(dotted, u"other");  // a dot before the last separator is no extension
    RenameNode(store.root, u"Elsewhere");
    const std::pair<GalleryNode*, std::u16string> expected[] = {
        {c, u"New|" + rootPath + u"/G/New"}, {b, u"z|" + rootPath + u"/G/New/z.dwg"},
        {sub, u"S|" + rootPath + u"/G/C/S"}, {deep, u"d.dwg|" + rootPath + u"/G/C/S/d.dwg"},
        {plain, u"noext|" + rootPath + u"/G/New/noext"}, {dotted, u"file|/r/a.b/file"},
        {store.root, std::u16string(kRootName) + u"|" + rootPath},
    };
    for (const auto& [node, text] : expected) EXPECT_EQ(node->name + u"|" + node->Path(), text);
}

TEST_F(Tree, RebuildKeepsOldClassesAndMarksNewOnesStale) {
    GalleryNode* g = AddGallery(u"G", true);
    GalleryNode* old1 = AddClass(g, u"One", 1, u"u1");
    AddBlock(old1, u"a.dwg", 1, false);
    GalleryNode* old2 = AddClass(g, u"Two", 5, u"u2");
    AddClass(g, u"Gone", 1, u"u3");
    auto cand = [&](const std::u16string& n, int v) {
        auto* c = new GalleryNode(g->name, g->Path() + u"/" + n, n, kKindDir, false, false, 0);
        c->version = v;
        return c;
    };
    // The server's order: Three (new), Two (same version), One (newer).
    RebuildClassList(store, g, {cand(u"Three", 2), cand(u"Two", 5), nullptr, cand(u"One", 4)});
    ASSERT_EQ(g->dirChildren.size(), 3u);
    EXPECT_EQ(g->dirChildren[0]->name, u"Three");
    EXPECT_EQ(g->dirChildren[1], old2);
    EXPECT_EQ(g->dirChildren[2], old1);
    EXPECT_EQ(old1->fileChildren.size(), 1u);  // kept as it was, blocks and version
    EXPECT_EQ(old1->version, 1);
    EXPECT_EQ(store.staleClasses, (std::map<std::u16string, int32_t>{{g->Path() + u"/Three", 2}, {g->Path() + u"/One", 4}}));

    ClearChildren(g);  // the sanitizer build checks that nothing below leaked
    EXPECT_TRUE(g->dirChildren.empty() && g->fileChildren.empty() && g->boutique);
    EXPECT_EQ(g->name + g->Path(), u"G" + rootPath + u"/G");
}

}  // namespace
}  // namespace marrowfin::test
