// The row scrolling arithmetic at the edges the widgets rarely reach (cut
// rows, clients lower than a row, a zero row height, a list that shrinks or a
// client that grows under its top row), and the scrolling both row lists
// share, driven through their windows: the bar, the wheel, EnsureVisible and
// the row under the mouse.
#include <gtest/gtest.h>

#include <QApplication>

#include "list_test_support.h"
#include "panel/lists/row_window.h"
#include "render_support.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin {
namespace {

RowWindow Make(int count, int rowHeight, int clientHeight, int first = 0) {
    RowWindow w;
    w.count = count;
    w.rowHeight = rowHeight;
    w.clientHeight = clientHeight;
    w.first = first;
    return w;
}

TEST(RowWindow, CutRowsAreHitButNotInTheClient) {
    // 29-pixel rows in 295 pixels: 10 whole rows and 5 pixels of the 11th.
    RowWindow w = Make(12, 29, 295, 1);
    EXPECT_EQ(w.RowAt(-1), -1);
    EXPECT_EQ(w.RowAt(28), 1);
    EXPECT_EQ(w.RowAt(29), 2);
    EXPECT_EQ(w.RowAt(294), 11);  // the cut row is hit where it shows
    EXPECT_EQ(w.RowAt(295), -1);
    EXPECT_TRUE(w.IsRowInClient(10));
    EXPECT_FALSE(w.IsRowInClient(11));
    EXPECT_FALSE(w.IsRowInClient(0));  // scrolled away above
    EXPECT_EQ(w.RowTop(0), -29);
    EXPECT_TRUE(w.EnsureVisible(11));  // a cut row comes up to the bottom
    EXPECT_EQ(w.first, 2);
    EXPECT_TRUE(Make(11, 29, 295).Overflows());
    EXPECT_FALSE(Make(10, 29, 295).Overflows());
}

TEST(RowWindow, ShortClientsAndZeroHeightsStillPage) {
    // A client lower than one row pages one row at a time and holds none whole.
    RowWindow tiny = Make(5, 61, 40);
    EXPECT_EQ(tiny.FullRows(), 1);
    EXPECT_EQ(tiny.MaxFirst(), 4);
    EXPECT_FALSE(tiny.IsRowInClient(0));
    EXPECT_TRUE(tiny.EnsureVisible(3));
    EXPECT_EQ(tiny.first, 3);
    // A zero row height counts as one pixel, never a division by zero.
    RowWindow zero = Make(5, 0, 10);
    EXPECT_EQ(zero.FullRows(), 10);
    EXPECT_EQ(zero.RowAt(4), 4);
    EXPECT_EQ(zero.RowAt(5), -1);
    EXPECT_FALSE(Make(0, 29, 0).Overflows());
}

TEST(RowWindow, ShrinkingListOrGrowingClientPullsTheTopRowBack) {
    RowWindow w = Make(30, 29, 295, 20);
    w.count = 14;
    EXPECT_TRUE(w.Clamp());
    EXPECT_EQ(w.first, 4);
    w.count = 3;
    EXPECT_TRUE(w.Clamp());
    EXPECT_EQ(w.first, 0);
    RowWindow tall = Make(30, 29, 295, 20);
    tall.clientHeight = 29 * 15;
    EXPECT_TRUE(tall.Clamp());
    EXPECT_EQ(tall.first, 15);
    EXPECT_TRUE(tall.SetFirst(-7));
    EXPECT_EQ(tall.first, 0);
}

template <class Board>
class RowLists : public ::testing::Test {};
using Boards = ::testing::Types<test::ClassBoard, test::SearchBoard>;
TYPED_TEST_SUITE(RowLists, Boards);

TYPED_TEST(RowLists, ScrollBarShowsOnlyWhileRowsOverflow) {
    constexpr int full = TypeParam::kFullRows;
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        TypeParam b(rate, full);
        ASSERT_TRUE(test::ShowAndWait(&b.owner));
        EXPECT_EQ(b.list->RowRect(1).top() - b.list->RowRect(0).top(), ScaleUnits(TypeParam::kRowUnits) + 1);
        EXPECT_TRUE(b.InClient(full - 1));
        EXPECT_FALSE(b.list->IsScrollBarShown());

        b.Fill(full + 1);
        EXPECT_TRUE(b.list->IsScrollBarShown());
        CScrollBarEx* bar = b.list->ScrollBar();
        EXPECT_EQ(bar->parentWidget(), b.list);
        EXPECT_EQ(bar->geometry(), QRect(b.list->width() - 6, 0, 6, b.list->height()));
        EXPECT_LT(b.list->RowRect(0).right(), bar->x()) << "rows end left of the bar";
        EXPECT_EQ(bar->maximum(), 1);
        EXPECT_FALSE(b.InClient(full));
        b.Fill(0);
        EXPECT_FALSE(b.list->IsScrollBarShown());

        // A lower list overflows with fewer rows, and stops when it grows again.
        b.Fill(full - 2);
        EXPECT_FALSE(b.list->IsScrollBarShown());
        const int height = b.list->height();
        b.list->resize(b.list->width(), b.list->RowRect(full - 4).top() + 3);
        EXPECT_TRUE(b.list->IsScrollBarShown());
        EXPECT_EQ(b.list->ScrollBar()->height(), b.list->height());
        b.list->resize(b.list->width(), height);
        EXPECT_FALSE(b.list->IsScrollBarShown());
    }
}

TYPED_TEST(RowLists, WheelEnsureVisibleAndTheBarMoveTheTopRow) {
    constexpr int full = TypeParam::kFullRows, count = 3 * full, last = count - full;
    TypeParam b(1.0f, count);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    const int lines = QApplication::wheelScrollLines();
    CScrollBarEx* bar = b.list->ScrollBar();
    ASSERT_TRUE(b.list->IsScrollBarShown());
    EXPECT_EQ(bar->maximum(), last);
    EXPECT_EQ(bar->pageStep(), full);

    // The rows are painted moved up by the scrolled rows.
    const QImage top = test::Grab(b.list);
    const QRect below = b.list->RowRect(lines + 1);
    test::WheelAt(b.list, b.Centre(1), -120);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    EXPECT_EQ(bar->value(), lines);
    EXPECT_TRUE(test::SameBlock(top, below, test::Grab(b.list), b.list->RowRect(lines + 1).topLeft()));
    EXPECT_EQ(b.list->RowRect(lines + 1).top(), ScaleUnits(TypeParam::kRowUnits) + 1);
    // A fine wheel moves only once its turns make a notch.
    test::WheelAt(b.list, b.Centre(1), -40);
    test::WheelAt(b.list, b.Centre(1), -40);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    test::WheelAt(b.list, b.Centre(1), -40);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2 * lines);
    test::WheelAt(b.list, b.Centre(1), 120);
    EXPECT_EQ(b.list->FirstVisibleRow(), lines);
    test::WheelAt(b.list, b.Centre(1), -120 * 50);
    EXPECT_EQ(b.list->FirstVisibleRow(), last) << "the wheel stops at the last whole page";
    EXPECT_TRUE(b.InClient(count - 1));
    test::WheelAt(b.list, b.Centre(1), 120 * 50);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);

    // EnsureVisible moves as little as needed; rows that aren't there move nothing.
    b.list->EnsureVisible(full + 5);
    EXPECT_EQ(b.list->FirstVisibleRow(), 6);
    EXPECT_TRUE(b.InClient(full + 5));
    EXPECT_FALSE(b.InClient(full + 6));
    EXPECT_FALSE(b.InClient(5));
    b.list->EnsureVisible(8);
    EXPECT_EQ(b.list->FirstVisibleRow(), 6);
    b.list->EnsureVisible(2);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2);
    EXPECT_EQ(bar->value(), 2);
    b.list->EnsureVisible(count);
    b.list->EnsureVisible(-1);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2);

    // A resting mouse has the row that the wheel brings under it.
    test::MoveMouseTo(b.list, b.list->RowRect(4).center());
    EXPECT_EQ(b.Hot(), 4);
    test::WheelAt(b.list, b.list->RowRect(4).center(), -120);
    EXPECT_EQ(b.list->FirstVisibleRow(), 2 + lines);
    EXPECT_EQ(b.Hot(), 4 + lines);

    // The bar pressed near its bottom moves the rows down with it.
    const int before = b.list->FirstVisibleRow();
    test::ClickAt(bar, QPoint(3, bar->height() - 2));
    EXPECT_GT(b.list->FirstVisibleRow(), before);
    EXPECT_EQ(b.list->FirstVisibleRow(), bar->value());

    // New or removed rows start at the top, unselected; a row that isn't there selects nothing.
    b.list->SetSelectedRow(count - 1);
    EXPECT_EQ(b.list->GetSelectedRow(), count - 1);
    b.list->SetSelectedRow(count);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    b.list->SetSelectedRow(1);
    b.Fill(0);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->GetItemCount(), 0);
    EXPECT_EQ(b.list->RowRect(0), QRect());
    EXPECT_FALSE(b.InClient(0));
}

TYPED_TEST(RowLists, HoverFollowsTheMouseAndLeavesWithIt) {
    TypeParam b(1.0f, 5);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    EXPECT_EQ(b.Hot(), -1);
    test::MoveMouseTo(b.list, b.Centre(2));
    EXPECT_EQ(b.Hot(), 2);
    test::MoveMouseTo(b.list, b.Centre(4));
    EXPECT_EQ(b.Hot(), 4);
    // Below the rows no row is hovered.
    test::MoveMouseTo(b.list, QPoint(10, b.list->RowRect(4).bottom() + 4));
    EXPECT_EQ(b.Hot(), -1);
    // Leaving the list clears the row.
    test::MoveMouseTo(b.list, b.Centre(1));
    EXPECT_EQ(b.Hot(), 1);
    test::MoveMouseTo(&b.owner, QPoint(b.owner.width() - 4, b.owner.height() - 4));
    EXPECT_EQ(b.Hot(), -1);
    // Deleting the rows under the mouse forgets the hover row.
    test::MoveMouseTo(b.list, b.Centre(3));
    EXPECT_EQ(b.Hot(), 3);
    b.Fill(0);
    EXPECT_EQ(b.Hot(), -1);
}

}  // namespace
}  // namespace marrowfin
