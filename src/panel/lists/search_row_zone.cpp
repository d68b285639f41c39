#include "panel/lists/search_row_zone.h"

#include <algorithm>

#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
// Left, top, right, bottom in units; right and bottom are outside.
bool InUnits(QPoint p, int left, int top, int right, int bottom) {
    return p.x() >= ScaleUnits(left) && p.x() < ScaleUnits(right) && p.y() >= ScaleUnits(top) &&
           p.y() < ScaleUnits(bottom);
}
}  // namespace

int SearchZoneAt(QPoint p, int lineWidth) {
    // The first zone that holds the point wins.
    if (InUnits(p, 570, 17, 630, 41)) return ZoneCollect;
    if (InUnits(p, 640, 17, 700, 41)) return ZoneUse;
    const int linkRight = std::min(ScaleUnits(100) + std::max(lineWidth, 0), ScaleUnits(420));
    if (p.x() >= ScaleUnits(100) && p.x() < linkRight && p.y() >= ScaleUnits(30) && p.y() < ScaleUnits(50))
        return ZoneClassLink;
    return ZoneNone;
}

}  // namespace marrowfin
