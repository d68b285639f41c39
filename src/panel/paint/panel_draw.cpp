#include "panel/paint/panel_draw.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "panel/paint/panel_colours.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

void PlaceText(QPainter& painter, const QRect& rect, const QString& text, const QFont& font, const QColor& colour,
               Place place) {
    if (text.isEmpty() || rect.width() <= 0) return;
    const QFontMetrics metrics(font);
    const QString shown = place == Place::Ellipsis ? metrics.elidedText(text, Qt::ElideRight, rect.width()) : text;
    int align = Qt::AlignVCenter | Qt::TextSingleLine;
    align |= place == Place::Centre ? Qt::AlignHCenter : place == Place::Right ? Qt::AlignRight : Qt::AlignLeft;
    // Several layout rectangles are narrower or lower than their text (the
    // title hint, 12-unit text rows for an 18-pixel font): the line is placed
    // by the rectangle but not cut by it. Callers that must stop at an edge clip.
    align |= Qt::TextDontClip;
    painter.save();
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(rect, align, shown);
    painter.restore();
}

void DrawFrame(QPainter& painter, const QRect& rect, int width, const QColor& pen, const QColor& fill) {
    if (rect.isEmpty() || width <= 0) return;
    const QRect inner = rect.adjusted(width, width, -width, -width);
    // Four bands rather than a wide pen: a wide pen straddles the edge and
    // would spill one pixel outside the rectangle.
    painter.fillRect(QRect(rect.left(), rect.top(), rect.width(), std::min(width, rect.height())), pen);
    painter.fillRect(QRect(rect.left(), rect.bottom() - width + 1, rect.width(), std::min(width, rect.height())), pen);
    painter.fillRect(QRect(rect.left(), rect.top(), std::min(width, rect.width()), rect.height()), pen);
    painter.fillRect(QRect(rect.right() - width + 1, rect.top(), std::min(width, rect.width()), rect.height()), pen);
    if (fill.isValid() && !inner.isEmpty()) painter.fillRect(inner, fill);
}

void DrawSquareCell(QPainter& painter, const QPoint& origin, int left, int top, int size, int cellX, int cellY,
                    int cellSize) {
    const QRect target = ScaleBox(left, top, size, size).translated(origin);
    DrawSheetCell(painter, target, cellX, cellY, cellSize, cellSize);
}

void DrawRowButton(QPainter& painter, const QRect& rect, const QString& caption, bool hover) {
    namespace c = panel_colours;
    const QColor pen = hover ? c::Accent() : c::GreyText();
    const QColor fill = hover ? c::HoverButtonFill() : c::Band();
    DrawFrame(painter, rect, 1, pen, fill);
    PlaceText(painter, rect, caption, Font(SkinFont::Normal), hover ? c::Accent() : c::Text(), Place::Centre);
}

int RowProgressWidth(int trackWidth, int percent) {
    if (trackWidth <= 0) return 0;
    const int wanted = static_cast<int>(static_cast<long long>(trackWidth) * percent / 100);
    return std::min(trackWidth, std::max(ScaleUnits(8), wanted));
}

void DrawRowProgress(QPainter& painter, const QRect& rect, int percent) {
    if (rect.isEmpty()) return;
    // GDI's corner 7 is the ellipse's width: a radius of 3.5 pixels.
    const qreal radius = std::min<qreal>(3.5, rect.height() / 2.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(panel_colours::ProgressTrack());
    painter.drawRoundedRect(QRectF(rect), radius, radius);
    const QRect done(rect.left(), rect.top(), RowProgressWidth(rect.width(), percent), rect.height());
    painter.setBrush(panel_colours::Accent());
    painter.drawRoundedRect(QRectF(done), radius, radius);
    painter.restore();
}

}  // namespace marrowfin
