#include <gtest/gtest.h>

#include <filesystem>

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
        // Computed once per process: a later change is not seen.
        WriteOptionString(u"docDir", u"");
        EXPECT_EQ(DocumentRoot(), W(custom));
    }
    {
        // docDir names a folder that is gone: the documents folder is used,
        // and docDir stays as it is since the documents folder exists.
        TempHome home;
        WriteOptionString(u"docDir", W(home.file("gone")));
        EXPECT_EQ(DocumentRoot(), W(home.documentsDir()));
        EXPECT_EQ(GetOptionString(u"docDir", u"?"), W(home.file("gone")));
    }
    {
        // No documents folder either: docDir is written empty, the path used all the same.
        TempHome home;
        std::filesystem::remove_all(home.documentsDir());
        WriteOptionString(u"docDir", W(home.file("gone")));
        EXPECT_EQ(DocumentRoot(), W(home.documentsDir()));
        EXPECT_EQ(GetOptionString(u"docDir", u"?"), u"");
    }
    {
        // user-dirs.dirs names another documents folder.
        TempHome home;
        test::WriteBytes(home.configDir() + "/user-dirs.dirs",
                         "# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_DOCUMENTS_DIR=\"$HOME/文档\"\n");
        EXPECT_EQ(DocumentsFolder(), W(home.dir() + "/文档"));
    }
}

TEST(PathHelpers, StemsAndNames) {
    EXPECT_EQ(FileStem(u"/a/b/门.dwg", false), u"门");
    EXPECT_EQ(FileStem(u"/a/b/门.dwg", true), u"门.dwg");
    EXPECT_EQ(FileStem(u"no-separator.dwg", false), u"no-separator.dwg");
    // The only dot stands in front of the last separator: the whole name.
    EXPECT_EQ(FileStem(u"/a.b/name", false), u"name");
    EXPECT_EQ(FileStem(u"/a/b.c.dwg", false), u"b.c");
    EXPECT_EQ(FileNameOf(u"/a/b/c.dwg"), u"c.dwg");
    EXPECT_EQ(FileNameOf(u"/c.dwg"), u"");   // separator at index 0
    EXPECT_EQ(FileNameOf(u"c.dwg"), u"");
    EXPECT_EQ(FileNameOf(u"/a/"), u"");
    EXPECT_EQ(ToLibrarySeparators(u"图库\\门窗\\a.dwg"), u"图库/门窗/a.dwg");
    EXPECT_FALSE(HostFolder().empty());
    EXPECT_TRUE(DirectoryExists(HostFolder()));
}
