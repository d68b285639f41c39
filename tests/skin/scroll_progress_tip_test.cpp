// The scroll bars, the progress bar and the tip box, through real mouse and key events.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QScrollBar>
#include <QWheelEvent>
#include <functional>
#include <QTimer>
#include <QtTest/QTest>
#include <vector>

#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "render_support.h"
#include "skin/pop_tip_dlg.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/scroll_bar_ex.h"
#include "skin/scroll_bar_rv.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_scale.h"

namespace marrowfin {
namespace {

using test::ContainsColour;
using test::PixelAt;

void Pump(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

class ScrollOwner final : public QWidget {
public:
    std::vector<uint32_t> codes;
    std::vector<std::intptr_t> bars;

protected:
    bool event(QEvent* e) override {
        if (e->type() == WindowMessageEvent::EventType()) {
            auto* m = static_cast<WindowMessageEvent*>(e);
            if (m->Message() == WM_VSCROLL_MESSAGE) {
                codes.push_back(static_cast<uint32_t>(m->WParam()));
                bars.push_back(m->LParam());
            }
            return true;
        }
        return QWidget::event(e);
    }
};

struct BarFixture {
    ScrollOwner owner;
    CScrollBarRv* bar;
    explicit BarFixture(int height, int nMin = 0, int nMax = 1000, int nPage = 100) {
        InstallQtWindowSystem();
        owner.resize(60, height + 20);
        bar = new CScrollBarRv;
        bar->Create(&owner, QRect(20, 10, 12, height));
        ScrollInfo info;
        info.nMin = nMin;
        info.nMax = nMax;
        info.nPage = nPage;
        bar->SetInfo(info);
        EXPECT_TRUE(test::ShowExposed(&owner));
        QCoreApplication::processEvents();  // the posted size message makes the thumb
    }
    void Click(QPoint p, Qt::MouseButton b = Qt::LeftButton) {
        QTest::mousePress(bar, b, {}, p);
        QTest::mouseRelease(bar, b, {}, p);
        QCoreApplication::processEvents();
    }
    int Pos() const { return bar->Info().nPos; }
};

TEST(ScrollBarRv, ThumbArithmeticAndZones) {
    BarFixture f(300);
    EXPECT_TRUE(f.bar->isVisible());
    EXPECT_EQ(f.bar->ThumbLength(), 26);  // (300 - 40) * 100 / 1000
    EXPECT_EQ(f.bar->Thumb().top(), 20);
    // Down zone: one line, posted to the owner with the bar's handle.
    f.Click(QPoint(5, 290));
    EXPECT_EQ(f.Pos(), 180);
    ASSERT_EQ(f.owner.codes.size(), 1u);
    EXPECT_EQ(f.owner.codes[0], SB_LINEDOWN);
    EXPECT_EQ(ObjectOf(static_cast<WindowHandle>(f.owner.bars[0])), f.bar);
    // Track below the thumb: a page less one.
    f.Click(QPoint(5, 250));
    EXPECT_EQ(f.Pos(), 279);
    EXPECT_EQ(f.owner.codes.back(), SB_PAGEDOWN);
    // Track above the thumb: back by a page less one.
    const QRect thumb = f.bar->Thumb();
    f.Click(QPoint(5, thumb.top() - 3));
    EXPECT_EQ(f.Pos(), 180);
    EXPECT_EQ(f.owner.codes.back(), SB_PAGEUP);
    f.Click(QPoint(5, 5));
    EXPECT_EQ(f.Pos(), 0);
    EXPECT_EQ(f.owner.codes.back(), SB_LINEUP);
    const size_t sent = f.owner.codes.size();
    f.Click(QPoint(5, 5));  // at the top nothing moves and nothing is sent
    EXPECT_EQ(f.Pos(), 0);
    EXPECT_EQ(f.owner.codes.size(), sent);
    // Right button: the ends.
    f.Click(QPoint(5, 290), Qt::RightButton);
    EXPECT_EQ(f.Pos(), 1000);
    EXPECT_EQ(f.owner.codes.back(), SB_BOTTOM);
    f.Click(QPoint(5, 5), Qt::RightButton);
    EXPECT_EQ(f.Pos(), 0);
    EXPECT_EQ(f.owner.codes.back(), SB_TOP);
    // LineDown near the end stops at nMax exactly.
    f.bar->LineDown();
    for (int i = 0; i < 10; ++i) f.bar->LineDown();
    EXPECT_EQ(f.Pos(), 1000);
    EXPECT_EQ(f.bar->Thumb().bottom() + 1, 300 - 20) << "the thumb ends at the down zone";
}

TEST(ScrollBarRv, DragTracksAndReleaseSetsThePosition) {
    BarFixture f(300);
    const QPoint grip = f.bar->Thumb().center();
    QTest::mousePress(f.bar, Qt::LeftButton, {}, grip);
    EXPECT_TRUE(f.bar->Dragging());
    EXPECT_EQ(f.bar->ThumbColour(), QColor(0xC8, 0xC8, 0xC8));
    QTest::mouseMove(f.bar, grip + QPoint(0, 117));  // half the travel of 234
    QCoreApplication::processEvents();
    EXPECT_EQ(f.owner.codes.back(), SB_THUMBTRACK);
    EXPECT_NEAR(f.Pos(), 500, 5);
    QTest::mouseMove(f.bar, QPoint(5, 1000));  // far below: clamped
    QCoreApplication::processEvents();
    EXPECT_EQ(f.Pos(), 1000);
    QTest::mouseRelease(f.bar, Qt::LeftButton, {}, grip + QPoint(0, 117));
    QCoreApplication::processEvents();
    EXPECT_FALSE(f.bar->Dragging());
    EXPECT_EQ(f.owner.codes.back(), SB_THUMBPOSITION);
    EXPECT_NEAR(f.Pos(), 500, 5);
    EXPECT_EQ(f.bar->ThumbColour(), QColor(0xAF, 0xAF, 0xAF));
}

TEST(ScrollBarRv, HoldingAZoneRepeatsAfterSixHundredMs) {
    BarFixture f(300, 0, 100000, 100);
    QTest::mousePress(f.bar, Qt::LeftButton, {}, QPoint(5, 290));
    EXPECT_EQ(f.Pos(), 180);
    Pump(450);  // ticks 1 to 4: no repeat yet
    EXPECT_EQ(f.Pos(), 180) << "a short hold is a single step";
    Pump(500);
    EXPECT_GT(f.Pos(), 180) << "the hold repeats after 600 ms";
    QTest::mouseRelease(f.bar, Qt::LeftButton, {}, QPoint(5, 290));
    const int after = f.Pos();
    Pump(250);
    EXPECT_EQ(f.Pos(), after) << "release stops the repeat";
}

TEST(ScrollBarRv, EdgeSizesAndRanges) {
    {
        BarFixture f(300, 0, 1, 10);  // range below the page: the second formula
        EXPECT_EQ(f.bar->ThumbLength(), 260 * 10 / 11);
        EXPECT_LT(f.bar->ThumbLength(), 260);
    }
    {
        BarFixture f(55);  // too short for a thumb; the zones still work
        EXPECT_EQ(f.bar->ThumbLength(), 0);
        EXPECT_TRUE(f.bar->Thumb().isEmpty());
        f.Click(QPoint(5, 50));
        EXPECT_EQ(f.Pos(), 180);
        f.Click(QPoint(5, 3));
        EXPECT_EQ(f.Pos(), 0);
    }
    {
        BarFixture f(56, 0, 1000, 100);
        EXPECT_EQ(f.bar->ThumbLength(), 10) << "at least 10 above 55";
    }
    {
        BarFixture f(300, 5, 5, 10);  // no range: hidden, and paint never divides by it
        EXPECT_FALSE(f.bar->isVisible());
        ScrollInfo info;
        info.nMax = 400;
        info.nPos = 200;
        f.bar->SetInfo(info);
        EXPECT_FALSE(f.bar->isVisible()) << "the new state lands in message order";
        QCoreApplication::processEvents();
        EXPECT_TRUE(f.bar->isVisible());
        EXPECT_EQ(f.Pos(), 200);
    }
}

TEST(ScrollBarRv, RendersAtSeveralPositions) {
    std::vector<QImage> shots;
    for (int pos : {0, 250, 500, 750, 1000}) {
        BarFixture f(300);
        ScrollInfo info;
        f.bar->GetInfo(info);
        info.nPos = pos;
        f.bar->SetInfo(info);
        QCoreApplication::processEvents();
        QImage shot = test::Grab(f.bar);
        const QRect thumb = f.bar->Thumb();
        EXPECT_EQ(PixelAt(shot, 6, thumb.center().y()), QColor(0xAF, 0xAF, 0xAF)) << pos;
        EXPECT_EQ(PixelAt(shot, 6, thumb.top() - 2), QColor(Qt::white)) << pos;
        shots.push_back(shot);
    }
    test::SavePng(test::Strip(shots, Qt::Horizontal, 28, QColor(0xEE, 0xEE, 0xEE)), QStringLiteral("scroll_bar_rv_positions.png"));
}

TEST(ScrollBarEx, ListBarLookAndBehaviour) {
    test::UseRate(1.0f);
    QListWidget list;
    for (int i = 0; i < 200; ++i) list.addItem(QStringLiteral("图块 %1").arg(i));
    auto* bar = new CScrollBarEx;
    bar->Attach(&list);
    list.resize(200, 300);
    ASSERT_TRUE(test::ShowExposed(&list));
    EXPECT_EQ(list.verticalScrollBar(), bar);
    EXPECT_EQ(bar->width(), 6);
    QImage top = test::Grab(bar);
    auto span = bar->ThumbSpan();
    EXPECT_EQ(span.first, 6);
    EXPECT_EQ(PixelAt(top, 3, (span.first + span.second) / 2 + 5), QColor(0xC9, 0xCB, 0xCF));
    EXPECT_EQ(PixelAt(top, 3, span.second + 5), QColor(Qt::white));
    list.scrollToBottom();
    QCoreApplication::processEvents();
    span = bar->ThumbSpan();
    EXPECT_EQ(span.second, bar->height() - 6);
    QImage bottom = test::Grab(bar);
    EXPECT_EQ(PixelAt(bottom, 3, span.first - 3), QColor(Qt::white));
    // The wheel over the list still scrolls it.
    const int before = bar->value();
    QWheelEvent wheel(QPointF(50, 50), list.viewport()->mapToGlobal(QPointF(50, 50)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(list.viewport(), &wheel);
    EXPECT_LT(bar->value(), before);
    test::SavePng(test::Strip({top, bottom}, Qt::Horizontal, 8, QColor(0xEE, 0xEE, 0xEE)), QStringLiteral("scroll_bar_ex.png"));
}

TEST(ProgressCtrlOwner, SettersColoursAndFill) {
    QWidget window;
    window.resize(240, 60);
    auto* bar = new CProgressCtrlOwner(&window);
    bar->setGeometry(20, 20, 200, 8);
    ASSERT_TRUE(test::ShowExposed(&window));
    EXPECT_EQ(bar->SetPos(101), -1);
    EXPECT_EQ(bar->GetPos(), 0) << "a position above the maximum leaves the bar";
    EXPECT_EQ(bar->SetPos(-1), -1);
    EXPECT_EQ(bar->SetPos(50), 0);
    QImage dark = test::Grab(bar);
    EXPECT_EQ(PixelAt(dark, 50, 4), QColor(0x57, 0x99, 0xF5));
    EXPECT_EQ(PixelAt(dark, 150, 4), QColor(0x52, 0x52, 0x52));
    bar->UseBlueFill();
    bar->UseGreyGround();
    bar->UseLightOutline();
    EXPECT_EQ(bar->SetPos(100), 0);
    QImage full = test::Grab(bar);
    EXPECT_EQ(PixelAt(full, 190, 4), QColor(0x29, 0x75, 0xE6));
    bar->SetPos(30);
    QImage part = test::Grab(bar);
    EXPECT_EQ(PixelAt(part, 40, 4), QColor(0x29, 0x75, 0xE6));
    EXPECT_EQ(PixelAt(part, 80, 4), QColor(0xC1, 0xC1, 0xC2));
    bar->SetRange(200, 300);
    bar->ResetRange();  // minimum 200 is not below 100: unchanged
    EXPECT_EQ(bar->SetPos(50), -1);
    bar->SetRange(20, 300);
    bar->SetPos(250);
    bar->ResetRange();
    EXPECT_EQ(bar->GetPos(), 0);
    EXPECT_EQ(bar->SetPos(100), 0);
    EXPECT_EQ(bar->SetPos(101), -1);
    test::SavePng(test::Strip({dark, part, full}, Qt::Vertical, 4, Qt::white), QStringLiteral("progress_bar.png"));
}

int RunTip(CPopTipDlg& dlg, const std::function<void()>& act) {
    QTimer::singleShot(0, &dlg, act);
    return dlg.DoModal();
}

TEST(PopTipDlg, LayoutsAndResults) {
    for (float rate : {1.0f, 1.5f}) {
        test::UseRate(rate);
        SCOPED_TRACE(rate);
        {
            CPopTipDlg dlg;
            dlg.Configure(QStringLiteral("提示"), false, QStringLiteral("图块正在下载，请稍后再试"), QString(),
                          QStringLiteral("确定"), QStringLiteral("取消"));
            dlg.OnInitDialog();
            EXPECT_EQ(dlg.size(), QSize(ScaleUnits(347), ScaleUnits(183)));
            EXPECT_EQ(dlg.OkButton()->geometry(), ScaleBox(133, 138, 80, 24));
            EXPECT_FALSE(dlg.CancelButton()->isVisibleTo(&dlg));
            ASSERT_TRUE(test::ShowExposed(&dlg));
            QImage shot = test::Grab(&dlg);
            test::SaveRatePng(shot, QStringLiteral("tip_one_line"), rate);
            EXPECT_EQ(PixelAt(shot, 0, 0), QColor(0x88, 0x88, 0x88));
            EXPECT_EQ(PixelAt(shot, ScaleUnits(200), ScaleUnits(3)), QColor(0xF2, 0xF3, 0xF5));
            EXPECT_TRUE(ContainsColour(shot, ScaleRect(0, 76, 347, 96), QColor(0x33, 0x33, 0x33), 16));
            EXPECT_FALSE(ContainsColour(shot, ScaleRect(0, 62, 347, 74), QColor(0x33, 0x33, 0x33), 16))
                << "one line sits at 76";
            dlg.hide();
            EXPECT_EQ(RunTip(dlg, [&dlg] { QTest::mouseClick(dlg.OkButton(), Qt::LeftButton, {}, QPoint(5, 5)); }), 1);
        }
        {
            CPopTipDlg dlg;
            dlg.Configure(QStringLiteral("删除文件夹是一个很长很长很长的标题"), true, QStringLiteral("确定删除该文件夹吗？"),
                          QStringLiteral("文件夹内的图块将一并删除"), QStringLiteral("删除"), QStringLiteral("取消"));
            dlg.OnInitDialog();
            EXPECT_EQ(dlg.OkButton()->geometry(), ScaleBox(157, 138, 80, 24));
            EXPECT_EQ(dlg.CancelButton()->geometry(), ScaleBox(247, 138, 80, 24));
            EXPECT_EQ(dlg.CloseButton()->geometry(),
                      QRect(dlg.width() - ScaleUnits(24), ScaleUnits(7), ScaleUnits(16), ScaleUnits(16)));
            ASSERT_TRUE(test::ShowExposed(&dlg));
            QImage shot = test::Grab(&dlg);
            test::SaveRatePng(shot, QStringLiteral("tip_two_lines"), rate);
            EXPECT_TRUE(ContainsColour(shot, ScaleRect(0, 64, 347, 84), QColor(0x33, 0x33, 0x33), 16));
            EXPECT_TRUE(ContainsColour(shot, ScaleRect(0, 88, 347, 108), QColor(0x33, 0x33, 0x33), 16));
            EXPECT_FALSE(ContainsColour(shot, ScaleRect(105, 4, 340, 28), QColor(0x33, 0x33, 0x33), 40))
                << "the title is cut behind 104";
            dlg.hide();
            EXPECT_EQ(RunTip(dlg, [&dlg] { QTest::mouseClick(dlg.CancelButton(), Qt::LeftButton, {}, QPoint(5, 5)); }), 2);
            EXPECT_EQ(RunTip(dlg, [&dlg] { QTest::mouseClick(dlg.CloseButton(), Qt::LeftButton, {}, QPoint(3, 3)); }), 2);
            EXPECT_EQ(RunTip(dlg, [&dlg] { QTest::keyClick(&dlg, Qt::Key_Escape); }), 2);
        }
        {
            CPopTipDlg empty;  // not configured: an empty box that still closes
            empty.OnInitDialog();
            EXPECT_FALSE(empty.OkButton()->isVisibleTo(&empty));
            EXPECT_TRUE(empty.CloseButton()->isVisibleTo(&empty));
        }
    }
    test::UseRate(1.0f);
}

}  // namespace
}  // namespace marrowfin
