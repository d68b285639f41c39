#include "panel/preview/fit_thumbnail.h"

#include <QPainter>
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

namespace marrowfin {
namespace {

enum class ScanMode { Or, And };

// Combines the rows of `source` (RGB32, or Indexed8 read through `colours`)
// into `acc` with OR or AND.
template <ScanMode mode, bool indexed>
void CombineRows(uint32_t* __restrict acc, const QImage& source, const uint32_t* __restrict colours, int64_t y0,
                 int64_t y1) {
    const int64_t width = source.width();
    std::fill(acc, acc + width, mode == ScanMode::Or ? 0u : 0xffffffffu);
    auto combine = [](uint32_t a, uint32_t pixel) { return mode == ScanMode::Or ? (a | pixel) : (a & pixel); };
    for (int64_t y = y0; y < y1; ++y) {
        const uchar* __restrict line = source.constScanLine(int(y));
        auto pixel = [line, colours](int64_t x) {
            return indexed ? colours[line[x]] : reinterpret_cast<const QRgb*>(line)[x];
        };
        // Eight at a time, a block the compiler turns into vector code.
        int64_t x = 0;
        for (; x + 8 <= width; x += 8)
            for (int64_t k = 0; k < 8; ++k) acc[x + k] = combine(acc[x + k], pixel(x + k));
        for (; x < width; ++x) acc[x] = combine(acc[x], pixel(x));
    }
}

// Shrinks `source` into `target` at `area` by combining every source pixel
// that falls on one target pixel with OR (bright lines on a dark ground stay)
// or AND (dark lines on a light ground stay), so that one-pixel strokes of a
// drawing survive the shrinking instead of fading to the ground colour. The
// source rows of a target row are combined first, whole and in order, then
// the columns of that one row.
template <ScanMode mode>
void ShrinkInto(QImage& target, const QImage& source, const uint32_t* colours, const QRect& area) {
    const int64_t sw = source.width(), sh = source.height();
    const int64_t dw = area.width(), dh = area.height();
    std::vector<uint32_t> rows(static_cast<size_t>(sw));
    // The source columns of each target column, worked out once for all rows.
    std::vector<int64_t> columns(static_cast<size_t>(dw + 1));
    for (int64_t i = 0; i <= dw; ++i) columns[size_t(i)] = i * sw / dw;
    for (int64_t j = 0; j < dh; ++j) {
        const int64_t y0 = j * sh / dh;
        const int64_t y1 = std::max(y0 + 1, (j + 1) * sh / dh);
        if (colours) {
            CombineRows<mode, true>(rows.data(), source, colours, y0, y1);
        } else {
            CombineRows<mode, false>(rows.data(), source, colours, y0, y1);
        }
        auto* out = reinterpret_cast<QRgb*>(target.scanLine(int(area.y() + j))) + area.x();
        for (int64_t i = 0; i < dw; ++i) {
            const int64_t x0 = columns[size_t(i)];
            const int64_t x1 = std::max(x0 + 1, columns[size_t(i + 1)]);
            uint32_t acc = rows[x0];
            for (int64_t x = x0 + 1; x < x1; ++x) acc = mode == ScanMode::Or ? (acc | rows[x]) : (acc & rows[x]);
            out[i] = acc | 0xff000000u;
        }
    }
}

}  // namespace

QImage FitThumbnail(const QImage& image, int width, int height, double rate) {
    if (width < 0 || height < 0) return {};
    const int w = width > 0 ? width : int(kThumbnailWidthUnits * rate);
    const int h = height > 0 ? height : int(kThumbnailHeightUnits * rate);
    if (w <= 0 || h <= 0) return {};
    QImage canvas(w, h, QImage::Format_RGB32);
    if (canvas.isNull()) return {};
    canvas.fill(Qt::black);

    if (!image.isNull()) {
        // An opaque colour table is read through the table, without expanding
        // the picture; the colours are what converting it to RGB32 gives,
        // black past the end of the table.
        const QList<QRgb> colourTable = image.format() == QImage::Format_Indexed8 ? image.colorTable() : QList<QRgb>();
        const bool indexed = !colourTable.isEmpty() && !image.hasAlphaChannel();
        const QImage source = indexed ? image : image.convertToFormat(QImage::Format_RGB32);
        uint32_t table[256];
        std::fill(std::begin(table), std::end(table), 0xff000000u);
        for (qsizetype i = 0; i < colourTable.size() && i < 256; ++i) table[i] = colourTable[i] | 0xff000000u;
        const uint32_t* colours = indexed ? table : nullptr;
        auto pixel = [&](int x, int y) {
            return colours ? colours[source.constScanLine(y)[x]]
                           : reinterpret_cast<const QRgb*>(source.constScanLine(y))[x];
        };
        const int sw = source.width(), sh = source.height();
        // The ground is the top-left pixel when it agrees with another corner;
        // a picture whose corners all differ is taken as drawn on white.
        const QRgb first = pixel(0, 0) & 0xffffff;
        const QRgb right = pixel(sw - 1, 0) & 0xffffff;
        const QRgb bottom = pixel(0, sh - 1) & 0xffffff;
        const QRgb ground = (first != right && first != bottom) ? 0xffffffu : first;

        const int mx = w / 10, my = h / 10;
        const int areaW = w - 2 * mx, areaH = h - 2 * my;
        if (sw <= areaW && sh <= areaH) {
            // Small pictures stay sharp: no scaling, centred in the whole cell.
            QPainter painter(&canvas);
            painter.drawImage((w - sw) / 2, (h - sh) / 2, source.convertToFormat(QImage::Format_RGB32));
        } else {
            int x, y, dw, dh;
            if (double(sw) / sh > double(areaW) / areaH) {
                dw = areaW;
                dh = int(sh / (double(sw) / areaW));
                x = mx;
                y = my + (areaH - dh) / 2;
            } else {
                dh = areaH;
                dw = int(sw / (double(sh) / areaH));
                x = mx + (areaW - dw) / 2;
                y = my;
            }
            dw = std::max(dw, 1);
            dh = std::max(dh, 1);
            // The canvas is black round the picture either way; only the way lines
            // survive the shrinking depends on the ground.
            if (ground == 0) {
                ShrinkInto<ScanMode::Or>(canvas, source, colours, QRect(x, y, dw, dh));
            } else {
                ShrinkInto<ScanMode::And>(canvas, source, colours, QRect(x, y, dw, dh));
            }
        }
    }

    // The frame takes the outermost ring, so the picture stands one pixel
    // inside the edge.
    const QRgb frame = height == 0 ? kThumbnailFrameList : kThumbnailFrameOther;
    for (int x = 0; x < w; ++x) {
        canvas.setPixel(x, 0, frame);
        canvas.setPixel(x, h - 1, frame);
    }
    for (int y = 0; y < h; ++y) {
        canvas.setPixel(0, y, frame);
        canvas.setPixel(w - 1, y, frame);
    }
    return canvas;
}

}  // namespace marrowfin
