#include "panel/lists/list_scroller.h"

#include <QApplication>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <QWidget>

#include "skin/scroll_bar_ex.h"

namespace marrowfin {

namespace {
constexpr int kWheelDelta = 120;  // one notch
}

ListScroller::ListScroller(QWidget* list, std::function<void()> onScroll)
    : m_list(list), m_bar(new CScrollBarEx(Qt::Vertical, list)), m_onScroll(std::move(onScroll)) {
    m_bar->setSingleStep(1);
    m_bar->hide();
    // The bar dragged or clicked by the user moves the rows.
    QObject::connect(m_bar, &QScrollBar::valueChanged, m_bar, [this](int value) {
        if (m_window.SetFirst(value)) Moved();
    });
}

int ListScroller::RowsRight() const { return m_bar->isVisibleTo(m_list) ? m_bar->x() : m_list->width(); }

void ListScroller::Relayout(int count, int rowHeight) {
    m_window.count = count;
    m_window.rowHeight = rowHeight > 0 ? rowHeight : 1;
    m_window.clientHeight = m_list->height();
    const bool moved = m_window.Clamp();
    SyncBar();
    if (moved) Moved();
}

bool ListScroller::Wheel(const QWheelEvent& event) {
    m_wheelRest += event.angleDelta().y();
    const int notches = m_wheelRest / kWheelDelta;
    m_wheelRest -= notches * kWheelDelta;
    if (notches == 0) return false;
    // Wheel up (positive) shows earlier rows.
    if (!m_window.ScrollBy(-notches * QApplication::wheelScrollLines())) return false;
    SyncBar();
    Moved();
    return true;
}

bool ListScroller::EnsureVisible(int row) {
    if (!m_window.EnsureVisible(row)) return false;
    SyncBar();
    Moved();
    return true;
}

bool ListScroller::SetFirst(int row) {
    if (!m_window.SetFirst(row)) return false;
    SyncBar();
    Moved();
    return true;
}

void ListScroller::SyncBar() {
    {
        const QSignalBlocker quiet(m_bar);
        m_bar->setRange(0, m_window.MaxFirst());
        m_bar->setPageStep(m_window.FullRows());
        m_bar->setValue(m_window.first);
    }
    m_bar->setGeometry(m_list->width() - m_bar->width(), 0, m_bar->width(), m_list->height());
    m_bar->setVisible(m_window.Overflows());
    m_bar->update();
}

void ListScroller::Moved() {
    if (m_onScroll) m_onScroll();
}

}  // namespace marrowfin
