#include "skin/sel_typeclass_button.h"

#include <QPainter>
#include <algorithm>

#include "skin/measure_text.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

namespace {
const QColor kAccent(0x29, 0x75, 0xE6);
const QColor kLightGold(0xEE, 0xC8, 0x88);
const QColor kTabGrey(0xE5, 0xE5, 0xEA);

QString Description(const QString& describe) { return QStringLiteral("（") + describe + QStringLiteral("）"); }
}  // namespace

CSelTypeclassButton::CSelTypeclassButton(QWidget* parent) : CSkinButton(parent) {}

void CSelTypeclassButton::mouseMoveEvent(QMouseEvent*) {
    // The same hover as the base, without handing the move on.
    HoverOn();
}

int CSelTypeclassButton::CaptionStart() const {
    if (!showDesc || describe.isEmpty()) return -1;
    const int space = width() - ScaleUnits(6) - MeasureText(Description(describe)) - MeasureText(text());
    return std::max(space / 2, ScaleUnits(5));
}

void CSelTypeclassButton::DrawClassButton(QPainter& painter) {
    const int w = width(), h = height();
    const bool isBoutique = boutique != 0;
    const bool isChecked = checked != 0;
    const QColor outline = isBoutique  ? QColor(0xD6, 0xB4, 0x70)
                           : isChecked ? QColor(0x00, 0x7A, 0xFF)
                                       : QColor(0xD2, 0xD2, 0xD2);
    painter.fillRect(QRect(QPoint(0, ScaleUnits(6)), QPoint(w - ScaleUnits(6) - 1, h - 1)), outline);
    QColor face;
    if (!isBoutique)
        face = isChecked ? (hover ? QColor(0xCE, 0xE8, 0xFE) : QColor(0xE8, 0xF4, 0xFE))
                         : (hover ? QColor(0xE5, 0xE5, 0xEA) : QColor(Qt::white));
    else face = hover ? QColor(0xFF, 0xFA, 0xEB) : isChecked ? QColor(0xFF, 0xEA, 0xCC) : QColor(Qt::white);
    painter.fillRect(QRect(ScaleUnits(1), ScaleUnits(7), w - ScaleUnits(8), h - ScaleUnits(8)), face);

    const QColor textColour = Disabled() ? QColor(0x99, 0x99, 0x99) : QColor(0x33, 0x33, 0x33);
    const int top = ScaleUnits(6);
    const int start = CaptionStart();
    if (start >= 0) {
        const int captionWidth = MeasureText(text());
        DrawTextLine(painter, QRect(start, top, captionWidth, h - top), text(), Font(SkinFont::Normal), textColour,
                     TextPlace::Left, true);
        const QString desc = Description(describe);
        // A long description is cut with an ellipsis at the button's edge rather than by it.
        const int room = std::min(MeasureText(desc), w - ScaleUnits(6) - start - captionWidth);
        DrawTextLine(painter, QRect(start + captionWidth, top, room, h - top), desc, Font(SkinFont::Normal),
                     QColor(0x99, 0x99, 0x99), TextPlace::Left, true);
    } else {
        DrawTextLine(painter, QRect(0, top, w - ScaleUnits(6), h - top), text(), Font(SkinFont::Normal), textColour,
                     TextPlace::Centre, true);
    }
    if (isNew)
        DrawSheetCell(painter, QRect(w - ScaleUnits(24) - 7, 7, ScaleUnits(24), ScaleUnits(12)), 552, 70, 24, 12);
    if (isChecked)
        DrawSheetCell(painter, QRect(w - ScaleUnits(14), 0, ScaleUnits(14), ScaleUnits(14)), hover ? 186 : 158, 72, 14,
                      14);
}

void CSelTypeclassButton::DrawItem(QPainter& painter) {
    const QRect client = rect();
    painter.fillRect(client, Qt::white);
    const bool isBoutique = boutique != 0;
    const bool isChecked = checked != 0;
    switch (kind) {
        case 1: DrawClassButton(painter); break;
        case 2: {
            const QColor dark(0x21, 0x28, 0x30);
            DrawRoundRect(painter, client, ScaleUnits(5), dark, dark);
            // Between the crown (boutique) and the arrow, so that neither touches the caption.
            const int from = isBoutique ? ScaleUnits(23) : ScaleUnits(8);
            DrawTextLine(painter, QRect(from, 0, ScaleUnits(78) - from, client.height()), text(), Font(SkinFont::Bold),
                         isBoutique ? kLightGold : QColor(Qt::white), TextPlace::Centre, false);
            if (isBoutique) DrawSheetCell(painter, ScaleBox(7, 7, 16, 16), 352, 88, 16, 16);
            const int arrow = isBoutique ? (isChecked ? 228 : 214) : (isChecked ? 256 : 242);
            DrawSheetCell(painter, ScaleBox(80, 9, 14, 14), arrow, 72, 14, 14);
            break;
        }
        case 3: {
            const QRect tab(0, ScaleUnits(4), client.width() - ScaleUnits(4), client.height() - ScaleUnits(4));
            QColor colour =
                isChecked ? (isBoutique ? kLightGold : kAccent) : (hover ? QColor(0xCE, 0xCE, 0xD2) : kTabGrey);
            DrawRoundRect(painter, tab, ScaleUnits(5), colour, colour);
            DrawTextLine(painter, tab, text(), Font(isChecked ? SkinFont::Bold : SkinFont::Normal),
                         isChecked && !isBoutique ? QColor(Qt::white) : QColor(Qt::black), TextPlace::Centre, false);
            if (kindIsNew) {
                painter.save();
                painter.setRenderHint(QPainter::Antialiasing, true);
                painter.setPen(Qt::NoPen);
                painter.setBrush(QColor(0xEB, 0x53, 0x50));
                const int d = ScaleUnits(8);
                painter.drawEllipse(QRect(client.width() - ScaleUnits(10), 0, d, d));
                painter.restore();
            }
            break;
        }
        case 4: {
            const QRect tab(0, ScaleUnits(4), client.width() - ScaleUnits(4), client.height() - ScaleUnits(4));
            DrawRoundRect(painter, tab, ScaleUnits(5), kTabGrey, kTabGrey);
            DrawTextLine(painter, tab, text(), Font(SkinFont::Normal),
                         Disabled() ? QColor(0xC7, 0xC7, 0xCC) : QColor(0x6F, 0x75, 0x7C), TextPlace::Centre, false);
            break;
        }
        case 5:
            painter.fillRect(client, hover || isChecked ? QColor(0xEE, 0xF0, 0xF3) : QColor(Qt::white));
            DrawTextLine(painter, client, text(), Font(SkinFont::Normal), Qt::black, TextPlace::Centre, false);
            if (isChecked) DrawSheetCell(painter, ScaleBox(10, 8, 14, 14), 270, 72, 14, 14);
            break;
        default:
            DrawTextLine(painter, client, text(), Font(SkinFont::Normal), Qt::black, TextPlace::Centre, true);
            break;
    }
}

}  // namespace marrowfin
