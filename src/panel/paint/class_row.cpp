#include <QPainter>

#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

int ClassRowIconX(int row, bool boutique, bool selected) {
    int x = 96;
    if (row == 0) x = 0;
    else if (row == 1) x = 32;
    else if (boutique) x = 352;
    // The selected picture of each pair lies one cell to the right.
    return selected ? x + 16 : x;
}

void DrawClassRow(QPainter& painter, const QRect& item, int row, const QString& text, bool boutique, bool selected,
                  bool hover) {
    namespace c = panel_colours;
    if (item.isEmpty()) return;
    painter.fillRect(item, Qt::white);
    DrawSquareCell(painter, item.topLeft(), 5, 7, 16, ClassRowIconX(row, boutique, selected), 88, 16);

    const QFont& font = selected || hover ? Font(SkinFont::Bold) : Font(SkinFont::Normal);
    QColor colour = c::ClassText();
    if (selected) colour = boutique ? c::Boutique() : c::Accent();
    const int left = item.left() + ScaleUnits(28);
    const QRect textRect(left, item.top(), item.left() + item.width() - left, item.height());
    PlaceText(painter, textRect, text, font, colour, Place::Ellipsis);
}

}  // namespace marrowfin
