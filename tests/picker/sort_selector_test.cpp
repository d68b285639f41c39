// The sort selector driven by real clicks: the option, the posts to the
// panel and the picker, the sort button's state, and its look at two rates.

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "picker/gal_sort_sel_dlg.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "render_support.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_scale.h"
#include "support/temp_home.h"

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

    QTest::mouseClick(menu.Choice(1002), Qt::LeftButton, {}, QPoint(20, 10));
    QCoreApplication::processEvents();
    EXPECT_FALSE(menu.isVisible());
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 2);
    EXPECT_EQ(picker.Checked(menu), std::vector<int>{1002});
    EXPECT_TRUE(picker.sortButton->selected);
    EXPECT_EQ(picker.sortButton->text(), QStringLiteral("排序∨"));
    EXPECT_EQ(picker.panel.commands, std::vector<std::uintptr_t>{24});
    EXPECT_EQ(picker.owner.commands, std::vector<std::uintptr_t>{1000});

    // The same choice again is written and sent again.
    menu.PopUpBelow(button);
    QTest::mouseClick(menu.Choice(1002), Qt::LeftButton, {}, QPoint(20, 10));
    QCoreApplication::processEvents();
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
    QTest::mouseClick(odd.Choice(1001), Qt::LeftButton, {}, QPoint(20, 10));
    EXPECT_EQ(GetOptionInt(u"GalDefSort", -1), 1);

    // No panel to tell: the option is still written, nothing is posted there.
    CGalSortSelDlg alone(&picker.owner, nullptr, 0);
    QTest::mouseClick(alone.Choice(1000), Qt::LeftButton, {}, QPoint(20, 10));
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

TEST(SortSelector, RendersAtTwoRates) {
    TempHome home;
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 1));
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        ParkMouse();
        Picker picker;
        CGalSortSelDlg menu(&picker.owner, picker.sortButton, HandleOf(&picker.panel));
        menu.PopUpBelow(OnScreen(picker.sortButton));
        ASSERT_EQ(menu.size(), QSize(ScaleUnits(84), ScaleUnits(90)));
        MoveMouseTo(menu.Choice(1000), QPoint(5, 5));
        EXPECT_TRUE(menu.Choice(1000)->hover);

        const QImage image = Grab(&menu);
        SavePng(image, QStringLiteral("sort_selector_%1.png").arg(static_cast<int>(rate * 10)));
        const QColor frame(0xEE, 0xF0, 0xF3);
        EXPECT_EQ(PixelAt(image, 0, 0), frame);
        EXPECT_EQ(PixelAt(image, image.width() - 1, image.height() - 1), frame);
        // The checked choice (最热, the lowest) and the hovered one (综合) are
        // filled grey; 最新 in between stays white.
        const QRect hot = menu.Choice(1001)->geometry();
        const QRect fresh = menu.Choice(1002)->geometry();
        EXPECT_EQ(PixelAt(image, hot.right() - 3, hot.center().y()), frame);
        EXPECT_EQ(PixelAt(image, menu.Choice(1000)->geometry().right() - 3, 4), frame);
        EXPECT_EQ(PixelAt(image, fresh.right() - 3, fresh.center().y()), QColor(Qt::white));
        // The check mark sits at the left of the checked choice only.
        auto marked = [&](const QRect& choice) {
            const QRect cell(choice.left() + ScaleUnits(10), choice.top() + ScaleUnits(8), ScaleUnits(14),
                             ScaleUnits(14));
            int other = 0;
            for (int y = cell.top(); y <= cell.bottom(); ++y)
                for (int x = cell.left(); x <= cell.right(); ++x) {
                    const QColor c = PixelAt(image, x, y);
                    if (c != frame && c != QColor(Qt::white)) ++other;
                }
            return other;
        };
        EXPECT_GT(marked(hot), 10);
        EXPECT_EQ(marked(fresh), 0);
        // Captions are black text.
        EXPECT_TRUE(ContainsColour(image, fresh, Qt::black, 60));
    }
}
