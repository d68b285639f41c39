// The class table read from its XML (kind numbering across sorts, the kinds an
// item lands in), applied (the cached file under bad answers, the version
// marks against the table of the start of the run), and its requests.
#include <gtest/gtest.h>

#include "panel/classes/class_table_reader.h"
#include "panel/classes/class_table_refresh.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "store/store_paths.h"
#include "request_counters.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;

namespace {

using Names = std::vector<std::u16string>;

Names Keys(const KindMap& kinds) {
    Names keys;
    for (const auto& [key, items] : kinds) keys.push_back(key);
    return keys;
}

Names Items(const KindMap& kinds, const std::u16string& key) {
    Names names;
    for (const ClassItem& item : kinds.at(key)) names.push_back(item.name);
    return names;
}

std::u16string Table(std::u16string_view versionOfA, std::u16string_view extra = {}) {
    return u"<root><sort id=\"精品图库\" show=\"精\"><kind>全部</kind></sort>"
           u"<sort id=\"通用图库\" show=\"通\"><kind>全部</kind></sort><type>"
           u"<item><kind>全部</kind><name>A</name><ver>" +
           std::u16string(versionOfA) +
           u"</ver></item><item><name>B</name><ver>1</ver></item>"
           u"<item><name>P</name><gv>1</gv><ver>4</ver></item>" +
           std::u16string(extra) + u"</type></root>";
}

}  // namespace

TEST(ClassTable, ReadAndApplied) {
    test::TempHome home;
    // A type before the sorts whose kinds it fills; two sorts of other ids between the known ones.
    MarkupDocument doc;
    ASSERT_TRUE(
        doc.SetText(u"<root><word>挑图库</word><showdesc>1</showdesc><type>"
                    u"<item><name>无类</name><ver>3</ver></item>"  // first of its type, no kind
                    u"<item><kind>建筑</kind><name>门窗</name><describe>门和窗</describe><ver>2</ver></item>"
                    u"<item><name>楼梯</name><ver>1</ver></item>"  // takes 建筑 from the item before
                    u"<item><kind>景观</kind><name>树木</name><ver>5</ver></item>"  // 景观 is in no sort
                    u"<item><kind>室内</kind><name>家具</name><gv>1</gv><ver>7</ver></item>"
                    u"<item><kind>室内</kind><name>灯具</name><gv>1</gv><ver>9</ver></item></type>"
                    u"<sort id=\"通用图库\" show=\"通用\"><kind>全部</kind><kind>建筑</kind></sort>"
                    u"<sort id=\"推荐图库\" show=\"推荐\"><kind>甲</kind><kind>乙</kind></sort><sort id=\"其他\"><kind>丙</kind></sort>"
                    u"<sort id=\"精品图库\" show=\"精品\"><kind>室内</kind><kind>全部</kind></sort></root>"));
    ClassTable read;
    read.generalKinds[u"099_旧"];  // a root restarts the tables
    const ClassTableVersions versions = ReadClassDocument(doc, read);
    // Numbers run across every sort; skipped sorts still use theirs.
    EXPECT_EQ(std::make_pair(Keys(read.generalKinds), Keys(read.boutiqueKinds)),
              std::make_pair(Names{u"001_全部", u"002_建筑"}, Names{u"006_室内", u"007_全部"}));
    EXPECT_EQ(std::make_tuple(read.typeWord, read.showDesc, read.generalTitle + read.boutiqueTitle),
              std::make_tuple(std::u16string(u"挑图库"), true, std::u16string(u"通用精品")));
    // "全部" takes every item of its side; an item without a kind, or with one no sort names, is only there.
    EXPECT_EQ(Items(read.generalKinds, u"001_全部"), (Names{u"无类", u"门窗", u"楼梯", u"树木"}));
    EXPECT_EQ(Items(read.generalKinds, u"002_建筑"), (Names{u"门窗", u"楼梯"}));
    EXPECT_EQ(Items(read.boutiqueKinds, u"006_室内"), (Names{u"家具", u"灯具"}));
    EXPECT_EQ(Items(read.boutiqueKinds, u"007_全部"), (Names{u"家具", u"灯具"}));
    EXPECT_TRUE(versions.size() == 6u && versions.at(u"灯具") == u"9" && FindClassItem(read, u"门窗").describe == u"门和窗");
    const std::u16string root = StoreRoot();
    for (auto [path, boutique] : {std::pair{root + u"/家具/沙发/a.dwg", true},
                                  {root + u"/灯具", true},
                                  {root + u"/门窗/单开门", false},
                                  {root + u"/", false},
                                  {u"/elsewhere/家具/x.dwg", false}})
        EXPECT_EQ(IsBoutiqueClass(read, path), boutique) << Utf16ToUtf8(path);

    // Applied: the cached file under bad answers, the version marks against the start of the run.
    g_seenClasses.clear();
    g_seenKinds.clear();
    ClassTable table;
    // Nothing cached and nothing usable: nothing changes, nothing is written.
    EXPECT_FALSE(ApplyClassTable(u"", table, {}) || ApplyClassTable(u"<root><type>", table, {}) || FileExists(ClassTablePath()));
    ASSERT_TRUE(ApplyClassTable(Table(u"1"), table, {}));
    const std::string cached = test::ReadBytes(Utf16ToUtf8(ClassTablePath()));
    // With no start table there is nothing to compare.
    EXPECT_TRUE(cached.starts_with("\xEF\xBB\xBF") && g_generalTitle + g_boutiqueTitle == u"通精" && g_seenClasses.empty());
    for (std::u16string_view bad : {u"<root><type><item>", u"error", u"<other/>"}) {
        ClassTable again;
        EXPECT_TRUE(ApplyClassTable(bad, again, {}));  // the cached file instead
        EXPECT_EQ(test::ReadBytes(Utf16ToUtf8(ClassTablePath())), cached);
        EXPECT_EQ(std::make_pair(Items(again.generalKinds, u"002_全部"), Items(again.boutiqueKinds, u"001_全部")),
                  std::make_pair(Names{u"A", u"B"}, Names{u"P"}));
    }

    // The user has looked at class B at version 0 and kind 全部 at 3.
    ASSERT_TRUE(WriteFileAtomic(SeenClassVersionsPath(), Utf16ToUtf8(u"\xFEFF<item ver=\"0\">B</item>\r<class ver=\"3\">全部</class>\r")));
    ReadSeenClasses();
    ClassTable startTable;
    const ClassTableVersions start = ReadClassVersions(startTable);
    EXPECT_EQ(start, (ClassTableVersions{{u"A", u"1"}, {u"B", u"1"}, {u"P", u"4"}}));
    EXPECT_TRUE(g_seenClasses[u"B"].seen == u"0" && g_seenKinds[u"全部"].seen == u"3");
    // First refresh: A rises, N is new, B stays as read.
    ASSERT_TRUE(ApplyClassTable(Table(u"2", u"<item><name>N</name><ver>1</ver></item>"), table, start));
    EXPECT_EQ(std::make_tuple(g_seenClasses[u"A"].newest + g_seenClasses[u"A"].seen, g_seenClasses[u"N"].newest + g_seenClasses[u"N"].seen,
                              g_seenClasses[u"B"].newest, g_seenKinds[u"全部"].newest),
              std::make_tuple(u"21", u"1", u"", u"4"));
    // Second refresh: still against the start, not the first refresh.
    ASSERT_TRUE(ApplyClassTable(Table(u"3"), table, start));
    EXPECT_EQ(g_seenClasses[u"A"].newest + g_seenClasses[u"A"].seen, u"31");
    // A first run without seen kinds takes today's highest versions as seen.
    g_seenClasses.clear();
    g_seenKinds.clear();
    ASSERT_TRUE(RemoveFile(SeenClassVersionsPath()));
    (void)ReadClassVersions(startTable);
    EXPECT_EQ(g_seenKinds[u"全部"].seen, u"4");
}

TEST(ClassTable, SortWordOnTheWireAndHotWords) {
    test::TempHome home;
    test::LiveService service;
    // -1: the option absent.
    for (auto [option, sort] : {std::pair{-1, "def"}, {1, "hot"}, {2, "new"}, {0, "def"}, {5, ""}, {3, ""}}) {
        ASSERT_TRUE(option < 0 || WriteOptionInt(u"GalDefSort", option));
        EXPECT_NE(FetchClassTable().find(u"<sort id="), std::u16string::npos);
        const std::string line = service.handle.counters().get("/gallery/selpageinfo").last;
        EXPECT_TRUE(line.ends_with(std::string("/gallery/selpageinfo?sort=") + sort)) << line;
    }
    EXPECT_EQ(ParseHotWords(u"<root><hot_words><item>a</item><item>b</item></hot_words><default>d</default></root>"),
              (Names{u"d", u"a", u"b"}));
    for (std::u16string_view broken : {u"", u"<root><hot_words>", u"<root/>"}) EXPECT_TRUE(ParseHotWords(broken).empty());
}
