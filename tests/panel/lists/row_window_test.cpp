// The row scrolling arithmetic at the edges the widgets rarely reach: cut
// rows, clients lower than a row, a zero row height, a list that shrinks or a
// client that grows under its top row.
#include <gtest/gtest.h>

#include "panel/lists/row_window.h"

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

}  // namespace
}  // namespace marrowfin
