// The generated library on disk: the .dwg preview section against real
// drawings, the pictures in it, determinism, and the library's contents; and
// the archive reader on good, damaged and random input.

#include "archive_reader.h"
#include "dwg_writer.h"
#include "library_catalog.h"
#include "sample_generator.h"
#include "symbol_painter.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "zip_maker.h"

#include <QImage>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;
using namespace marrowfin;
using namespace marrowfin::service;

namespace {

struct Entry {
    int code = 0;
    uint32_t start = 0;
    uint32_t size = 0;
};

uint32_t U32(const std::string& b, size_t at) {
    return static_cast<uint8_t>(b[at]) | static_cast<uint8_t>(b[at + 1]) << 8 | static_cast<uint8_t>(b[at + 2]) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 3])) << 24;
}

// Reads a preview section the way a careful reader would, failing the test on
// every rule that a real drawing keeps.
std::vector<Entry> ReadPreview(const std::string& b, const std::string& what) {
    std::vector<Entry> entries;
    EXPECT_GT(b.size(), 0x20u) << what;
    if (b.size() < 0x20) return entries;
    const uint32_t at = U32(b, 0x0D);
    EXPECT_LT(at + 21u, b.size()) << what;
    if (at + 21u >= b.size()) return entries;
    EXPECT_EQ(0, std::memcmp(b.data() + at, kPreviewStartSentinel, 16)) << what;
    const uint32_t overall = U32(b, at + 16);
    const size_t end = at + 20 + overall;
    EXPECT_LE(end + 16, b.size()) << what;
    if (end + 16 > b.size()) return entries;
    EXPECT_EQ(0, std::memcmp(b.data() + end, kPreviewEndSentinel, 16)) << what << ": end sentinel";
    const int count = static_cast<uint8_t>(b[at + 20]);
    for (int i = 0; i < count; ++i) {
        const size_t p = at + 21 + 9 * i;
        Entry e{static_cast<uint8_t>(b[p]), U32(b, p + 1), U32(b, p + 5)};
        EXPECT_GE(e.start, at + 21 + 9 * count) << what << ": entry inside the table";
        EXPECT_LE(e.start + e.size, end) << what << ": entry beyond the section";
        entries.push_back(e);
    }
    // The last entry's data ends where the end sentinel starts.
    if (!entries.empty()) {
        EXPECT_EQ(entries.back().start + entries.back().size, end) << what;
    }
    return entries;
}

QImage DecodeDib(const std::string& dib) {
    // A BMP file is the DIB behind a 14-byte file header.
    std::string file = "BM";
    const uint32_t total = static_cast<uint32_t>(14 + dib.size());
    const uint32_t pixels = 14 + 40 + 256 * 4;
    for (uint32_t v : {total, 0u, pixels})
        for (int i = 0; i < 4; ++i) file.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
    file += dib;
    return QImage::fromData(reinterpret_cast<const uchar*>(file.data()), static_cast<int>(file.size()), "BMP");
}

// Pixels darker than 80 and lighter than 240 in grey.
std::pair<int, int> DarkAndWhite(const QImage& image) {
    int dark = 0, white = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int g = qGray(image.pixel(x, y));
            dark += g < 80;
            white += g > 240;
        }
    return {dark, white};
}

std::string ArtifactDir() {
    const std::string dir = fs::temp_directory_path() / "marrowfin-service-artifacts";
    fs::create_directories(dir);
    return dir;
}

}  // namespace

TEST(SampleLibrary, PreviewSectionFollowsRealDrawings) {
    // The reader rules hold for the real files first, so they are the right rules.
    const std::string real = test::SharedDir() + "/testdata/dwg/";
    for (const char* name : {"bmp8_ac1014.dwg", "bmp8_ac1015.dwg", "bmp8_ac1024.dwg", "png_ac1027.dwg", "png_ac1032.dwg"}) {
        const std::vector<Entry> e = ReadPreview(test::ReadBytes(real + name), name);
        ASSERT_EQ(2u, e.size()) << name;
        EXPECT_EQ(1, e[0].code);
        EXPECT_EQ(80u, e[0].size);
    }
    const std::string bmpFile = BuildDwgContainer(PreviewKind::Bmp8, std::string(40 + 1024 + 180 * 120, '\x07'));
    std::vector<Entry> e = ReadPreview(bmpFile, "generated bmp");
    ASSERT_EQ(2u, e.size());
    EXPECT_EQ(1, e[0].code);
    EXPECT_EQ(2, e[1].code);
    EXPECT_EQ(0, bmpFile.compare(0, 6, "AC1015"));
    // A tiny PNG entry still gives a file above the client's failed-download bound.
    const std::string pngFile = BuildDwgContainer(PreviewKind::Png, "\x89PNG\r\n\x1a\n tiny");
    e = ReadPreview(pngFile, "generated png");
    ASSERT_EQ(2u, e.size());
    EXPECT_EQ(6, e[1].code);
    EXPECT_EQ(0, pngFile.compare(0, 6, "AC1027"));
    EXPECT_GT(pngFile.size(), 1025u);
}

TEST(SampleLibrary, BlocksCarryDecodablePreviewsOfDrawnSymbols) {
    test::TempHome home;
    const std::string out = home.file("lib");
    ASSERT_TRUE(GenerateSample(out, SampleOptions{2, 4, 10}).ok);
    int bmp = 0, png = 0;
    for (const auto& f : fs::recursive_directory_iterator(out + "/blocks")) {
        if (!f.is_regular_file()) continue;
        const std::string bytes = test::ReadBytes(f.path().string());
        ASSERT_GT(bytes.size(), 1025u) << f.path();
        const std::vector<Entry> e = ReadPreview(bytes, f.path().string());
        ASSERT_EQ(2u, e.size());
        const std::string picture = bytes.substr(e[1].start, e[1].size);
        QImage image;
        if (e[1].code == kEntryBmp) {
            // 8-bit DIB: 40-byte header, 256 colours, rows padded to 4 bytes.
            EXPECT_EQ(40u, U32(picture, 0));
            EXPECT_EQ(8, static_cast<uint8_t>(picture[14]));
            EXPECT_EQ(256u, U32(picture, 32));
            const uint32_t w = U32(picture, 4), h = U32(picture, 8);
            EXPECT_EQ(40u + 1024u + ((w + 3) & ~3u) * h, picture.size());
            image = DecodeDib(picture);
            if (bmp++ == 0) image.save(QString::fromStdString(ArtifactDir() + "/block_bmp.png"));
        } else {
            ASSERT_EQ(kEntryPng, e[1].code);
            image = QImage::fromData(reinterpret_cast<const uchar*>(picture.data()), static_cast<int>(picture.size()), "PNG");
            if (png++ == 0) image.save(QString::fromStdString(ArtifactDir() + "/block_png.png"));
        }
        ASSERT_FALSE(image.isNull()) << f.path();
        // A drawn symbol: mostly white paper with dark lines on it.
        const auto [dark, white] = DarkAndWhite(image);
        EXPECT_GT(dark, 50) << f.path();
        EXPECT_GT(white, image.width() * image.height() / 2) << f.path();
    }
    EXPECT_GT(bmp, 0);
    EXPECT_GT(png, 0);
}

TEST(SampleLibrary, SameSeedSameBytesOtherSeedOtherLibrary) {
    test::TempHome home;
    SampleOptions options{3, 2, 3, 42};
    ASSERT_TRUE(GenerateSample(home.file("a"), options).ok);
    ASSERT_TRUE(GenerateSample(home.file("b"), options).ok);
    options.seed = 43;
    ASSERT_TRUE(GenerateSample(home.file("c"), options).ok);
    auto snapshot = [](const std::string& dir) {
        std::map<std::string, std::string> files;
        for (const auto& f : fs::recursive_directory_iterator(dir))
            if (f.is_regular_file()) files[fs::relative(f.path(), dir).string()] = test::ReadBytes(f.path().string());
        return files;
    };
    const auto a = snapshot(home.file("a"));
    EXPECT_EQ(a, snapshot(home.file("b")));
    EXPECT_NE(a.at("library.tsv"), snapshot(home.file("c")).at("library.tsv"));
    // A second run into the same folder replaces the library, it doesn't add to it.
    options.seed = 42;
    options.galleries = 1;
    ASSERT_TRUE(GenerateSample(home.file("a"), options).ok);
    LibraryCatalog catalog;
    std::string error;
    ASSERT_TRUE(catalog.load(home.file("a"), error)) << error;
    EXPECT_EQ(1u, catalog.galleries().size());
    int blockDirs = 0;
    for (const auto& f : fs::directory_iterator(home.file("a") + "/blocks")) blockDirs += f.is_directory();
    EXPECT_EQ(1, blockDirs);
}

TEST(SampleLibrary, LibraryHasTheVarietyClientsNeed) {
    test::TempHome home;
    SampleOptions options;  // the default sample
    const SampleResult r = GenerateSample(home.file("lib"), options);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(400, r.blocks);
    LibraryCatalog catalog;
    std::string error;
    ASSERT_TRUE(catalog.load(home.file("lib"), error)) << error;
    bool chinese = false, latin = false, boutique = false, plain = false, hidden = false;
    std::set<int> versions;
    for (const CatalogGallery& g : catalog.galleries()) {
        (static_cast<unsigned char>(g.name[0]) >= 0x80 ? chinese : latin) = true;
        (g.boutique ? boutique : plain) = true;
        for (const CatalogClass& c : g.classes) {
            versions.insert(c.version);
            for (const CatalogBlock& b : c.blocks) hidden |= b.hidden;
        }
    }
    EXPECT_TRUE(chinese && latin && boutique && plain && hidden);
    EXPECT_GE(versions.size(), 3u);
    const std::string def = test::ReadBytes(home.file("lib/selpageinfo_def.xml"));
    const std::string hot = test::ReadBytes(home.file("lib/selpageinfo_hot.xml"));
    EXPECT_NE(std::string::npos, def.find("<sort id=\"精品图库\""));
    EXPECT_NE(std::string::npos, def.find("<sort id=\"通用图库\""));
    EXPECT_NE(std::string::npos, def.find("<kind>全部</kind>"));
    EXPECT_NE(def, hot);  // a different order of the same items
    EXPECT_EQ(def.size(), hot.size());
    EXPECT_NE(std::string::npos, test::ReadBytes(home.file("lib/hotwords.xml")).find("<hot_words><item>"));
    ASSERT_EQ(3u, catalog.ads().size());
    for (const CatalogAd& ad : catalog.ads()) {
        QImage picture(QString::fromStdString(home.file("lib/ads/" + ad.picture)));
        EXPECT_FALSE(picture.isNull()) << ad.picture;
    }
    EXPECT_FALSE(GenerateSample(home.file("bad"), SampleOptions{0, 1, 1, 1}).ok);
}

TEST(SampleLibrary, EverySymbolKindDrawsItsOwnPicture) {
    // One contact sheet of all kinds in two variants, for a look by eye, and
    // a check that each kind draws something and no two kinds are the same.
    const int kinds = static_cast<int>(SymbolKind::Count);
    QImage sheet(180 * kinds, 240, QImage::Format_RGB32);
    sheet.fill(Qt::gray);
    std::set<std::string> seen;
    for (int k = 0; k < kinds; ++k) {
        for (uint32_t variant = 0; variant < 2; ++variant) {
            const QImage image = DrawSymbol(static_cast<SymbolKind>(k), variant, 180, 120);
            EXPECT_GT(DarkAndWhite(image).first, 100) << "kind " << k << " variant " << variant;
            const std::string dib = EncodeDib8(image);
            EXPECT_TRUE(seen.insert(dib).second) << "kind " << k << " variant " << variant << " looks like another";
            for (int y = 0; y < 120; ++y)
                for (int x = 0; x < 180; ++x) sheet.setPixel(k * 180 + x, static_cast<int>(variant) * 120 + y, image.pixel(x, y));
        }
    }
    sheet.save(QString::fromStdString(ArtifactDir() + "/symbols.png"));
}

TEST(ArchiveReader, SplitsDoubleSlashNamesAndKeepsOrder) {
    test::TempHome home;
    const std::string path = home.file("a.zip");
    const std::string big(200000, 'q');  // more than one read buffer
    ASSERT_FALSE(test::MakeZip(path, {{"10001//门窗/", ""}, {"10001//门窗//单开门.dwg", big}, {"10001/top.dwg", "x"}}).empty());
    std::vector<ArchiveEntry> entries;
    std::string error;
    ASSERT_TRUE(ReadArchive(path, entries, error)) << error;
    ASSERT_EQ(3u, entries.size());
    EXPECT_TRUE(entries[0].directory);
    EXPECT_EQ((std::vector<std::string>{"10001", "门窗"}), entries[0].parts);
    EXPECT_EQ((std::vector<std::string>{"10001", "门窗", "单开门.dwg"}), entries[1].parts);
    EXPECT_EQ(big, entries[1].data);
    EXPECT_EQ((std::vector<std::string>{"10001", "top.dwg"}), entries[2].parts);

    EXPECT_FALSE(ReadArchive(home.file("missing.zip"), entries, error));
    test::WriteBytes(home.file("empty.zip"), "");
    EXPECT_FALSE(ReadArchive(home.file("empty.zip"), entries, error));
}

TEST(ArchiveReader, DamagedArchivesNeverCrash) {
    // Deterministic mutations of a good archive: flipped bytes, cut tails.
    test::TempHome home;
    const std::string bytes =
        test::MakeZip(home.file("good.zip"), {{"1//a//x.dwg", std::string(3000, 'x')}, {"1//b/", ""}, {"1//b//y.dwg", "AC1015 yyyyyyyyyyyy"}});
    ASSERT_GT(bytes.size(), 100u);
    uint64_t state = 12345;
    auto next = [&state] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<uint32_t>(state >> 33);
    };
    int refused = 0;
    const std::string bad = home.file("bad.zip");
    for (int round = 0; round < 400; ++round) {
        std::string copy = bytes;
        if (round % 4 == 3) {
            copy.resize(next() % copy.size());
        } else {
            for (int i = 0; i < 1 + round % 5; ++i) copy[next() % copy.size()] = static_cast<char>(next());
        }
        test::WriteBytes(bad, copy);
        std::vector<ArchiveEntry> entries;
        std::string error;
        if (!ReadArchive(bad, entries, error)) {
            ++refused;
            EXPECT_FALSE(error.empty());
        }
    }
    // Cut archives lose their directory, so many rounds must be refused.
    EXPECT_GT(refused, 100);
}
