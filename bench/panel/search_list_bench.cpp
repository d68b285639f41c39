// Painting one frame of the result list: 1,000 search rows scrolled to the
// middle whose rows carry their own previews (the rows' thumbnails), beside
// the same list whose rows have none and draw the skin's placeholder.

#include <benchmark/benchmark.h>

#include <QImage>
#include <cstdio>
#include <memory>
#include <vector>

#include "panel/lists/search_list_ctrl.h"
#include "panel/preview/dwg_preview.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace {

using namespace marrowfin;

constexpr int kRows = 1000;

QString Drawing() {
    // The shared folder may lie elsewhere than beside the sources (a worktree).
    const QByteArray shared = qgetenv("MARROWFIN_SHARED_DIR");
    const QString folder = shared.isEmpty() ? QStringLiteral(MARROWFIN_DWG_TESTDATA)
                                            : QString::fromLocal8Bit(shared) + QStringLiteral("/testdata/dwg");
    return folder + QStringLiteral("/bmp8_ac1015.dwg");
}

struct ResultList {
    std::vector<BlockRow> rows;
    std::unique_ptr<CSearchListCtrl> list = std::make_unique<CSearchListCtrl>();
    QImage frame;

    explicit ResultList(bool thumbnails) {
        (void)LoadSkinSheet();
        const QImage preview = thumbnails ? LoadDwgPreview(Drawing()) : QImage();
        if (thumbnails && preview.isNull()) std::fprintf(stderr, "test drawing not found\n");
        const int states[] = {RowFresh, RowCollected, RowRemote, RowFetched, RowDownloading, RowFailed};
        rows.reserve(kRows);
        for (int i = 0; i < kRows; ++i)
            rows.push_back({.name = QStringLiteral("平开门M%1.dwg").arg(1000 + i),
                            .klass = QStringLiteral("建筑"),
                            .subclass = QStringLiteral("门窗..平开门"),
                            .url = {},
                            .path = {},
                            .thumbnail = preview,
                            .thumbnailTried = true,
                            .prefetch = false,
                            .state = states[i % 6],
                            .percent = 40});
        list->resize(ScaleUnits(740), ScaleUnits(343));
        frame = QImage(list->size(), QImage::Format_RGB32);
        list->SetRows(&rows);
        list->SetSearchKey(QStringLiteral("门"));
        list->EnsureVisible(kRows / 2);
        Paint();  // class lines measured once, as on the first frame
    }
    void Paint() { list->render(&frame); }
};

void PaintFrames(benchmark::State& state, bool thumbnails) {
    ResultList shown(thumbnails);
    for (auto _ : state) {
        shown.Paint();
        benchmark::ClobberMemory();
    }
    state.counters["rows"] = shown.list->RowAt(QPoint(5, shown.list->height() - 1)) - shown.list->FirstVisibleRow() + 1;
}

void BM_ResultFrameWithThumbnails(benchmark::State& state) { PaintFrames(state, true); }
BENCHMARK(BM_ResultFrameWithThumbnails)->Unit(benchmark::kMicrosecond);

// The peer: the same list and range, rows without a thumbnail of their own.
void BM_ResultFramePlainRows(benchmark::State& state) { PaintFrames(state, false); }
BENCHMARK(BM_ResultFramePlainRows)->Unit(benchmark::kMicrosecond);

}  // namespace
