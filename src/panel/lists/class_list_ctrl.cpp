#include "panel/lists/class_list_ctrl.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include "panel/lists/list_scroller.h"
#include "panel/model/panel_messages.h"
#include "panel/paint/panel_painter.h"
#include "platform/qt/qt_window_system.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
constexpr int kRowUnits = 28;  // plus one pixel
constexpr int kColumnUnits = 112;  // the one column "分类"
constexpr int kTipLength = 79;  // the tool tip buffer less its terminator
}  // namespace

struct CClassListCtrl::Impl {
    explicit Impl(CClassListCtrl* self) : scroller(self, [this, self] { Scrolled(self); }) {}

    QStringList texts;
    int selected = -1;
    int hover = -1;
    bool tracking = false;  // the mouse is over the list and a leave will come
    QPoint lastMouse;
    ListScroller scroller;

    static int RowHeight() { return ScaleUnits(kRowUnits) + 1; }
    const RowWindow& Window() const { return scroller.Window(); }

    QRect RowRect(int row) const {
        return QRect(0, Window().RowTop(row), ScaleUnits(kColumnUnits), Window().rowHeight);
    }
    // A row is hit on its column, not under the scroll bar nor right of the column.
    int RowAt(QPoint p) const {
        if (p.x() < 0 || p.x() >= ScaleUnits(kColumnUnits) || p.x() >= scroller.RowsRight()) return -1;
        return Window().RowAt(p.y());
    }
    void Relayout() { scroller.Relayout(static_cast<int>(texts.size()), RowHeight()); }

    void SetHover(CClassListCtrl* self, int row) {
        if (row == hover) return;
        const int old = hover;
        hover = row;
        if (Window().IsRow(old)) self->update(RowRect(old));
        if (Window().IsRow(row)) self->update(RowRect(row));
    }
    // The rows moved under a resting mouse: the hover row is the one under it now.
    void Scrolled(CClassListCtrl* self) {
        if (tracking) SetHover(self, RowAt(lastMouse));
        self->update();
    }
};

CClassListCtrl::CClassListCtrl(QWidget* parent) : QWidget(parent), m_impl(new Impl(this)) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_impl->Relayout();
}

CClassListCtrl::~CClassListCtrl() { delete m_impl; }

void CClassListCtrl::DeleteAllItems() {
    m_impl->texts.clear();
    m_impl->selected = -1;
    m_impl->hover = -1;
    m_impl->Relayout();
    update();
}

int CClassListCtrl::InsertItem(int row, const QString& text) {
    if (row < 0) return -1;
    const int count = GetItemCount();
    if (row > count) row = count;
    m_impl->texts.insert(row, text);
    // Selection and hover stay with their rows, as a list control keeps an item's state.
    if (m_impl->selected >= row) ++m_impl->selected;
    if (m_impl->hover >= row) ++m_impl->hover;
    m_impl->Relayout();
    update();
    return row;
}

int CClassListCtrl::GetItemCount() const { return static_cast<int>(m_impl->texts.size()); }

QString CClassListCtrl::GetItemText(int row) const {
    return m_impl->Window().IsRow(row) ? m_impl->texts.at(row) : QString();
}

int CClassListCtrl::GetSelectedRow() const { return m_impl->selected; }

void CClassListCtrl::SetSelectedRow(int row) {
    // A row that isn't there selects nothing.
    const int next = m_impl->Window().IsRow(row) ? row : -1;
    if (next == m_impl->selected) return;
    const int old = m_impl->selected;
    m_impl->selected = next;
    if (m_impl->Window().IsRow(old)) update(m_impl->RowRect(old));
    if (next >= 0) update(m_impl->RowRect(next));
}

int CClassListCtrl::HoverRow() const { return m_impl->hover; }

bool CClassListCtrl::IsRowInClient(int row) const { return m_impl->Window().IsRowInClient(row); }

void CClassListCtrl::EnsureVisible(int row) { m_impl->scroller.EnsureVisible(row); }

int CClassListCtrl::FirstVisibleRow() const { return m_impl->Window().first; }

bool CClassListCtrl::IsScrollBarShown() const { return m_impl->scroller.Bar()->isVisibleTo(this); }

CScrollBarEx* CClassListCtrl::ScrollBar() const { return m_impl->scroller.Bar(); }

QRect CClassListCtrl::RowRect(int row) const { return m_impl->Window().IsRow(row) ? m_impl->RowRect(row) : QRect(); }

int CClassListCtrl::RowAt(QPoint point) const { return m_impl->RowAt(point); }

void CClassListCtrl::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::white);
    const RowWindow& w = m_impl->Window();
    for (int row = w.first; row < w.count && w.RowTop(row) < height(); ++row) {
        const QRect item = m_impl->RowRect(row);
        if (!item.intersects(event->rect())) continue;
        const QString& text = m_impl->texts.at(row);
        const bool boutique = isBoutique && isBoutique(text);
        painter.save();
        painter.setClipRect(item);
        DrawClassRow(painter, item, row, text, boutique, row == m_impl->selected, row == m_impl->hover);
        painter.restore();
    }
}

void CClassListCtrl::mouseMoveEvent(QMouseEvent* event) {
    m_impl->tracking = true;
    m_impl->lastMouse = event->position().toPoint();
    m_impl->SetHover(this, m_impl->RowAt(m_impl->lastMouse));
    QWidget::mouseMoveEvent(event);
}

void CClassListCtrl::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        const int row = m_impl->RowAt(event->position().toPoint());
        // The owner decides what the row means and selects it.
        if (row >= 0) PostWindowMessage(HandleOf(parentWidget()), MsgPanelCommand, PanelCommand::ClassClicked, row);
        setFocus(Qt::MouseFocusReason);
    }
    event->accept();
}

void CClassListCtrl::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second press of a double click is no new click on the row.
    event->accept();
}

void CClassListCtrl::leaveEvent(QEvent* event) {
    m_impl->tracking = false;
    m_impl->SetHover(this, -1);
    QWidget::leaveEvent(event);
}

void CClassListCtrl::wheelEvent(QWheelEvent* event) {
    m_impl->scroller.Wheel(*event);
    event->accept();
}

bool CClassListCtrl::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const int row = m_impl->RowAt(help->pos());
        if (row >= 0)
            QToolTip::showText(help->globalPos(), m_impl->texts.at(row).left(kTipLength), this, m_impl->RowRect(row));
        else QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

void CClassListCtrl::resizeEvent(QResizeEvent* event) {
    m_impl->Relayout();
    QWidget::resizeEvent(event);
}

}  // namespace marrowfin
