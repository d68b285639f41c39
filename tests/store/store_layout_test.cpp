#include <gtest/gtest.h>

#include "platform/ini_file.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "store/previous_generation.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store/store_settings.h"
#include "store_fixture.h"

namespace marrowfin::test {
namespace {

using Layout = StoreFixture;

std::string ShowXml(const std::vector<std::string>& names) {
    std::string s = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<root>\r\n";
    for (const auto& n : names) s += "<item describe=\"d-" + n + "\">" + n + "</item>\r\n";
    return s + "</root>\r\n";
}

std::vector<std::u16string> Names(const std::vector<ShowItem>& items) {
    std::vector<std::u16string> out;
    for (const auto& i : items) out.push_back(i.name);
    return out;
}

TEST_F(Layout, PathsOfTheStore) {
    const std::u16string doc = W(home->documentsDir());
    EXPECT_EQ(StoreRoot(), doc + u"/Orsolen");
    EXPECT_EQ(ShowListPath(), doc + u"/Orsolen/Show.xml");
    EXPECT_EQ(VersionIniPath(), doc + u"/Orsolen/version.ini");
    EXPECT_EQ(NewInfoIniPath(), doc + u"/Orsolen/NewInfo.ini");
    EXPECT_EQ(RecentListPath(), doc + u"/Orsolen/RecentlyUse.xml");
    EXPECT_EQ(ClassTablePath(), doc + u"/Orsolen/NewAllGalleryType1.xml");
    EXPECT_EQ(SeenClassVersionsPath(), doc + u"/Orsolen/NewAddGalleryType.xml");
    EXPECT_EQ(CataloguePath(u"图库"), doc + u"/Orsolen/图库/图库.xdb");
    EXPECT_EQ(CommonListPath(u"G"), doc + u"/Orsolen/G/CommonUse.xml");
    EXPECT_EQ(BlockPath(u"G", u"C", u"b.dwg"), doc + u"/Orsolen/G/C/b.dwg");
    EXPECT_EQ(CollectionFolder(), doc + u"/Orsolen/我的收藏");
    EXPECT_EQ(NumberedCollectionFolder(42), doc + u"/Orsolen/42_收藏");
    EXPECT_EQ(AdListPath(), doc + u"/Orsolen/ad/ad.xml");
    EXPECT_EQ(SearchVersionPath(), doc + u"/Orsolen/search/ver.ini");
    EXPECT_EQ(SkinSheetPath(3), HostFolder() + u"/BrindleSkin/images_3.png");
    EXPECT_EQ(PreviousGenerationFolder(), doc + u"/Pellicor");
    // The catalogue reader and writer must agree with the layout.
    EXPECT_EQ(CataloguePath(u"G"), store.root->Path() + u"/G/G.xdb");
}

TEST_F(Layout, SettingsDefaultsAndValues) {
    StoreSettings d = StoreSettings::Load();
    EXPECT_EQ(d.docDir, u"");
    EXPECT_EQ(d.downver, -1);
    EXPECT_EQ(d.FNetUseInet, -2);
    EXPECT_EQ(d.RequestNetwork, -1);
    EXPECT_EQ(d.GalDefSort, 0);
    EXPECT_EQ(d.GalDefSearch, 0);
    EXPECT_EQ(d.ShowSearchTip, 1);
    EXPECT_EQ(d.Rate, u"-1");

    MarkNetworkRequested();
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", 99), 1);
    WriteOptionInt(u"RequestNetwork", 0);
    MarkNetworkRequested();  // a user's 0 is never overwritten
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", 99), 0);
    MarkForcedRefreshDone();
    WriteOptionString(u"Rate", u"1.5");
    WriteOptionString(u"GalDefSort", u"x2");  // unparsable reads as 0
    WriteOptionInt(u"ShowSearchTip", 0);
    StoreSettings s = StoreSettings::Load();
    EXPECT_EQ(s.downver, 1);
    EXPECT_EQ(s.RequestNetwork, 0);
    EXPECT_EQ(s.Rate, u"1.5");
    EXPECT_EQ(s.GalDefSort, 0);
    EXPECT_EQ(s.ShowSearchTip, 0);
}

TEST_F(Layout, VersionAndNoticeFiles) {
    EXPECT_EQ(ReadGalleryVersion(u"G"), 0);
    EXPECT_EQ(ReadOldCollectTip(), u"0");
    ASSERT_TRUE(WriteGalleryVersion(u"建筑", 1234));
    ASSERT_TRUE(WriteGalleryVersion(u"G", 7));
    EXPECT_EQ(ReadGalleryVersion(u"建筑"), 1234);
    EXPECT_EQ(ReadGalleryVersion(u"g"), 7);  // keys ignore case, as the private-profile rules say
    EXPECT_EQ(IniGetString(VersionIniPath(), u"version", u"G", u""), u"7");
    // 25 characters of buffer: 24 digits are read, the rest is cut.
    IniWriteString(VersionIniPath(), u"version", u"Long", std::u16string(21, u'0') + u"123" + u"456");
    EXPECT_EQ(ReadGalleryVersion(u"Long"), 123);
    ASSERT_TRUE(WriteOldCollectTip(u"1"));
    EXPECT_EQ(ReadOldCollectTip(), u"1");
    EXPECT_EQ(IniGetString(NewInfoIniPath(), u"OldCollect", u"TIP", u""), u"1");
}

TEST_F(Layout, MoveFromThePreviousGeneration) {
    const std::u16string old = W(home->documentsDir()) + u"/Pellicor";
    const std::u16string flag = old + u"/version.ini";
    const std::string oldShow = ShowXml({"Old"});
    CreateDirectories(old);
    WriteBytes(U8(old + u"/Show.xml"), oldShow);

    // Show.xml already here: the old folder is not looked at, the flag stays unset.
    WriteBytes(U8(ShowListPath()), ShowXml({"New"}));
    MoveFromPreviousGeneration();
    EXPECT_EQ(ReadBytes(U8(ShowListPath())), ShowXml({"New"}));
    EXPECT_FALSE(FileExists(flag));

    // Missing here, flag "0": copied, flag set; the old file stays.
    RemoveFile(ShowListPath());
    MoveFromPreviousGeneration();
    EXPECT_EQ(ReadBytes(U8(ShowListPath())), oldShow);
    EXPECT_EQ(IniGetString(flag, u"BrindleMoved", u"flag", u""), u"1");
    EXPECT_TRUE(FileExists(old + u"/Show.xml"));

    // Flag "1": nothing is copied, the user starts empty.
    RemoveFile(ShowListPath());
    MoveFromPreviousGeneration();
    EXPECT_FALSE(FileExists(ShowListPath()));

    // Flag "0" and no old list: the flag is set all the same.
    RemoveFile(flag);
    RemoveFile(old + u"/Show.xml");
    MoveFromPreviousGeneration();
    EXPECT_FALSE(FileExists(ShowListPath()));
    EXPECT_EQ(IniGetString(flag, u"BrindleMoved", u"flag", u""), u"1");

    // Without even a store folder, the copy makes it.
    RemoveDirectoryTree(StoreRoot());
    RemoveFile(flag);
    WriteBytes(U8(old + u"/Show.xml"), oldShow);
    MoveFromPreviousGeneration();
    EXPECT_EQ(ReadBytes(U8(ShowListPath())), oldShow);
}

TEST_F(Layout, ShowListReadsAtMost101NamedItems) {
    EXPECT_TRUE(ReadShowList(true).empty());  // missing file
    std::vector<std::string> names;
    for (int i = 0; i < 150; ++i) names.push_back("g" + std::to_string(i));
    names.insert(names.begin() + 3, "");  // empty items don't count
    names.insert(names.begin(), "");
    WriteBytes(U8(ShowListPath()), ShowXml(names));
    RemoveDirectoryTree(StoreRoot() + u"/g0");
    const auto items = ReadShowList(true);
    ASSERT_EQ(items.size(), 101u);
    EXPECT_EQ(items.front().name, u"g0");
    EXPECT_EQ(items.front().describe, u"d-g0");
    EXPECT_EQ(items.back().name, u"g100");
    EXPECT_TRUE(DirectoryExists(StoreRoot() + u"/g0"));
    EXPECT_TRUE(DirectoryExists(StoreRoot() + u"/g100"));
    EXPECT_FALSE(DirectoryExists(StoreRoot() + u"/g101"));

    RemoveDirectoryTree(StoreRoot() + u"/g1");
    EXPECT_EQ(ReadShowList(false).size(), 101u);
    EXPECT_FALSE(DirectoryExists(StoreRoot() + u"/g1"));  // without createFolders nothing is made
}

TEST_F(Layout, AddMoreGalleryAppendsOnce) {
    RemoveDirectoryTree(StoreRoot());
    ASSERT_TRUE(AddGalleryToShowList(u"石材"));  // makes the folder and the list
    ASSERT_TRUE(AddGalleryToShowList(u"Wood"));
    EXPECT_EQ(Names(ReadShowList(false)), (std::vector<std::u16string>{u"石材", u"Wood"}));
    const std::string once = ReadBytes(U8(ShowListPath()));
    EXPECT_FALSE(AddGalleryToShowList(u"石材"));
    EXPECT_FALSE(AddGalleryToShowList(u""));
    EXPECT_EQ(ReadBytes(U8(ShowListPath())), once);  // unchanged, byte for byte

    // A list written by the picker, with its describe attributes, keeps them.
    WriteBytes(U8(ShowListPath()), ShowXml({"A", "B"}));
    ASSERT_TRUE(AddGalleryToShowList(u"C"));
    const auto items = ReadShowList(false);
    EXPECT_EQ(Names(items), (std::vector<std::u16string>{u"A", u"B", u"C"}));
    EXPECT_EQ(items[1].describe, u"d-B");

    // More than 101 listed: the name is still added.
    std::vector<std::string> many;
    for (int i = 0; i < 101; ++i) many.push_back("m" + std::to_string(i));
    WriteBytes(U8(ShowListPath()), ShowXml(many));
    ASSERT_TRUE(AddGalleryToShowList(u"extra"));
    EXPECT_NE(ReadBytes(U8(ShowListPath())).find("<item>extra</item>"), std::string::npos);
}

}  // namespace
}  // namespace marrowfin::test
