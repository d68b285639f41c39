#include "skin/scroll_bar_ex.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOptionSlider>

#include "skin/skin_sheet.h"

namespace marrowfin {

CScrollBarEx::CScrollBarEx(Qt::Orientation orientation, QWidget* parent) : QScrollBar(orientation, parent) {
    if (orientation == Qt::Vertical) setFixedWidth(6);
}

void CScrollBarEx::Attach(QAbstractScrollArea* area) {
    if (!area) return;
    area->setVerticalScrollBar(this);
}

QPair<int, int> CScrollBarEx::ThumbSpan() const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const int h = height();
    const int range = maximum() - minimum();
    // Track between the 6-pixel ends; the thumb is the page's share of it.
    const int track = std::max(0, h - 12);
    int length = range + pageStep() > 0 ? track * pageStep() / (range + pageStep()) : track;
    length = std::clamp(length, std::min(track, 20), track);
    const int top = 6 + (range > 0 ? (track - length) * (value() - minimum()) / range : 0);
    return {top, top + length};
}

void CScrollBarEx::paintEvent(QPaintEvent*) {
    if (orientation() != Qt::Vertical) return;
    QPainter p(this);
    const int w = width(), h = height();
    p.fillRect(rect(), Qt::white);
    p.drawImage(QRect(0, 0, w, 6), SkinPicture(QStringLiteral("scroll_bar_top"), false));
    p.drawImage(QRect(0, h - 6, w, 6), SkinPicture(QStringLiteral("scroll_bar_bottom"), false));
    p.drawImage(QRect(0, 6, w, h - 12), SkinPicture(QStringLiteral("scroll_track"), false));
    if (h <= 45 || maximum() <= minimum()) return;
    const auto [top, bottom] = ThumbSpan();
    p.drawImage(QRect(0, top, 6, 3), SkinPicture(QStringLiteral("scroll_thumb_top"), false));
    p.drawImage(QRect(0, top + 3, 6, std::max(0, bottom - top - 6)),
                SkinPicture(QStringLiteral("scroll_thumb_fill"), false));
    p.drawImage(QRect(0, bottom - 3, 6, 3), SkinPicture(QStringLiteral("scroll_thumb_bottom"), false));
    if (bottom - top >= 12)
        p.drawImage(QRect(0, (top + bottom) / 2 - 3, 6, 6), SkinPicture(QStringLiteral("scroll_thumb_grip"), false));
}

}  // namespace marrowfin
