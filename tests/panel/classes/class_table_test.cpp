// The class table read from its XML: kind numbering across sorts, the kinds
// an item lands in, the cached file under bad answers, and the version marks
// against the table of the start of the run.

#include <gtest/gtest.h>

#include "markup/markup_document.h"
#include "panel/classes/class_table.h"
#include "panel/classes/class_table_reader.h"
#include "platform/files.h"
#include "platform/text.h"
#include "store/store_paths.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;

namespace {

std::vector<std::u16string> Keys(const KindMap& kinds) {
    std::vector<std::u16string> keys;
    for (const auto& [key, items] : kinds) keys.push_back(key);
    return keys;
}

std::vector<std::u16string> Names(const KindMap& kinds, const std::u16string& key) {
    std::vector<std::u16string> names;
    auto it = kinds.find(key);
    if (it == kinds.end()) return {u"<no such kind>"};
    for (const ClassItem& item : it->second) names.push_back(item.name);
    return names;
}

// A type stands before the sorts whose kinds it fills, and two sorts of
// another id stand between the known ones.
const char16_t kTable[] =
    u"<root><word>挑图库</word><showdesc>1</showdesc>"
    u"<type>"
    u"<item><name>无类</name><ver>3</ver></item>"  // first of its type, no kind
    u"<item><kind>建筑</kind><name>门窗</name><describe>门和窗</describe><ver>2</ver></item>"
    u"<item><name>楼梯</name><ver>1</ver></item>"  // takes 建筑 from the item before
    u"<item><kind>景观</kind><name>树木</name><ver>5</ver></item>"  // 景观 is in no sort
    u"<item><kind>室内</kind><name>家具</name><gv>1</gv><ver>7</ver></item>"
    u"<item><kind>室内</kind><name>灯具</name><gv>1</gv><ver>9</ver></item>"
    u"</type>"
    u"<sort id=\"通用图库\" show=\"通用\"><kind>全部</kind><kind>建筑</kind></sort>"
    u"<sort id=\"推荐图库\" show=\"推荐\"><kind>甲</kind><kind>乙</kind></sort>"
    u"<sort id=\"其他\"><kind>丙</kind></sort>"
    u"<sort id=\"精品图库\" show=\"精品\"><kind>室内</kind><kind>全部</kind></sort>"
    u"</root>";

std::u16string Table(std::u16string_view classVersionA, std::u16string_view extra = {}) {
    return u"<root><sort id=\"精品图库\" show=\"精\"><kind>全部</kind></sort>"
           u"<sort id=\"通用图库\" show=\"通\"><kind>全部</kind></sort><type>"
           u"<item><kind>全部</kind><name>A</name><ver>" +
           std::u16string(classVersionA) +
           u"</ver></item><item><name>B</name><ver>1</ver></item>"
           u"<item><name>P</name><gv>1</gv><ver>4</ver></item>" +
           std::u16string(extra) + u"</type></root>";
}

void ClearProcessState() {
    g_seenClasses.clear();
    g_seenKinds.clear();
}

}  // namespace

TEST(ClassTable, KindNumbersItemsAndLookups) {
    test::TempHome home;
    MarkupDocument doc;
    ASSERT_TRUE(doc.SetText(kTable));
    ClassTable table;
    table.generalKinds[u"099_旧"];  // a root restarts the tables
    const ClassVersions versions = ReadClassDocument(doc, table);

    // Numbers run across every sort; skipped sorts still use theirs.
    EXPECT_EQ(Keys(table.generalKinds), (std::vector<std::u16string>{u"001_全部", u"002_建筑"}));
    EXPECT_EQ(Keys(table.boutiqueKinds), (std::vector<std::u16string>{u"006_室内", u"007_全部"}));
    EXPECT_EQ(table.typeWord, u"挑图库");
    EXPECT_TRUE(table.showDesc);
    EXPECT_EQ(table.generalTitle, u"通用");
    EXPECT_EQ(table.boutiqueTitle, u"精品");

    // "全部" takes every item of its side; an item without a kind, or with a
    // kind no sort names, is only there.
    EXPECT_EQ(Names(table.generalKinds, u"001_全部"), (std::vector<std::u16string>{u"无类", u"门窗", u"楼梯", u"树木"}));
    EXPECT_EQ(Names(table.generalKinds, u"002_建筑"), (std::vector<std::u16string>{u"门窗", u"楼梯"}));
    EXPECT_EQ(Names(table.boutiqueKinds, u"006_室内"), (std::vector<std::u16string>{u"家具", u"灯具"}));
    EXPECT_EQ(Names(table.boutiqueKinds, u"007_全部"), (std::vector<std::u16string>{u"家具", u"灯具"}));
    EXPECT_EQ(versions.size(), 6u);
    EXPECT_EQ(versions.at(u"灯具"), u"9");

    EXPECT_EQ(FindClassItem(table, u"门窗").describe, u"门和窗");
    EXPECT_EQ(FindClassItem(table, u"家具").gv, u"1");
    EXPECT_TRUE(FindClassItem(table, u"没有").name.empty());

    const std::u16string root = StoreRoot();
    EXPECT_TRUE(IsBoutiqueClass(table, root + u"/家具/沙发/a.dwg"));
    EXPECT_TRUE(IsBoutiqueClass(table, root + u"/灯具"));
    EXPECT_FALSE(IsBoutiqueClass(table, root + u"/门窗/单开门"));
    EXPECT_FALSE(IsBoutiqueClass(table, root + u"/"));
    EXPECT_FALSE(IsBoutiqueClass(table, u"/elsewhere/家具/x.dwg"));

    // A second root starts again: numbers from 1, empty tables.
    ASSERT_FALSE(doc.SetText(std::u16string(kTable) + u"<root><sort id=\"精品图库\"><kind>新</kind></sort></root>"));
    ClassTable second;
    (void)ReadClassDocument(doc, second);
    EXPECT_TRUE(second.generalKinds.empty());
    EXPECT_EQ(Keys(second.boutiqueKinds), (std::vector<std::u16string>{u"001_新"}));
}

TEST(ClassTable, BadAnswersKeepTheCachedFileAndTheTable) {
    test::TempHome home;
    ClearProcessState();
    ClassTable table;

    // Nothing cached and nothing usable: nothing changes, nothing is written.
    EXPECT_FALSE(ApplyClassTable(u"", table, {}));
    EXPECT_FALSE(ApplyClassTable(u"<root><type>", table, {}));
    EXPECT_FALSE(FileExists(ClassTablePath()));

    ASSERT_TRUE(ApplyClassTable(Table(u"1"), table, {}));
    ASSERT_TRUE(FileExists(ClassTablePath()));
    const std::string cached = test::ReadBytes(U8(ClassTablePath()));
    EXPECT_EQ(cached.substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_EQ(g_boutiqueTitle, u"精");
    EXPECT_EQ(g_generalTitle, u"通");

    for (std::u16string_view bad : {std::u16string_view(u"<root><type><item>"), std::u16string_view(u"error"),
                                    std::u16string_view(u"<other/>")}) {
        ClassTable again;
        EXPECT_TRUE(ApplyClassTable(bad, again, {}));  // falls back on the cached file
        EXPECT_EQ(test::ReadBytes(U8(ClassTablePath())), cached);
        EXPECT_EQ(Names(again.generalKinds, u"002_全部"), (std::vector<std::u16string>{u"A", u"B"}));
        EXPECT_EQ(Names(again.boutiqueKinds, u"001_全部"), (std::vector<std::u16string>{u"P"}));
    }
}

TEST(ClassTable, VersionMarksAgainstTheStartOfTheRun) {
    test::TempHome home;
    ClearProcessState();
    ClassTable table;
    ASSERT_TRUE(ApplyClassTable(Table(u"1"), table, {}));
    EXPECT_TRUE(g_seenClasses.empty());  // no start table: nothing to compare

    // The seen file: one class and one kind the user has looked at.
    ASSERT_TRUE(CreateDirectories(StoreRoot()));
    ASSERT_TRUE(WriteFileAtomic(SeenClassVersionsPath(),
                                U8(u"\xFEFF<item ver=\"0\">B</item>\r<class ver=\"3\">全部</class>\r")));
    ReadSeenClasses();
    ASSERT_EQ(g_seenClasses.count(u"B"), 1u);
    EXPECT_EQ(g_seenClasses[u"B"].seen, u"0");

    ClassTable startTable;
    const ClassVersions start = ReadClassVersions(startTable);
    EXPECT_EQ(start, (ClassVersions{{u"A", u"1"}, {u"B", u"1"}, {u"P", u"4"}}));
    EXPECT_EQ(g_seenKinds[u"全部"].seen, u"3");

    // First refresh: A rises, N is new, B stays.
    ASSERT_TRUE(ApplyClassTable(Table(u"2", u"<item><name>N</name><ver>1</ver></item>"), table, start));
    EXPECT_EQ(g_seenClasses[u"A"].newest, u"2");
    EXPECT_EQ(g_seenClasses[u"A"].seen, u"1");
    EXPECT_EQ(g_seenClasses[u"N"].newest, u"1");
    EXPECT_EQ(g_seenClasses[u"N"].seen, u"");
    EXPECT_EQ(g_seenClasses[u"B"].newest, u"");  // unchanged class: left as read
    EXPECT_EQ(g_seenKinds[u"全部"].newest, u"4");

    // Second refresh: still compared with the start, not with the first refresh.
    ASSERT_TRUE(ApplyClassTable(Table(u"3"), table, start));
    EXPECT_EQ(g_seenClasses[u"A"].newest, u"3");
    EXPECT_EQ(g_seenClasses[u"A"].seen, u"1");

    // A first run without seen kinds takes today's highest versions as seen.
    ClearProcessState();
    ASSERT_TRUE(RemoveFile(SeenClassVersionsPath()));
    ClassTable fresh;
    (void)ReadClassVersions(fresh);
    EXPECT_EQ(g_seenKinds[u"全部"].seen, u"4");
}
