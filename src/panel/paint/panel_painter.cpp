#include "panel/paint/panel_painter.h"

#include <QPainter>

#include "panel/model/panel_page.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_layers.h"
#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

void PaintPanel(QPainter& painter, const QSize& client, const PanelPaintState& state) {
    namespace c = panel_colours;
    if (client.isEmpty()) return;
    painter.save();
    // Texts placed by the layout may be wider than a small window: none leaves it.
    painter.setClipRect(QRect(QPoint(0, 0), client), Qt::IntersectClip);
    const int w = client.width(), h = client.height();
    painter.fillRect(QRect(QPoint(0, 0), client), Qt::white);
    DrawFrame(painter, QRect(QPoint(0, 0), client), 1, c::OuterFrame());

    // The bands sit inside the one-pixel frame; only their height scales.
    const int band = ScaleUnits(29);
    painter.fillRect(QRect(1, 1, w - 2, band), c::Band());
    painter.fillRect(QRect(1, h - 1 - band, w - 2, band), c::Band());

    PlaceText(painter, ScaleRect(11, 0, 100, 30), ToQString(kProductTitle), Font(SkinFont::Normal), c::Text(),
              Place::Left);
    PlaceText(painter, ScaleRect(75, 0, 210, 30), QStringLiteral("（快捷开关：Ctrl+Tab）"), Font(SkinFont::Normal),
              c::TitleHint(), Place::Left);
    const int x = ScaleUnits(722);
    painter.fillRect(QRect(x, ScaleUnits(9), 1, ScaleUnits(21) - ScaleUnits(9) + 1), c::Separator());

    if (IsSearchPage(state.page)) PaintSearchLayer(painter, client, state);
    else PaintBrowseLayer(painter, client, state);
    PaintStatusLine(painter, client, state);
    painter.restore();
}

}  // namespace marrowfin
