// The gallery tree at its largest: 101 galleries x 30 classes x 100 blocks.
// Lookups and filters are measured beside a flat peer in the same run, and
// the ratios are printed at the end.

#include <benchmark/benchmark.h>

#include "ratio_main.h"
#include <malloc.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "platform/text.h"
#include "store/gallery_node.h"
#include "store/gallery_tree.h"

namespace {

// Heap bytes in use, for the memory the tree takes.
std::atomic<int64_t> g_heapBytes{0};

}  // namespace

// Counted global allocation; malloc_usable_size gives what each block really holds.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t n) {
    void* p = std::malloc(n ? n : 1);
    if (!p) throw std::bad_alloc();
    g_heapBytes += static_cast<int64_t>(malloc_usable_size(p));
    return p;
}
void operator delete(void* p) noexcept {
    if (!p) return;
    g_heapBytes -= static_cast<int64_t>(malloc_usable_size(p));
    std::free(p);
}
#pragma GCC diagnostic pop
void operator delete(void* p, size_t) noexcept { operator delete(p); }

namespace marrowfin {
namespace {

constexpr int kGalleries = 101;
constexpr int kClasses = 30;
constexpr int kBlocks = 100;
constexpr int kTotalBlocks = kGalleries * kClasses * kBlocks;
const std::u16string kRootPath = u"/home/user/Documents/Orsolen";

std::u16string Num(int n) { return Utf8ToUtf16(std::to_string(n)); }

// Block names as the service gives them: a word, Latin or Chinese, and a number.
std::u16string BlockName(int g, int c, int b) {
    static const char16_t* words[] = {u"Door", u"Window", u"Chair", u"Table", u"Sofa", u"Bed",
                                      u"Lamp", u"Sink",   u"门窗",  u"座椅",  u"桌子", u"灯具"};
    return std::u16string(words[(g * 7 + c * 3 + b) % 12]) + u"_" + Num(g) + u"_" + Num(c) + u"_" + Num(b) + u".dwg";
}

GalleryNode* BuildTree() {
    auto* root = new GalleryNode(u"", kRootPath, kRootName, kKindDir, false, false, 0);
    for (int g = 0; g < kGalleries; ++g) {
        const std::u16string gname = u"图库" + Num(g);
        auto* gallery = new GalleryNode(kRootName, kRootPath + u"/" + gname, gname, kKindDir, false, false, 0);
        AddChild(root, gallery, false);
        for (int c = 0; c < kClasses; ++c) {
            const std::u16string cname = u"Class " + Num(c);
            auto* cls = new GalleryNode(gname, gallery->Path() + u"/" + cname, cname, kKindDir, false, false, 0);
            cls->remoteBase = u"https://files.example.com/gallery/" + Num(g) + u"/" + Num(c);
            AddChild(gallery, cls, false);
            for (int b = 0; b < kBlocks; ++b) {
                const std::u16string fn = BlockName(g, c, b);
                AddChild(cls, NewBlock(fn, false, false, 20480), false);
            }
        }
    }
    return root;
}

struct Fixture {
    Fixture() {
        const int64_t before = g_heapBytes.load();
        root = BuildTree();
        treeBytes = g_heapBytes.load() - before;
        const int64_t flatBefore = g_heapBytes.load();
        names.reserve(kTotalBlocks);
        paths.reserve(kTotalBlocks);
        for (GalleryNode* g : root->dirChildren)
            for (GalleryNode* c : g->dirChildren)
                for (GalleryNode* b : c->fileChildren) {
                    names.push_back(b->name);
                    paths.push_back(b->Path());
                }
        flatBytes = g_heapBytes.load() - flatBefore;
        const GalleryNode* lastClass = root->dirChildren.back()->dirChildren.back();
        lastPath = lastClass->fileChildren.back()->Path();
    }
    GalleryNode* root;
    int64_t treeBytes = 0;
    int64_t flatBytes = 0;
    std::vector<std::u16string> names;
    std::vector<std::u16string> paths;
    std::u16string lastPath;
};

Fixture& Tree() {
    static Fixture f;
    return f;
}

void BM_FindBlockByPath_Last(benchmark::State& state) {
    Fixture& f = Tree();
    for (auto _ : state) benchmark::DoNotOptimize(FindBlockByPath(f.root, f.lastPath, true));
}
BENCHMARK(BM_FindBlockByPath_Last)->Unit(benchmark::kMicrosecond);

void BM_FindBlockByPath_Absent(benchmark::State& state) {
    Fixture& f = Tree();
    const std::u16string absent = f.lastPath + u"x";
    for (auto _ : state) benchmark::DoNotOptimize(FindBlockByPath(f.root, absent, true));
}
BENCHMARK(BM_FindBlockByPath_Absent)->Unit(benchmark::kMicrosecond);

// Peer: the same path looked up in a flat vector of every block's path.
void BM_FlatPathScan_Last(benchmark::State& state) {
    Fixture& f = Tree();
    for (auto _ : state) {
        const std::u16string* hit = nullptr;
        for (const auto& p : f.paths)
            if (p == f.lastPath) {
                hit = &p;
                break;
            }
        benchmark::DoNotOptimize(hit);
    }
}
BENCHMARK(BM_FlatPathScan_Last)->Unit(benchmark::kMicrosecond);

const std::u16string kFilterText = u"OO";  // two characters, folded: matches "Door"

void BM_FilterBlocks(benchmark::State& state) {
    Fixture& f = Tree();
    std::vector<GalleryNode*> out;
    for (auto _ : state) {
        out.clear();
        FilterBlocks(f.root, kFilterText, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["hits"] = static_cast<double>(out.size());
}
BENCHMARK(BM_FilterBlocks)->Unit(benchmark::kMicrosecond);

// Peer: the same names in one vector, the same folded comparison.
void BM_FlatNameScan(benchmark::State& state) {
    Fixture& f = Tree();
    std::vector<const std::u16string*> out;
    for (auto _ : state) {
        out.clear();
        for (const auto& n : f.names)
            if (ContainsFolded(n, kFilterText)) out.push_back(&n);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["hits"] = static_cast<double>(out.size());
}
BENCHMARK(BM_FlatNameScan)->Unit(benchmark::kMicrosecond);

void BM_TreeMemory(benchmark::State& state) {
    Fixture& f = Tree();
    for (auto _ : state) benchmark::DoNotOptimize(f.treeBytes);
    state.counters["tree_bytes_per_block"] = static_cast<double>(f.treeBytes) / kTotalBlocks;
    state.counters["flat_name_and_path_bytes_per_block"] = static_cast<double>(f.flatBytes) / kTotalBlocks;
    state.counters["node_struct_bytes"] = sizeof(GalleryNode);
}
BENCHMARK(BM_TreeMemory)->Iterations(1);

}  // namespace
}  // namespace marrowfin

int main(int argc, char** argv) {
    return marrowfin::bench::RunWithRatios(argc, argv,
                                           {{"BM_FilterBlocks", "BM_FlatNameScan"},
                                            {"BM_FindBlockByPath_Last", "BM_FlatPathScan_Last"},
                                            {"BM_FindBlockByPath_Absent", "BM_FlatPathScan_Last"}});
}
