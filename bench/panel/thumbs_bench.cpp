// Painting one frame of the thumbnail grid: a class of 10,000 blocks scrolled
// to the middle with every shown preview loaded, beside the same widget
// painting its cells with names only. Also the heap the grid holds per item.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "panel/lists/dwg_list_view.h"
#include "skin/skin_scale.h"

namespace {

using namespace marrowfin;

constexpr int kItems = 10000;
constexpr int kDistinctFiles = 64;

std::string Slurp(const char* name) {
  std::ifstream in(std::string(MARROWFIN_DWG_TESTDATA) + "/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// One grid over 10,000 paths (cycling over a few real drawings), scrolled to
// the middle and painted once so the shown previews are in its cache.
struct Grid {
  QTemporaryDir dir;
  std::unique_ptr<CDWGListView> view;
  QImage frame;
  size_t heapPerItem = 0;
  int cached = 0;

  Grid() {
    const std::string drawing = Slurp("bmp8_ac1015.dwg");
    std::vector<std::u16string> paths;
    paths.reserve(kItems);
    for (int i = 0; i < kDistinctFiles; ++i) {
      std::ofstream(QDir(dir.path()).filePath(QString::asprintf("b%02d.dwg", i)).toStdString(), std::ios::binary)
          << drawing;
    }
    for (int i = 0; i < kItems; ++i)
      paths.push_back(QDir(dir.path()).filePath(QString::asprintf("b%02d.dwg", i % kDistinctFiles)).toStdU16String());

    view = std::make_unique<CDWGListView>();
    view->resize(ScaleUnits(617), ScaleUnits(343));
    frame = QImage(view->size(), QImage::Format_RGB32);
    const size_t before = mallinfo2().uordblks;
    view->SetPaths(paths);
    view->EnsureVisible(kItems / 2);
    Paint();
    heapPerItem = (mallinfo2().uordblks - before) / kItems;
    cached = view->CachedPictures();
  }
  void Paint() { view->render(&frame); }
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

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  SetSkinRateForTest(1.0f);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
