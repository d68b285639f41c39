#pragma once
// The zones of a result row that the mouse can be on, measured from the
// row's left and top edges: 1 the "收藏" button, 2 the "使用" button, 3 the
// class line (as long as it was drawn, at most to 420 units), 0 none. The
// zones don't look at the row's state: a button that isn't drawn still counts.

#include <QPoint>

namespace marrowfin {

enum SearchRowZone : int { ZoneNone = 0, ZoneCollect = 1, ZoneUse = 2, ZoneClassLink = 3 };

// `inRow` is relative to the row's top-left corner; `lineWidth` is the class
// line's measured width in pixels (0 before the row was first drawn).
int SearchZoneAt(QPoint inRow, int lineWidth);

}  // namespace marrowfin
