// Thumbnail fitting: sizes, margins, the ground rule, thin lines and frames,
// probed at pixels; and a contact sheet of real previews to look at.

#include <gtest/gtest.h>

#include <filesystem>

#include <QDir>
#include <QImage>
#include <QPainter>

#include "dwg_writer.h"
#include "panel/preview/dwg_preview.h"
#include "panel/preview/fit_thumbnail.h"
#include "preview_test_files.h"
#include "symbol_painter.h"

namespace marrowfin::test {
namespace {

QImage Filled(int w, int h, QRgb colour) {
  QImage image(w, h, QImage::Format_RGB32);
  image.fill(colour);
  return image;
}

// Bounding box of the pixels inside the frame that are not black.
QRect Drawn(const QImage& thumb) {
  QRect box;
  for (int y = 1; y < thumb.height() - 1; ++y)
    for (int x = 1; x < thumb.width() - 1; ++x)
      if ((thumb.pixel(x, y) & 0xffffff) != 0) box |= QRect(x, y, 1, 1);
  return box;
}

TEST(FitThumbnail, SizesFramesAndEmptyCanvas) {
  const QImage plain = FitThumbnail(QImage(), 0, 0, 1.0);
  ASSERT_EQ(plain.size(), QSize(132, 80));
  EXPECT_EQ(plain.pixel(0, 0), kThumbnailFrameList);
  EXPECT_EQ(plain.pixel(131, 79), kThumbnailFrameList);
  EXPECT_EQ(plain.pixel(131, 40), kThumbnailFrameList);
  EXPECT_TRUE(Drawn(plain).isNull());
  // Units times the rate, truncated.
  EXPECT_EQ(FitThumbnail(QImage(), 0, 0, 1.25).size(), QSize(165, 100));
  EXPECT_EQ(FitThumbnail(QImage(), 0, 0, 1.7).size(), QSize(224, 136));
  // Search rows give their size: the grey frame.
  const QImage row = FitThumbnail(QImage(), 90, 60, 1.0);
  ASSERT_EQ(row.size(), QSize(90, 60));
  EXPECT_EQ(row.pixel(0, 30), kThumbnailFrameOther);
  EXPECT_EQ(row.pixel(45, 59), kThumbnailFrameOther);
  EXPECT_EQ(row.pixel(1, 1), qRgb(0, 0, 0));
  EXPECT_TRUE(FitThumbnail(QImage(), 0, 0, 0.0).isNull());
  EXPECT_TRUE(FitThumbnail(QImage(), -3, 10, 1.0).isNull());
}

TEST(FitThumbnail, SmallPicturesStayUnscaledAndCentredLargeOnesKeepTheirAspect) {
  // Target 132 x 80: margins 13 and 8, area 106 x 64.
  const QImage small = FitThumbnail(Filled(50, 30, qRgb(200, 10, 10)), 0, 0, 1.0);
  EXPECT_EQ(Drawn(small), QRect(41, 25, 50, 30));
  EXPECT_EQ(small.pixel(41, 25), qRgb(200, 10, 10));
  EXPECT_EQ(small.pixel(40, 25), qRgb(0, 0, 0));

  // Exactly the area still fits; one pixel more is scaled.
  EXPECT_EQ(Drawn(FitThumbnail(Filled(106, 64, qRgb(255, 255, 255)), 0, 0, 1.0)), QRect(13, 8, 106, 64));
  EXPECT_EQ(Drawn(FitThumbnail(Filled(107, 64, qRgb(255, 255, 255)), 0, 0, 1.0)), QRect(13, 8, 106, 63));

  // Wide: the width takes the area's, centred vertically from y = my.
  EXPECT_EQ(Drawn(FitThumbnail(Filled(400, 100, qRgb(0, 0, 255)), 0, 0, 1.0)), QRect(13, 27, 106, 26));
  // Tall: the height takes the area's, centred horizontally.
  EXPECT_EQ(Drawn(FitThumbnail(Filled(50, 200, qRgb(0, 0, 255)), 0, 0, 1.0)), QRect(58, 8, 16, 64));
  // A picture as large as the cell is framed inside, never over the frame.
  const QImage full = FitThumbnail(Filled(132, 80, qRgb(255, 255, 0)), 0, 0, 1.0);
  EXPECT_EQ(full.pixel(0, 0), kThumbnailFrameList);
  EXPECT_EQ(Drawn(full), QRect(13, 8, 105, 64));
  // A one-pixel picture and a one-pixel-high strip survive.
  EXPECT_EQ(Drawn(FitThumbnail(Filled(1, 1, qRgb(9, 9, 9)), 0, 0, 1.0)), QRect(65, 39, 1, 1));
  EXPECT_EQ(Drawn(FitThumbnail(Filled(2000, 1, qRgb(9, 9, 9)), 0, 0, 1.0)).height(), 1);
}

TEST(FitThumbnail, TinyCellsAndOddPicturesStayInsideTheCanvas) {
  // Every combination of small cells and awkward picture shapes: the result
  // has the asked size, a whole frame, and (under the sanitizers) no write
  // outside the canvas.
  for (int w = 1; w <= 12; ++w) {
    for (int h = 1; h <= 12; ++h) {
      for (QSize source : {QSize(1, 1), QSize(1, 300), QSize(300, 1), QSize(13, 7), QSize(w, h)}) {
        const QImage thumb = FitThumbnail(Filled(source.width(), source.height(), qRgb(255, 255, 255)), w, h, 1.0);
        ASSERT_EQ(thumb.size(), QSize(w, h));
        EXPECT_EQ(thumb.pixel(0, 0), kThumbnailFrameOther);
        EXPECT_EQ(thumb.pixel(w - 1, h - 1), kThumbnailFrameOther);
      }
    }
  }
}

TEST(FitThumbnail, ThinLinesSurviveShrinkingOnTheirGround) {
  // A one-pixel dark line on white, shrunk by 4: kept by the AND scan.
  QImage paper = Filled(424, 256, qRgb(255, 255, 255));
  for (int y = 0; y < 256; ++y) paper.setPixel(203, y, qRgb(0, 0, 0));
  for (int x = 0; x < 424; ++x) paper.setPixel(x, 101, qRgb(0, 0, 0));
  const QImage onPaper = FitThumbnail(paper, 0, 0, 1.0);
  EXPECT_EQ(onPaper.pixel(13 + 203 / 4, 40), qRgb(0, 0, 0));
  EXPECT_EQ(onPaper.pixel(30, 8 + 101 / 4), qRgb(0, 0, 0));
  EXPECT_EQ(onPaper.pixel(30, 40), qRgb(255, 255, 255));

  // A one-pixel bright line on black: kept by the OR scan.
  QImage night = Filled(424, 256, qRgb(0, 0, 0));
  for (int y = 0; y < 256; ++y) night.setPixel(203, y, qRgb(0, 255, 0));
  const QImage onNight = FitThumbnail(night, 0, 0, 1.0);
  EXPECT_EQ(onNight.pixel(13 + 203 / 4, 40), qRgb(0, 255, 0));

  // Corners that all differ make the ground white: the AND scan then loses
  // the bright line on black.
  night.setPixel(0, 0, qRgb(255, 0, 0));
  night.setPixel(423, 0, qRgb(0, 0, 255));
  const QImage mixed = FitThumbnail(night, 0, 0, 1.0);
  EXPECT_EQ(mixed.pixel(13 + 203 / 4, 40), qRgb(0, 0, 0));
}

TEST(FitThumbnail, ContactSheetOfRealAndSamplePreviews) {
  std::vector<std::pair<QString, QImage>> pictures;
  for (const char* name : {"bmp8_ac1014.dwg", "bmp8_ac1015.dwg", "bmp8_ac1024.dwg", "png_ac1027.dwg",
                           "png_ac1032.dwg", "header_only_ac1032.dwg", "no_preview_ac1009.dwg"})
    pictures.emplace_back(name, LoadDwgPreview(RealPath(name)));
  using namespace marrowfin::service;
  for (int k = 0; k < int(SymbolKind::Count); ++k) {
    const bool png = k % 3 == 2;
    const QImage symbol = png ? DrawSymbol(SymbolKind(k), uint32_t(k), 224, 140, true)
                              : DrawSymbol(SymbolKind(k), uint32_t(k), 180, 120);
    const std::string file = BuildDwgContainer(png ? PreviewKind::Png : PreviewKind::Bmp8,
                                               png ? EncodePng(symbol) : EncodeDib8(symbol));
    pictures.emplace_back(QString("sample %1").arg(k), PreviewToImage(ReadDwgPreview(file)));
    EXPECT_FALSE(pictures.back().second.isNull()) << k;
  }
  pictures.emplace_back("small", Filled(60, 40, qRgb(220, 120, 0)));

  const int columns = 6, cellW = 132 + 8, cellH = 80 + 8;
  const int rows = int(pictures.size() + columns - 1) / columns;
  QImage sheet(columns * cellW, rows * cellH * 2, QImage::Format_RGB32);
  sheet.fill(qRgb(128, 128, 128));
  QPainter painter(&sheet);
  for (size_t i = 0; i < pictures.size(); ++i) {
    const int x = int(i % columns) * cellW + 4, y = int(i / columns) * cellH + 4;
    const QImage list = FitThumbnail(pictures[i].second, 0, 0, 1.0);
    const QImage search = FitThumbnail(pictures[i].second, 90, 60, 1.0);
    ASSERT_EQ(list.size(), QSize(132, 80));
    painter.drawImage(x, y, list);
    painter.drawImage(x, rows * cellH + y, search);
    // Pictures give something inside the frame; files without one do not.
    EXPECT_EQ(!Drawn(list).isNull(), !pictures[i].second.isNull()) << pictures[i].first.toStdString();
  }
  painter.end();
  // In a folder beside the program, as the other programs keep their
  // pictures, not wherever the test was started (this program makes no
  // application object, so the program's own path is asked of the system).
  const QString folder =
      QString::fromStdString((std::filesystem::read_symlink("/proc/self/exe").parent_path() / "rendered").string());
  ASSERT_TRUE(QDir().mkpath(folder));
  const QString out = folder + QStringLiteral("/preview_contact_sheet.png");
  ASSERT_TRUE(sheet.save(out)) << out.toStdString();
}

}  // namespace
}  // namespace marrowfin::test
