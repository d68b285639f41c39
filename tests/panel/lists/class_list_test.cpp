// The class column driven by real mouse events through its window: clicks
// posted to the owner, the hovered row drawn bold, tool tips, inserted rows,
// and its rows rendered at two rates. The scrolling it shares with the result
// list is tested over both in row_window_test.cpp.
#include <gtest/gtest.h>

#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "list_test_support.h"
#include "panel/model/panel_messages.h"
#include "render_support.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {
namespace {

Recorded Click21(int row) { return {MsgPanelCommand, 21, row}; }

TEST(ClassList, ClickPostsTheRowToTheOwnerWhichSelects) {
    ClassBoard b(1.0f, 5);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    ClickAt(b.list, b.Centre(3));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(3)});
    EXPECT_EQ(b.list->GetSelectedRow(), -1) << "the click itself selects nothing";
    b.list->SetSelectedRow(3);
    EXPECT_EQ(b.list->GetSelectedRow(), 3);

    // Rows 0 and 1 post like any other; the owner's selection stays.
    ClickAt(b.list, b.Centre(0));
    ClickAt(b.list, b.list->RowRect(1).topLeft());
    EXPECT_EQ(b.owner.Take(), (std::vector<Recorded>{Click21(0), Click21(1)}));
    EXPECT_EQ(b.list->GetSelectedRow(), 3);

    // The empty part below the rows, the strip right of the column and the
    // right button post nothing.
    ClickAt(b.list, QPoint(20, b.list->RowRect(4).bottom() + 3));
    ClickAt(b.list, QPoint(ScaleUnits(112) + 2, b.Centre(1).y()));
    ClickAt(b.list, b.Centre(2), Qt::RightButton);
    EXPECT_TRUE(b.owner.Take().empty());

    // A double click is one click on the row, not two.
    Pump(QApplication::doubleClickInterval() + 50);
    DoubleClickAt(b.list, b.Centre(2));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(2)});

    // The last pixel row of a row still belongs to it.
    Pump(QApplication::doubleClickInterval() + 50);
    ClickAt(b.list, QPoint(10, b.list->RowRect(4).bottom()));
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(4)});

    // Scrolled, a click posts the row it lands on.
    b.Fill(30);
    b.list->EnsureVisible(15);
    ASSERT_EQ(b.list->FirstVisibleRow(), 6);
    Pump(QApplication::doubleClickInterval() + 50);
    ClickAt(b.list, b.list->RowRect(9).center());
    EXPECT_EQ(b.owner.Take(), std::vector<Recorded>{Click21(9)});
}

TEST(ClassList, HoveredRowIsDrawnBoldUntilTheMouseLeaves) {
    ClassBoard b(1.0f, 6);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    const QImage plain = Grab(b.list);
    MoveMouseTo(b.list, b.Centre(2));
    const QImage onTwo = Grab(b.list);
    EXPECT_TRUE(Differs(plain, onTwo, b.list->RowRect(2))) << "the hovered row is drawn bold";
    EXPECT_FALSE(Differs(plain, onTwo, b.list->RowRect(3)));
    MoveMouseTo(b.list, b.Centre(4));
    const QImage onFour = Grab(b.list);
    EXPECT_FALSE(Differs(plain, onFour, b.list->RowRect(2))) << "the old row is redrawn plain";
    EXPECT_TRUE(Differs(plain, onFour, b.list->RowRect(4)));
    // Right of the column, within the list, no row is hovered.
    MoveMouseTo(b.list, b.Centre(1));
    EXPECT_EQ(b.list->HoverRow(), 1);
    MoveMouseTo(b.list, QPoint(ScaleUnits(120), b.Centre(1).y()));
    EXPECT_EQ(b.list->HoverRow(), -1);
    // Leaving the list clears the row's look.
    MoveMouseTo(b.list, b.Centre(5));
    MoveMouseTo(&b.owner, QPoint(b.owner.width() - 4, b.owner.height() - 4));
    EXPECT_FALSE(Differs(plain, Grab(b.list), b.list->rect()));
}

TEST(ClassList, ToolTipShowsTheTextOfTheRowUnderTheMouse) {
    ClassBoard b(1.0f, 4);
    const QString longText = QString(100, QChar(u'长'));
    b.list->InsertItem(4, longText);
    ASSERT_TRUE(ShowAndWait(&b.owner));
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
    Pump(600);
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
}

// Three lists side by side: A with a selected boutique row, B with a selected
// plain row and the mouse on another, C with row 0 selected and the mouse on
// row 1; probed and saved as a PNG.
TEST(ClassList, RowsRenderInTheirStatesAtTwoRates) {
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
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
        ASSERT_TRUE(ShowAndWait(&b.owner));
        MoveMouseTo(lists[2], lists[2]->RowRect(1).center());
        ASSERT_EQ(lists[2]->HoverRow(), 1);
        const QImage c = Grab(lists[2]);
        MoveMouseTo(lists[1], lists[1]->RowRect(5).center());
        ASSERT_EQ(lists[1]->HoverRow(), 5);

        QImage shots[3] = {Grab(lists[0]), Grab(lists[1]), c};
        const auto text = [&lists](int list, int row) {
            return lists[list]->RowRect(row).adjusted(ScaleUnits(28), 0, 0, 0);
        };
        EXPECT_TRUE(ContainsColour(shots[0], text(0, 3), kBoutique, 40));
        EXPECT_FALSE(ContainsColour(shots[0], text(0, 3), kAccent, 20));
        EXPECT_TRUE(ContainsColour(shots[1], text(1, 2), kAccent, 40));
        EXPECT_FALSE(ContainsColour(shots[1], text(1, 4), kAccent, 20));
        EXPECT_FALSE(ContainsColour(shots[1], text(1, 3), kBoutique, 20))
            << "an unselected boutique row has the plain text colour";
        EXPECT_TRUE(ContainsColour(shots[2], text(2, 0), kAccent, 40));
        EXPECT_FALSE(ContainsColour(shots[2], text(2, 1), kAccent, 20));
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
        SavePng(sheet, QStringLiteral("lists_class_rate%1.png").arg(rate, 0, 'f', 1));
    }
}

}  // namespace
}  // namespace marrowfin::test
