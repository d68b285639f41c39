#include "panel/preview/fit_thumbnail.h"

#include <QPainter>
#include <algorithm>

namespace marrowfin {
namespace {

enum class ScanMode { Or, And };

// Shrinks `source` into `target` at `area` by combining every source pixel
// that falls on one target pixel with OR (bright lines on a dark ground stay)
// or AND (dark lines on a light ground stay), so that one-pixel strokes of a
// drawing survive the shrinking instead of fading to the ground colour.
void ShrinkInto(QImage& target, const QImage& source, const QRect& area, ScanMode mode) {
    const int64_t sw = source.width(), sh = source.height();
    const int64_t dw = area.width(), dh = area.height();
    for (int64_t j = 0; j < dh; ++j) {
        const int64_t y0 = j * sh / dh;
        const int64_t y1 = std::max(y0 + 1, (j + 1) * sh / dh);
        auto* out = reinterpret_cast<QRgb*>(target.scanLine(int(area.y() + j))) + area.x();
        for (int64_t i = 0; i < dw; ++i) {
            const int64_t x0 = i * sw / dw;
            const int64_t x1 = std::max(x0 + 1, (i + 1) * sw / dw);
            uint32_t acc = mode == ScanMode::Or ? 0u : 0xffffffffu;
            for (int64_t y = y0; y < y1; ++y) {
                const auto* in = reinterpret_cast<const QRgb*>(source.constScanLine(int(y)));
                for (int64_t x = x0; x < x1; ++x) {
                    acc = mode == ScanMode::Or ? (acc | in[x]) : (acc & in[x]);
                }
            }
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
        const QImage source = image.convertToFormat(QImage::Format_RGB32);
        const int sw = source.width(), sh = source.height();
        // The ground is the top-left pixel when it agrees with another corner;
        // a picture whose corners all differ is taken as drawn on white.
        const QRgb first = source.pixel(0, 0) & 0xffffff;
        const QRgb right = source.pixel(sw - 1, 0) & 0xffffff;
        const QRgb bottom = source.pixel(0, sh - 1) & 0xffffff;
        const QRgb ground = (first != right && first != bottom) ? 0xffffffu : first;

        const int mx = w / 10, my = h / 10;
        const int areaW = w - 2 * mx, areaH = h - 2 * my;
        if (sw <= areaW && sh <= areaH) {
            // Small pictures stay sharp: no scaling, centred in the whole cell.
            QPainter painter(&canvas);
            painter.drawImage((w - sw) / 2, (h - sh) / 2, source);
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
            ShrinkInto(canvas, source, QRect(x, y, dw, dh), ground == 0 ? ScanMode::Or : ScanMode::And);
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
