// The class manager over a class table made here: the picker's choices and
// marks driven by real clicks, what reaches Show.xml and
// NewAddGalleryType.xml, the scroll bar, and its faces at two rates; and its
// sort menu on its own: the option, the posts to the panel and the picker,
// the sort button's state.

#include <gtest/gtest.h>

#include <QTest>

#include "picker/class_selection.h"
#include "picker/gal_sort_sel_dlg.h"
#include "picker/gal_region_dlg.h"
#include "picker/gallery_type_dlg.h"
#include "picker/picker_state.h"
#include "picker/sel_class_dlg.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/ticks.h"
#include "skin/scroll_bar_rv.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_test_util.h"
#include "show_names.h"
#include "store/show_list.h"
#include "store/store_paths.h"
#include "support/event_pump.h"
#include "support/message_recorder.h"
#include "support/reference_picture.h"
#include "support/temp_home.h"
#include "support/widget_input.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// Two boutique kinds and three general ones; the general "全部" holds enough
// classes to scroll, and "机电" has a kind name long enough to measure.
ClassTable MakeTable(int generalClasses = 44) {
    ClassTable table;
    auto item = [](const std::u16string& name, bool boutique) { return ClassItem{name, u"3", name + u"常用图块", boutique ? u"1" : u"0"}; };
    table.boutiqueKinds[KindKey(1, u"全部")] = {item(u"精品门窗", true), item(u"精品家具", true)};
    table.boutiqueKinds[KindKey(2, u"建筑")] = {item(u"精品门窗", true)};
    for (int i = 0; i < generalClasses; ++i)
        table.generalKinds[KindKey(5, u"全部")].push_back(item(u"通用" + QString::number(i + 1).toStdU16String(), false));
    table.generalKinds[KindKey(6, u"建筑")] = {item(u"通用1", false), item(u"通用2", false)};
    table.generalKinds[KindKey(7, u"机电设备")] = {item(u"通用3", false)};
    return table;
}

struct Manager {
    ClassTable table;
    QWidget panel;
    CSelClassDlg* dlg;
    int result = -1;
    bool wantSearch = false;
    explicit Manager(ClassTable t) : table(std::move(t)) {
        g_typeWord = u"选择图库";
        g_curBoutiqueKind.clear();
        g_curGeneralKind.clear();
        panel.setWindowFlag(Qt::WindowStaysOnTopHint, true);
        dlg = new CSelClassDlg(&panel, table);
        dlg->onFinished = [this](int r, bool s) { result = r, wantSearch = s; };
        dlg->Open();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(dlg));
        MoveAway(dlg);
    }
    ~Manager() { delete dlg; }
    // A click on a class that the damping clock takes as a new one.
    void Pick(const QString& name) {
        ShiftTicksForTest(250);
        CSelTypeclassButton* button = dlg->Picker()->VisibleClassButton(name);
        ASSERT_NE(button, nullptr) << name.toStdString();
        Click(button, QPoint(40, 20));
    }
    void Press(int id) { Click(dlg->Button(id), dlg->Button(id)->rect().center()); }
};

}  // namespace

TEST(ClassManager, ChoicesReachShowXmlNewestFirstOnlyByFinish) {
    TempHome home;
    UseRate(1.0f);
    // A class the table no longer knows is dropped at the opening.
    ASSERT_TRUE(WriteShowList({{u"通用2", u"d2"}, {u"旧图库", u""}}));
    g_seenClasses = {{u"通用5", {u"通用5", u"4", u"3"}}, {u"通用2", {u"通用2", u"4", u"3"}}};
    {
        Manager m(MakeTable());
        CGalleryTypeDlg& picker = *m.dlg->Picker();
        EXPECT_EQ(picker.m_selection, (ClassSelection{{u"001通用2", u"d2"}}));
        // New and chosen: no mark. New and not chosen: marked until clicked.
        EXPECT_TRUE(!picker.VisibleClassButton(QStringLiteral("通用2"))->isNew &&
                    picker.VisibleClassButton(QStringLiteral("通用5"))->isNew);
        m.Pick(QStringLiteral("通用5"));
        m.Pick(QStringLiteral("精品门窗"));
        // A second click within 200 ms does nothing.
        Click(picker.VisibleClassButton(QStringLiteral("精品门窗")), QPoint(40, 20));
        m.Pick(QStringLiteral("通用7"));
        EXPECT_EQ(picker.m_selection.size(), 4u);
        m.Pick(QStringLiteral("通用5"));  // unchecked: a gap, the order stays
        EXPECT_EQ(picker.m_selection,
                  (ClassSelection{{u"001通用7", u"通用7常用图块"}, {u"002精品门窗", u"精品门窗常用图块"}, {u"004通用2", u"d2"}}));
        // Nothing is written before "完成"; then the whole file in key order.
        EXPECT_EQ(ShowNames(), (std::vector<std::u16string>{u"通用2", u"旧图库"}));
        m.Press(999);
        EXPECT_TRUE(m.result == 1 && ShowNames() == (std::vector<std::u16string>{u"通用7", u"精品门窗", u"通用2"}) &&
                    ReadAllShowItems()[2].describe == u"d2");
        // The panel went below the manager and comes back on top.
        EXPECT_FALSE(m.panel.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    }
    // The cleared mark is remembered, also after the window ends; the tip is seen once.
    std::string seen;
    ASSERT_TRUE(ReadWholeFile(SeenClassVersionsPath(), seen));
    EXPECT_TRUE(seen.find("通用5") == std::string::npos && seen.find("<item ver=\"3\">通用2</item>") != std::string::npos);
    EXPECT_EQ(GetOptionInt(u"ShowSearchTip", 1), 0);

    // Clearing writes nothing (closing and searching: the manager's roads).
    Manager again(MakeTable());
    EXPECT_FALSE(again.dlg->m_showSearchTip);  // seen once
    again.Press(998);
    EXPECT_TRUE(again.dlg->Picker()->m_selection.empty() && ShowNames().size() == 3u);
}

TEST(ClassManager, KindsSectionsAndTheStrip) {
    TempHome home;
    UseRate(1.0f);
    Manager m(MakeTable());
    CGalleryTypeDlg& picker = *m.dlg->Picker();
    // A tab of a closed section opens it, and its kind is kept for the next opening.
    Click(picker.SectionTitle(false), QPoint(20, 10));
    EXPECT_TRUE(!picker.m_generalOpen && picker.VisibleClassButton(QStringLiteral("通用3")) == nullptr);
    Click(picker.Tab(false, QStringLiteral("机电设备")), QPoint(20, 20));
    EXPECT_TRUE(picker.m_generalOpen && picker.VisibleClassButton(QStringLiteral("通用3")) &&
                !picker.VisibleClassButton(QStringLiteral("通用1")) && g_curGeneralKind == u"机电设备");
    // Three tabs fit: no arrows, and the strip does not move.
    CGalRegionDlg* region = picker.Region(false);
    region->ScrollStrip(1);
    EXPECT_FALSE(region->m_overflow || picker.Arrow(1004)->isVisible() || region->m_pStrip->x() != 0);

    // Many kinds: the left arrow at the left end does nothing; the right one walks to the right end and stops there.
    ClassTable table = MakeTable(3);
    for (int k = 0; k < 14; ++k) table.generalKinds[KindKey(10 + k, u"分类" + QString::number(k).toStdU16String())] = {};
    Manager many(std::move(table));
    CGalRegionDlg* strip = many.dlg->Picker()->Region(false);
    EXPECT_TRUE(strip->m_overflow && many.dlg->Picker()->Arrow(1005)->isVisible());
    Click(many.dlg->Picker()->Arrow(1004), QPoint(5, 20));
    ASSERT_EQ(strip->m_pStrip->x(), 0);
    for (int i = 0; i < 40; ++i) strip->ScrollStrip(-1);
    EXPECT_EQ(strip->m_pStrip->geometry().right() + 1, strip->width());
}

TEST(ClassManager, FacesAsTheirReferencesAtTwoRates) {
    for (float rate : {1.0f, 1.5f}) {
        TempHome home;
        UseRate(rate);
        ParkMouse();
        const std::string suffix = rate == 1.0f ? "_rate_1.0" : "_rate_1.5";
        ASSERT_TRUE(WriteShowList({{u"通用2", u""}, {u"精品门窗", u""}}) && WriteOptionInt(u"GalDefSort", 1));
        {
            // With the search tip, the first opening; the scroll bar shows (a small table's face: none).
            Manager m(MakeTable());
            EXPECT_TRUE(MatchesReference(m.dlg->grab().toImage(), "picker", "manager_tip" + suffix));
            Click(m.dlg->Button(996), QPoint(8, 8));
            EXPECT_EQ(GetOptionInt(u"ShowSearchTip", 1), 0);
            // Scrolled by the wheel to the end of the list (the picture shows where).
            for (int i = 0; i < 6; ++i) Wheel(m.dlg->Picker(), QPoint(300, 300), -1);
            QCoreApplication::processEvents();
            EXPECT_TRUE(MatchesReference(m.dlg->grab().toImage(), "picker", "manager_scrolled" + suffix));
        }
        // Without a table: the failure face.
        Manager missing{ClassTable{}};
        EXPECT_TRUE(MatchesReference(missing.dlg->grab().toImage(), "picker", "manager_failure" + suffix));
        // A small table: no scroll bar, the normal face.
        Manager small(MakeTable(6));
        QCoreApplication::processEvents();  // the bar's own size message comes last
        EXPECT_TRUE(MatchesReference(small.dlg->grab().toImage(), "picker", "manager_normal" + suffix));
        // Its sort menu: the stored choice (最热, the lowest) carries the mark, 综合 is under the pointer.
        small.Press(1200);
        MoveTo(small.dlg->SortMenu()->Choice(1000), QPoint(5, 5));
        EXPECT_TRUE(MatchesReference(small.dlg->SortMenu()->grab().toImage(), "picker", "sort_selector" + suffix));
    }
}

// The manager's sort menu: losing activation closes it without a choice; a choice is
// written, marked and posted to the panel, again when repeated, and the picker takes the
// table on again a second later, opening a closed section; a stored value outside 0..2
// marks none.
TEST(SortSelector, ClosesWithoutAChoiceAndWritesMarksAndPostsEachChoice) {
    TempHome home;
    UseRate(1.0f);
    Manager m(MakeTable(6));
    m.dlg->panelHandle = HandleOf(&m.panel);
    MessageRecorder toPanel{&m.panel, true};
    auto checked = [](Manager& manager) {
        std::vector<int> ids;
        for (int id : CGalSortSelDlg::kChoiceIds)
            if (manager.dlg->SortMenu()->Choice(id)->checked) ids.push_back(id);
        return ids;
    };
    CGalleryTypeDlg& picker = *m.dlg->Picker();
    Click(picker.SectionTitle(true), QPoint(20, 10));
    ASSERT_FALSE(picker.m_boutiqueOpen);
    m.Press(1200);
    CGalSortSelDlg* menu = m.dlg->SortMenu();
    ASSERT_TRUE(menu && QTest::qWaitForWindowActive(menu, 2000));
    EXPECT_TRUE(m.dlg->Button(1200)->text() == QStringLiteral("排序∧") && checked(m) == std::vector<int>{1000});  // GalDefSort absent: 0
    m.dlg->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m.dlg, 2000));
    QCoreApplication::processEvents();
    EXPECT_TRUE(!menu->isVisible() && toPanel.Take().empty() && GetOptionInt(u"GalDefSort", -1) == -1);
    for (int round = 0; round < 2; ++round) {
        m.Press(1200);
        ASSERT_TRUE(menu->isVisible()) << round;
        Click(menu->Choice(1002), QPoint(20, 10));
        EXPECT_EQ(std::make_tuple(menu->isVisible(), GetOptionInt(u"GalDefSort", -1), checked(m)),
                  std::make_tuple(false, 2, std::vector<int>{1002}));
        EXPECT_TRUE(!picker.m_boutiqueOpen && PumpUntil([&] { return picker.m_boutiqueOpen; }, 3000)) << round;
        Click(picker.SectionTitle(true), QPoint(20, 10));
    }
    EXPECT_EQ(toPanel.Take(), (std::vector<RecordedMessage>(2, {MsgPanelCommand, 24, 0, {}})));
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 7));
    Manager odd(MakeTable(6));
    odd.Press(1200);
    EXPECT_TRUE(checked(odd).empty());
}
