// The archive reader on damaged input, archives the upload refuses, and the
// sample library's determinism.

#include "archive_reader.h"
#include "library_catalog.h"
#include "sample_generator.h"
#include "service_fixture.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "zip_maker.h"

#include <filesystem>
#include <map>

namespace fs = std::filesystem;
using namespace marrowfin;
using namespace marrowfin::test;

TEST(ArchiveReader, GoodArchiveSplitsAndDamagedOnesNeverCrash) {
    TempHome home;
    const std::string big(200000, 'q');  // more than one read buffer
    const std::string bytes = MakeZip(home.file("good.zip"), {{"1//门窗/", ""}, {"1//门窗//单开门.dwg", big}, {"1/top.dwg", "x"}});
    std::vector<service::ArchiveEntry> entries;
    std::string error;
    ASSERT_TRUE(service::ReadArchive(home.file("good.zip"), entries, error)) << error;
    ASSERT_EQ(3u, entries.size());
    EXPECT_TRUE(entries[0].directory);
    EXPECT_EQ((std::vector<std::string>{"1", "门窗", "单开门.dwg"}), entries[1].parts);
    EXPECT_EQ(big, entries[1].data);
    EXPECT_EQ((std::vector<std::string>{"1", "top.dwg"}), entries[2].parts);
    EXPECT_FALSE(service::ReadArchive(home.file("missing.zip"), entries, error));

    // Deterministic mutations of the good archive: flipped bytes, cut tails.
    uint64_t state = 12345;
    auto next = [&state] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<uint32_t>(state >> 33);
    };
    int refused = 0;
    for (int round = 0; round < 400; ++round) {
        std::string copy = bytes;
        if (round % 4 == 3) {
            copy.resize(next() % copy.size());
        } else {
            for (int i = 0; i < 1 + round % 5; ++i) copy[next() % copy.size()] = static_cast<char>(next());
        }
        WriteBytes(home.file("bad.zip"), copy);
        if (!service::ReadArchive(home.file("bad.zip"), entries, error)) {
            ++refused;
            EXPECT_FALSE(error.empty());
        }
    }
    EXPECT_GT(refused, 100) << "cut archives lose their directory";
}

TEST_F(ServiceTest, UploadRefusesBadArchivesAndStartsNothing) {
    auto upload = [&](const std::string& archive) {
        httplib::MultipartFormDataItems items = {{"parent_dir", "", "", ""}, {"file", archive, "10001.zip", "application/octet-stream"}};
        auto res = client().Post("/gallery/lfupload", items);
        return res ? res->body : "<no reply>";
    };
    ASSERT_EQ("ok", admin("/admin/user?number=20002&token=other"));
    EXPECT_EQ("error", upload("this is no zip"));
    EXPECT_EQ("error", upload(MakeZip(m_home->file("f.zip"), {{"10001//a//x.dwg", "AC1015x"}, {"20002//a//y.dwg", "AC1015y"}})))
        << "mixed users";
    EXPECT_EQ("error", upload(MakeZip(m_home->file("u.zip"), {{"777//a//x.dwg", "AC1015xxxx"}}))) << "unknown user";
    EXPECT_EQ("0", post("/gallery/lfstatu?usertoken=" + DemoToken())) << "a refused archive starts nothing";
    EXPECT_EQ(400, postStatus("/gallery/lfstatu?usertoken=nobody"));
}

TEST(SampleLibrary, SameSeedSameBytesOtherSeedOtherLibrary) {
    TempHome home;
    service::SampleOptions options{3, 2, 3, 42};
    ASSERT_TRUE(service::GenerateSample(home.file("a"), options).ok);
    ASSERT_TRUE(service::GenerateSample(home.file("b"), options).ok);
    options.seed = 43;
    ASSERT_TRUE(service::GenerateSample(home.file("c"), options).ok);
    auto snapshot = [](const std::string& dir) {
        std::map<std::string, std::string> files;
        for (const auto& f : fs::recursive_directory_iterator(dir))
            if (f.is_regular_file()) files[fs::relative(f.path(), dir).string()] = ReadBytes(f.path().string());
        return files;
    };
    const auto a = snapshot(home.file("a"));
    EXPECT_EQ(a, snapshot(home.file("b")));
    EXPECT_NE(a.at("library.tsv"), snapshot(home.file("c")).at("library.tsv"));
    // A second run into the same folder replaces the library, it doesn't add to it.
    options.seed = 42;
    options.galleries = 1;
    ASSERT_TRUE(service::GenerateSample(home.file("a"), options).ok);
    service::LibraryCatalog catalog;
    std::string error;
    ASSERT_TRUE(catalog.load(home.file("a"), error)) << error;
    EXPECT_EQ(1u, catalog.galleries().size());
    EXPECT_EQ(1, std::distance(fs::directory_iterator(home.file("a") + "/blocks"), fs::directory_iterator()));
    EXPECT_FALSE(service::GenerateSample(home.file("bad"), service::SampleOptions{0, 1, 1, 1}).ok);
}
