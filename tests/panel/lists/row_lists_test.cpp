// The class column and the result list driven through their windows: the row
// arithmetic at its edges, scrolling, hover, the click zones and what a click
// posts, selects or starts on the owner, the rows told to the owner as they
// come into view, rows dropped behind the list's back, and the class column
// drawn at two rates against reference pictures (the result rows are seen in
// the panel's search page).

#include <QApplication>
#include <QHelpEvent>
#include <QTimer>
#include <QToolTip>
#include <set>

#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/lists/search_row_zone.h"
#include "panel/model/panel_messages.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "skin/scroll_bar_ex.h"
#include "support/message_recorder.h"
#include "support/event_pump.h"
#include "skin/skin_test_util.h"
#include "support/reference_picture.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

QImage Grab(QWidget* w) { return w->grab().toImage().convertToFormat(QImage::Format_RGB32); }
std::string AtRate(const char* name, float rate) { return name + std::string(rate == 1.0f ? "_1.0" : "_1.5"); }

TEST(ClassList, ClicksHoverScrollTipsAndLookAtTwoRates) {
    const char* const names[] = {"最近使用", "我的收藏", "建筑", "精品家具", "机械", "电气", "给排水", "暖通"};
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        QWidget window;  // the list's owner, recording what the list posts to it
        MessageRecorder posted{&window, /*consume*/ true};
        window.resize(ScaleUnits(150), ScaleUnits(320));
        auto* list = new CClassListCtrl(&window);
        list->setGeometry(1, ScaleUnits(12), ScaleUnits(132), ScaleUnits(295));
        for (int i = 0; i < 30; ++i) list->InsertItem(i, i == 8 ? QString(100, QChar(u'长')) : QString::fromUtf8(names[i % 8]));
        list->isBoutique = [](const QString& text) { return text.startsWith(QStringLiteral("精品")); };
        ASSERT_TRUE(ShowExposed(&window));
        auto centre = [&](int row) { return list->RowRect(row).center(); };
        auto clicked = [](int row) { return std::vector<RecordedMessage>{{MsgPanelCommand, 21, row, {}}}; };

        // A click posts its row and selects nothing itself; a double click is one click; the last pixel
        // row belongs to its row; right of the column and the right button post nothing.
        Click(list, centre(3));
        EXPECT_EQ(std::make_pair(posted.Take(), list->GetSelectedRow()), std::make_pair(clicked(3), -1));
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, centre(2));  // a double click: the press, then the double-click event
        DoubleClick(list, centre(2));
        Pump(20);
        EXPECT_EQ(posted.Take(), clicked(2));
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, QPoint(10, list->RowRect(4).bottom()));
        Click(list, QPoint(10, list->height() - 2));  // the cut row under the last whole one is hit where it shows
        EXPECT_FALSE(list->IsRowInClient(10));
        Click(list, QPoint(ScaleUnits(112) + 2, centre(1).y()));
        Click(list, centre(2), Qt::RightButton);
        EXPECT_EQ(posted.Take(), (std::vector<RecordedMessage>{clicked(4)[0], clicked(10)[0]}));

        // The selected boutique row in gold, the hovered row bold.
        list->SetSelectedRow(3);
        MoveTo(list, centre(5));
        EXPECT_TRUE(MatchesReference(Grab(list), "panel/lists", AtRate("class_list", rate)));
        // Not right of the column; gone when the mouse leaves.
        MoveTo(list, QPoint(ScaleUnits(120), centre(5).y()));
        const int rightOf = list->HoverRow();
        MoveTo(list, centre(5));
        MoveAway(&window);
        EXPECT_EQ(std::make_pair(rightOf, list->HoverRow()), std::make_pair(-1, -1));

        // The tip shows the row's text, cut to 79 characters.
        QHelpEvent help(QEvent::ToolTip, centre(8), list->mapToGlobal(centre(8)));
        QApplication::sendEvent(list, &help);
        EXPECT_EQ(QToolTip::text(), QString(79, QChar(u'长')));

        // The wheel moves the top row by the system's lines and stops at the last page; the row
        // under a resting mouse follows; scrolled, a click posts the row it lands on.
        const int lines = QApplication::wheelScrollLines();
        MoveTo(list, centre(4));
        Wheel(list, centre(4), -1);
        EXPECT_EQ(std::make_tuple(list->FirstVisibleRow(), list->ScrollBar()->value(), list->HoverRow()),
                  std::make_tuple(lines, lines, 4 + lines));
        Wheel(list, centre(4 + lines), -50);
        EXPECT_EQ(list->FirstVisibleRow(), 20);
        list->EnsureVisible(15);
        list->EnsureVisible(30);  // no such row: nothing moves
        EXPECT_EQ(list->FirstVisibleRow(), 15);
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, centre(17));
        EXPECT_EQ(posted.Take(), clicked(17));
        // Inserting keeps the selection with its row; emptied, the list starts over.
        list->InsertItem(1, QStringLiteral("新"));
        EXPECT_EQ(list->GetSelectedRow(), 4);
        list->DeleteAllItems();
        EXPECT_TRUE(list->FirstVisibleRow() == 0 && !list->IsScrollBarShown());
    }
}

BlockRow Row(const QString& name, int state) {
    return {.name = name,
            .klass = QStringLiteral("建筑"),
            .subclass = QStringLiteral("门窗..平开门"),
            .url = {},
            .path = {},
            .thumbnail = {},
            .prefetch = false,
            .boutique = false,
            .state = state,
            .percent = 40};
}

// The list's owner window: like the panel, it kills a row timer when it fires,
// so every start of a timer shows as one tick in what it heard.
struct RowOwner : QWidget {
    MessageRecorder heard{this};
    bool event(QEvent* event) override {
        if (event->type() != WindowMessageEvent::EventType()) return QWidget::event(event);
        const auto* message = static_cast<WindowMessageEvent*>(event);
        if (message->Message() == WM_TIMER_MESSAGE) KillTimer(HandleOf(this), message->WParam());
        return true;
    }
    // The ids of the timer ticks heard, or the rows of a command, in order.
    std::vector<int> Of(const std::vector<RecordedMessage>& records, std::uintptr_t command = 0) const {
        std::vector<int> out;
        for (const RecordedMessage& r : records)
            if (r.message == (command ? MsgPanelCommand : WM_TIMER_MESSAGE) && (!command || r.wParam == command))
                out.push_back(int(command ? r.lParam : r.wParam));
        return out;
    }
    // The periods of the timers that run now.
    std::vector<int> Running() const {
        std::vector<int> out;
        for (const QTimer* t : findChildren<QTimer*>())
            if (t->isActive()) out.push_back(t->interval());
        return out;
    }
};

TEST(SearchList, ZonesTimersShownRowsTipAndRowsDroppedBehindItsBack) {
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        RowOwner o;
        auto* list = new CSearchListCtrl(&o);
        list->SetOwner(HandleOf(&o));
        auto at = [&](int row, int x, int y) { return list->RowRect(row).topLeft() + ScaleBox(x, y, 0, 0).topLeft(); };
        std::vector<BlockRow> rows;
        for (int i = 0; i < 30; ++i) rows.push_back(Row(QStringLiteral("门%1.dwg").arg(i), i % 6));
        o.resize(ScaleUnits(760), ScaleUnits(373));
        list->setGeometry(ScaleUnits(7), ScaleUnits(12), ScaleUnits(740), ScaleUnits(343));
        list->SetRows(&rows);
        ASSERT_TRUE(ShowExposed(&o));
        // Shown: five rows and a cut one, each told once before it is drawn, and each drawn one asked for.
        const std::vector<RecordedMessage> heard = o.heard.Take();
        const std::vector<int> drawn = o.Of(heard, 18), shown = {0, 1, 2, 3, 4, 5};
        EXPECT_TRUE(o.Of(heard, 9) == shown && std::set<int>(drawn.begin(), drawn.end()) == std::set<int>(shown.begin(), shown.end()));

        // The zones to their edges (units, then pixels: -1 is the pixel before an edge); the class
        // link is as long as the line was measured when drawn, and never reaches past 420.
        const int line = list->LineWidth(0);
        ASSERT_GT(line, 0);
        const int edges[][5] = {{570, 17, 0, 0, ZoneCollect}, {630, 41, -1, -1, ZoneCollect}, {630, 20, 0, 0, ZoneNone},
                                {640, 17, 0, 0, ZoneUse},     {700, 41, -1, -1, ZoneUse},     {700, 20, 0, 0, ZoneNone},
                                {650, 17, -1, -1, ZoneNone},  {100, 30, 0, 0, ZoneClassLink}, {100, 50, line - 1, -1, ZoneClassLink},
                                {100, 40, line, 0, ZoneNone}, {99, 40, 0, 0, ZoneNone},       {650, 25, 0, 0, ZoneUse}};
        for (const auto& e : edges) {
            MoveTo(list, at(0, e[0], e[1]) + QPoint(e[2], e[3]));
            EXPECT_EQ(list->HotZone(), e[4]) << rate << ": " << e[0] << "," << e[1] << " +" << e[2] << "," << e[3];
        }
        // The tip is the row's whole file name.
        QHelpEvent help(QEvent::ToolTip, at(2, 300, 20), list->mapToGlobal(at(2, 300, 20)));
        QApplication::sendEvent(list, &help);
        EXPECT_EQ(QToolTip::text(), QStringLiteral("门2.dwg"));

        if (rate == 1.0f) {
            // A press restarts the owner's timer of its zone, which then reads the clicked row; a press
            // on the picture starts none. A double click on "使用" starts its timer once; one on the
            // picture starts "使用"'s. Row, x, y, double, timer, period:
            const int presses[][6] = {{1, 600, 30, 0, 2003, 300}, {2, 660, 20, 0, 2002, 300}, {0, 110, 40, 0, 2004, 200},
                                      {3, 40, 30, 0, 0, 0},       {4, 660, 20, 1, 2002, 300}, {3, 40, 30, 1, 2002, 300}};
            for (const auto& p : presses) {
                Pump(QApplication::doubleClickInterval() + 50);
                o.heard.Take();
                Click(list, at(p[0], p[1], p[2]));
                if (p[3]) DoubleClick(list, at(p[0], p[1], p[2]));
                EXPECT_EQ(o.Running(), p[4] ? std::vector<int>{p[5]} : std::vector<int>{});
                ASSERT_TRUE(PumpUntil([&] { return o.Running().empty(); }));
                EXPECT_EQ(std::make_pair(o.Of(o.heard.Take()), list->ClickedRow()),
                          std::make_pair(p[4] ? std::vector<int>{p[4]} : std::vector<int>{}, p[0]));
            }
        }

        // Scrolled, only the rows that come into view are told; a wheel's jump skips the rows
        // between; a taller list tells the row it gains.
        o.heard.Take();
        list->EnsureVisible(8);
        Grab(list);
        EXPECT_EQ(o.Of(o.heard.Take(), 9), (std::vector<int>{6, 7, 8, 9}));  // the last one cut
        Wheel(list, QPoint(5, 5), -50);
        Grab(list);
        EXPECT_EQ(o.Of(o.heard.Take(), 9), (std::vector<int>{25, 26, 27, 28, 29}));
        // A press below the last row selects none, keeps the last clicked row and starts nothing.
        const int clicked = list->ClickedRow();
        list->SetSelectedRow(27);
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, QPoint(ScaleUnits(650), list->height() - 2));
        EXPECT_TRUE(list->GetSelectedRow() == -1 && list->ClickedRow() == clicked && o.Running().empty());
        list->resize(list->width(), ScaleUnits(343) + list->RowRect(0).height());
        Grab(list);
        EXPECT_EQ(o.Of(o.heard.Take(), 9), (std::vector<int>{24}));

        // The owner drops rows without a word: the list follows at its next paint and reads none of them.
        list->SetSelectedRow(26);
        MoveTo(list, list->RowRect(26).center());
        EXPECT_EQ(list->HotRow(), 26);
        rows.resize(2);
        Grab(list);
        EXPECT_EQ(std::make_tuple(list->FirstVisibleRow(), list->GetSelectedRow(), list->HotRow(), list->IsScrollBarShown()),
                  std::make_tuple(0, -1, -1, false));
        list->RedrawRow(7);
        Wheel(list, QPoint(5, 5), -1);
        // Rows handed over again start at the top, unselected, measured anew, and are told again.
        list->SetSelectedRow(1);
        o.heard.Take();
        list->SetRows(&rows);
        EXPECT_TRUE(list->GetSelectedRow() == -1 && list->LineWidth(0) == 0);
        Grab(list);
        EXPECT_EQ(o.Of(o.heard.Take(), 9), (std::vector<int>{0, 1}));
        MoveAway(&o);
    }
}

}  // namespace
}  // namespace marrowfin::test
