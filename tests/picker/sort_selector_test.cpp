// The sort selector driven by real clicks: the option, the posts to the
// panel and the picker, the sort button's state (its look: the manager's faces).

#include <gtest/gtest.h>

#include <QTest>

#include "picker/gal_sort_sel_dlg.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_test_util.h"
#include "support/message_recorder.h"
#include "support/temp_home.h"
#include "support/widget_input.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// The class manager with its sort button (menu open), and the panel; both keep what they are posted.
struct Picker {
    QWidget owner, panel;
    MessageRecorder toOwner{&owner, true}, toPanel{&panel, true};
    CSkinButton* sortButton = new CSkinButton(&owner);
    Picker() {
        owner.resize(ScaleUnits(400), ScaleUnits(200));
        sortButton->Create(QStringLiteral("排序∧"), true, ScaleRect(200, 10, 260, 34), &owner, 1200);
        sortButton->kind = 56;
        owner.show();
    }
    std::unique_ptr<CGalSortSelDlg> Menu(bool popUp = false) {
        auto menu = std::make_unique<CGalSortSelDlg>(&owner, sortButton, HandleOf(&panel));
        if (popUp) menu->PopUpBelow(QRect(sortButton->mapToGlobal(QPoint(0, 0)), sortButton->size()));
        return menu;
    }
    static std::vector<int> Checked(CGalSortSelDlg& menu) {
        std::vector<int> ids;
        for (int id : CGalSortSelDlg::kChoiceIds)
            if (menu.Choice(id)->checked) ids.push_back(id);
        return ids;
    }
};

}  // namespace

TEST(SortSelector, LosingActivationClosesTheMenuClicksWriteTheOptionAndAskForTheTable) {
    TempHome home;
    UseRate(1.0f);
    Picker picker;
    auto closing = picker.Menu(true);
    picker.sortButton->setText(QStringLiteral("排序∧"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(closing.get(), 2000));
    // A click elsewhere in the class manager activates it; closing is no choice.
    picker.owner.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&picker.owner, 2000));
    QCoreApplication::processEvents();
    EXPECT_FALSE(closing->isVisible());
    EXPECT_TRUE(picker.sortButton->selected && picker.sortButton->text() == QStringLiteral("排序∨"));
    EXPECT_TRUE(picker.toPanel.Take().empty() && GetOptionInt(u"GalDefSort", -1) == -1);

    picker.sortButton->setText(QStringLiteral("排序∧"));
    picker.sortButton->selected = false;
    auto menu = picker.Menu(true);
    EXPECT_EQ(Picker::Checked(*menu), std::vector<int>{1000});  // GalDefSort absent: 0
    EXPECT_TRUE(menu->isVisible() && menu->pos() == picker.sortButton->mapToGlobal(QPoint(-50, picker.sortButton->height())));
    Click(menu->Choice(1002), QPoint(20, 10));
    EXPECT_EQ(std::make_tuple(menu->isVisible(), GetOptionInt(u"GalDefSort", -1), Picker::Checked(*menu)),
              std::make_tuple(false, 2, std::vector<int>{1002}));
    EXPECT_TRUE(picker.sortButton->selected && picker.sortButton->text() == QStringLiteral("排序∨"));
    // The same choice again is written and sent again.
    menu->PopUpBelow(QRect(picker.sortButton->mapToGlobal(QPoint(0, 0)), picker.sortButton->size()));
    Click(menu->Choice(1002), QPoint(20, 10));
    EXPECT_EQ(picker.toPanel.Take(), (std::vector<RecordedMessage>(2, {MsgPanelCommand, 24, 0, {}})));
    EXPECT_EQ(picker.toOwner.Take(), (std::vector<RecordedMessage>(2, {MsgPanelCommand, 1000, 0, {}})));
    // The next opening shows the stored choice checked; a value outside 0..2 none.
    EXPECT_EQ(Picker::Checked(*picker.Menu()), std::vector<int>{1002});
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 7));
    auto odd = picker.Menu();
    EXPECT_TRUE(Picker::Checked(*odd).empty());
    Click(odd->Choice(1001), QPoint(20, 10));
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 1);
    // No panel to tell: the option is still written, nothing is posted there.
    CGalSortSelDlg alone(&picker.owner, nullptr, 0);
    Click(alone.Choice(1000), QPoint(20, 10));
    EXPECT_TRUE(GetOptionInt(u"GalDefSort", -1) == 0 && picker.toPanel.Take().size() == 1u);
}
