#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "platform/ini_file.h"
#include "store/previous_generation.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Layout = StoreFixture;

std::string ShowXml(const std::vector<std::string>& names) {
    std::string s = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<root>\r\n";
    for (const auto& n : names) s += "<item describe=\"d-" + n + "\">" + n + "</item>\r\n";
    return s + "</root>\r\n";
}

std::u16string Names(const std::vector<ShowItem>& items) {
    std::u16string out;
    for (const auto& i : items) out += i.name + u"(" + i.describe + u") ";
    return out;
}

// The version file and the tip file of the store's folder. (Where catalogues and blocks lie
// is read back in the synchronisation's tests.)
TEST_F(Layout, VersionAndTipFiles) {
    EXPECT_EQ(ReadGalleryVersion(u"G"), 0);
    ASSERT_TRUE(WriteGalleryVersion(u"G", 7));
    EXPECT_EQ(IniGetString(rootPath + u"/version.ini", u"version", u"g", u""), u"7");  // keys ignore case
    // 25 characters of buffer: 24 digits are read, the rest is cut.
    IniWriteString(VersionIniPath(), u"version", u"Long", std::u16string(21, u'0') + u"123" + u"456");
    EXPECT_EQ(ReadGalleryVersion(u"Long"), 123);
    EXPECT_EQ(ReadOldCollectTip(), u"0");
    ASSERT_TRUE(WriteOldCollectTip(u"1"));
    EXPECT_EQ(IniGetString(rootPath + u"/NewInfo.ini", u"OldCollect", u"TIP", u""), u"1");
}

TEST_F(Layout, MoveFromThePreviousGeneration) {
    const std::u16string old = W(home.documentsDir()) + u"/Pellicor";
    const std::u16string flag = old + u"/version.ini";
    CreateDirectories(old);
    WriteBytes(U8(old + u"/Show.xml"), ShowXml({"Old"}));
    // Each step: prepare, move, then the list here and the flag.
    struct Step { const char* what; std::function<void()> prepare; std::string list; const char16_t* flag; };
    const Step steps[] = {
        {"a list here: the old folder is not looked at", [&] { WriteBytes(U8(ShowListPath()), ShowXml({"New"})); },
         ShowXml({"New"}), u""},
        {"none here, flag unset: copied, flag set", [&] { RemoveFile(ShowListPath()); }, ShowXml({"Old"}), u"1"},
        {"flag set: nothing copied", [&] { RemoveFile(ShowListPath()); }, "", u"1"},
        {"no old list: the flag is set all the same", [&] { RemoveFile(flag); RemoveFile(old + u"/Show.xml"); }, "", u"1"},
        {"no store folder: the copy makes it", [&] {
             RemoveDirectoryTree(StoreRoot());
             RemoveFile(flag);
             WriteBytes(U8(old + u"/Show.xml"), ShowXml({"Old"}));
         }, ShowXml({"Old"}), u"1"},
    };
    for (const Step& step : steps) {
        step.prepare();
        MoveFromPreviousGeneration();
        EXPECT_EQ(ReadBytes(U8(ShowListPath())), step.list) << step.what;
        EXPECT_EQ(IniGetString(flag, u"BrindleMoved", u"flag", u""), step.flag) << step.what;
    }
    EXPECT_TRUE(FileExists(old + u"/Show.xml"));  // the old file stays
}

TEST_F(Layout, ShowListReadsAtMost101NamedItemsAndAddsEachNameOnce) {
    EXPECT_TRUE(ReadShowList(true).empty());  // missing file
    std::vector<std::string> names{""};       // empty items don't count
    for (int i = 0; i < 150; ++i) names.push_back("g" + std::to_string(i));
    WriteBytes(U8(ShowListPath()), ShowXml(names));
    EXPECT_EQ(ReadShowList(false).size(), 101u);
    EXPECT_FALSE(DirectoryExists(StoreRoot() + u"/g0"));  // without createFolders nothing is made
    const auto items = ReadShowList(true);
    ASSERT_EQ(items.size(), 101u);
    EXPECT_EQ(items.back().name, u"g100");
    EXPECT_TRUE(DirectoryExists(StoreRoot() + u"/g100"));
    EXPECT_FALSE(DirectoryExists(StoreRoot() + u"/g101"));
    // More than 101 listed: a new name is still added.
    ASSERT_TRUE(AddGalleryToShowList(u"extra"));
    EXPECT_NE(ReadBytes(U8(ShowListPath())).find("<item>extra</item>"), std::string::npos);

    RemoveDirectoryTree(StoreRoot());
    ASSERT_TRUE(AddGalleryToShowList(u"石材"));  // makes the folder and the list
    WriteBytes(U8(ShowListPath()), ShowXml({"A", "B"}));  // the picker's describe attributes stay
    ASSERT_TRUE(AddGalleryToShowList(u"C"));
    const std::string once = ReadBytes(U8(ShowListPath()));
    EXPECT_FALSE(AddGalleryToShowList(u"A"));
    EXPECT_FALSE(AddGalleryToShowList(u""));
    EXPECT_EQ(ReadBytes(U8(ShowListPath())), once);
    EXPECT_EQ(Names(ReadShowList(false)), u"A(d-A) B(d-B) C() ");
}

}  // namespace
}  // namespace marrowfin::test
