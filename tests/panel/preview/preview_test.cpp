// The preview reader on the real drawings, on the stand-in service's block
// files (decoded into the contact sheet), and on hostile files: sections, tables, entries and bitmap headers
// that lie about their offsets and sizes; and the fitting of previews into the
// grid's and the result rows' cells.

#include <QBuffer>
#include <QPainter>

#include "dwg_writer.h"
#include "panel/preview/dwg_preview.h"
#include "panel/preview/fit_thumbnail.h"
#include "platform/text.h"
#include "support/reference_picture.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "symbol_painter.h"

namespace marrowfin::test {
namespace {

using E = DwgPreviewError;

void PutLe32(std::string& bytes, size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[offset + i] = char((value >> (8 * i)) & 0xff);
}
std::string Patched(std::string bytes, size_t offset, uint32_t value) {
    PutLe32(bytes, offset, value);
    return bytes;
}
std::string WithByte(std::string bytes, size_t offset, char value) {
    bytes[offset] = value;
    return bytes;
}

std::string RealFile(const char* name) { return ReadBytes(SharedDir() + "/testdata/dwg/" + name); }
QString RealPath(const char* name) { return QString::fromStdString(SharedDir() + "/testdata/dwg/" + name); }

// `image` as Qt's own writer of `format` makes it.
std::string Encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes.toStdString();
}
// The headerless DIB Qt's own BMP writer makes of `image` (1, 4, 8 or 24 bits by its format).
std::string Dib(const QImage& image) { return Encoded(image, "BMP").substr(14); }

// A preview section at `address` with the given entries (code, data) placed behind the table.
std::string MakeDrawing(const std::vector<std::pair<uint8_t, std::string>>& entries, uint32_t address = 0x100) {
    static const unsigned char sentinel[16] = {0x1F, 0x25, 0x6D, 0x07, 0xD4, 0x36, 0x28, 0x28,
                                               0x9D, 0x57, 0xCA, 0x3F, 0x9D, 0x44, 0x10, 0x2B};
    std::string file = "AC1015";
    file.resize(address + 21, '\0');
    PutLe32(file, 0x0D, address);
    std::memcpy(file.data() + address, sentinel, 16);
    file[address + 20] = char(entries.size());
    uint32_t dataStart = address + 21 + 9 * uint32_t(entries.size());
    std::string data;
    for (const auto& [code, bytes] : entries) {
        file += char(code);
        file.append(8, '\0');
        PutLe32(file, file.size() - 8, dataStart + uint32_t(data.size()));
        PutLe32(file, file.size() - 4, uint32_t(bytes.size()));
        data += bytes;
    }
    PutLe32(file, address + 16, uint32_t(1 + 9 * entries.size() + data.size()));
    return file + data;
}

// Offset of the table entry `index` in a file made by MakeDrawing.
size_t EntryOffset(uint32_t address, int index) { return address + 21 + 9 * size_t(index); }

TEST(DwgPreviewReader, RealDrawingsAndFilesOnDisk) {
    // What the real drawings decode to is in the contact sheet; a drawing with a header entry only has none.
    EXPECT_EQ(ReadDwgPreview(RealFile("header_only_ac1032.dwg")).error, DwgPreviewError::NoPicture);
    // R11 has no preview section: the address at 0x0D points past the end (its cell's state: the grid's test).
    EXPECT_TRUE(LoadDwgPreview(RealPath("no_preview_ac1009.dwg")).isNull());

    // On disk: a missing file, a name with spaces and Chinese, a file cut inside the picture entry.
    TempHome home;
    EXPECT_EQ(ReadDwgPreviewFile(Utf8ToUtf16(home.file("missing.dwg"))).error, DwgPreviewError::ReadFailed);
    EXPECT_TRUE(LoadDwgPreview(QString::fromStdString(home.file("missing.dwg"))).isNull());
    const std::string path = home.file("单开门 01.dwg"), drawing = RealFile("bmp8_ac1015.dwg");
    WriteBytes(path, drawing);
    EXPECT_EQ(LoadDwgPreview(QString::fromStdString(path)).size(), QSize(180, 88));
    WriteBytes(path, drawing.substr(0, 0x153 + 1000));
    EXPECT_EQ(ReadDwgPreviewFile(Utf8ToUtf16(path)).error, DwgPreviewError::EntryOutOfFile);
    EXPECT_TRUE(LoadDwgPreview(QString::fromStdString(path)).isNull());
}

TEST(DwgPreviewReader, SectionTableAndEntryFailuresAndAHugeFileReadOnlyWhereNeeded) {
    const std::string dib = Dib(QImage(4, 2, QImage::Format_RGB32));
    const std::string good = MakeDrawing({{1, std::string(80, '\0')}, {2, dib}});
    ASSERT_EQ(ReadDwgPreview(good).kind, DwgPreviewKind::Bmp);
    const size_t count = 0x100 + 20, entry = EntryOffset(0x100, 1);
    // A count of 255 over a file cut behind the BMP entry: the entry is there, its data is not.
    const std::string many = WithByte(good.substr(0, EntryOffset(0x100, 2)), count, char(255));
    auto entryAt = [&](uint32_t start, uint32_t size) { return Patched(Patched(good, entry + 1, start), entry + 5, size); };
    QImage blue(3, 3, QImage::Format_RGB32);
    blue.fill(QColor(0, 0, 255));
    const std::string png = service::EncodePng(blue);
    std::string hugePng = png;  // a header claiming 100000 x 100000
    hugePng[16] = 0, hugePng[17] = 1, hugePng[18] = char(0x86), hugePng[19] = char(0xa0);
    const std::tuple<const char*, std::string, DwgPreviewError> cases[] = {
        {"empty", "", E::ShortFile},
        {"cut in the file head", good.substr(0, 16), E::ShortFile},
        {"cut in the section head", good.substr(0, 0x100 + 20), E::SectionOutOfFile},
        {"section far out", Patched(good, 0x0D, 0xFFFFFFFFu), E::SectionOutOfFile},
        {"section at the end", Patched(good, 0x0D, uint32_t(good.size() - 20)), E::SectionOutOfFile},
        {"sentinel", WithByte(good, 0x100 + 15, char(good[0x100 + 15] ^ 1)), E::BadSentinel},
        {"no entries", WithByte(good, count, 0), E::NoEntries},
        {"count past a short file", many, E::EntryOutOfFile},
        {"count past the table", WithByte(MakeDrawing({{1, std::string(80, '\0')}}), count, char(200)), E::TableTruncated},
        {"only a header and a metafile", MakeDrawing({{1, "x"}, {3, "wmf"}}), E::NoPicture},
        {"entry starts at the end", entryAt(uint32_t(good.size()), 1), E::EntryOutOfFile},
        {"entry one byte too long", entryAt(0, uint32_t(good.size() + 1)), E::EntryOutOfFile},
        {"entry start wraps", entryAt(0xFFFFFFF0u, 0x20), E::EntryOutOfFile},
        {"entry size wraps", entryAt(16, 0xFFFFFFFFu), E::EntryOutOfFile},
        {"entry short of its rows", Patched(good, entry + 5, uint32_t(dib.size() - 1)), E::PixelsTruncated},
        {"garbage png", MakeDrawing({{6, "not a png at all, not even close"}}), E::BadPng},
        {"huge png", MakeDrawing({{6, hugePng}}), E::TooLarge},
    };
    for (const auto& [name, bytes, error] : cases) EXPECT_EQ(ReadDwgPreview(bytes).error, error) << name;

    // The BMP entry wins over a PNG one; transparent parts of a PNG stand on white.
    EXPECT_EQ(ReadDwgPreview(MakeDrawing({{6, png}, {1, "h"}, {2, Dib(blue)}})).kind, DwgPreviewKind::Bmp);
    EXPECT_EQ(PreviewToImage(ReadDwgPreview(MakeDrawing({{1, "h"}, {6, png}}))).pixel(1, 1), qRgb(0, 0, 255));
    QImage clear(3, 3, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    clear.setPixel(1, 1, qRgba(255, 0, 0, 255));
    const QImage onWhite = PreviewToImage(ReadDwgPreview(MakeDrawing({{6, service::EncodePng(clear)}})));
    ASSERT_EQ(onWhite.size(), QSize(3, 3));
    EXPECT_TRUE(onWhite.pixel(0, 0) == qRgb(255, 255, 255) && onWhite.pixel(1, 1) == qRgb(255, 0, 0));
    // A good signature and header with broken data behind: the image step refuses it.
    const DwgPreview garbage = ReadDwgPreview(MakeDrawing({{6, png.substr(0, 33) + std::string(64, '\x5a')}}));
    ASSERT_EQ(garbage.kind, DwgPreviewKind::Png);
    EXPECT_TRUE(PreviewToImage(garbage).isNull());

    // An 8 GiB file served piecewise: the reader refuses the 2 GiB entry without asking for it.
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

TEST(DwgPreviewReader, MutatedRealFilesNeverCrash) {
    // Every byte of the section head and table, and spread bytes elsewhere, set to hostile values.
    for (const char* name : {"bmp8_ac1015.dwg", "png_ac1032.dwg"}) {
        const std::string bytes = RealFile(name);
        const uint32_t address = uint32_t(uint8_t(bytes[13])) | uint32_t(uint8_t(bytes[14])) << 8;
        int pictures = 0, failures = 0;
        for (size_t at = 0; at < bytes.size(); at += (at >= 13 && at < address + 60) ? 1 : 97)
            for (char value : {'\0', '\x7f', '\x80', '\xff'}) {
                const DwgPreview preview = ReadDwgPreview(WithByte(bytes, at, value));
                (preview.HasPicture() ? pictures : failures)++;
                if (preview.kind == DwgPreviewKind::Bmp) {
                    EXPECT_EQ(preview.pixels.size(), size_t(preview.width) * size_t(preview.height));
                }
                PreviewToImage(preview);
            }
        EXPECT_GT(pictures, 0) << name;
        EXPECT_GT(failures, 0) << name;
    }
}

// 11 x 5: an odd width so rows need padding and low depths end mid-byte; a
// colour in each corner so that row order and mirroring show.
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

TEST(DwgPreviewBitmap, EveryDepthDecodesAndHostileHeadersAreRefused) {
    // Each depth as Qt writes it decodes to what Qt made of the pattern for that depth.
    const QImage pattern = Pattern();
    const QList<QRgb> sixteen = {qRgb(0, 0, 0), qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255)};
    QList<QRgb> full = sixteen;
    for (int i = 5; i < 256; ++i) full.push_back(qRgb(i, 255 - i, (i * 7) & 0xff));
    const QImage depths[] = {pattern.convertToFormat(QImage::Format_Mono, Qt::ThresholdDither),
                             pattern.convertToFormat(QImage::Format_Indexed8, sixteen),
                             pattern.convertToFormat(QImage::Format_Indexed8, full), pattern};
    for (const QImage& image : depths) {
        const DwgPreview preview = DecodePreviewBitmap(Dib(image));
        ASSERT_EQ(preview.error, DwgPreviewError::None) << image.format();
        EXPECT_EQ(PreviewToImage(preview), image.convertToFormat(QImage::Format_RGB32)) << image.format();
    }
    EXPECT_EQ(DecodePreviewBitmap(Dib(depths[1])).bitCount, 4);
    // Top-down rows (a negative height) and 32 bits per pixel, made from Qt's 24-bit rows.
    const int w = pattern.width(), h = pattern.height();
    EXPECT_EQ(PreviewToImage(DecodePreviewBitmap(Patched(Dib(pattern.mirrored()), 8, uint32_t(-h)))), pattern);
    std::string dib32 = WithByte(Dib(pattern).substr(0, 40), 14, 32);
    for (int y = h - 1; y >= 0; --y)
        for (int x = 0; x < w; ++x) {
            const QRgb c = pattern.pixel(x, y);
            dib32 += {char(qBlue(c)), char(qGreen(c)), char(qRed(c)), '\0'};
        }
    EXPECT_EQ(PreviewToImage(DecodePreviewBitmap(dib32)), pattern);
    // A short colour table: indices past its end are black, not a read past it.
    const QImage twoColours = pattern.convertToFormat(QImage::Format_Indexed8, {qRgb(10, 20, 30), qRgb(40, 50, 60)});
    std::string shortTable = Dib(twoColours);
    ASSERT_EQ(uint8_t(shortTable[32]), 2);
    shortTable[40 + 2 * 4] = char(200);  // bottom row, first pixel
    const DwgPreview withShortTable = DecodePreviewBitmap(shortTable);
    ASSERT_EQ(withShortTable.error, DwgPreviewError::None);
    EXPECT_EQ(withShortTable.pixels[4 * 11] & 0xffffff, 0u);

    const std::string dib = Dib(pattern);
    const std::string unpadded = dib.substr(0, dib.size() - 3);  // the last row may leave out its padding
    const std::tuple<const char*, std::string, DwgPreviewError> cases[] = {
        {"cut header", dib.substr(0, 39), E::BadBitmapHeader},
        {"header too small", Patched(dib, 0, 12), E::BadBitmapHeader},
        {"header past the entry", Patched(dib, 0, 0x7fffffff), E::BadBitmapHeader},
        {"no width", Patched(dib, 4, 0), E::BadBitmapHeader},
        {"negative width", Patched(dib, 4, 0xfffffff5u), E::BadBitmapHeader},
        {"no height", Patched(dib, 8, 0), E::BadBitmapHeader},
        {"lowest height", Patched(dib, 8, 0x80000000u), E::BadBitmapHeader},
        {"two planes", WithByte(dib, 12, 2), E::BadBitmapHeader},
        {"huge width", Patched(dib, 4, 0x7fffffff), E::TooLarge},
        {"huge height", Patched(dib, 8, 0x7fffffff), E::TooLarge},
        {"huge top-down height", Patched(dib, 8, uint32_t(-5000)), E::TooLarge},
        {"allowed size, rows missing", Patched(dib, 4, 4096), E::PixelsTruncated},
        {"run-length coded", Patched(dib, 16, 1), E::UnsupportedBitmap},
        {"0 bits", WithByte(dib, 14, '\0'), E::UnsupportedBitmap},
        {"2 bits", WithByte(dib, 14, '\x02'), E::UnsupportedBitmap},
        {"16 bits", WithByte(dib, 14, '\x10'), E::UnsupportedBitmap},
        {"48 bits", WithByte(dib, 14, '\x30'), E::UnsupportedBitmap},
        {"last row unpadded", unpadded, E::None},
        {"last row short", unpadded.substr(0, unpadded.size() - 1), E::PixelsTruncated},
        {"colour count overstates the table", Patched(shortTable, 32, 100000), E::PixelsTruncated},
    };
    for (const auto& [name, bytes, error] : cases) EXPECT_EQ(DecodePreviewBitmap(bytes).error, error) << name;
}

QImage Filled(int w, int h, QRgb colour) {
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

TEST(FitThumbnail, ContactSheetOfPreviewsInBothCells) {
    std::vector<QImage> pictures;
    for (const char* name :
         {"bmp8_ac1014.dwg", "bmp8_ac1015.dwg", "bmp8_ac1024.dwg", "png_ac1027.dwg", "png_ac1032.dwg", "header_only_ac1032.dwg"})
        pictures.push_back(LoadDwgPreview(RealPath(name)));
    using namespace marrowfin::service;
    for (int k = 0; k < int(SymbolKind::Count); ++k) {
        const bool png = k % 3 == 2;
        const QImage symbol =
            png ? DrawSymbol(SymbolKind(k), uint32_t(k), 224, 140, true) : DrawSymbol(SymbolKind(k), uint32_t(k), 180, 120);
        pictures.push_back(PreviewToImage(
            ReadDwgPreview(BuildDwgContainer(png ? PreviewKind::Png : PreviewKind::Bmp8, png ? EncodePng(symbol) : EncodeDib8(symbol)))));
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
                               Filled(107, 64, qRgb(255, 255, 255)), Filled(400, 100, qRgb(0, 0, 255)), Filled(50, 200, qRgb(0, 0, 255)),
                               Filled(132, 80, qRgb(255, 255, 0)), Filled(1, 1, qRgb(255, 255, 255)), Filled(2000, 1, qRgb(255, 255, 255))})
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

// A PNG of a colour table, as Qt's writer makes it: 1, 2, 4 or 8 bits by the
// number of colours, a transparency chunk when a colour has alpha.
std::string PalettePng(int colours, QRgb ground, bool transparent) {
    QImage image(300, 170, QImage::Format_Indexed8);
    QList<QRgb> table{ground};
    for (int i = 1; i < colours; ++i) table.push_back(qRgb(i * 37 % 256, 255 - i, i * 91 % 256));
    if (transparent) table[1] = qRgba(255, 0, 0, 100);
    image.setColorTable(table);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, (x % 11 == 0 || y % 7 == 0) ? (x + y) % colours : 0);
    return Encoded(image, "PNG");
}

TEST(FitThumbnail, TheCellsRoadFitsWhatTheWholePictureFits) {
    // The cells read a PNG of an opaque colour table straight from libpng and
    // fit it through its table: the picture must be Qt's own decoding of it,
    // and the cell pixel for pixel the fitting of the whole RGB32 picture.
    std::vector<std::pair<std::string, bool>> drawings;  // bytes, read through its table
    for (const char* name : {"bmp8_ac1024.dwg", "png_ac1027.dwg", "png_ac1032.dwg"}) drawings.emplace_back(RealFile(name), name[0] == 'p');
    for (int colours : {2, 4, 16, 200})
        for (QRgb ground : {qRgb(0, 0, 0), qRgb(255, 255, 255)}) {
            const std::string png = PalettePng(colours, ground, false);
            drawings.emplace_back(MakeDrawing({{6, png}}), true);
            EXPECT_EQ(PreviewToImage(ReadDwgPreview(drawings.back().first)),
                      QImage::fromData(QByteArray::fromStdString(png), "PNG").convertToFormat(QImage::Format_RGB32))
                << colours;
        }
    drawings.emplace_back(MakeDrawing({{6, PalettePng(16, qRgb(0, 0, 0), true)}}), false);
    for (const auto& [bytes, indexed] : drawings) {
        const QImage picture = PreviewToImage(ReadDwgPreview(bytes));
        const QImage fittable = PreviewToFittable(ReadDwgPreview(bytes));
        ASSERT_FALSE(picture.isNull());
        EXPECT_EQ(fittable.format() == QImage::Format_Indexed8, indexed) << fittable.format();
        EXPECT_EQ(FitThumbnail(fittable, 0, 0, 1.0), FitThumbnail(picture, 0, 0, 1.0));
        EXPECT_EQ(FitThumbnail(fittable, 90, 60, 1.5), FitThumbnail(picture, 90, 60, 1.5));
        EXPECT_EQ(FitThumbnail(fittable, 0, 0, 3.0), FitThumbnail(picture, 0, 0, 3.0));
    }
}

TEST(FitThumbnail, SizesAndTinyCellsStayInsideTheCanvas) {
    // Units times the rate, truncated; no canvas for a rate or size out of range.
    EXPECT_EQ(FitThumbnail(QImage(), 0, 0, 1.7).size(), QSize(224, 136));
    EXPECT_TRUE(FitThumbnail(QImage(), 0, 0, 0.0).isNull() && FitThumbnail(QImage(), -3, 10, 1.0).isNull());
    // Small cells and awkward shapes: the asked size and a whole frame (and,
    // under the sanitizers, no write outside the canvas).
    for (int w = 1; w <= 12; ++w)
        for (int h = 1; h <= 12; ++h)
            for (QSize source : {QSize(1, 1), QSize(1, 300), QSize(300, 1), QSize(13, 7), QSize(w, h)}) {
                const QImage thumb = FitThumbnail(Filled(source.width(), source.height(), qRgb(255, 255, 255)), w, h, 1.0);
                ASSERT_EQ(thumb.size(), QSize(w, h));
                EXPECT_TRUE(thumb.pixel(0, 0) == kThumbnailFrameOther && thumb.pixel(w - 1, h - 1) == kThumbnailFrameOther)
                    << w << "x" << h;
            }
}

}  // namespace
}  // namespace marrowfin::test
