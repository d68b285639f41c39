#include "skin/skin_paint.h"

#include <QFontMetrics>
#include <QPainter>

namespace marrowfin {

void DrawTextLine(QPainter& painter, const QRect& rect, const QString& text, const QFont& font, const QColor& colour,
                  TextPlace place, bool ellipsis) {
    if (text.isEmpty() || rect.width() <= 0) return;
    painter.save();
    painter.setFont(font);
    painter.setPen(colour);
    QString shown = text;
    if (ellipsis) shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
    int align = Qt::AlignVCenter | Qt::TextSingleLine;
    align |= place == TextPlace::Left ? Qt::AlignLeft : place == TextPlace::Centre ? Qt::AlignHCenter : Qt::AlignRight;
    painter.drawText(rect, align, shown);
    painter.restore();
}

void DrawOutlinedRect(QPainter& painter, const QRect& rect, const QColor& pen, const QColor& brush) {
    if (rect.isEmpty()) return;
    painter.fillRect(rect, pen);
    painter.fillRect(rect.adjusted(1, 1, -1, -1), brush);
}

void DrawRoundRect(QPainter& painter, const QRect& rect, qreal radius, const QColor& pen, const QColor& brush) {
    if (rect.isEmpty()) return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setBrush(brush);
    if (pen.isValid()) {
        painter.setPen(QPen(pen, 1));
        painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    } else {
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(QRectF(rect), radius, radius);
    }
    painter.restore();
}

}  // namespace marrowfin
