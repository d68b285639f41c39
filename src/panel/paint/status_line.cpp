#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "panel/model/panel_page.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_layers.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

bool ShowsResultCount(const PanelPaintState& state) {
    if (!state.selectedName.isEmpty() || state.searchUntouched) return false;
    // A search still running has no count yet; an empty page shows none.
    if (state.page == PageSearch) return state.searchEnded && state.rowCount != 0;
    if (state.page == PageCollectionSearch) return state.rowCount != 0;
    return false;
}

QRect DoubleClickHintRect(const QSize& client) {
    QRect rect = ScaleRect(588, 427, 750, 447);
    // In faces wider than the one the layout was made for the hint would run
    // past the window's right edge: it moves left instead, never onto the name.
    const int width =
        QFontMetrics(Font(SkinFont::Bold)).horizontalAdvance(QStringLiteral("注：双击缩略图快速插入图块"));
    const int limit = client.width() - 1 - ScaleUnits(5);
    if (rect.left() + width > limit) rect.moveLeft(std::max(ScaleUnits(530), limit - width));
    return rect;
}

void PaintStatusLine(QPainter& painter, const QSize& client, const PanelPaintState& state) {
    namespace c = panel_colours;
    if (!state.selectedName.isEmpty()) {
        PlaceText(painter, DoubleClickHintRect(client), QStringLiteral("注：双击缩略图快速插入图块"),
                  Font(SkinFont::Bold), c::Accent(), Place::Left);
        PlaceText(painter, ScaleRect(10, 427, 49, 447), QStringLiteral("名称："), Font(SkinFont::Bold), c::Text(),
                  Place::Left);
        PlaceText(painter, ScaleRect(49, 427, 530, 447), state.selectedName, Font(SkinFont::Normal), c::Text(),
                  Place::Left);
        return;
    }
    if (!ShowsResultCount(state)) return;
    const QString count = QString::number(state.rowCount);
    DrawHighlighted(painter, QStringLiteral("共%1条结果").arg(count), count, ScaleRect(10, 427, 160, 447), c::Text());
}

}  // namespace marrowfin
