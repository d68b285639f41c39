// Painting one frame of the thumbnail grid: a class of 10,000 blocks scrolled
// to the middle with every shown preview in the cache, beside the same widget
// painting its cells with names only. Then the first frame of a fresh listing,
// whose previews are handed to the loader's workers (the cost the panel's
// thread pays), and the time until they are all back, beside reading the same
// cells one after another on one thread. Also the heap the grid holds per item.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "panel/lists/dwg_list_view.h"
#include "panel/preview/preview_loader.h"
#include "skin/skin_scale.h"

namespace {

using namespace marrowfin;

constexpr int kItems = 10000;
constexpr int kDistinctFiles = 64;

std::string Slurp(const char* name) {
    // The shared folder may lie elsewhere than beside the sources (a worktree).
    const QByteArray shared = qgetenv("MARROWFIN_SHARED_DIR");
    const std::string folder =
        shared.isEmpty() ? std::string(MARROWFIN_DWG_TESTDATA) : shared.toStdString() + "/testdata/dwg";
    std::ifstream in(folder + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// One grid over 10,000 paths (cycling over a few real drawings), scrolled to
// the middle and painted once so the shown previews are in its cache.
struct Grid {
    QTemporaryDir dir;
    std::vector<std::u16string> paths;
    std::unique_ptr<CDWGListView> view;
    QImage frame;
    size_t heapPerItem = 0;
    int cached = 0;

    Grid() {
        const std::string drawing = Slurp("bmp8_ac1015.dwg");
        if (drawing.size() < 4096) std::fprintf(stderr, "test drawing not found\n");
        paths.reserve(kItems);
        for (int i = 0; i < kDistinctFiles; ++i) {
            std::ofstream(QDir(dir.path()).filePath(QString::asprintf("b%02d.dwg", i)).toStdString(), std::ios::binary)
                << drawing;
        }
        for (int i = 0; i < kItems; ++i)
            paths.push_back(
                QDir(dir.path()).filePath(QString::asprintf("b%02d.dwg", i % kDistinctFiles)).toStdU16String());

        view = std::make_unique<CDWGListView>();
        view->resize(ScaleUnits(617), ScaleUnits(343));
        frame = QImage(view->size(), QImage::Format_RGB32);
        const size_t before = mallinfo2().uordblks;
        view->SetPaths(paths);
        view->EnsureVisible(kItems / 2);
        Paint();
        WaitForPreviews();
        heapPerItem = (mallinfo2().uordblks - before) / kItems;
        cached = view->CachedPictures();
    }
    void Paint() { view->render(&frame); }
    // Lets the loader's results in; false when they do not come.
    bool WaitForPreviews() {
        QElapsedTimer t;
        t.start();
        while (view->PreviewsPending() && t.elapsed() < 10000) {
            QCoreApplication::processEvents();
            // Leaves the cores to the workers: this thread stands for an idle panel.
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        QCoreApplication::processEvents();
        return !view->PreviewsPending();
    }
    int Shown() const { return view->LastVisibleItem() - view->FirstVisibleItem() + 1; }
};

Grid& Shared() {
    static Grid grid;
    return grid;
}

void BM_GridFrameWithPreviews(benchmark::State& state) {
    Grid& grid = Shared();
    grid.view->SetDrawPictures(true);
    grid.Paint();
    const int reads = grid.view->PreviewReads();
    for (auto _ : state) {
        grid.Paint();
        benchmark::ClobberMemory();
    }
    if (grid.view->PreviewReads() != reads) state.SkipWithError("a frame read a drawing again");
    state.counters["cells"] = grid.view->LastVisibleItem() - grid.view->FirstVisibleItem() + 1;
    state.counters["cached"] = grid.cached;
    state.counters["heap_per_item_B"] = static_cast<double>(grid.heapPerItem);
}
BENCHMARK(BM_GridFrameWithPreviews)->Unit(benchmark::kMicrosecond);

// The peer: the same widget, same range, cells with names but no pictures.
void BM_GridFramePlainCells(benchmark::State& state) {
    Grid& grid = Shared();
    grid.view->SetDrawPictures(false);
    for (auto _ : state) {
        grid.Paint();
        benchmark::ClobberMemory();
    }
    grid.view->SetDrawPictures(true);
}
BENCHMARK(BM_GridFramePlainCells)->Unit(benchmark::kMicrosecond);

// A fresh listing's first frame: placeholders painted, the shown range and
// its read-ahead handed to the workers. Compare with the plain cells above.
void BM_GridFirstFrameFresh(benchmark::State& state) {
    Grid& grid = Shared();
    for (auto _ : state) {
        grid.view->SetPaths(grid.paths);
        grid.view->EnsureVisible(kItems / 2);
        grid.Paint();
        benchmark::ClobberMemory();
    }
    if (!grid.WaitForPreviews()) state.SkipWithError("the previews did not come");
}
BENCHMARK(BM_GridFirstFrameFresh)->Unit(benchmark::kMicrosecond);

// From a fresh listing to every shown and read-ahead preview in the cache.
void BM_GridPreviewsArrive(benchmark::State& state) {
    Grid& grid = Shared();
    for (auto _ : state) {
        grid.view->SetPaths(grid.paths);
        grid.view->EnsureVisible(kItems / 2);
        grid.Paint();
        if (!grid.WaitForPreviews()) state.SkipWithError("the previews did not come");
    }
    state.counters["read"] = grid.view->CachedPictures();
}
BENCHMARK(BM_GridPreviewsArrive)->Unit(benchmark::kMillisecond)->UseRealTime();

// The peers: the shown cells (Arg 1) read and fitted in a row on one thread,
// as the first frame did on the panel's thread before; and the shown cells
// with their read-ahead (Arg 3 screens), as many as the loader reads.
void BM_ReadCellsInARow(benchmark::State& state) {
    Grid& grid = Shared();
    const int screens = static_cast<int>(state.range(0));
    const int cells = screens * grid.Shown();
    const int start = grid.view->FirstVisibleItem() - (screens - 1) / 2 * grid.Shown();
    for (auto _ : state) {
        for (int i = start; i < start + cells; ++i) {
            PreviewDecode decode = DecodeCellPreview(grid.paths[static_cast<size_t>(i)], Rate());
            benchmark::DoNotOptimize(decode.picture.constBits());
        }
    }
    state.counters["read"] = cells;
}
BENCHMARK(BM_ReadCellsInARow)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
