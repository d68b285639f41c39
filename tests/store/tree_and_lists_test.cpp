#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <thread>

#include "store/node_storage.h"
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

// Blocks are added as read in bulk (name only): their path, owner and URL follow the class
// on every road that looks at them.
TEST_F(Tree, ChildrenAndLookups) {
    GalleryNode orphan(u"", u"/r", kRootName, kKindDir, false, false, 0);
    orphan.parent = store.root;
    EXPECT_TRUE(IsRoot(*store.root) && !IsRoot(orphan));  // the name alone does not make a root
    GalleryNode* g = AddGallery(u"G");
    GalleryNode* c1 = AddClass(g, u"C1", 1, u"http://h/c1");
    GalleryNode* c2 = AddClass(g, u"C2", 1, u"");
    GalleryNode* door = AddBlock(c1, u"DoorFrame.dwg", 1, false);
    GalleryNode* win = AddBlock(c1, u"Window.dwg", 1, false);
    GalleryNode* cn = AddBlock(c2, u"木门OOR.dwg", 1, false);
    EXPECT_TRUE(door->OwnerName() == u"C1" && DownloadUrl(*door) == u"http://h/c1/DoorFrame.dwg" &&
                door->PathIs(rootPath + u"/G/C1/DoorFrame.dwg"));
    for (const std::u16string& other : {rootPath + u"/G/C1xDoorFrame.dwg", rootPath + u"/G/C1/xDoorFrame.dwg", rootPath + u"/G/C1/"})
        EXPECT_FALSE(door->PathIs(other)) << Utf16ToUtf8(other);  // the slash and the whole last name count
    // Common-use and recent entries for the same blocks, ahead of them in the walk.
    GalleryNode* common = Entry(kCommonUseTag, door, g, true);
    GalleryNode* recent = Entry(kRootName, win, store.root, true);
    EXPECT_TRUE(g->fileChildren == Nodes{common} && recent->parent == store.root && !AddChild(c2, nullptr, true));
    c1->fileChildren.push_back(nullptr);  // null slots are skipped by every walk
    g->dirChildren.insert(g->dirChildren.begin(), nullptr);

    EXPECT_EQ(std::make_pair(FindNodeByPath(store.root, c2->Path()), FindNodeByPath(store.root, rootPath)), std::make_pair(c2, store.root));
    for (const std::u16string& path : {door->Path(), c1->Path() + u"/", rootPath + u"/g/C2"})
        EXPECT_EQ(FindNodeByPath(store.root, path), nullptr) << Utf16ToUtf8(path);  // dirs only, whole and case-sensitive
    GalleryNode only(u"C2", rootPath + u"/G/C2/only.dwg", u"only", kKindFile, false, false, 0);
    Entry(kCommonUseTag, &only, g, false);
    const std::tuple<GalleryNode*, std::u16string, bool, GalleryNode*> blocks[] = {
        {store.root, win->Path(), true, win},
        {store.root, win->Path(), false, recent},
        {g, door->Path(), true, door},  // the common-use entry is never the answer
        {store.root, only.Path(), true, nullptr},
        {store.root, u"", true, nullptr},
    };
    for (const auto& [from, path, skipRoot, expected] : blocks)
        EXPECT_EQ(FindBlockByPath(from, path, skipRoot), expected) << Utf16ToUtf8(path) << skipRoot;

    // (FilterBlocks and FilterBlocksFromTop have no caller in the library: not checked.)

    // RemoveChild takes the first of the name, of its kind, and frees nothing.
    GalleryNode *a1 = AddBlock(c2, u"a.dwg", 1, false), *a2 = AddBlock(c2, u"a.dwg", 2, false);
    EXPECT_TRUE(!RemoveChild(c2, c1) && RemoveChild(c2, a2) && c2->fileChildren == (Nodes{cn, a2}) && a1->parent == nullptr);
    delete a1;
}

// Renames and removals, read through the whole tree afterwards: a renamed block keeps its
// extension and the URL of its old name, a renamed class carries its blocks along, and a
// block taken out keeps its path, owner and URL without a parent.
TEST_F(Tree, RenameAndRemove) {
    GalleryNode* c = AddClass(AddGallery(u"G"), u"C", 1, u"http://h/c");
    GalleryNode* b = AddBlock(c, u"a.b.dwg", 1, false);
    GalleryNode* out = AddBlock(c, u"out.dwg", 2, true);
    GalleryNode* sub = new GalleryNode(u"C", c->Path() + u"/S", u"S", kKindDir, false, false, 0);
    AddChild(c, sub, false);
    AddBlock(sub, u"d.dwg", 1, false);
    GalleryNode* plain = new GalleryNode(u"C", c->Path() + u"/noext", u"noext", kKindFile, false, false, 3);
    AddChild(c, plain, false);
    auto* dotted = new GalleryNode(u"x", u"/r/a.b/file", u"file", kKindFile, false, false, 0);
    AddChild(sub, dotted, false);

    RenameNode(b, u"z");  // the old extension with its dot stays
    RenameNode(c, u"New");  // children follow one level down, keeping their names
    RenameNode(plain, u"other");  // no extension: unchanged
    RenameNode(dotted, u"other");  // a dot before the last separator is no extension
    RenameNode(store.root, u"Elsewhere");
    EXPECT_TRUE(FindBlockByPath(store.root, rootPath + u"/G/New/z.dwg", true) == b &&
                FindBlockByPath(store.root, rootPath + u"/G/New/out.dwg", true) == out);
    ASSERT_TRUE(RemoveChild(c, out));
    OwnedNode taken(out);
    EXPECT_EQ(taken->parent, nullptr);
    EXPECT_EQ(RootAsR(DumpTree(taken.get()) + DumpTree(store.root), rootPath),
              u"New|out.dwg|R/G/New/out.dwg|file|http://h/c/out.dwg|0|2|h|-\n"
              u"|Orsolen|R|dir||0|0|-|-\n"
              u"  Orsolen|G|R/G|dir||0|0|-|-\n"
              u"    G|New|R/G/New|dir|http://h/c|1|0|-|-\n"
              u"      C|z|R/G/New/z.dwg|file|http://h/c/a.b.dwg|0|1|-|-\n"
              u"      C|noext|R/G/New/noext|file||0|3|-|-\n"
              u"      C|S|R/G/C/S|dir||0|0|-|-\n"
              u"        S|d.dwg|R/G/C/S/d.dwg|file|/d.dwg|0|1|-|-\n"
              u"        x|file|/r/a.b/file|file||0|0|-|-\n");
}

// Node texts are deep copies that survive assignment from themselves; child arrays keep
// their order through inserts, erasures and growth.
TEST(NodeStorage, TextsAndChildArrays) {
    NodeText text(u"门窗_1.dwg"), empty;
    NodeText copy = text;
    EXPECT_TRUE(empty.empty() && empty == u"" && copy.data() != text.data() && copy == text);
    copy = copy;
    copy = std::u16string_view(copy).substr(2);  // assigned from a view of itself
    EXPECT_TRUE(copy == u"_1.dwg" && copy < text);
    EXPECT_EQ(u"/" + NodeText(std::move(text)), u"/门窗_1.dwg");

    std::vector<GalleryNode> nodes(40);
    ChildArray children;
    for (auto& n : nodes) children.push_back(&n);
    children.insert(children.begin() + 1, &nodes[39]);
    children.erase(children.end() - 1);
    children.erase(children.begin() + 2, children.begin() + 40);
    EXPECT_EQ(children, (Nodes{&nodes[0], &nodes[39]}));
    ChildArray kept = children;
    EXPECT_TRUE(kept == std::exchange(children, {}) && children.empty());
    EXPECT_THROW((void)kept.at(2), std::out_of_range);
}

// The tree's storage: pieces made on one thread and freed on another are
// whole, distinct and used again, as a generation freed beside the next
// one's build does.
TEST(NodeStorage, PiecesCrossThreadsWithoutOverlapAndComeBack) {
    constexpr size_t kPieces = 20000;
    auto make = [&] {
        std::vector<std::pair<void*, size_t>> pieces;
        for (size_t i = 0; i < kPieces; ++i) {
            const size_t bytes = 1 + (i * 7) % 200;  // every class, and some beyond the largest
            auto* p = static_cast<unsigned char*>(node_storage::Allocate(bytes));
            std::memset(p, static_cast<int>(i & 0xff), bytes);
            pieces.emplace_back(p, bytes);
        }
        return pieces;
    };
    const size_t inUse = node_storage::BytesInUse();
    auto first = make();
    const size_t slabs = node_storage::SlabBytes();
    // Freed on another thread, after every piece was checked: a piece handed
    // out twice would carry another's pattern.
    std::thread([&] {
        for (size_t i = 0; i < first.size(); ++i) {
            const auto* p = static_cast<const unsigned char*>(first[i].first);
            for (size_t b = 0; b < first[i].second; ++b) ASSERT_EQ(p[b], i & 0xff) << i;
        }
        for (auto [p, bytes] : first) node_storage::Free(p, bytes);
    }).join();
    EXPECT_EQ(node_storage::BytesInUse(), inUse);
    // The next generation takes the freed pieces instead of new slabs.
    auto second = make();
    EXPECT_EQ(node_storage::SlabBytes(), slabs);
    for (auto [p, bytes] : second) node_storage::Free(p, bytes);
    EXPECT_EQ(node_storage::BytesInUse(), inUse);

    // A thread that ends holding pieces, past what the shared lists had, so
    // that it cut a slab of its own: its pieces stay counted, and the part of
    // its slab it never handed out goes to others without overlapping them.
    constexpr size_t kHeld = 5000;
    std::vector<void*> held;
    auto fill = [](std::vector<void*>& pieces, size_t count, int mark) {
        for (size_t i = 0; i < count; ++i) {
            pieces.push_back(node_storage::Allocate(40));
            std::memset(pieces.back(), mark, 40);
        }
    };
    std::thread([&] { fill(held, kHeld, 0xA5); }).join();
    const bool pooled = node_storage::SlabBytes() != 0;  // not under AddressSanitizer
    if (pooled) { EXPECT_EQ(node_storage::BytesInUse(), inUse + kHeld * 48); }
    std::vector<void*> others;
    std::thread([&] { fill(others, 2000, 0x5A); }).join();
    for (void* p : held)
        for (size_t b = 0; b < 40; ++b) ASSERT_EQ(static_cast<const unsigned char*>(p)[b], 0xA5);
    std::vector<const char*> all;
    for (void* p : held) all.push_back(static_cast<const char*>(p));
    for (void* p : others) all.push_back(static_cast<const char*>(p));
    std::sort(all.begin(), all.end());
    for (size_t i = 1; i < all.size(); ++i) ASSERT_GE(all[i] - all[i - 1], 40) << "pieces overlap";
    for (void* p : held) node_storage::Free(p, 40);
    for (void* p : others) node_storage::Free(p, 40);
    EXPECT_EQ(node_storage::BytesInUse(), inUse);
}

TEST_F(Tree, RebuildKeepsOldClassesAndMarksNewOnesStale) {
    GalleryNode* g = AddGallery(u"G", true);
    GalleryNode *old1 = AddClass(g, u"One", 1, u"u1"), *old2 = AddClass(g, u"Two", 5, u"u2");
    AddBlock(old1, u"a.dwg", 1, false);
    AddClass(g, u"Gone", 1, u"u3");
    auto cand = [&](const std::u16string& n, int v) {
        auto* c = new GalleryNode(g->name, g->Path() + u"/" + n, n, kKindDir, false, false, 0);
        c->version = v;
        return c;
    };
    // The server's order: Three (new), Two (same version), One (newer).
    RebuildClassList(store, g, {cand(u"Three", 2), cand(u"Two", 5), nullptr, cand(u"One", 4)});
    ASSERT_EQ(g->dirChildren.size(), 3u);
    EXPECT_TRUE(g->dirChildren[0]->name == u"Three" && g->dirChildren[1] == old2 && g->dirChildren[2] == old1);
    EXPECT_EQ(std::make_pair(old1->fileChildren.size(), old1->version), std::make_pair(size_t{1}, 1));  // kept as it was
    EXPECT_EQ(store.staleClasses, (std::map<std::u16string, int32_t>{{g->Path() + u"/Three", 2}, {g->Path() + u"/One", 4}}));

    ClearChildren(g);  // the sanitizer build checks that nothing below leaked
    EXPECT_TRUE(g->dirChildren.empty() && g->fileChildren.empty() && g->boutique && g->name + g->Path() == u"G" + rootPath + u"/G");
}

// The recent and common-use lists.
using Lists = StoreFixture;

const std::string kHead = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r";
const std::string kTail = "</root>\r";

std::string ListOf(const std::vector<std::u16string>& paths) {
    std::string s = kHead;
    for (const auto& p : paths) s += "<Item path=\"" + Utf16ToUtf8(p) + "\" />\r";
    return s + kTail;
}

std::vector<std::u16string> Paths(const std::vector<GalleryNode*>& nodes) {
    std::vector<std::u16string> out;
    for (auto* n : nodes) out.push_back(n->Path());
    return out;
}

// Remember, save, load (filtered), reload: the recent list and the common-use lists on disk.
TEST_F(Lists, ExactBytesTheLimitAndTheRecentAndCommonListsThroughTheirFilesBrokenOrNot) {
    // The exact bytes, and the limit of 500.
    GalleryNode one(kRootName, u"/d/Orsolen/G/C/a.dwg", u"a", kKindFile, false, false, 0);
    GalleryNode two(kRootName, u"/d/x&y/门.DWG", u"门", kKindFile, false, false, 0);
    EXPECT_EQ(ComposeListFile({&one, nullptr, &two}), ReadBytes(SourceDir() + "/tests/store/data/two_entries.xml"));
    // 501 entries: the last (oldest) is dropped.
    std::vector<GalleryNode> nodes;
    nodes.reserve(501);
    std::vector<GalleryNode*> all;
    for (int i = 0; i < 501; ++i)
        all.push_back(&nodes.emplace_back(kRootName, u"/p/" + Utf8ToUtf16(std::to_string(i)), u"", kKindFile, false, false, 0));
    std::vector<std::u16string> first500 = Paths(all);
    first500.pop_back();
    EXPECT_EQ(ComposeListFile(all), ListOf(first500));

    const std::u16string a = rootPath + u"/G/C/a.dwg", b = rootPath + u"/G/C/b.dwg", upper = rootPath + u"/G/C.x/Up.v2.DWG";
    GalleryNode *g = AddGallery(u"G"), *mine = AddGallery(u"我的收藏"), *empty = AddGallery(u"Empty");
    AddChild(g, new GalleryNode(kCommonUseTag, b, u"b", kKindFile, false, false, 0), false);
    AddChild(mine, new GalleryNode(kCommonUseTag, a, u"a", kKindFile, false, false, 0), false);
    for (auto* n : {g, mine, empty}) CreateDirectories(n->Path());
    RememberRecent(store, upper, u"Up");
    RememberRecent(store, b, u"b");
    // A stray duplicate, as an older list could hold: every copy goes to the front once.
    AddChild(store.root, new GalleryNode(kRootName, upper, u"Up", kKindFile, false, false, 0), false);
    RememberRecent(store, upper, u"Up");
    RememberRecent(store, a, u"a");
    EXPECT_TRUE(Paths(store.root->fileChildren) == (std::vector<std::u16string>{a, upper, b}) &&
                store.root->fileChildren[0]->parent == store.root);

    // A read-only old file is replaced all the same; collections keep no common-use list.
    WriteBytes(Utf16ToUtf8(rootPath + u"/RecentlyUse.xml"), "old");
    chmod(Utf16ToUtf8(rootPath + u"/RecentlyUse.xml").c_str(), 0444);
    SaveRecentList(store);
    EXPECT_EQ(ReadBytes(Utf16ToUtf8(rootPath + u"/RecentlyUse.xml")), ListOf({a, upper, b}));
    EXPECT_EQ(ReadBytes(Utf16ToUtf8(g->Path() + u"/CommonUse.xml")) + ReadBytes(Utf16ToUtf8(empty->Path() + u"/CommonUse.xml")),
              ListOf({b}) + ListOf({}));
    EXPECT_FALSE(FileExists(mine->Path() + u"/CommonUse.xml"));

    // Loading keeps the file's order and drops empty, missing and non-block entries.
    for (const std::u16string& file : {a, upper, rootPath + u"/G/C/notes.txt"}) Touch(file);
    WriteBytes(Utf16ToUtf8(rootPath + u"/RecentlyUse.xml"), ListOf({upper, u"", b, rootPath + u"/G/C/notes.txt", a}));
    ReloadRecentList(store);  // replaces what is in memory
    // The name goes up to the last dot of the last name.
    EXPECT_TRUE(Paths(store.root->fileChildren) == (std::vector<std::u16string>{upper, a}) &&
                store.root->fileChildren[0]->name == u"Up.v2");

    // A gallery added to the tree reads its common-use list; a class does not.
    CreateDirectories(rootPath + u"/H/C");
    for (const char16_t* list : {u"/H/CommonUse.xml", u"/H/C/CommonUse.xml"}) WriteBytes(Utf16ToUtf8(rootPath + list), ListOf({a}));
    GalleryNode* h = AddGallery(u"H");
    ASSERT_EQ(h->fileChildren.size(), 1u);
    EXPECT_TRUE(h->fileChildren[0]->OwnerName() == kCommonUseTag && h->fileChildren[0]->name == u"a" &&
                AddClass(h, u"C", 1, u"")->fileChildren.empty());

    GalleryStore bare;  // no root: nothing, no crash
    RememberRecent(bare, a, u"a");
    SaveRecentList(bare);
    EXPECT_EQ(bare.root, nullptr);

    // Broken or missing files give empty lists.
    const std::string cases[] = {
        "missing",
        "",
        "not xml at all",
        kHead + "<Item path=\"" + Utf16ToUtf8(a) + "\" />\r",  // cut before </root>
        kHead.substr(0, kHead.size() - 7) + "<list><Item path=\"" + Utf16ToUtf8(a) + "\" /></list>\r",
    };
    for (const auto& bytes : cases) {
        const std::u16string file = rootPath + u"/RecentlyUse.xml";
        bytes == "missing" ? (void)RemoveFile(file) : WriteBytes(Utf16ToUtf8(file), bytes);
        ReloadRecentList(store);
        EXPECT_TRUE(store.root->fileChildren.empty()) << bytes;
    }
}

}  // namespace
}  // namespace marrowfin::test
