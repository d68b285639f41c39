// The row scrolling arithmetic at its edges: partial rows, short clients,
// the end of the list and a list that shrinks under its top row.
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

TEST(RowWindow, HitTestsRowsAndTheirEdges) {
    // 29-pixel rows in 295 pixels: 10 whole rows and 5 pixels of the 11th.
    RowWindow w = Make(12, 29, 295);
    EXPECT_EQ(w.FullRows(), 10);
    EXPECT_EQ(w.RowAt(-1), -1);
    EXPECT_EQ(w.RowAt(0), 0);
    EXPECT_EQ(w.RowAt(28), 0);
    EXPECT_EQ(w.RowAt(29), 1);
    EXPECT_EQ(w.RowAt(294), 10);  // the cut row is still hit where it shows
    EXPECT_EQ(w.RowAt(295), -1);  // below the client
    EXPECT_TRUE(w.IsRowInClient(9));
    EXPECT_FALSE(w.IsRowInClient(10));  // cut at the bottom
    EXPECT_FALSE(w.IsRowInClient(12));
    EXPECT_FALSE(w.IsRowInClient(-1));

    // Fewer rows than the client holds: the space below hits nothing.
    RowWindow few = Make(3, 29, 295);
    EXPECT_EQ(few.RowAt(3 * 29 - 1), 2);
    EXPECT_EQ(few.RowAt(3 * 29), -1);
    EXPECT_FALSE(few.Overflows());

    // Scrolled by 2: the top pixel is row 2, rows above are out of the client.
    w.first = 2;
    EXPECT_EQ(w.RowAt(0), 2);
    EXPECT_EQ(w.RowTop(1), -29);
    EXPECT_FALSE(w.IsRowInClient(1));
    EXPECT_TRUE(w.IsRowInClient(11));
}

TEST(RowWindow, OverflowAndThePageOfAShortClient) {
    EXPECT_FALSE(Make(10, 29, 295).Overflows());
    EXPECT_TRUE(Make(11, 29, 295).Overflows());  // the 11th row is cut: the bar shows
    EXPECT_FALSE(Make(0, 29, 295).Overflows());

    // A client lower than a row still pages one row at a time.
    RowWindow tiny = Make(5, 61, 40);
    EXPECT_EQ(tiny.FullRows(), 1);
    EXPECT_EQ(tiny.MaxFirst(), 4);
    EXPECT_FALSE(tiny.IsRowInClient(0));  // no row fits whole
    EXPECT_TRUE(tiny.EnsureVisible(3));
    EXPECT_EQ(tiny.first, 3);
    // A zero row height is taken as one pixel, never a division by zero.
    RowWindow zero = Make(5, 0, 10);
    EXPECT_EQ(zero.FullRows(), 10);
    EXPECT_EQ(zero.RowAt(4), 4);
}

TEST(RowWindow, ScrollingStopsAtBothEnds) {
    RowWindow w = Make(30, 29, 295);
    EXPECT_EQ(w.MaxFirst(), 20);
    EXPECT_FALSE(w.ScrollBy(-3));  // already at the top
    EXPECT_TRUE(w.ScrollBy(3));
    EXPECT_EQ(w.first, 3);
    EXPECT_TRUE(w.ScrollBy(100));
    EXPECT_EQ(w.first, 20);  // the last row ends at the last whole row
    EXPECT_TRUE(w.IsRowInClient(29));
    EXPECT_FALSE(w.ScrollBy(1));
    EXPECT_TRUE(w.SetFirst(-7));
    EXPECT_EQ(w.first, 0);
}

TEST(RowWindow, EnsureVisibleMovesTheLeastNeeded) {
    RowWindow w = Make(30, 29, 295);
    EXPECT_FALSE(w.EnsureVisible(9));  // already whole in view
    EXPECT_TRUE(w.EnsureVisible(10));  // cut row: brought up to the bottom
    EXPECT_EQ(w.first, 1);
    EXPECT_TRUE(w.EnsureVisible(25));
    EXPECT_EQ(w.first, 16);
    EXPECT_TRUE(w.IsRowInClient(25));
    EXPECT_TRUE(w.EnsureVisible(4));  // above: it becomes the top row
    EXPECT_EQ(w.first, 4);
    EXPECT_FALSE(w.EnsureVisible(30));
    EXPECT_FALSE(w.EnsureVisible(-1));
    EXPECT_EQ(w.first, 4);
}

TEST(RowWindow, ShrinkingListPullsTheTopRowBack) {
    RowWindow w = Make(30, 29, 295, 20);
    w.count = 14;
    EXPECT_TRUE(w.Clamp());
    EXPECT_EQ(w.first, 4);
    w.count = 3;
    EXPECT_TRUE(w.Clamp());
    EXPECT_EQ(w.first, 0);
    // A taller client shows more: the top row comes back up.
    RowWindow tall = Make(30, 29, 295, 20);
    tall.clientHeight = 29 * 15;
    EXPECT_TRUE(tall.Clamp());
    EXPECT_EQ(tall.first, 15);
}

}  // namespace
}  // namespace marrowfin
