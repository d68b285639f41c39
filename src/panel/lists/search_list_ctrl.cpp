#include "panel/lists/search_list_ctrl.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include "panel/lists/list_scroller.h"
#include "panel/lists/search_row_zone.h"
#include "panel/model/panel_messages.h"
#include "panel/paint/panel_painter.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_timers.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
constexpr int kRowUnits = 60;  // plus one pixel
constexpr int kColumnUnits = 723;  // the one column "名称"

// What the owner hears: its commands and its one-shot row timers.
// A double click counts on the picture and the texts, not on the buttons.
constexpr int kDoubleClickWidthUnits = 420;
constexpr int kDoubleClickHeightUnits = 60;
}  // namespace

struct CSearchListCtrl::Impl {
    explicit Impl(CSearchListCtrl* self) : self(self), scroller(self, [this] { Scrolled(); }) {}

    CSearchListCtrl* self;
    WindowHandle owner = 0;
    std::vector<BlockRow>* rows = nullptr;
    std::vector<int> lineWidths;
    QString key;
    int selected = -1;
    int hotRow = -1;
    int hotZone = ZoneNone;
    int clickedRow = -1;
    bool mouseInside = false;
    QPoint lastMouse;
    // The rows last handed to the owner as shown; empty (last < first) when
    // none were, so the next paint hands over all it shows.
    int hintFirst = 0, hintLast = -1;
    ListScroller scroller;

    static int RowHeight() { return ScaleUnits(kRowUnits) + 1; }
    const RowWindow& Window() const { return scroller.Window(); }
    int Count() const { return rows ? static_cast<int>(rows->size()) : 0; }

    // The owner may have changed its rows' number without telling: follow it
    // before any row is read, so that no index runs past the rows.
    void Follow() {
        const int count = Count();
        if (count == Window().count && static_cast<int>(lineWidths.size()) == count) return;
        if (selected >= count) selected = -1;
        if (hotRow >= count) hotRow = -1, hotZone = ZoneNone;
        if (clickedRow >= count) clickedRow = -1;
        ForgetHint();
        Relayout();
    }
    void ForgetHint() { hintFirst = 0, hintLast = -1; }
    // New rows start unmeasured; kept rows keep their measure.
    void Relayout() {
        lineWidths.resize(static_cast<size_t>(Count()), 0);
        scroller.Relayout(Count(), RowHeight());
    }

    QRect ItemRect(int row) const {
        return QRect(0, Window().RowTop(row), ScaleUnits(kColumnUnits), Window().rowHeight);
    }
    int RowAt(QPoint p) const {
        if (p.x() < 0 || p.x() >= ScaleUnits(kColumnUnits) || p.x() >= scroller.RowsRight()) return -1;
        return Window().RowAt(p.y());
    }
    void Redraw(int row) {
        if (Window().IsRow(row)) self->update(ItemRect(row));
    }

    // Hit-tests the mouse and repaints what changed: the old row when the
    // row changed, the new row when it or its zone changed.
    void Track(QPoint p) {
        const int oldRow = hotRow, oldZone = hotZone;
        hotRow = RowAt(p);
        hotZone = hotRow >= 0 ? SearchZoneAt(p - ItemRect(hotRow).topLeft(), lineWidths[hotRow]) : ZoneNone;
        if (hotRow != oldRow) Redraw(oldRow);
        if (hotRow != oldRow || hotZone != oldZone) Redraw(hotRow);
    }
    void Scrolled() {
        if (mouseInside) Track(lastMouse);
        self->update();
    }
    // The rows the client shows, a cut last row included; last < first for none.
    std::pair<int, int> ShownRange() const {
        const RowWindow& w = Window();
        if (w.count == 0 || self->height() <= 0) return {0, -1};
        int last = w.first;
        while (last + 1 < w.count && w.RowTop(last + 1) < self->height()) ++last;
        return {w.first, last};
    }
    // As a list's cache hint: the rows newly in view go to the owner, each
    // once, before they are drawn; rows scrolled past unseen never do.
    void HintShownRows() {
        if (!owner) return;  // kept for the owner to come
        const auto [first, last] = ShownRange();
        if (first == hintFirst && last == hintLast) return;
        const int oldFirst = hintFirst, oldLast = hintLast;
        hintFirst = first, hintLast = last;
        for (int row = first; row <= last; ++row) {
            if (row >= oldFirst && row <= oldLast) continue;
            (void)SendWindowMessage(owner, MsgPanelCommand, PanelCommand::RowShown, row);
        }
    }
    void RestartOwnerTimer(std::uintptr_t id, unsigned ms) const {
        if (owner) (void)SetTimer(owner, id, ms);
    }
    void Select(int row) {
        const int next = Window().IsRow(row) ? row : -1;
        if (next == selected) return;
        Redraw(selected);
        selected = next;
        Redraw(selected);
    }
};

CSearchListCtrl::CSearchListCtrl(QWidget* parent) : QWidget(parent), m_impl(new Impl(this)) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_impl->Follow();
}

CSearchListCtrl::~CSearchListCtrl() { delete m_impl; }

void CSearchListCtrl::SetOwner(WindowHandle owner) { m_impl->owner = owner; }

void CSearchListCtrl::SetRows(std::vector<BlockRow>* rows) {
    m_impl->rows = rows;
    m_impl->lineWidths.assign(static_cast<size_t>(m_impl->Count()), 0);
    m_impl->selected = -1;
    m_impl->clickedRow = -1;
    m_impl->hotRow = -1;
    m_impl->hotZone = ZoneNone;
    m_impl->ForgetHint();
    m_impl->Relayout();
    m_impl->scroller.SetFirst(0);
    if (m_impl->mouseInside) m_impl->Track(m_impl->lastMouse);
    update();
}

int CSearchListCtrl::GetItemCount() const { return m_impl->Count(); }

void CSearchListCtrl::SetSearchKey(const QString& key) {
    if (key == m_impl->key) return;
    m_impl->key = key;
    update();
}

void CSearchListCtrl::RedrawRow(int row) {
    m_impl->Follow();
    m_impl->Redraw(row);
}

int CSearchListCtrl::GetSelectedRow() const { return m_impl->selected; }

void CSearchListCtrl::SetSelectedRow(int row) {
    m_impl->Follow();
    m_impl->Select(row);
}

int CSearchListCtrl::HotRow() const { return m_impl->hotRow; }
int CSearchListCtrl::HotZone() const { return m_impl->hotZone; }
int CSearchListCtrl::ClickedRow() const { return m_impl->clickedRow; }

int CSearchListCtrl::LineWidth(int row) const {
    return row >= 0 && row < static_cast<int>(m_impl->lineWidths.size()) ? m_impl->lineWidths[row] : 0;
}

void CSearchListCtrl::EnsureVisible(int row) {
    m_impl->Follow();
    m_impl->scroller.EnsureVisible(row);
}

int CSearchListCtrl::FirstVisibleRow() const { return m_impl->Window().first; }
bool CSearchListCtrl::IsScrollBarShown() const { return m_impl->scroller.Bar()->isVisibleTo(this); }
CScrollBarEx* CSearchListCtrl::ScrollBar() const { return m_impl->scroller.Bar(); }

QRect CSearchListCtrl::RowRect(int row) const { return m_impl->Window().IsRow(row) ? m_impl->ItemRect(row) : QRect(); }

int CSearchListCtrl::RowAt(QPoint point) const { return m_impl->RowAt(point); }

void CSearchListCtrl::paintEvent(QPaintEvent* event) {
    m_impl->Follow();
    // The owner may load thumbnails for the rows it is told of: before painting.
    m_impl->HintShownRows();
    m_impl->Follow();
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::white);
    const RowWindow& w = m_impl->Window();
    for (int row = w.first; row < w.count && w.RowTop(row) < height(); ++row) {
        const QRect item = m_impl->ItemRect(row);
        if (!item.intersects(event->rect())) continue;
        SearchRowLook look;
        look.selected = row == m_impl->selected;
        if (row == m_impl->hotRow) {
            if (m_impl->hotZone == ZoneCollect || m_impl->hotZone == ZoneUse) look.hoverButton = m_impl->hotZone;
            look.hoverLink = m_impl->hotZone == ZoneClassLink;
        }
        look.key = m_impl->key;
        painter.save();
        painter.setClipRect(item);
        const int lineWidth = DrawSearchRow(painter, item, (*m_impl->rows)[static_cast<size_t>(row)], look);
        painter.restore();
        // The link zone keeps the first measure of the class line.
        int& kept = m_impl->lineWidths[static_cast<size_t>(row)];
        if (kept == 0) kept = std::max(lineWidth, 0);
        if (m_impl->owner) (void)PostWindowMessage(m_impl->owner, MsgPanelCommand, PanelCommand::RowDrawn, row);
    }
}

void CSearchListCtrl::mouseMoveEvent(QMouseEvent* event) {
    m_impl->Follow();
    m_impl->mouseInside = true;
    m_impl->lastMouse = event->position().toPoint();
    m_impl->Track(m_impl->lastMouse);
    QWidget::mouseMoveEvent(event);
}

void CSearchListCtrl::mousePressEvent(QMouseEvent* event) {
    m_impl->Follow();
    if (event->button() == Qt::LeftButton) {
        const QPoint at = event->position().toPoint();
        const int row = m_impl->RowAt(at);
        if (row >= 0) {
            m_impl->clickedRow = row;
            // The owner acts when its timer fires, so a second press within
            // the delay only restarts it.
            switch (SearchZoneAt(at - m_impl->ItemRect(row).topLeft(), m_impl->lineWidths[static_cast<size_t>(row)])) {
                case ZoneCollect: m_impl->RestartOwnerTimer(kTimerRowCollect, kRowClickMs); break;
                case ZoneUse: m_impl->RestartOwnerTimer(kTimerRowUse, kRowClickMs); break;
                case ZoneClassLink: m_impl->RestartOwnerTimer(kTimerRowClassLink, kRowClassLinkMs); break;
                default: break;
            }
        }
        // As in a list: a press selects its row, a press beside the rows selects none.
        m_impl->Select(row);
        setFocus(Qt::MouseFocusReason);
    }
    event->accept();
}

void CSearchListCtrl::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second press of a double click arrives here instead of as a press,
    // so a double click on "使用" keeps the one timer its first press started.
    m_impl->Follow();
    if (event->button() == Qt::LeftButton) {
        const QPoint at = event->position().toPoint();
        m_impl->Track(at);
        const int row = m_impl->hotRow;
        if (row >= 0) {
            const QPoint inRow = at - m_impl->ItemRect(row).topLeft();
            if (inRow.x() < ScaleUnits(kDoubleClickWidthUnits) && inRow.y() < ScaleUnits(kDoubleClickHeightUnits)) {
                m_impl->clickedRow = row;
                m_impl->RestartOwnerTimer(kTimerRowUse, kRowClickMs);
            }
        }
        m_impl->Select(row);
    }
    event->accept();
}

void CSearchListCtrl::leaveEvent(QEvent* event) {
    // Leaving clears the row, so that no button stays lit under a gone mouse.
    m_impl->mouseInside = false;
    const int old = m_impl->hotRow;
    m_impl->hotRow = -1;
    m_impl->hotZone = ZoneNone;
    m_impl->Redraw(old);
    QWidget::leaveEvent(event);
}

void CSearchListCtrl::wheelEvent(QWheelEvent* event) {
    m_impl->Follow();
    m_impl->scroller.Wheel(*event);
    event->accept();
}

void CSearchListCtrl::showEvent(QShowEvent* event) {
    // Shown again, the list asks for all it shows, as when first shown.
    m_impl->ForgetHint();
    QWidget::showEvent(event);
}

bool CSearchListCtrl::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        // The row's file name in full, as a list shows an item's text.
        m_impl->Follow();
        auto* help = static_cast<QHelpEvent*>(event);
        const int row = m_impl->RowAt(help->pos());
        if (row >= 0)
            QToolTip::showText(help->globalPos(), (*m_impl->rows)[static_cast<size_t>(row)].name, this,
                               m_impl->ItemRect(row));
        else QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

void CSearchListCtrl::resizeEvent(QResizeEvent* event) {
    m_impl->Relayout();
    QWidget::resizeEvent(event);
}

}  // namespace marrowfin
