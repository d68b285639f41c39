// Bitmap entries of every bit depth the reader takes, and the headers it must
// refuse.

#include <gtest/gtest.h>

#include <QImage>

#include "panel/preview/dwg_preview.h"
#include "panel/preview/dwg_preview_reader.h"
#include "preview_test_files.h"

namespace marrowfin {
namespace {

using test::MakeDib;
using test::PutLe32;

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
  auto with = [&](size_t offset, uint32_t value) {
    std::string bad = dib;
    PutLe32(bad, offset, value);
    return DecodePreviewBitmap(bad).error;
  };
  EXPECT_EQ(DecodePreviewBitmap(dib.substr(0, 39)).error, DwgPreviewError::BadBitmapHeader);
  EXPECT_EQ(with(0, 12), DwgPreviewError::BadBitmapHeader);          // header too small
  EXPECT_EQ(with(0, 0x7fffffff), DwgPreviewError::BadBitmapHeader);  // header past the entry
  EXPECT_EQ(with(4, 0), DwgPreviewError::BadBitmapHeader);
  EXPECT_EQ(with(4, 0xfffffff5u), DwgPreviewError::BadBitmapHeader);  // negative width
  EXPECT_EQ(with(8, 0), DwgPreviewError::BadBitmapHeader);
  EXPECT_EQ(with(8, 0x80000000u), DwgPreviewError::BadBitmapHeader);
  EXPECT_EQ(with(4, 0x7fffffff), DwgPreviewError::TooLarge);
  EXPECT_EQ(with(8, 0x7fffffff), DwgPreviewError::TooLarge);
  EXPECT_EQ(with(8, uint32_t(-5000)), DwgPreviewError::TooLarge);
  EXPECT_EQ(with(4, 4096), DwgPreviewError::PixelsTruncated);  // allowed size, rows missing
  EXPECT_EQ(with(16, 1), DwgPreviewError::UnsupportedBitmap);  // run-length coded
  std::string planes = dib;
  planes[12] = 2;
  EXPECT_EQ(DecodePreviewBitmap(planes).error, DwgPreviewError::BadBitmapHeader);
  for (char bits : {'\0', '\x02', '\x10', '\x30'}) {
    std::string depth = dib;
    depth[14] = bits;
    EXPECT_EQ(DecodePreviewBitmap(depth).error, DwgPreviewError::UnsupportedBitmap) << int(bits);
  }
  // The last row may leave out its padding; one byte less than that is short.
  const size_t rowBytes = 11 * 3, stride = 36;
  const std::string unpadded = dib.substr(0, dib.size() - (stride - rowBytes));
  EXPECT_EQ(DecodePreviewBitmap(unpadded).error, DwgPreviewError::None);
  EXPECT_EQ(DecodePreviewBitmap(unpadded.substr(0, unpadded.size() - 1)).error,
            DwgPreviewError::PixelsTruncated);
  // An 8-bit header with a colour count that overstates the table.
  std::string colours = MakeDib(Pattern(), 8, {qRgb(0, 0, 0), qRgb(255, 255, 255)});
  PutLe32(colours, 32, 100000);
  EXPECT_EQ(DecodePreviewBitmap(colours).error, DwgPreviewError::PixelsTruncated);
}

}  // namespace
}  // namespace marrowfin
