// The preview reader on real drawings, on the stand-in service's block files
// and on files that lie about their offsets and sizes.

#include <gtest/gtest.h>

#include <QImage>
#include <QString>
#include <algorithm>
#include <cstring>

#include "dwg_writer.h"
#include "panel/preview/dwg_preview.h"
#include "panel/preview/dwg_preview_reader.h"
#include "platform/text.h"
#include "preview_test_files.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "symbol_painter.h"

namespace marrowfin::test {
namespace {

int MaxChannelDifference(const QImage& a, const QImage& b) {
  int worst = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
      worst = std::max({worst, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                        std::abs(qBlue(p) - qBlue(q))});
    }
  }
  return worst;
}

TEST(DwgPreviewReader, RealBmpDrawingsMatchQtsOwnBmpDecoder) {
  struct Case {
    const char* name;
    int width, height;
  } cases[] = {{"bmp8_ac1014.dwg", 180, 116}, {"bmp8_ac1015.dwg", 180, 88}, {"bmp8_ac1024.dwg", 224, 140}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string bytes = RealFile(c.name);
    const DwgPreview preview = ReadDwgPreview(bytes);
    ASSERT_EQ(preview.error, DwgPreviewError::None);
    ASSERT_EQ(preview.kind, DwgPreviewKind::Bmp);
    EXPECT_EQ(preview.width, c.width);
    EXPECT_EQ(preview.height, c.height);
    EXPECT_EQ(preview.bitCount, 8);
    EXPECT_EQ(preview.palette.size(), 256u);

    // The same DIB as a standalone .bmp, read by Qt, is the reference.
    uint32_t address = 0, start = 0, size = 0;
    std::memcpy(&address, bytes.data() + 13, 4);
    // Entry 1 of each of these files is the BMP.
    const size_t entry = EntryOffset(address, 1);
    ASSERT_EQ(bytes[entry], 2);
    std::memcpy(&start, bytes.data() + entry + 1, 4);
    std::memcpy(&size, bytes.data() + entry + 5, 4);
    QImage reference;
    const std::string bmp = MakeBmpFile(bytes.substr(start, size));
    ASSERT_TRUE(reference.loadFromData(reinterpret_cast<const uchar*>(bmp.data()), int(bmp.size()), "BMP"));

    const QImage picture = LoadDwgPreview(RealPath(c.name));
    ASSERT_FALSE(picture.isNull());
    ASSERT_EQ(picture.size(), reference.size());
    EXPECT_EQ(MaxChannelDifference(picture, reference.convertToFormat(QImage::Format_RGB32)), 0);
    // Not a blank picture: a drawing has at least two colours.
    bool varied = false;
    for (int y = 0; y < picture.height() && !varied; ++y)
      for (int x = 0; x < picture.width() && !varied; ++x) varied = picture.pixel(x, y) != picture.pixel(0, 0);
    EXPECT_TRUE(varied);
  }
}

TEST(DwgPreviewReader, RealPngDrawingsAndDrawingsWithoutPicture) {
  for (const char* name : {"png_ac1027.dwg", "png_ac1032.dwg"}) {
    SCOPED_TRACE(name);
    const DwgPreview preview = ReadDwgPreview(RealFile(name));
    ASSERT_EQ(preview.kind, DwgPreviewKind::Png);
    ASSERT_EQ(preview.png.substr(1, 3), "PNG");
    QImage reference;
    ASSERT_TRUE(reference.loadFromData(reinterpret_cast<const uchar*>(preview.png.data()),
                                       int(preview.png.size()), "PNG"));
    EXPECT_EQ(preview.width, reference.width());
    EXPECT_EQ(preview.height, reference.height());
    const QImage picture = LoadDwgPreview(RealPath(name));
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.size(), reference.size());
    EXPECT_EQ(picture.format(), QImage::Format_RGB32);
  }
  EXPECT_EQ(ReadDwgPreview(RealFile("header_only_ac1032.dwg")).error, DwgPreviewError::NoPicture);
  EXPECT_TRUE(LoadDwgPreview(RealPath("header_only_ac1032.dwg")).isNull());
  // R11 has no preview section: the address at 0x0D points past the end.
  const DwgPreview old = ReadDwgPreview(RealFile("no_preview_ac1009.dwg"));
  EXPECT_FALSE(old.HasPicture());
  EXPECT_NE(old.error, DwgPreviewError::None);
  EXPECT_TRUE(LoadDwgPreview(RealPath("no_preview_ac1009.dwg")).isNull());
}

TEST(DwgPreviewReader, ServiceBlockFilesGiveTheirSymbols) {
  using namespace marrowfin::service;
  const QImage symbol = DrawSymbol(SymbolKind::Door, 3, 180, 120);
  const DwgPreview bmp = ReadDwgPreview(BuildDwgContainer(PreviewKind::Bmp8, EncodeDib8(symbol)));
  ASSERT_EQ(bmp.kind, DwgPreviewKind::Bmp);
  const QImage bmpPicture = PreviewToImage(bmp);
  ASSERT_EQ(bmpPicture.size(), symbol.size());
  // The 6x6x6 cube is 51 apart per channel: nearest colour within 26.
  EXPECT_LE(MaxChannelDifference(bmpPicture, symbol.convertToFormat(QImage::Format_RGB32)), 26);

  const QImage smooth = DrawSymbol(SymbolKind::Lamp, 1, 224, 140, true);
  const DwgPreview png = ReadDwgPreview(BuildDwgContainer(PreviewKind::Png, EncodePng(smooth)));
  ASSERT_EQ(png.kind, DwgPreviewKind::Png);
  const QImage pngPicture = PreviewToImage(png);
  ASSERT_EQ(pngPicture.size(), smooth.size());
  EXPECT_LE(MaxChannelDifference(pngPicture, smooth.convertToFormat(QImage::Format_RGB32)), 1);
}

TEST(DwgPreviewReader, FilesOnDiskAndMissingFiles) {
  TempHome home;
  EXPECT_TRUE(LoadDwgPreview(QString::fromStdString(home.file("missing.dwg"))).isNull());
  EXPECT_EQ(ReadDwgPreviewFile(W(home.file("missing.dwg"))).error, DwgPreviewError::ReadFailed);
  const std::string path = home.file("单开门 01.dwg");
  const std::string drawing = RealFile("bmp8_ac1015.dwg");
  WriteBytes(path, drawing);
  EXPECT_EQ(LoadDwgPreview(QString::fromStdString(path)).size(), QSize(180, 88));
  // A file cut inside the picture entry reads as no picture.
  WriteBytes(path, drawing.substr(0, 0x153 + 1000));
  EXPECT_EQ(ReadDwgPreviewFile(W(path)).error, DwgPreviewError::EntryOutOfFile);
  EXPECT_TRUE(LoadDwgPreview(QString::fromStdString(path)).isNull());
}

TEST(DwgPreviewReader, SectionAndTableFailures) {
  const std::string dib = MakeDib(QImage(4, 2, QImage::Format_RGB32), 24);
  const std::string good = MakeDrawing({{1, std::string(80, '\0')}, {2, dib}});
  ASSERT_EQ(ReadDwgPreview(good).kind, DwgPreviewKind::Bmp);
  const size_t count = 0x100 + 20, entry = EntryOffset(0x100, 1);
  // A count of 255 over a file cut behind the BMP entry: the entry in the
  // part that is there still counts, but its data is gone.
  const std::string many = WithByte(good.substr(0, EntryOffset(0x100, 2)), count, char(255));
  auto entryAt = [&](uint32_t start, uint32_t size) { return Patched(Patched(good, entry + 1, start), entry + 5, size); };
  struct Case {
    const char* name;
    std::string bytes;
    DwgPreviewError error;
  };
  const Case cases[] = {
      {"empty", "", DwgPreviewError::ShortFile},
      {"cut in the file head", good.substr(0, 16), DwgPreviewError::ShortFile},
      // The section head must lie wholly inside the file.
      {"cut in the section head", good.substr(0, 0x100 + 20), DwgPreviewError::SectionOutOfFile},
      {"section far out", Patched(good, 0x0D, 0xFFFFFFFFu), DwgPreviewError::SectionOutOfFile},
      {"section at the end", Patched(good, 0x0D, uint32_t(good.size() - 20)), DwgPreviewError::SectionOutOfFile},
      {"sentinel", WithByte(good, 0x100 + 15, char(good[0x100 + 15] ^ 1)), DwgPreviewError::BadSentinel},
      {"no entries", WithByte(good, count, 0), DwgPreviewError::NoEntries},
      {"count past a short file", many, DwgPreviewError::EntryOutOfFile},
      {"count past the table", WithByte(MakeDrawing({{1, std::string(80, '\0')}}), count, char(200)),
       DwgPreviewError::TableTruncated},
      {"only a header and a metafile", MakeDrawing({{1, "x"}, {3, "wmf"}}), DwgPreviewError::NoPicture},
      // Entry starts and sizes past the end, and sums that wrap in 32 bits.
      {"entry starts at the end", entryAt(uint32_t(good.size()), 1), DwgPreviewError::EntryOutOfFile},
      {"entry one byte too long", entryAt(0, uint32_t(good.size() + 1)), DwgPreviewError::EntryOutOfFile},
      {"entry start wraps", entryAt(0xFFFFFFF0u, 0x20), DwgPreviewError::EntryOutOfFile},
      {"entry size wraps", entryAt(16, 0xFFFFFFFFu), DwgPreviewError::EntryOutOfFile},
      // Inside the file but too short for its own rows.
      {"entry short of its rows", Patched(good, entry + 5, uint32_t(dib.size() - 1)),
       DwgPreviewError::PixelsTruncated},
  };
  for (const Case& c : cases) EXPECT_EQ(ReadDwgPreview(c.bytes).error, c.error) << c.name;
}

TEST(DwgPreviewReader, ReadsOnlyWhatItNeedsFromAHugeFile) {
  // A 8 GiB file served piecewise: the head and table are real, the rest is
  // never there. The reader must refuse the 2 GiB entry without asking for it.
  std::string head = MakeDrawing({{1, std::string(80, '\0')}, {2, "dib"}});
  PutLe32(head, EntryOffset(0x100, 1) + 1, 0x10000000u);
  PutLe32(head, EntryOffset(0x100, 1) + 5, 0x80000000u);
  size_t largest = 0;
  const DwgByteSource source = [&](uint64_t offset, size_t length, std::string& out) {
    largest = std::max(largest, length);
    if (offset + length > head.size()) return false;
    out = head.substr(offset, length);
    return true;
  };
  EXPECT_EQ(ReadDwgPreview(8ull << 30, source).error, DwgPreviewError::TooLarge);
  EXPECT_LT(largest, 64u);
  // Inside the limit, a read the source cannot serve is a failure value.
  PutLe32(head, EntryOffset(0x100, 1) + 5, 4096);
  EXPECT_EQ(ReadDwgPreview(8ull << 30, source).error, DwgPreviewError::ReadFailed);
}

TEST(DwgPreviewReader, BmpEntryWinsOverPngAndGarbagePngIsNoPicture) {
  QImage blue(3, 3, QImage::Format_RGB32);
  blue.fill(QColor(0, 0, 255));
  const std::string png = service::EncodePng(blue);
  EXPECT_EQ(ReadDwgPreview(MakeDrawing({{6, png}, {1, "h"}, {2, MakeDib(blue, 24)}})).kind, DwgPreviewKind::Bmp);
  const DwgPreview onlyPng = ReadDwgPreview(MakeDrawing({{1, "h"}, {6, png}}));
  EXPECT_EQ(onlyPng.kind, DwgPreviewKind::Png);
  EXPECT_EQ(PreviewToImage(onlyPng).pixel(1, 1), qRgb(0, 0, 255));
  // Transparent parts of a PNG preview stand on white.
  QImage clear(3, 3, QImage::Format_ARGB32);
  clear.fill(Qt::transparent);
  clear.setPixel(1, 1, qRgba(255, 0, 0, 255));
  const QImage onWhite = PreviewToImage(ReadDwgPreview(MakeDrawing({{6, service::EncodePng(clear)}})));
  ASSERT_EQ(onWhite.size(), QSize(3, 3));
  EXPECT_EQ(onWhite.pixel(0, 0), qRgb(255, 255, 255));
  EXPECT_EQ(onWhite.pixel(1, 1), qRgb(255, 0, 0));

  EXPECT_EQ(ReadDwgPreview(MakeDrawing({{6, "not a png at all, not even close"}})).error,
            DwgPreviewError::BadPng);
  // A good signature and header with broken data behind: the reader passes
  // it on, the image step refuses it.
  const DwgPreview garbage = ReadDwgPreview(MakeDrawing({{6, png.substr(0, 33) + std::string(64, '\x5a')}}));
  ASSERT_EQ(garbage.kind, DwgPreviewKind::Png);
  EXPECT_TRUE(PreviewToImage(garbage).isNull());
  // A header that claims a picture of 100000 x 100000 is refused before decoding.
  std::string huge = png;
  huge[16] = 0, huge[17] = 1, huge[18] = char(0x86), huge[19] = char(0xa0);
  EXPECT_EQ(ReadDwgPreview(MakeDrawing({{6, huge}})).error, DwgPreviewError::TooLarge);
}

TEST(DwgPreviewReader, MutatedRealFilesNeverCrash) {
  // Every byte of the section head and table, and spread bytes elsewhere,
  // set to a few hostile values; the reader must only ever answer.
  for (const char* name : {"bmp8_ac1015.dwg", "png_ac1032.dwg"}) {
    const std::string bytes = RealFile(name);
    const uint32_t address = uint32_t(uint8_t(bytes[13])) | uint32_t(uint8_t(bytes[14])) << 8;
    int pictures = 0, failures = 0;
    for (size_t at = 0; at < bytes.size(); at += (at >= 13 && at < address + 60) ? 1 : 97) {
      for (char value : {'\0', '\x7f', '\x80', '\xff'}) {
        const DwgPreview preview = ReadDwgPreview(WithByte(bytes, at, value));
        (preview.HasPicture() ? pictures : failures)++;
        if (preview.kind == DwgPreviewKind::Bmp) {
          EXPECT_EQ(preview.pixels.size(), size_t(preview.width) * size_t(preview.height));
        }
        PreviewToImage(preview);
      }
    }
    EXPECT_GT(pictures, 0) << name;
    EXPECT_GT(failures, 0) << name;
  }
}

}  // namespace
}  // namespace marrowfin::test
