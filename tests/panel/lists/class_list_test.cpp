// The class column driven by real mouse events through its window: clicks
// posted to the owner, hover and leave, the scroll bar, the wheel, tool tips,
// and its rows rendered at two rates.
#include <gtest/gtest.h>

#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QtTest/QTest>

#include "list_test_support.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/model/panel_messages.h"
#include "render_support.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin {
namespace {

using test::Recorded;

const QColor kAccent(0x29, 0x75, 0xE6);
const QColor kBoutique(0xBB, 0x9D, 0x6A);

const char* const kTexts[] = {"最近使用", "我的收藏", "建筑", "精品家具", "机械", "电气", "给排水",
                              "暖通", "园林", "室内", "结构", "市政", "道路", "桥梁"};

// An owner window with the class list where the panel has it: left 1 pixel,
// 132 by 295 units.
struct ClassBoard {
    test::RecordingOwner owner;
    CClassListCtrl* list = nullptr;

    explicit ClassBoard(float rate, int rows, int left = 1) {
        test::UseRate(rate);
        test::ParkMouse();
        owner.resize(ScaleUnits(300), ScaleUnits(330));
        list = Add(left, rows);
    }
    CClassListCtrl* Add(int left, int rows) {
        auto* l = new CClassListCtrl(&owner);
        l->setGeometry(left, ScaleUnits(12), ScaleUnits(132), ScaleUnits(295));
        for (int i = 0; i < rows; ++i) l->InsertItem(i, QString::fromUtf8(kTexts[i % 14]));
        return l;
    }
    QPoint Centre(int row) const { return list->RowRect(row).center(); }
};

Recorded Click21(int row) { return {MsgPanelCommand, 21, row}; }

TEST(ClassList, ClickPostsTheRowToTheOwnerWhichSelects) {
    ClassBoard b(1.0f, 5);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    test::ClickAt(b.list, b.Centre(3));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(3)});
    EXPECT_EQ(b.list->GetSelectedRow(), -1) << "the click itself selects nothing";
    b.list->SetSelectedRow(3);
    EXPECT_EQ(b.list->GetSelectedRow(), 3);

    // Rows 0 and 1 post like any other; the owner's selection stays.
    test::ClickAt(b.list, b.Centre(0));
    test::ClickAt(b.list, b.list->RowRect(1).topLeft());
    EXPECT_EQ(b.owner.Take(), (std::vector<Recorded>{Click21(0), Click21(1)}));
    EXPECT_EQ(b.list->GetSelectedRow(), 3);

    // The empty part below the rows, the strip right of the column and the
    // right button post nothing.
    test::ClickAt(b.list, QPoint(20, b.list->RowRect(4).bottom() + 3));
    test::ClickAt(b.list, QPoint(ScaleUnits(112) + 2, b.Centre(1).y()));
    test::ClickAt(b.list, b.Centre(2), Qt::RightButton);
    EXPECT_TRUE(b.owner.Take().empty());

    // A double click is one click on the row, not two.
    test::Pump(QApplication::doubleClickInterval() + 50);
    test::DoubleClickAt(b.list, b.Centre(2));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(2)});

    // The last pixel row of a row still belongs to it.
    test::Pump(QApplication::doubleClickInterval() + 50);
    test::ClickAt(b.list, QPoint(10, b.list->RowRect(4).bottom()));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(4)});
}

TEST(ClassList, HoverFollowsTheMouseAndLeavesWithIt) {
    ClassBoard b(1.0f, 6);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    const QImage plain = test::Grab(b.list);
    EXPECT_EQ(b.list->HoverRow(), -1);

    test::MoveMouseTo(b.list, b.Centre(2));
    EXPECT_EQ(b.list->HoverRow(), 2);
    const QImage onTwo = test::Grab(b.list);
    EXPECT_TRUE(test::Differs(plain, onTwo, b.list->RowRect(2))) << "the hovered row is drawn bold";
    EXPECT_FALSE(test::Differs(plain, onTwo, b.list->RowRect(3)));

    test::MoveMouseTo(b.list, b.Centre(4));
    EXPECT_EQ(b.list->HoverRow(), 4);
    const QImage onFour = test::Grab(b.list);
    EXPECT_FALSE(test::Differs(plain, onFour, b.list->RowRect(2))) << "the old row is redrawn plain";
    EXPECT_TRUE(test::Differs(plain, onFour, b.list->RowRect(4)));

    // Below the rows and right of the column no row is hovered.
    test::MoveMouseTo(b.list, QPoint(10, b.list->RowRect(5).bottom() + 4));
    EXPECT_EQ(b.list->HoverRow(), -1);
    test::MoveMouseTo(b.list, b.Centre(1));
    EXPECT_EQ(b.list->HoverRow(), 1);
    test::MoveMouseTo(b.list, QPoint(ScaleUnits(120), b.Centre(1).y()));
    EXPECT_EQ(b.list->HoverRow(), -1);

    // Leaving the list clears the row and its look.
    test::MoveMouseTo(b.list, b.Centre(5));
    EXPECT_EQ(b.list->HoverRow(), 5);
    test::MoveMouseTo(&b.owner, QPoint(b.owner.width() - 4, b.owner.height() - 4));
    EXPECT_EQ(b.list->HoverRow(), -1);
    EXPECT_FALSE(test::Differs(plain, test::Grab(b.list), b.list->rect()));

    // Deleting the rows under the mouse forgets the hover row.
    test::MoveMouseTo(b.list, b.Centre(3));
    EXPECT_EQ(b.list->HoverRow(), 3);
    b.list->DeleteAllItems();
    EXPECT_EQ(b.list->HoverRow(), -1);
}

TEST(ClassList, ScrollBarShowsOnlyWhileRowsOverflow) {
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        ClassBoard b(rate, 10);
        ASSERT_TRUE(test::ShowAndWait(&b.owner));
        // 295 units hold ten rows of 28 units plus a pixel at either rate.
        EXPECT_EQ(b.list->RowRect(1).top() - b.list->RowRect(0).top(), ScaleUnits(28) + 1);
        EXPECT_TRUE(b.list->IsRowInClient(9));
        EXPECT_FALSE(b.list->IsScrollBarShown());

        b.list->InsertItem(10, QStringLiteral("市政"));
        EXPECT_TRUE(b.list->IsScrollBarShown());
        CScrollBarEx* bar = b.list->ScrollBar();
        EXPECT_EQ(bar->parentWidget(), b.list);
        EXPECT_EQ(bar->geometry(), QRect(b.list->width() - 6, 0, 6, b.list->height()));
        EXPECT_LT(b.list->RowRect(0).right(), bar->x()) << "rows end left of the bar";
        EXPECT_EQ(bar->maximum(), 1);
        EXPECT_FALSE(b.list->IsRowInClient(10));

        b.list->DeleteAllItems();
        EXPECT_FALSE(b.list->IsScrollBarShown());

        // A lower list overflows with fewer rows, and stops when it grows again.
        for (int i = 0; i < 8; ++i) b.list->InsertItem(i, QString::number(i));
        EXPECT_FALSE(b.list->IsScrollBarShown());
        b.list->resize(b.list->width(), (ScaleUnits(28) + 1) * 6 + 3);
        EXPECT_TRUE(b.list->IsScrollBarShown());
        EXPECT_EQ(b.list->ScrollBar()->height(), b.list->height());
        b.list->resize(b.list->width(), ScaleUnits(295));
        EXPECT_FALSE(b.list->IsScrollBarShown());
    }
}

TEST(ClassList, WheelEnsureVisibleAndTheBarMoveTheTopRow) {
    ClassBoard b(1.0f, 30);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    const int lines = QApplication::wheelScrollLines();
    CScrollBarEx* bar = b.list->ScrollBar();
    ASSERT_TRUE(b.list->IsScrollBarShown());
    EXPECT_EQ(bar->maximum(), 20);
    EXPECT_EQ(bar->pageStep(), 10);

    const QImage top = test::Grab(b.list);
    const QRect fifth = b.list->RowRect(lines + 2);
    test::WheelAt(b.list, b.Centre(1), -120);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    EXPECT_EQ(bar->value(), lines);
    // The rows are painted moved up by the scrolled rows.
    EXPECT_TRUE(test::SameBlock(top, fifth, test::Grab(b.list), b.list->RowRect(lines + 2).topLeft()));
    EXPECT_EQ(b.list->RowRect(lines + 2).top(), 2 * (ScaleUnits(28) + 1));
    // A fine wheel moves only once its turns make a notch.
    test::WheelAt(b.list, b.Centre(1), -40);
    test::WheelAt(b.list, b.Centre(1), -40);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    test::WheelAt(b.list, b.Centre(1), -40);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2 * lines);
    test::WheelAt(b.list, b.Centre(1), 120);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    test::WheelAt(b.list, b.Centre(1), -120 * 50);
    EXPECT_EQ(b.list->FirstVisibleRow(), 20) << "the wheel stops at the last whole page";
    EXPECT_TRUE(b.list->IsRowInClient(29));
    test::WheelAt(b.list, b.Centre(1), 120 * 50);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);

    // EnsureVisible moves as little as needed; rows that aren't there move nothing.
    b.list->EnsureVisible(15);
    EXPECT_EQ(b.list->FirstVisibleRow(), 6);
    EXPECT_TRUE(b.list->IsRowInClient(15));
    EXPECT_FALSE(b.list->IsRowInClient(16));
    EXPECT_FALSE(b.list->IsRowInClient(5));
    b.list->EnsureVisible(10);
    EXPECT_EQ(b.list->FirstVisibleRow(), 6);
    b.list->EnsureVisible(2);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2);
    EXPECT_EQ(bar->value(), 2);
    b.list->EnsureVisible(30);
    b.list->EnsureVisible(-1);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2);

    // A click posts the row as scrolled, and a resting mouse hovers the row
    // that the wheel brings under it.
    test::ClickAt(b.list, b.list->RowRect(5).center());
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(5)});
    test::MoveMouseTo(b.list, b.list->RowRect(4).center());
    EXPECT_EQ(b.list->HoverRow(), 4);
    test::WheelAt(b.list, b.list->RowRect(4).center(), -120);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2 + lines);
    EXPECT_EQ(b.list->HoverRow(), 4 + lines);

    // The bar pressed near its bottom moves the rows down with it.
    const int before = b.list->FirstVisibleRow();
    test::ClickAt(bar, QPoint(3, bar->height() - 2));
    EXPECT_GT(b.list->FirstVisibleRow(), before);
    EXPECT_EQ(b.list->FirstVisibleRow(), bar->value());

    // Removing rows pulls the top row back within the list.
    b.list->DeleteAllItems();
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);
    EXPECT_EQ(bar->value(), 0);
}

TEST(ClassList, ToolTipShowsTheTextOfTheRowUnderTheMouse) {
    ClassBoard b(1.0f, 4);
    const QString longText = QString(100, QChar(u'长'));
    b.list->InsertItem(4, longText);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    auto tipAt = [&](QPoint p) {
        QHelpEvent help(QEvent::ToolTip, p, b.list->mapToGlobal(p));
        QApplication::sendEvent(b.list, &help);
        QCoreApplication::processEvents();
    };
    tipAt(b.Centre(2));
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_EQ(QToolTip::text(), QStringLiteral("建筑"));
    tipAt(b.Centre(4));
    EXPECT_EQ(QToolTip::text(), longText.left(79)) << "cut to 79 characters";
    tipAt(b.Centre(0));
    EXPECT_EQ(QToolTip::text(), QStringLiteral("最近使用"));
    // Below the rows the tip goes away.
    tipAt(QPoint(10, b.list->RowRect(4).bottom() + 10));
    test::Pump(600);
    EXPECT_FALSE(QToolTip::isVisible());
}

TEST(ClassList, RowsKeepTheirStateWhenRowsAreInserted) {
    ClassBoard b(1.0f, 4);
    EXPECT_EQ(b.list->InsertItem(-1, QStringLiteral("x")), -1);
    EXPECT_EQ(b.list->GetItemCount(), 4);
    EXPECT_EQ(b.list->InsertItem(100, QStringLiteral("末")), 4) << "past the end appends";
    EXPECT_EQ(b.list->GetItemText(4), QStringLiteral("末"));
    EXPECT_EQ(b.list->GetItemText(5), QString());
    EXPECT_EQ(b.list->GetItemText(-1), QString());

    b.list->SetSelectedRow(2);
    EXPECT_EQ(b.list->InsertItem(1, QStringLiteral("新")), 1);
    EXPECT_EQ(b.list->GetSelectedRow(), 3) << "the selection stays with its row";
    EXPECT_EQ(b.list->GetItemText(3), QStringLiteral("建筑"));
    b.list->InsertItem(5, QStringLiteral("后"));
    EXPECT_EQ(b.list->GetSelectedRow(), 3);

    b.list->SetSelectedRow(60);
    EXPECT_EQ(b.list->GetSelectedRow(), -1) << "a row that isn't there selects nothing";
    b.list->SetSelectedRow(0);
    b.list->DeleteAllItems();
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->GetItemCount(), 0);
    EXPECT_EQ(b.list->RowRect(0), QRect());
    EXPECT_FALSE(b.list->IsRowInClient(0));
}

// Three lists side by side: A with a selected boutique row, B with a selected
// plain row and the mouse on another, C with row 0 selected and the mouse on
// row 1; probed and saved as a PNG.
void RenderBoard(float rate, const char* name) {
    ClassBoard b(rate, 14);
    std::vector<QString> asked;
    auto boutique = [&asked](const QString& text) {
        asked.push_back(text);
        return text.startsWith(QStringLiteral("精品"));
    };
    CClassListCtrl* lists[3] = {b.list, b.Add(ScaleUnits(150), 14), b.Add(ScaleUnits(300), 6)};
    for (CClassListCtrl* l : lists) l->isBoutique = boutique;
    lists[0]->SetSelectedRow(3);
    lists[1]->SetSelectedRow(2);
    lists[2]->SetSelectedRow(0);
    b.owner.resize(ScaleUnits(450), b.owner.height());
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    test::MoveMouseTo(lists[2], lists[2]->RowRect(1).center());
    ASSERT_EQ(lists[2]->HoverRow(), 1);
    const QImage c = test::Grab(lists[2]);
    test::MoveMouseTo(lists[1], lists[1]->RowRect(5).center());
    ASSERT_EQ(lists[1]->HoverRow(), 5);

    QImage shots[3] = {test::Grab(lists[0]), test::Grab(lists[1]), c};
    const auto textArea = [](const QRect& row) { return row.adjusted(ScaleUnits(28), 0, 0, 0); };
    EXPECT_TRUE(test::ContainsColour(shots[0], textArea(lists[0]->RowRect(3)), kBoutique, 40));
    EXPECT_FALSE(test::ContainsColour(shots[0], textArea(lists[0]->RowRect(3)), kAccent, 20));
    EXPECT_TRUE(test::ContainsColour(shots[1], textArea(lists[1]->RowRect(2)), kAccent, 40));
    EXPECT_FALSE(test::ContainsColour(shots[1], textArea(lists[1]->RowRect(4)), kAccent, 20));
    EXPECT_FALSE(test::ContainsColour(shots[1], textArea(lists[1]->RowRect(3)), kBoutique, 20))
        << "an unselected boutique row has the plain text colour";
    EXPECT_TRUE(test::ContainsColour(shots[2], textArea(lists[2]->RowRect(0)), kAccent, 40));
    EXPECT_FALSE(test::ContainsColour(shots[2], textArea(lists[2]->RowRect(1)), kAccent, 20));
    // The painter was asked about the shown rows by their texts.
    EXPECT_NE(std::find(asked.begin(), asked.end(), QStringLiteral("精品家具")), asked.end());
    EXPECT_NE(std::find(asked.begin(), asked.end(), QStringLiteral("建筑")), asked.end());
    EXPECT_TRUE(lists[0]->IsScrollBarShown());
    EXPECT_FALSE(lists[2]->IsScrollBarShown());

    QImage sheet(shots[0].width() * 3 + 40, shots[0].height() + 20, QImage::Format_RGB32);
    sheet.fill(QColor(0xDD, 0xDD, 0xDD));
    {
        QPainter p(&sheet);
        for (int i = 0; i < 3; ++i) p.drawImage(10 + i * (shots[0].width() + 10), 10, shots[i]);
    }
    test::SavePng(sheet, QString::fromLatin1(name));
}

TEST(ClassList, RowsRenderInTheirStatesAtTwoRates) {
    RenderBoard(1.0f, "lists_class_rate1.0.png");
    RenderBoard(1.5f, "lists_class_rate1.5.png");
}

}  // namespace
}  // namespace marrowfin
