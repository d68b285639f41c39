// Thumbnail fitting: a contact sheet of real, sample and made-up pictures
// (thin lines on light and dark grounds, mixed corners, small and extreme
// shapes) in the grid's and the result rows' cells, against a reference; and
// cells too small or sizes out of range.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "dwg_writer.h"
#include "panel/preview/dwg_preview.h"
#include "panel/preview/fit_thumbnail.h"
#include "preview_test_files.h"
#include "support/reference_picture.h"
#include "symbol_painter.h"

namespace marrowfin::test {
namespace {

QImage Filled(int w, int h, QRgb colour) {
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

TEST(FitThumbnail, ContactSheetOfPreviewsInBothCells) {
    std::vector<QImage> pictures;
    for (const char* name : {"bmp8_ac1014.dwg", "bmp8_ac1015.dwg", "bmp8_ac1024.dwg", "png_ac1027.dwg",
                             "png_ac1032.dwg", "header_only_ac1032.dwg"})
        pictures.push_back(LoadDwgPreview(RealPath(name)));
    using namespace marrowfin::service;
    for (int k = 0; k < int(SymbolKind::Count); ++k) {
        const bool png = k % 3 == 2;
        const QImage symbol = png ? DrawSymbol(SymbolKind(k), uint32_t(k), 224, 140, true)
                                  : DrawSymbol(SymbolKind(k), uint32_t(k), 180, 120);
        pictures.push_back(PreviewToImage(ReadDwgPreview(
            BuildDwgContainer(png ? PreviewKind::Png : PreviewKind::Bmp8, png ? EncodePng(symbol) : EncodeDib8(symbol)))));
        EXPECT_FALSE(pictures.back().isNull()) << k;
    }
    // One-pixel lines shrunk by 4: dark on white kept by the AND scan, bright
    // on black by the OR scan; corners that all differ make the ground white,
    // and the bright line on black is lost.
    QImage paper = Filled(424, 256, qRgb(255, 255, 255)), night = Filled(424, 256, qRgb(0, 0, 0));
    for (int y = 0; y < 256; ++y) paper.setPixel(203, y, qRgb(0, 0, 0)), night.setPixel(203, y, qRgb(0, 255, 0));
    for (int x = 0; x < 424; ++x) paper.setPixel(x, 101, qRgb(0, 0, 0));
    QImage mixed = night;
    mixed.setPixel(0, 0, qRgb(255, 0, 0));
    mixed.setPixel(423, 0, qRgb(0, 0, 255));
    // Small pictures stay unscaled and centred; exactly the area fits, one more pixel is scaled.
    for (const QImage& made : {paper, night, mixed, Filled(50, 30, qRgb(200, 10, 10)), Filled(106, 64, qRgb(255, 255, 255)),
                               Filled(107, 64, qRgb(255, 255, 255)), Filled(400, 100, qRgb(0, 0, 255)),
                               Filled(50, 200, qRgb(0, 0, 255)), Filled(132, 80, qRgb(255, 255, 0)),
                               Filled(1, 1, qRgb(255, 255, 255)), Filled(2000, 1, qRgb(255, 255, 255))})
        pictures.push_back(made);

    const int columns = 6, cellW = 132 + 8, cellH = 80 + 8;
    const int rows = int(pictures.size() + columns - 1) / columns;
    QImage sheet = Filled(columns * cellW, rows * cellH * 2, qRgb(128, 128, 128));
    QPainter painter(&sheet);
    for (size_t i = 0; i < pictures.size(); ++i) {
        const int x = int(i % columns) * cellW + 4, y = int(i / columns) * cellH + 4;
        painter.drawImage(x, y, FitThumbnail(pictures[i], 0, 0, 1.0));
        painter.drawImage(x, rows * cellH + y, FitThumbnail(pictures[i], 90, 60, 1.0));
    }
    painter.end();
    EXPECT_TRUE(MatchesReference(sheet, "panel/preview", "contact_sheet"));
}

TEST(FitThumbnail, SizesAndTinyCellsStayInsideTheCanvas) {
    // Units times the rate, truncated; no canvas for a rate or size out of range.
    EXPECT_EQ(FitThumbnail(QImage(), 0, 0, 1.7).size(), QSize(224, 136));
    EXPECT_EQ(FitThumbnail(QImage(), 0, 0, 1.25).size(), QSize(165, 100));
    EXPECT_TRUE(FitThumbnail(QImage(), 0, 0, 0.0).isNull());
    EXPECT_TRUE(FitThumbnail(QImage(), -3, 10, 1.0).isNull());
    // Small cells and awkward shapes: the asked size and a whole frame (and,
    // under the sanitizers, no write outside the canvas).
    for (int w = 1; w <= 12; ++w)
        for (int h = 1; h <= 12; ++h)
            for (QSize source : {QSize(1, 1), QSize(1, 300), QSize(300, 1), QSize(13, 7), QSize(w, h)}) {
                const QImage thumb = FitThumbnail(Filled(source.width(), source.height(), qRgb(255, 255, 255)), w, h, 1.0);
                ASSERT_EQ(thumb.size(), QSize(w, h));
                EXPECT_EQ(thumb.pixel(0, 0), kThumbnailFrameOther);
                EXPECT_EQ(thumb.pixel(w - 1, h - 1), kThumbnailFrameOther);
            }
}

}  // namespace
}  // namespace marrowfin::test
