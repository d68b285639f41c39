#include "panel/lists/row_window.h"

#include <algorithm>

namespace marrowfin {

int RowWindow::FullRows() const {
    const int h = std::max(rowHeight, 1);
    return std::max(clientHeight / h, 1);
}

int RowWindow::MaxFirst() const { return std::max(count - FullRows(), 0); }

int RowWindow::RowAt(int y) const {
    if (y < 0 || y >= clientHeight) return -1;
    const int row = first + y / std::max(rowHeight, 1);
    return IsRow(row) ? row : -1;
}

bool RowWindow::IsRowInClient(int row) const {
    if (!IsRow(row)) return false;
    const int top = RowTop(row);
    return top >= 0 && top + rowHeight <= clientHeight;
}

bool RowWindow::SetFirst(int row) {
    const int next = std::clamp(row, 0, MaxFirst());
    if (next == first) return false;
    first = next;
    return true;
}

bool RowWindow::EnsureVisible(int row) {
    if (!IsRow(row)) return false;
    if (row < first) return SetFirst(row);
    if (row >= first + FullRows()) return SetFirst(row - FullRows() + 1);
    return false;
}

}  // namespace marrowfin
