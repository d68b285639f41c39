// The archive reader on good, damaged and random input: never a crash, and a
// damaged archive is refused rather than half read.

#include "archive_reader.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

#include <minizip/zip.h>

#include <gtest/gtest.h>

using namespace marrowfin;
using namespace marrowfin::service;

namespace {

void WriteZip(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries) {
    zipFile zip = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
    ASSERT_NE(nullptr, zip);
    for (const auto& [name, data] : entries) {
        zip_fileinfo info{};
        ASSERT_EQ(ZIP_OK, zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                              Z_DEFAULT_COMPRESSION));
        if (!data.empty()) zipWriteInFileInZip(zip, data.data(), static_cast<unsigned>(data.size()));
        zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
}

}  // namespace

TEST(ArchiveReader, SplitsDoubleSlashNamesAndKeepsOrder) {
    test::TempHome home;
    const std::string path = home.file("a.zip");
    const std::string big(200000, 'q');  // more than one read buffer
    WriteZip(path, {{"10001//门窗/", ""}, {"10001//门窗//单开门.dwg", big}, {"10001/top.dwg", "x"}});
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
    const std::string good = home.file("good.zip");
    WriteZip(good, {{"1//a//x.dwg", std::string(3000, 'x')}, {"1//b/", ""}, {"1//b//y.dwg", "AC1015 yyyyyyyyyyyy"}});
    const std::string bytes = test::ReadBytes(good);
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
