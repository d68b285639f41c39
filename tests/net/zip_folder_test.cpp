#include <minizip/unzip.h>

#include <filesystem>
#include <map>

#include "net/zip_folder.h"
#include "net_world.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

namespace {

// Entry name -> content, read back with minizip's reader.
std::map<std::string, std::string> ReadZip(const std::string& path) {
    std::map<std::string, std::string> entries;
    unzFile z = unzOpen(path.c_str());
    if (!z) return entries;
    for (int r = unzGoToFirstFile(z); r == UNZ_OK; r = unzGoToNextFile(z)) {
        char name[512];
        unz_file_info info;
        unzGetCurrentFileInfo(z, &info, name, sizeof name, nullptr, 0, nullptr, 0);
        std::string content(info.uncompressed_size, '\0');
        unzOpenCurrentFile(z);
        if (!content.empty()) unzReadCurrentFile(z, content.data(), static_cast<unsigned>(content.size()));
        unzCloseCurrentFile(z);
        entries[name] = content;
    }
    unzClose(z);
    return entries;
}

}  // namespace

TEST(ZipFolder, NamesEntriesWithDoubleSlashesKeepsContentAndFailsOnlyForABadTarget) {
    TempHome home;
    const std::string a = home.file("a");
    for (const char* dir : {"/c", "/空"}) std::filesystem::create_directories(a + dir);
    test::WriteBytes(a + "/b", "bee");
    std::string big(300000, '\0');
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7 % 251);  // crosses the read piece
    test::WriteBytes(a + "/c/d", big);
    test::WriteBytes(a + "/c/门.dwg", "");
    ASSERT_TRUE(ZipFolder(W(a), W(home.file("out.zip"))));
    EXPECT_EQ(ReadZip(home.file("out.zip")),
              (std::map<std::string, std::string>{{"a//b", "bee"}, {"a//c/", ""}, {"a//c//d", big}, {"a//c//门.dwg", ""}, {"a//空/", ""}}));
    // A missing folder gives an empty archive.
    EXPECT_TRUE(ZipFolder(W(home.file("missing")), W(home.file("empty.zip"))) &&
                std::filesystem::exists(home.file("empty.zip")) && ReadZip(home.file("empty.zip")).empty());
    EXPECT_FALSE(ZipFolder(W(home.dir()), W(home.file("no/such/dir/x.zip"))));
}
