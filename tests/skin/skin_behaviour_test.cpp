// What the pictures can't show: clicks and posts, hover and cursors, the
// scroll bars' zones and arithmetic, and the tip box's results.
#include <gtest/gtest.h>

#include <QListWidget>
#include <QScrollBar>
#include <QTimer>
#include <QtTest/QTest>
#include <functional>
#include <tuple>

#include "platform/qt/qt_window_system.h"
#include "skin/pop_tip_dlg.h"
#include "skin/scroll_bar_ex.h"
#include "skin/scroll_bar_rv.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/subclass_button.h"
#include "skin/skin_test_util.h"
#include "support/event_pump.h"
#include "support/message_recorder.h"
#include "support/widget_input.h"

namespace marrowfin {
namespace {

using test::RecordedMessage;

TEST(SkinButtons, ClicksHoverCursorAndTheTabsPosts) {
    test::UseRate(1.0f);
    QWidget window;
    test::MessageRecorder seen(&window, true);
    window.resize(240, 64);
    auto* b = new CSkinButton(&window);
    b->Create(QStringLiteral("确定"), true, QRect(20, 20, 80, 24), &window, 1);
    CSubclassButton* tabs[2];
    for (int i = 0; i < 2; ++i) {
        tabs[i] = new CSubclassButton(&window);
        tabs[i]->Create(QStringLiteral("家具..沙发"), true, QRect(104 + 70 * i, 20, 65, 24), &window, 2080 + i);
    }
    ASSERT_TRUE(test::ShowExposed(&window));
    int clicks = 0;
    QObject::connect(b, &QAbstractButton::clicked, [&] { ++clicks; });
    test::Click(b, QPoint(10, 10));
    test::Press(b, QPoint(10, 10));  // released outside: no click
    test::Release(b, QPoint(-10, -10));
    test::MoveTo(b, QPoint(5, 5));
    EXPECT_EQ(std::make_tuple(clicks, b->hover, b->cursor().shape()), std::make_tuple(1, true, Qt::PointingHandCursor));
    test::MoveAway(&window);
    EXPECT_EQ(std::make_tuple(b->hover, b->cursor().shape()), std::make_tuple(false, Qt::ArrowCursor)) << "leaving clears the hover";
    b->setEnabled(false);
    test::MoveTo(b, QPoint(5, 5));
    test::Click(b, QPoint(10, 10));
    EXPECT_EQ(std::make_tuple(clicks, b->hover), std::make_tuple(1, true)) << "hover shows on a disabled button too";
    // A tab's double click and right click are posted to the parent, with the tab.
    seen.Take();
    test::DoubleClick(tabs[1], QPoint(5, 5));
    test::Press(tabs[0], QPoint(5, 5), Qt::RightButton);
    test::Release(tabs[0], QPoint(5, 5), Qt::RightButton);
    EXPECT_TRUE(seen.records.empty()) << "posted, not sent";
    EXPECT_EQ(seen.Take(), (std::vector<RecordedMessage>{
                               {MsgPanelCommand, 2u, static_cast<std::intptr_t>(HandleOf(tabs[1])), {}},
                               {MsgPanelEvent, 9u, static_cast<std::intptr_t>(HandleOf(tabs[0])), {}}}));
    // The caption rule ("a..b" shows "b", "..a" stays) is in the tabs' picture.
    EXPECT_EQ(CSubclassButton::ShownCaption(QStringLiteral("a..b..c")), QStringLiteral("b..c"));
}

// A bar of `height` in a window that keeps the scroll messages.
struct Bar {
    QWidget owner;
    test::MessageRecorder sent{&owner, true};
    CScrollBarRv* bar = new CScrollBarRv;
    explicit Bar(int height, int nMin = 0, int nMax = 1000, int nPage = 100) {
        owner.resize(60, height + 20);
        bar->Create(&owner, QRect(20, 10, 12, height));
        ScrollInfo info;
        info.nMin = nMin;
        info.nMax = nMax;
        info.nPage = nPage;
        bar->SetInfo(info);
        EXPECT_TRUE(test::ShowExposed(&owner));
        QCoreApplication::processEvents();  // the posted size message makes the thumb
    }
    int Pos() const { return bar->Info().nPos; }
    size_t Sent() const { return sent.Of(WM_VSCROLL_MESSAGE).size(); }
    uintptr_t Last() const { return sent.Of(WM_VSCROLL_MESSAGE).back().wParam; }
};

TEST(ScrollBarRv, ZonesMoveByLinesPagesAndEnds) {
    Bar f(300);
    EXPECT_EQ(std::make_tuple(f.bar->ThumbLength(), f.bar->Thumb().top()), std::make_tuple(26, 20));
    // Click point, button, position after, code posted (-1: nothing posted).
    const std::tuple<int, Qt::MouseButton, int, int> steps[] = {
        {290, Qt::LeftButton, 180, SB_LINEDOWN}, {250, Qt::LeftButton, 279, SB_PAGEDOWN},
        {60, Qt::LeftButton, 180, SB_PAGEUP},    {5, Qt::LeftButton, 0, SB_LINEUP},
        {5, Qt::LeftButton, 0, -1},               {290, Qt::RightButton, 1000, SB_BOTTOM},
        {5, Qt::RightButton, 0, SB_TOP},
    };
    for (const auto& [y, button, pos, code] : steps) {
        SCOPED_TRACE(y);
        const size_t before = f.Sent();
        test::Click(f.bar, QPoint(5, y), button);
        EXPECT_EQ(f.Pos(), pos);
        EXPECT_EQ(code < 0 ? f.Sent() : f.Last(), code < 0 ? before : static_cast<uintptr_t>(code))
            << "at the top nothing moves and nothing is sent";
    }
    EXPECT_EQ(ObjectOf(static_cast<WindowHandle>(f.sent.Of(WM_VSCROLL_MESSAGE)[0].lParam)), f.bar);
    for (int i = 0; i < 11; ++i) f.bar->LineDown();
    EXPECT_EQ(f.Pos(), 1000) << "line steps stop at the end exactly";
    EXPECT_EQ(f.bar->Thumb().bottom() + 1, 280) << "the thumb ends at the down zone";
}

TEST(ScrollBarRv, DragTracksReleaseSetsAndAHeldZoneRepeats) {
    Bar f(300);
    const QPoint grip = f.bar->Thumb().center();
    test::Press(f.bar, grip);
    QTest::mouseMove(f.bar, grip + QPoint(0, 117));  // half the travel of 234
    QCoreApplication::processEvents();
    EXPECT_TRUE(f.bar->Dragging() && f.Last() == SB_THUMBTRACK);
    EXPECT_NEAR(f.Pos(), 500, 5);
    QTest::mouseMove(f.bar, QPoint(5, 1000));  // far below: clamped
    QCoreApplication::processEvents();
    EXPECT_EQ(f.Pos(), 1000);
    test::Release(f.bar, grip + QPoint(0, 117));
    QCoreApplication::processEvents();
    EXPECT_TRUE(!f.bar->Dragging() && f.Last() == SB_THUMBPOSITION);
    EXPECT_NEAR(f.Pos(), 500, 5);

    Bar g(300, 0, 100000, 100);
    test::Press(g.bar, QPoint(5, 290));
    test::Pump(450);
    EXPECT_EQ(g.Pos(), 180) << "a short hold is a single step";
    test::Pump(500);
    EXPECT_GT(g.Pos(), 180) << "the hold repeats after 600 ms";
    test::Release(g.bar, QPoint(5, 290));
    const int after = g.Pos();
    test::Pump(250);
    EXPECT_EQ(g.Pos(), after) << "release stops the repeat";
}

TEST(ScrollBarRv, EdgeSizesAndRanges) {
    EXPECT_EQ(Bar(300, 0, 1, 10).bar->ThumbLength(), 236) << "a range below the page";
    EXPECT_EQ(Bar(56).bar->ThumbLength(), 10) << "at least 10 above 55";
    {
        Bar f(55);  // too short for a thumb; the zones still work
        EXPECT_TRUE(f.bar->Thumb().isEmpty());
        test::Click(f.bar, QPoint(5, 50));
        EXPECT_EQ(f.Pos(), 180);
    }
    Bar f(300, 5, 5, 10);  // no range: hidden, and paint never divides by it
    EXPECT_FALSE(f.bar->isVisible());
    ScrollInfo info;
    info.nMax = 400;
    info.nPos = 200;
    f.bar->SetInfo(info);
    EXPECT_FALSE(f.bar->isVisible()) << "the new state lands in message order";
    QCoreApplication::processEvents();
    EXPECT_TRUE(f.bar->isVisible() && f.Pos() == 200);

    // The list's thin bar (its span is in the pictures): the wheel still scrolls.
    QListWidget list;
    for (int i = 0; i < 200; ++i) list.addItem(QStringLiteral("图块 %1").arg(i));
    auto* bar = new CScrollBarEx;
    bar->Attach(&list);
    list.resize(200, 300);
    ASSERT_TRUE(test::ShowExposed(&list));
    list.scrollToBottom();
    QCoreApplication::processEvents();
    const int before = bar->value();
    test::Wheel(list.viewport(), QPoint(50, 50), 1);
    EXPECT_LT(bar->value(), before);
}

TEST(PopTipDlg, ButtonsCloseAndEscapeGiveTheirResults) {
    auto run = [](CPopTipDlg& dlg, const std::function<void()>& act) {
        QTimer::singleShot(0, &dlg, act);
        return dlg.DoModal();
    };
    test::UseRate(1.0f);
    CPopTipDlg one;
    one.Configure(QStringLiteral("提示"), false, QStringLiteral("下载中"), QString(), QStringLiteral("确定"), QString());
    one.OnInitDialog();
    EXPECT_FALSE(one.CancelButton()->isVisibleTo(&one));
    EXPECT_EQ(run(one, [&] { test::Click(one.OkButton(), QPoint(5, 5)); }), 1);
    CPopTipDlg two;
    two.Configure(QStringLiteral("删除"), true, QStringLiteral("删除吗？"), QString(), QStringLiteral("删除"), QStringLiteral("取消"));
    two.OnInitDialog();
    EXPECT_EQ(run(two, [&] { test::Click(two.CancelButton(), QPoint(5, 5)); }), 2);
    EXPECT_EQ(run(two, [&] { test::Click(two.CloseButton(), QPoint(3, 3)); }), 2);
    EXPECT_EQ(run(two, [&] { test::Key(&two, Qt::Key_Escape); }), 2);
    CPopTipDlg empty;  // not configured: an empty box that still closes
    empty.OnInitDialog();
    EXPECT_TRUE(!empty.OkButton()->isVisibleTo(&empty) && empty.CloseButton()->isVisibleTo(&empty));
}

}  // namespace
}  // namespace marrowfin
