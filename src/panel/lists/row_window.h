#pragma once
// The scroll arithmetic shared by the panel's row lists: which rows a client
// of a given height shows when `first` is the top row. Rows scroll whole, as a
// report list scrolls, so a row is either at a row boundary or not shown.

namespace marrowfin {

struct RowWindow {
    int count = 0;  // rows in the list
    int rowHeight = 1;  // pixels, at least 1
    int clientHeight = 0;  // pixels
    int first = 0;  // the top row

    // Rows that fit whole; a client lower than one row still pages by one.
    int FullRows() const;
    // The last possible top row: the list never scrolls past its end.
    int MaxFirst() const;
    // More rows than fit whole: the scroll bar shows.
    bool Overflows() const { return count > FullRows(); }
    bool IsRow(int row) const { return row >= 0 && row < count; }

    // The row at client height y, or -1 (above, below the client or the rows).
    int RowAt(int y) const;
    // The top of `row` in client pixels (negative above the client).
    int RowTop(int row) const { return (row - first) * rowHeight; }
    // The whole row lies inside the client.
    bool IsRowInClient(int row) const;

    // Each answers whether `first` moved.
    bool SetFirst(int row);
    bool ScrollBy(int rows) { return SetFirst(first + rows); }
    bool EnsureVisible(int row);
    // Count or height changed: keep `first` in range.
    bool Clamp() { return SetFirst(first); }
};

}  // namespace marrowfin
