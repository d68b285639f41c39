#include "skin/skin_button.h"

#include <QMouseEvent>
#include <QPainter>

#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

namespace {
const QColor kAccent(0x29, 0x75, 0xE6);
const QColor kAccentDeep(0x01, 0x6A, 0xC3);
const QColor kGround(0xF2, 0xF3, 0xF5);
const QColor kText(0x33, 0x33, 0x33);
const QColor kGreyText(0x99, 0x99, 0x99);
}  // namespace

CSkinButton::CSkinButton(QWidget* parent) : QAbstractButton(parent) {
    setMouseTracking(true);
    setAttribute(Qt::WA_Hover, true);
    setFocusPolicy(Qt::NoFocus);
}

CSkinButton::~CSkinButton() = default;

void CSkinButton::Create(const QString& caption, bool visible, const QRect& rect, QWidget* parent, int id) {
    setParent(parent);
    setText(caption);
    setGeometry(rect);
    m_id = id;
    setVisible(visible);
}

void CSkinButton::SetSheetRect(int left, int top, int width, int height) {
    sheetRect = {left, top, left + width, top + height};
}

void CSkinButton::SetSheetCell(int x, int y, int width, int height) {
    SetSheetRect(SheetPixels(x), SheetPixels(y), SheetPixels(width), SheetPixels(height));
}

void CSkinButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    DrawItem(painter);
}

void CSkinButton::HoverOn() {
    // The hand over every skin button, set on each move as the class cursor was.
    setCursor(Qt::PointingHandCursor);
    if (!hover) {
        hover = true;
        update();
    }
}

void CSkinButton::enterEvent(QEnterEvent* event) {
    // A disabled button gets no moves, but its hover still shows.
    HoverOn();
    QAbstractButton::enterEvent(event);
}

void CSkinButton::mouseMoveEvent(QMouseEvent* event) {
    HoverOn();
    QAbstractButton::mouseMoveEvent(event);
}

void CSkinButton::leaveEvent(QEvent* event) {
    setCursor(Qt::ArrowCursor);
    hover = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void CSkinButton::DrawFrame(QPainter& painter, const QRect& target, bool rightFrame) const {
    const int w = sheetRect.right - sheetRect.left;
    const int h = sheetRect.bottom - sheetRect.top;
    DrawCell(painter, target, rightFrame ? sheetRect.right : sheetRect.left, sheetRect.top, w, h);
}

// One case per recipe kind: each is a few painter calls, and the kinds read
// best side by side in one table.
void CSkinButton::DrawItem(QPainter& painter) {
    const QRect client = rect();
    const QString caption = text();
    const bool highlight = hover || selected;
    const int w = client.width(), h = client.height();
    auto from = [&](int units) { return QRect(ScaleUnits(units), 0, w - ScaleUnits(units), h); };

    switch (kind) {
        case 1:
            painter.fillRect(client, Qt::white);
            if (highlight)
                DrawTextLine(painter, from(34), caption, Font(SkinFont::Bold), kAccent, TextPlace::Left, true);
            else
                DrawTextLine(painter, from(34), caption, Font(SkinFont::Normal), QColor(0x5A, 0x5B, 0x5B),
                             TextPlace::Left, true);
            if (!caption.isEmpty()) DrawFrame(painter, ScaleBox(11, 7, 15, 15), highlight);
            else DrawFrame(painter, ScaleBox(45, 8, 15, 15), selected);
            break;
        case 2:
        case 3:
            painter.fillRect(client, kind == 2 ? QColor(Qt::white) : kGround);
            DrawFrame(painter, client, hover);
            break;
        case 4: {
            const bool lit = highlight && !Disabled();
            DrawOutlinedRect(painter, client, lit ? kAccent : QColor(0xB7, 0xB7, 0xB7),
                             lit ? QColor(0xE1, 0xF0, 0xFD) : QColor(Qt::white));
            DrawTextLine(painter, from(25), caption, Font(SkinFont::Normal), Disabled() ? kGreyText : kText,
                         TextPlace::Left, false);
            DrawFrame(painter, ScaleBox(9, 5, 14, 14), Disabled());
            break;
        }
        case 6:
            painter.fillRect(client, kAccent);
            DrawTextLine(painter, client, caption, Font(SkinFont::Normal), Qt::white, TextPlace::Centre, false);
            break;
        case 7:
            DrawOutlinedRect(painter, client, QColor(0x99, 0x99, 0x99), kGround);
            DrawTextLine(painter, client, caption, Font(SkinFont::Normal), kText, TextPlace::Centre, false);
            break;
        case 8:
            painter.fillRect(client, kGround);
            DrawTextLine(painter, client, caption, Font(SkinFont::Normal), hover ? QColor(0x36, 0x6C, 0xB3) : kAccent,
                         TextPlace::Left, false);
            break;
        case 11:
            painter.fillRect(client, kGround);
            DrawTextLine(painter, from(22), caption, Font(SkinFont::Normal), highlight ? kAccent : kText,
                         TextPlace::Left, true);
            if (!caption.isEmpty())
                DrawFrame(painter, QRect(0, static_cast<int>(Rate()), ScaleUnits(15), ScaleUnits(15)), highlight);
            else DrawFrame(painter, ScaleBox(0, 0, 15, 15), selected);
            break;
        case 12:
        case 13:
            painter.fillRect(client, Qt::white);
            DrawRoundRect(painter, client, 3, QColor(), highlight ? kAccentDeep : kAccent);
            if (kind == 12) {
                DrawTextLine(painter, from(32), caption, Font(SkinFont::Normal), Qt::white, TextPlace::Left, true);
                DrawFrame(painter, ScaleBox(11, 6, 16, 16), false);
            } else {
                DrawTextLine(painter, client, caption, Font(SkinFont::Normal), Qt::white, TextPlace::Centre, true);
            }
            break;
        case 50:
        case 53:
            painter.fillRect(client, Qt::white);
            DrawRoundRect(painter, client, 3, kAccent, hover ? kAccentDeep : kAccent);
            DrawTextLine(painter, client, caption, Font(kind == 50 ? SkinFont::Normal : SkinFont::Large), Qt::white,
                         TextPlace::Centre, true);
            break;
        case 51:
            painter.fillRect(client, Qt::white);
            DrawRoundRect(painter, client, 3, QColor(0xC1, 0xC1, 0xC2), hover ? QColor(0xD7, 0xD9, 0xDB) : kGround);
            DrawTextLine(painter, client, caption, Font(SkinFont::Normal), Qt::black, TextPlace::Centre, true);
            break;
        case 54:
            painter.fillRect(client, Qt::white);
            DrawTextLine(painter, client, caption, Font(hover ? SkinFont::Underlined : SkinFont::Normal),
                         QColor(0x00, 0x82, 0xF0), TextPlace::Centre, false);
            break;
        case 55:
            painter.fillRect(client, Qt::white);
            if (selected)
                DrawTextLine(painter, client, caption, Font(SkinFont::Normal), kText, TextPlace::Centre, false);
            else
                DrawTextLine(painter, client, caption, Font(SkinFont::Underlined),
                             hover ? QColor(0x00, 0x82, 0xF0) : kText, TextPlace::Centre, false);
            break;
        case 56: {
            painter.fillRect(client, Qt::white);
            static const QString kSort = QStringLiteral("排序");
            const int at = caption.indexOf(kSort);
            const QString head = at < 0 ? caption : caption.left(at + kSort.size());
            const QString tail = at < 0 ? QString() : caption.mid(at + kSort.size());
            DrawTextLine(painter, client, head, Font(SkinFont::Normal), Qt::black, TextPlace::Left, false);
            DrawTextLine(painter, client, tail, Font(SkinFont::Normal), QColor(0x6F, 0x75, 0x7C), TextPlace::Right,
                         false);
            break;
        }
        default:
            // An unknown recipe still covers its ground.
            painter.fillRect(client, Qt::white);
            DrawTextLine(painter, client, caption, Font(SkinFont::Normal), kText, TextPlace::Centre, true);
            break;
    }
}

}  // namespace marrowfin
