#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

TEST(DocumentRoot, HonoursDocDirAndFallsBack) {
    {
        TempHome home;
        const std::string custom = home.file("custom");
        std::filesystem::create_directories(custom);
        WriteOptionString(u"docDir", W(custom));
        EXPECT_EQ(DocumentRoot(), W(custom));
        WriteOptionString(u"docDir", u"");
        EXPECT_EQ(DocumentRoot(), W(custom));  // computed once per process
    }
    // docDir names a folder that is gone: the documents folder is used, and docDir is
    // written empty only when that is missing too.
    for (bool documents : {true, false}) {
        TempHome home;
        if (!documents) std::filesystem::remove_all(home.documentsDir());
        WriteOptionString(u"docDir", W(home.file("gone")));
        EXPECT_EQ(DocumentRoot(), W(home.documentsDir()));
        EXPECT_EQ(GetOptionString(u"docDir", u"?"), documents ? W(home.file("gone")) : u"");
    }
    TempHome home;
    test::WriteBytes(home.configDir() + "/user-dirs.dirs", "# c\nXDG_DESKTOP_DIR=\"$HOME/D\"\nXDG_DOCUMENTS_DIR=\"$HOME/文档\"\n");
    EXPECT_EQ(DocumentsFolder(), W(home.dir() + "/文档"));
}

TEST(PathHelpers, StemsAndNames) {
    const std::tuple<const char16_t*, bool, const char16_t*> stems[] = {
        {u"/a/b/门.dwg", false, u"门"}, {u"/a/b/门.dwg", true, u"门.dwg"}, {u"no-separator.dwg", false, u"no-separator.dwg"},
        {u"/a.b/name", false, u"name"}, {u"/a/b.c.dwg", false, u"b.c"}};
    for (const auto& [path, withExtension, stem] : stems) EXPECT_EQ(FileStem(path, withExtension), stem) << U8(path);
    EXPECT_EQ(FileNameOf(u"/a/b/c.dwg"), u"c.dwg");
    for (const char16_t* none : {u"/c.dwg", u"c.dwg", u"/a/"}) EXPECT_EQ(FileNameOf(none), u"") << U8(none);
    EXPECT_EQ(ToLibrarySeparators(u"图库\\门窗\\a.dwg"), u"图库/门窗/a.dwg");
    EXPECT_TRUE(DirectoryExists(HostFolder()));
}
