// The class manager's roads through the exports, against the stand-in
// service: a first start without Show.xml, the panel's button and the
// exports that open the manager, routes to unlisted classes with the limit
// of 101, and the reload of a missing class table. The panel is one per
// process: CTest runs each case in a process of its own, and a case that
// finds a panel made already is skipped.

#include <gtest/gtest.h>

#include <utility>

#include <QApplication>
#include <QKeyEvent>

#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/class_list_ctrl.h"
#include "picker/gallery_type_dlg.h"
#include "picker/sel_class_dlg.h"
#include "platform/ticks.h"
#include "skin/pop_tip_dlg.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_button.h"
#include "show_names.h"
#include "store/show_list.h"
#include "fault_switches.h"
#include "support/event_pump.h"
#include "support/live_service.h"
#include "support/recording_host.h"
#include "support/temp_home.h"
#include "support/widget_input.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

struct Road {
    TempHome home;
    LiveService service{{.galleries = 6, .classes = 2, .blocks = 2}};
    RecordingHost host;
    CBrindleDlg* panel = nullptr;

    // Show.xml as the host left it (none when `listed` is empty), then FirstSynchro and show.
    bool Start(const std::vector<std::u16string>& listed) {
        for (const std::u16string& name : listed) AddMoreGallery(name.c_str());
        host.resize(320, 200);
        host.show();
        MarrowfinSetMainWindow(&host);
        FirstSynchro();
        show();
        panel = ExistingPanel();
        return panel != nullptr;
    }
    std::u16string G(int i) const { return service.galleries.at(i); }
    CSelClassDlg* Manager() const {
        CSelClassDlg* m = panel->ClassManager();
        return m && m->isVisible() ? m : nullptr;
    }
    CSelClassDlg* WaitForManager() {
        return PumpUntil([this] { return Manager() != nullptr; }) ? Manager() : nullptr;
    }
    CPopTipDlg* Tip() const {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* tip = qobject_cast<CPopTipDlg*>(w); tip && tip->isVisible()) return tip;
        return nullptr;
    }
    static void Press(CSkinButton* button) {
        ShiftTicksForTest(250);  // the picker's damping clock takes it as a new click
        Click(button, button->rect().center());
    }
    // The gallery rows of the class column, below "最近使用" and "我的收藏".
    std::vector<std::u16string> Column() const {
        std::vector<std::u16string> rows;
        for (int i = 2; i < panel->m_classList->GetItemCount(); ++i) rows.push_back(panel->m_classList->GetItemText(i).toStdU16String());
        return rows;
    }
};

// The panel and the store are one per process: a second case in the same
// process would start from what the first one left.
bool g_processUsed = false;
#define NEEDS_A_FRESH_PROCESS() \
    if (ExistingPanel() || std::exchange(g_processUsed, true)) GTEST_SKIP() << "one panel per process: run this case alone"

}  // namespace

TEST(ClassManagerRoad, AFirstStartChoosesThroughTheManagerAndEveryCallerFollowsIt) {
    NEEDS_A_FRESH_PROCESS();
    Road r;
    r.service.handle.faults().set("/gallery/selpageinfo", {.latencyMs = 300});
    ASSERT_TRUE(r.Start({}));
    // No Show.xml: the manager stands above the panel (lowered and the tip: the picker's own tests).
    CSelClassDlg* m = r.WaitForManager();
    ASSERT_TRUE(m && m->windowModality() == Qt::WindowModal);
    // The host's loop leaves the manager's keys to it, as a modal loop of its own would.
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    MarrowfinMsg message{m->Picker(), &escape};
    EXPECT_EQ(GaDllPretanslateMsg(&message), 0);
    // The first table comes from the worker after the opening: the window waits, then the picker follows.
    EXPECT_TRUE(m->m_tableMissing && !m->Button(999)->isEnabled());
    ASSERT_TRUE(PumpUntil([m] { return !m->m_tableMissing; }, 15000));
    // A general class and a boutique one (kinds and order are the picker's own tests).
    r.Press(m->Picker()->VisibleClassButton(QString::fromStdU16String(r.G(0))));
    r.Press(m->Picker()->VisibleClassButton(QString::fromStdU16String(r.G(1))));
    r.Press(m->Button(999));
    const std::vector<std::u16string> chosen{r.G(1), r.G(0)};
    EXPECT_EQ(ShowNames(), chosen);
    // The store is reloaded and the column follows the file's order.
    EXPECT_TRUE(PumpUntil([&] { return r.Column() == chosen; }, 15000) && r.panel->windowFlags().testFlag(Qt::WindowStaysOnTopHint));

    // The panel's button, then "搜索": the search page, Show.xml as it was.
    r.panel->ShowPanel();
    r.Press(r.panel->Button(2002));
    CSelClassDlg* third = r.WaitForManager();
    ASSERT_NE(third, nullptr);
    r.Press(third->Button(997));
    EXPECT_TRUE(PumpUntil([&] { return r.panel->m_nav.page == PageSearch; }) && ShowNames() == chosen);

    // "UpdateShow" hides the panel in hand for the manager (what its end rebuilds: the end-to-end test).
    ShowGallery(u"", u"UpdateShow");
    EXPECT_TRUE(r.WaitForManager() && !r.panel->isVisible());
}

TEST(ClassManagerRoad, RoutesAddUnlistedClassesUpToTheLimitOf101) {
    NEEDS_A_FRESH_PROCESS();
    Road r;
    std::vector<std::u16string> listed{r.G(0), r.G(1)};
    for (int i = 0; i < 97; ++i) listed.push_back(u"填充" + QString::number(i).toStdU16String());
    ASSERT_TRUE(r.Start(listed));
    ASSERT_TRUE(PumpUntil([&] { return r.panel->m_classList->GetItemCount() >= 3; }, 15000));
    EXPECT_EQ(r.Manager(), nullptr);

    // 99 listed: a route to another class adds it behind the last and opens it when it has come.
    ShowGallery((u"\\" + r.G(2)).c_str(), u"");
    EXPECT_EQ(std::make_pair(ShowNames().size(), ShowNames().back()), std::make_pair(size_t(100), r.G(2)));
    auto shownRow = [&] {
        const int i = r.panel->m_nav.classIndex;
        return i >= 0 && i < r.panel->m_classList->GetItemCount() ? r.panel->m_classList->GetItemText(i).toStdU16String()
                                                                  : std::u16string();
    };
    EXPECT_TRUE(PumpUntil([&] { return shownRow() == r.G(2); }, 15000));
    // 100: the next one is added too; the user goes elsewhere before it comes, and it does not pull them back.
    r.service.handle.faults().set("/gallery/g_all", {.latencyMs = 600});
    const long fetched = r.service.Served("/gallery/g_all");
    ShowGallery((u"\\" + r.G(5)).c_str(), u"");
    EXPECT_EQ(ShowNames().size(), 101u);
    Click(r.panel->m_classList, QPoint(20, 5));  // the top row in view
    ASSERT_TRUE(PumpUntil([&] { return r.service.Served("/gallery/g_all") > fetched; }, 10000));
    Pump(1200);  // its answer, the update and any rebuild it would start
    EXPECT_TRUE(shownRow() != r.G(5) && shownRow() != r.G(2));
    r.service.handle.faults().clear("/gallery/g_all");

    // 101: the box, and closing it adds nothing.
    ShowGallery((u"\\" + r.G(3) + u"\\x").c_str(), u"");
    ASSERT_TRUE(PumpUntil([&] { return r.Tip() != nullptr; }));
    EXPECT_TRUE(r.Tip()->FirstLine() == QStringLiteral("最多可添加101个分类") && r.Tip()->OkButton()->text() == QStringLiteral("去管理"));
    r.Press(r.Tip()->CloseButton());
    EXPECT_TRUE(PumpUntil([&] { return r.Tip() == nullptr; }) && ShowNames().size() == 101u && r.Manager() == nullptr);

    // A listed class opens without a question, whatever the count.
    ShowGallery((u"\\" + r.G(1)).c_str(), u"");
    EXPECT_TRUE(PumpUntil([&] { return shownRow() == r.G(1); }, 10000) && r.Tip() == nullptr);
    // The export knows no limit.
    AddMoreGallery(r.G(4).c_str());
    EXPECT_EQ(ShowNames().size(), 102u);

    // "去管理": the manager keeps only what the table knows; "完成" makes room and the route adds its class.
    ShowGallery((u"\\" + r.G(3)).c_str(), u"");
    ASSERT_TRUE(PumpUntil([&] { return r.Tip() != nullptr; }));
    r.Press(r.Tip()->OkButton());
    CSelClassDlg* m = r.WaitForManager();
    ASSERT_TRUE(m && m->Picker()->m_selection.size() == 5u);
    r.Press(m->Button(999));
    EXPECT_EQ(ShowNames(), (std::vector<std::u16string>{r.G(0), r.G(1), r.G(2), r.G(5), r.G(4), r.G(3)}));
    EXPECT_TRUE(PumpUntil([&] { return shownRow() == r.G(3); }, 15000));
}

TEST(ClassManagerRoad, AReloadWithTheServiceDownKeepsTheFailureFaceAndUpAgainRebuildsThePicker) {
    NEEDS_A_FRESH_PROCESS();
    Road r;
    r.service.handle.faults().set("/gallery/selpageinfo", {.latencyMs = 300, .status = 500});
    ASSERT_TRUE(r.Start({r.G(0), r.G(1)}));
    ShowBoutiqueGallery();
    CSelClassDlg* m = r.WaitForManager();
    ASSERT_TRUE(m && m->m_tableMissing && m->Button(999)->text() == QStringLiteral("重新加载"));
    // The start's own request fails first; until then the button waits.
    ASSERT_TRUE(PumpUntil([m] { return m->Button(999)->isEnabled(); }, 10000));
    // The request runs on a worker: the button waits, the window stays usable.
    r.Press(m->Button(999));
    EXPECT_TRUE(m->Reloading() && !m->Button(999)->isEnabled());
    ASSERT_TRUE(PumpUntil([m] { return !m->Reloading(); }, 10000));
    EXPECT_TRUE(m->m_tableMissing && m->Button(999)->isEnabled() && m->Button(999)->text() == QStringLiteral("重新加载"));

    r.service.handle.faults().clear("/gallery/selpageinfo");
    r.Press(m->Button(999));
    ASSERT_TRUE(PumpUntil([m] { return !m->m_tableMissing; }, 10000));
    EXPECT_TRUE(m->Button(999)->text() == QStringLiteral("完成") && m->Picker()->isVisible());
    // The picker is made anew from Show.xml; a change closed with the window is dropped.
    EXPECT_EQ(m->Picker()->m_selection, (ClassSelection{{u"001" + r.G(0), u""}, {u"002" + r.G(1), u""}}));
    r.Press(m->Picker()->VisibleClassButton(QString::fromStdU16String(r.G(0))));
    r.Press(m->Button(1000));
    EXPECT_EQ(ShowNames(), (std::vector<std::u16string>{r.G(0), r.G(1)}));
}
