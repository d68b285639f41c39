// The sort selector driven by real clicks: the option, the posts to the
// panel and the picker, the sort button's state, and its look at two rates.

#include <gtest/gtest.h>

#include <QTest>

#include "picker/gal_sort_sel_dlg.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_scale.h"
#include "skin/skin_test_util.h"
#include "support/reference_picture.h"
#include "support/temp_home.h"
#include "support/widget_input.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// A window that keeps the panel commands it is posted.
class CommandWindow : public QWidget {
public:
    std::vector<std::uintptr_t> commands;

protected:
    bool event(QEvent* event) override {
        if (event->type() == WindowMessageEvent::EventType()) {
            auto* message = static_cast<WindowMessageEvent*>(event);
            if (message->Message() == MsgPanelCommand) commands.push_back(message->WParam());
            return true;
        }
        return QWidget::event(event);
    }
};

struct Picker {
    CommandWindow owner;
    CommandWindow panel;
    CSkinButton* sortButton = new CSkinButton(&owner);
    Picker() {
        owner.resize(ScaleUnits(400), ScaleUnits(200));
        sortButton->Create(QStringLiteral("排序∧"), true, ScaleRect(200, 10, 260, 34), &owner, 1200);
        sortButton->kind = 56;
        sortButton->selected = false;  // the menu is open
        owner.show();
        (void)HandleOf(&panel);
    }
    std::vector<int> Checked(CGalSortSelDlg& menu) {
        std::vector<int> ids;
        for (int id : CGalSortSelDlg::kChoiceIds)
            if (menu.Choice(id)->checked) ids.push_back(id);
        return ids;
    }
};

QRect OnScreen(QWidget* widget) { return QRect(widget->mapToGlobal(QPoint(0, 0)), widget->size()); }

}  // namespace

TEST(SortSelector, ClicksWriteTheOptionAndAskForTheTable) {
    TempHome home;
    UseRate(1.0f);
    Picker picker;
    CGalSortSelDlg menu(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
    EXPECT_EQ(menu.size(), QSize(84, 90));
    EXPECT_EQ(picker.Checked(menu), std::vector<int>{1000});  // GalDefSort absent: 0

    // The choices stand as 综合, 最新, 最热 from the top.
    EXPECT_LT(menu.Choice(1000)->y(), menu.Choice(1002)->y());
    EXPECT_LT(menu.Choice(1002)->y(), menu.Choice(1001)->y());

    const QRect button = OnScreen(picker.sortButton);
    menu.PopUpBelow(button);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.pos(), QPoint(button.left() - 50, button.bottom() + 1));

    Click(menu.Choice(1002), QPoint(20, 10));
    EXPECT_FALSE(menu.isVisible());
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 2);
    EXPECT_EQ(picker.Checked(menu), std::vector<int>{1002});
    EXPECT_TRUE(picker.sortButton->selected);
    EXPECT_EQ(picker.sortButton->text(), QStringLiteral("排序∨"));
    EXPECT_EQ(picker.panel.commands, std::vector<std::uintptr_t>{24});
    EXPECT_EQ(picker.owner.commands, std::vector<std::uintptr_t>{1000});

    // The same choice again is written and sent again.
    menu.PopUpBelow(button);
    Click(menu.Choice(1002), QPoint(20, 10));
    EXPECT_EQ(picker.panel.commands, (std::vector<std::uintptr_t>{24, 24}));
    EXPECT_EQ(picker.owner.commands, (std::vector<std::uintptr_t>{1000, 1000}));

    // The next opening shows the stored choice checked; a value outside 0..2 none.
    {
        CGalSortSelDlg next(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
        EXPECT_EQ(picker.Checked(next), std::vector<int>{1002});
    }
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 7));
    CGalSortSelDlg odd(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
    EXPECT_TRUE(picker.Checked(odd).empty());
    Click(odd.Choice(1001), QPoint(20, 10));
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 1);

    // No panel to tell: the option is still written, nothing is posted there.
    CGalSortSelDlg alone(&picker.owner, nullptr, 0);
    Click(alone.Choice(1000), QPoint(20, 10));
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 0);
}

TEST(SortSelector, LosingActivationClosesTheMenu) {
    TempHome home;
    UseRate(1.0f);
    Picker picker;
    CGalSortSelDlg menu(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
    menu.PopUpBelow(OnScreen(picker.sortButton));
    picker.sortButton->setText(QStringLiteral("排序∧"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&menu, 2000));

    // A click elsewhere in the class manager activates it.
    picker.owner.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&picker.owner, 2000));
    QCoreApplication::processEvents();
    EXPECT_FALSE(menu.isVisible());
    EXPECT_TRUE(picker.sortButton->selected);
    EXPECT_EQ(picker.sortButton->text(), QStringLiteral("排序∨"));
    EXPECT_TRUE(picker.panel.commands.empty());  // closing is no choice
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), -1);
}

// The checked choice (最热, the lowest) carries the mark, 综合 is under the pointer.
TEST(SortSelector, LooksAsItsReferenceAtTwoRates) {
    TempHome home;
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 1));
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        ParkMouse();
        Picker picker;
        CGalSortSelDlg menu(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
        menu.PopUpBelow(OnScreen(picker.sortButton));
        ASSERT_EQ(menu.size(), QSize(ScaleUnits(84), ScaleUnits(90)));
        MoveTo(menu.Choice(1000), QPoint(5, 5));
        EXPECT_TRUE(menu.Choice(1000)->hover);
        EXPECT_TRUE(MatchesReference(menu.grab().toImage(), "picker",
                                     rate == 1.0f ? "sort_selector_rate_1.0" : "sort_selector_rate_1.5"));
    }
}
