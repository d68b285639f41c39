// Bitmap entries of every bit depth the reader takes, and the headers it must
// refuse.

#include <gtest/gtest.h>

#include <QImage>

#include "panel/preview/dwg_preview.h"
#include "panel/preview/dwg_preview_reader.h"
#include "preview_test_files.h"

namespace marrowfin::test {
namespace {

// 11 x 5: odd width so that rows need padding and low depths end mid-byte;
// a distinct colour in each corner so that row order and mirroring show.
QImage Pattern() {
  QImage image(11, 5, QImage::Format_RGB32);
  image.fill(qRgb(255, 255, 255));
  image.setPixel(0, 0, qRgb(255, 0, 0));
  image.setPixel(10, 0, qRgb(0, 255, 0));
  image.setPixel(0, 4, qRgb(0, 0, 255));
  image.setPixel(10, 4, qRgb(0, 0, 0));
  for (int x = 1; x < 10; ++x) image.setPixel(x, 2, qRgb(0, 0, 0));
  return image;
}

TEST(DwgPreviewBitmap, EveryDepthDecodesToTheSamePicture) {
  const QImage pattern = Pattern();
  const std::vector<QRgb> mono = {qRgb(0, 0, 0), qRgb(255, 255, 255)};
  const std::vector<QRgb> sixteen = {qRgb(0, 0, 0),     qRgb(255, 0, 0), qRgb(0, 255, 0),
                                     qRgb(0, 0, 255),   qRgb(255, 255, 255)};
  std::vector<QRgb> full;
  for (int i = 0; i < 256; ++i) full.push_back(qRgb(i, 255 - i, (i * 7) & 0xff));
  full[1] = qRgb(255, 0, 0), full[2] = qRgb(0, 255, 0), full[3] = qRgb(0, 0, 255);
  full[4] = qRgb(255, 255, 255), full[5] = qRgb(0, 0, 0);

  struct Case {
    int bits;
    std::vector<QRgb> palette;
    bool topDown;
  } cases[] = {{4, sixteen, false}, {8, full, false}, {24, {}, false}, {32, {}, false}, {24, {}, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.bits << " bits, top-down " << c.topDown);
    const DwgPreview preview = DecodePreviewBitmap(MakeDib(pattern, c.bits, c.palette, c.topDown));
    ASSERT_EQ(preview.error, DwgPreviewError::None);
    EXPECT_EQ(preview.bitCount, c.bits);
    const QImage picture = PreviewToImage(preview);
    ASSERT_EQ(picture.size(), pattern.size());
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 11; ++x) ASSERT_EQ(picture.pixel(x, y), pattern.pixel(x, y)) << x << "," << y;
  }

  // One bit: the colours become black and white, the places stay.
  const QImage mono1 = PreviewToImage(DecodePreviewBitmap(MakeDib(pattern, 1, mono)));
  ASSERT_EQ(mono1.size(), pattern.size());
  EXPECT_EQ(mono1.pixel(10, 4), qRgb(0, 0, 0));
  EXPECT_EQ(mono1.pixel(5, 2), qRgb(0, 0, 0));
  EXPECT_EQ(mono1.pixel(5, 1), qRgb(255, 255, 255));
  EXPECT_EQ(mono1.pixel(3, 4), qRgb(255, 255, 255));
  EXPECT_EQ(mono1.pixel(10, 0), qRgb(0, 0, 0));  // green is nearer black than white

  // A short colour table: indices past its end are black, not a read past it.
  std::string shortTable = MakeDib(pattern, 8, {qRgb(10, 20, 30), qRgb(40, 50, 60)});
  const size_t pixels = 40 + 2 * 4;
  shortTable[pixels] = char(200);  // bottom row, first pixel
  const DwgPreview withShortTable = DecodePreviewBitmap(shortTable);
  ASSERT_EQ(withShortTable.error, DwgPreviewError::None);
  EXPECT_EQ(withShortTable.palette.size(), 2u);
  EXPECT_EQ(withShortTable.pixels[4 * 11] & 0xffffff, 0u);
}

TEST(DwgPreviewBitmap, HostileHeadersAreRefused) {
  const std::string dib = MakeDib(Pattern(), 24);
  ASSERT_EQ(DecodePreviewBitmap(dib).error, DwgPreviewError::None);
  // The last row may leave out its padding; one byte less than that is short.
  const size_t rowBytes = 11 * 3, stride = 36;
  const std::string unpadded = dib.substr(0, dib.size() - (stride - rowBytes));
  struct Case {
    const char* name;
    std::string bytes;
    DwgPreviewError error;
  };
  const Case cases[] = {
      {"cut header", dib.substr(0, 39), DwgPreviewError::BadBitmapHeader},
      {"header too small", Patched(dib, 0, 12), DwgPreviewError::BadBitmapHeader},
      {"header past the entry", Patched(dib, 0, 0x7fffffff), DwgPreviewError::BadBitmapHeader},
      {"no width", Patched(dib, 4, 0), DwgPreviewError::BadBitmapHeader},
      {"negative width", Patched(dib, 4, 0xfffffff5u), DwgPreviewError::BadBitmapHeader},
      {"no height", Patched(dib, 8, 0), DwgPreviewError::BadBitmapHeader},
      {"lowest height", Patched(dib, 8, 0x80000000u), DwgPreviewError::BadBitmapHeader},
      {"two planes", WithByte(dib, 12, 2), DwgPreviewError::BadBitmapHeader},
      {"huge width", Patched(dib, 4, 0x7fffffff), DwgPreviewError::TooLarge},
      {"huge height", Patched(dib, 8, 0x7fffffff), DwgPreviewError::TooLarge},
      {"huge top-down height", Patched(dib, 8, uint32_t(-5000)), DwgPreviewError::TooLarge},
      {"allowed size, rows missing", Patched(dib, 4, 4096), DwgPreviewError::PixelsTruncated},
      {"run-length coded", Patched(dib, 16, 1), DwgPreviewError::UnsupportedBitmap},
      {"0 bits", WithByte(dib, 14, '\0'), DwgPreviewError::UnsupportedBitmap},
      {"2 bits", WithByte(dib, 14, '\x02'), DwgPreviewError::UnsupportedBitmap},
      {"16 bits", WithByte(dib, 14, '\x10'), DwgPreviewError::UnsupportedBitmap},
      {"48 bits", WithByte(dib, 14, '\x30'), DwgPreviewError::UnsupportedBitmap},
      {"last row unpadded", unpadded, DwgPreviewError::None},
      {"last row short", unpadded.substr(0, unpadded.size() - 1), DwgPreviewError::PixelsTruncated},
      // An 8-bit header with a colour count that overstates the table.
      {"colour count", Patched(MakeDib(Pattern(), 8, {qRgb(0, 0, 0), qRgb(255, 255, 255)}), 32, 100000),
       DwgPreviewError::PixelsTruncated},
  };
  for (const Case& c : cases) EXPECT_EQ(DecodePreviewBitmap(c.bytes).error, c.error) << c.name;
}

}  // namespace
}  // namespace marrowfin::test
