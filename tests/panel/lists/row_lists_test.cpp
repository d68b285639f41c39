// The class column and the result list driven through their windows: the row
// arithmetic at its edges, scrolling, hover, the click zones and what a click
// posts or selects, rows dropped behind the list's back, and both lists
// drawn in their states at two rates against reference pictures.

#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>

#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/lists/search_row_zone.h"
#include "panel/model/panel_messages.h"
#include "skin/scroll_bar_ex.h"
#include "support/message_recorder.h"
#include "support/event_pump.h"
#include "skin/skin_test_util.h"
#include "support/reference_picture.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

// A plain window for the list, recording what the list posts to it.
struct ListOwner {
    QWidget window;
    MessageRecorder posted{&window, /*consume*/ true};
};

QImage Grab(QWidget* w) { return w->grab().toImage().convertToFormat(QImage::Format_RGB32); }
std::string AtRate(const char* name, float rate) { return name + std::string(rate == 1.0f ? "_1.0" : "_1.5"); }

TEST(ClassList, ClicksHoverScrollTipsAndLookAtTwoRates) {
    const char* const names[] = {"最近使用", "我的收藏", "建筑", "精品家具", "机械", "电气", "给排水", "暖通"};
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        ListOwner o;
        o.window.resize(ScaleUnits(150), ScaleUnits(320));
        auto* list = new CClassListCtrl(&o.window);
        list->setGeometry(1, ScaleUnits(12), ScaleUnits(132), ScaleUnits(295));
        for (int i = 0; i < 30; ++i) list->InsertItem(i, i == 8 ? QString(100, QChar(u'长')) : QString::fromUtf8(names[i % 8]));
        list->isBoutique = [](const QString& text) { return text.startsWith(QStringLiteral("精品")); };
        ASSERT_TRUE(ShowExposed(&o.window));
        auto centre = [&](int row) { return list->RowRect(row).center(); };
        auto clicked = [](int row) { return std::vector<RecordedMessage>{{MsgPanelCommand, 21, row, {}}}; };

        // A click posts its row and selects nothing itself; a double click is one click; the last pixel
        // row belongs to its row; right of the column and the right button post nothing.
        Click(list, centre(3));
        EXPECT_EQ(std::make_pair(o.posted.Take(), list->GetSelectedRow()), std::make_pair(clicked(3), -1));
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, centre(2));  // a double click: the press, then the double-click event
        DoubleClick(list, centre(2));
        Pump(20);
        EXPECT_EQ(o.posted.Take(), clicked(2));
        Pump(QApplication::doubleClickInterval() + 50);
        Click(list, QPoint(10, list->RowRect(4).bottom()));
        Click(list, QPoint(10, list->height() - 2));  // the cut row under the last whole one is hit where it shows
        EXPECT_FALSE(list->IsRowInClient(10));
        Click(list, QPoint(ScaleUnits(112) + 2, centre(1).y()));
        Click(list, centre(2), Qt::RightButton);
        EXPECT_EQ(o.posted.Take(), (std::vector<RecordedMessage>{clicked(4)[0], clicked(10)[0]}));

        // The selected boutique row in gold, the hovered row bold.
        list->SetSelectedRow(3);
        MoveTo(list, centre(5));
        EXPECT_TRUE(MatchesReference(Grab(list), "panel/lists", AtRate("class_list", rate)));
        // Not right of the column; gone when the mouse leaves.
        MoveTo(list, QPoint(ScaleUnits(120), centre(5).y()));
        const int rightOf = list->HoverRow();
        MoveTo(list, centre(5));
        MoveAway(&o.window);
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
        EXPECT_EQ(o.posted.Take(), clicked(17));
        // Inserting keeps the selection with its row; emptied, the list starts over.
        list->InsertItem(1, QStringLiteral("新"));
        EXPECT_EQ(list->GetSelectedRow(), 4);
        list->DeleteAllItems();
        EXPECT_TRUE(list->FirstVisibleRow() == 0 && !list->IsScrollBarShown());
    }
}

BlockRow Row(const char* name, const char* subclass, int state, bool boutique = false) {
    return {.name = QString::fromUtf8(name), .klass = QStringLiteral("建筑"), .subclass = QString::fromUtf8(subclass),
            .url = {}, .path = {}, .thumbnail = {}, .prefetch = false, .boutique = boutique, .state = state, .percent = 40};
}

TEST(SearchList, RowsInEveryStateHoverPressAndRowsDroppedBehindItsBack) {
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        struct : ListOwner {
            CSearchListCtrl* list = new CSearchListCtrl(&window);
            std::vector<BlockRow> rows;
            QPoint At(int row, int x, int y) const { return list->RowRect(row).topLeft() + ScaleBox(x, y, 0, 0).topLeft(); }
        } b;
        b.window.resize(ScaleUnits(760), ScaleUnits(373));
        b.list->setGeometry(ScaleUnits(7), ScaleUnits(12), ScaleUnits(740), ScaleUnits(343));
        b.rows = {Row("单开门.dwg", "门窗..平开门", RowFresh),    Row("双开门.DWG", "门窗..平开门", RowCollected),
                  Row("推拉门", "门窗", RowDownloading),           Row("旋转门.dwg", "门窗..旋转门", RowFailed),
                  Row("精品门套.dwg", "精品门窗..门套", RowRemote, true), Row(".dwg", "门窗..其他", RowFetched),
                  Row("折叠门.dwg", "门窗..折叠门", RowFresh),    Row("卷帘门.dwg", "门窗..卷帘门", RowFresh)};
        b.list->SetRows(&b.rows);
        b.list->SetSearchKey(QStringLiteral("门"));
        ASSERT_TRUE(ShowExposed(&b.window));
        Click(b.list, b.At(1, 300, 5));
        EXPECT_TRUE(b.list->GetSelectedRow() == 1 && b.list->ClickedRow() == 1);
        // The zones to their edges (units, then pixels: -1 is the pixel before an edge); the class
        // link is as long as the line was measured when drawn, and never reaches past 420.
        const int line = b.list->LineWidth(0);
        ASSERT_GT(line, 0);
        const int edges[][5] = {{570, 17, 0, 0, ZoneCollect}, {630, 41, -1, -1, ZoneCollect}, {630, 20, 0, 0, ZoneNone},
                                {640, 17, 0, 0, ZoneUse},     {700, 41, -1, -1, ZoneUse},     {700, 20, 0, 0, ZoneNone},
                                {650, 17, -1, -1, ZoneNone},  {100, 30, 0, 0, ZoneClassLink}, {100, 50, line - 1, -1, ZoneClassLink},
                                {100, 40, line, 0, ZoneNone}, {99, 40, 0, 0, ZoneNone},      {650, 25, 0, 0, ZoneUse}};
        for (const auto& e : edges) {
            MoveTo(b.list, b.At(0, e[0], e[1]) + QPoint(e[2], e[3]));
            EXPECT_EQ(b.list->HotZone(), e[4]) << rate << ": " << e[0] << "," << e[1] << " +" << e[2] << "," << e[3];
        }
        // Five rows and a part show, with the bar; the first row's button under the pointer.
        EXPECT_TRUE(MatchesReference(Grab(b.list), "panel/lists", AtRate("search_list", rate)));
        // Drawn rows measured their class line; rows out of view were not drawn.
        EXPECT_TRUE(b.list->LineWidth(5) > 0 && b.list->LineWidth(6) == 0);
        // A press below the rows selects none and keeps the last clicked row.
        b.list->EnsureVisible(7);
        Pump(QApplication::doubleClickInterval() + 50);
        Click(b.list, QPoint(ScaleUnits(300), b.list->height() - 2));
        EXPECT_TRUE(b.list->GetSelectedRow() == -1 && b.list->ClickedRow() == 1);
        b.list->SetSelectedRow(7);
        MoveTo(b.list, b.list->RowRect(7).center());
        EXPECT_EQ(b.list->HotRow(), 7);
        // The owner drops rows without a word: the list follows at its next paint and reads none of them.
        b.rows.resize(2);
        Grab(b.list);
        EXPECT_EQ(std::make_tuple(b.list->FirstVisibleRow(), b.list->GetSelectedRow(), b.list->HotRow(), b.list->IsScrollBarShown()),
                  std::make_tuple(0, -1, -1, false));
        b.list->RedrawRow(7);
        Wheel(b.list, QPoint(5, 5), -1);
        // Rows handed over again start at the top, unselected, measured anew.
        b.list->SetSelectedRow(1);
        b.list->SetRows(&b.rows);
        EXPECT_TRUE(b.list->GetSelectedRow() == -1 && b.list->LineWidth(0) == 0);
        MoveAway(&b.window);
    }
}

}  // namespace
}  // namespace marrowfin::test
