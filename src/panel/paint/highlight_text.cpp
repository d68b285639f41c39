#include "panel/paint/highlight_text.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"

namespace marrowfin {

QStringList SplitAtKey(const QString& text, const QString& key) {
    QStringList pieces;
    if (text.isEmpty()) return pieces;
    if (key.isEmpty()) {
        pieces << text;
        return pieces;
    }
    qsizetype from = 0;
    while (from < text.size()) {
        const qsizetype at = text.indexOf(key, from, Qt::CaseSensitive);
        if (at < 0) break;
        if (at > from) pieces << text.mid(from, at - from);
        pieces << key;
        from = at + key.size();
    }
    if (from < text.size()) pieces << text.mid(from);
    return pieces;
}

void DrawHighlighted(QPainter& painter, const QString& text, const QString& key, const QRect& rect,
                     const QColor& color) {
    const QFont& font = Font(SkinFont::Normal);
    const QFontMetrics metrics(font);
    int x = rect.left();
    const int right = rect.left() + rect.width();  // exclusive
    painter.save();
    // A long name stops at the right edge rather than running under the row's buttons.
    const int slack = metrics.height();
    painter.setClipRect(QRect(rect.left(), rect.top() - slack, rect.width(), rect.height() + 2 * slack),
                        Qt::IntersectClip);
    for (const QString& piece : SplitAtKey(text, key)) {
        if (x >= right) break;
        const int width = metrics.horizontalAdvance(piece);
        // The extra 6 pixels keep the last glyph's overhang.
        const int pieceRight = std::min(right, x + width + 6);
        const QRect place(x, rect.top(), pieceRight - x, rect.height());
        PlaceText(painter, place, piece, font, piece == key ? panel_colours::Accent() : color, Place::Left);
        x += width;
    }
    painter.restore();
}

}  // namespace marrowfin
