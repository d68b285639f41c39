// The offline search over a library of 101 galleries x 30 classes x 100
// blocks, against a flat scan of the same names with the same folded test,
// for a text with few hits and one with many. The hits' files lie on disk,
// so the search's file test is paid as in use; a second peer adds that test
// to the flat scan. The ratios are printed at the end.

#include <benchmark/benchmark.h>

#include "ratio_main.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/text.h"
#include "search/local_search.h"
#include "store/gallery_node.h"
#include "store/gallery_tree.h"

namespace marrowfin {
namespace {

namespace fs = std::filesystem;

constexpr int kGalleries = 101, kClasses = 30, kBlocks = 100;
const std::u16string kFew = u"_7_3_1";  // gallery 7, class 3, blocks 1 and 10 to 19
const std::u16string kMany = u"door";  // one block in twelve

std::u16string Num(int n) { return Utf8ToUtf16(std::to_string(n)); }

std::u16string BlockName(int g, int c, int b) {
    static const char16_t* words[] = {u"Door", u"Window", u"Chair", u"Table", u"Sofa", u"Bed",
                                      u"Lamp", u"Sink",   u"门窗",  u"座椅",  u"桌子", u"灯具"};
    return std::u16string(words[(g * 7 + c * 3 + b) % 12]) + u"_" + Num(g) + u"_" + Num(c) + u"_" + Num(b) + u".dwg";
}

struct Library {
    Library() {
        std::string dir = (fs::temp_directory_path() / "marrowfin-bench-search-XXXXXX").string();
        if (!mkdtemp(dir.data())) std::abort();
        folder = dir;
        const std::u16string rootPath = Utf8ToUtf16(dir) + u"/" + kRootName;
        root = new GalleryNode(u"", rootPath, kRootName, kKindDir, false, false, 0);
        for (int g = 0; g < kGalleries; ++g) {
            const std::u16string gname = u"图库" + Num(g);
            auto* gallery = new GalleryNode(kRootName, rootPath + u"/" + gname, gname, kKindDir, false, g % 5 == 0, 0);
            AddChild(root, gallery, false);
            for (int c = 0; c < kClasses; ++c) {
                const std::u16string cname = u"Class " + Num(c);
                auto* cls = new GalleryNode(gname, gallery->Path() + u"/" + cname, cname, kKindDir, false, false, 0);
                AddChild(gallery, cls, false);
                bool made = false;
                for (int b = 0; b < kBlocks; ++b) {
                    GalleryNode* block = NewBlock(BlockName(g, c, b), false, false, 20480);
                    AddChild(cls, block, false);
                    names.push_back(block->name);
                    paths.push_back(block->Path());
                    // Only hits need a file: the search tests no other.
                    if (!ContainsFolded(block->name, kFew) && !ContainsFolded(block->name, kMany)) continue;
                    if (!made) made = CreateDirectories(cls->Path());
                    std::ofstream(NativePath(block->Path())).put('x');
                }
            }
        }
        // A store as users search it: not written in the last moments. A
        // folder written less than two seconds before a search is listed
        // again at each search (see FolderFiles).
        std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    }
    ~Library() {
        SubtreeDeleter()(root);
        std::error_code ec;
        fs::remove_all(folder, ec);
    }
    GalleryNode* root;
    std::string folder;
    std::vector<std::u16string> names, paths;
};

Library& Lib() {
    static Library library;
    return library;
}

void LocalSearch(benchmark::State& state, const std::u16string& text) {
    Library& lib = Lib();
    const std::map<std::u16string, int> collected;
    size_t hits = 0;
    for (auto _ : state) {
        std::vector<SearchHit> rows = LocalBlockSearch(lib.root, text, collected);
        hits = rows.size();
        benchmark::DoNotOptimize(rows.data());
    }
    state.counters["hits"] = static_cast<double>(hits);
}

// The first stage alone: the walk that finds the hits in the tree.
void TreeFilter(benchmark::State& state, const std::u16string& text) {
    Library& lib = Lib();
    std::vector<GalleryNode*> found;
    for (auto _ : state) {
        found.clear();
        FilterBlocksFromTop(lib.root, text, found);
        benchmark::DoNotOptimize(found.data());
    }
    state.counters["hits"] = static_cast<double>(found.size());
}

// Peer: the names in one vector, the same folded comparison.
void FlatScan(benchmark::State& state, const std::u16string& text, bool fileTest) {
    Library& lib = Lib();
    std::vector<size_t> out;
    for (auto _ : state) {
        out.clear();
        for (size_t i = 0; i < lib.names.size(); ++i)
            if (ContainsFolded(lib.names[i], text) && (!fileTest || FileExists(lib.paths[i]))) out.push_back(i);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["hits"] = static_cast<double>(out.size());
}

BENCHMARK_CAPTURE(LocalSearch, few, kFew)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FlatScan, few, kFew, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LocalSearch, many, kMany)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FlatScan, many, kMany, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(TreeFilter, many, kMany)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FlatScan, many_with_file_test, kMany, true)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace marrowfin

int main(int argc, char** argv) {
    return marrowfin::bench::RunWithRatios(argc, argv,
                                           {{"LocalSearch/few", "FlatScan/few"},
                                            {"LocalSearch/many", "FlatScan/many"},
                                            {"LocalSearch/many", "FlatScan/many_with_file_test"}});
}
