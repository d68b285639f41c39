#include "skin/scroll_bar_rv.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_messages.h"

namespace marrowfin {

namespace {
const QColor kThumb(0xAF, 0xAF, 0xAF);
const QColor kThumbLit(0xC8, 0xC8, 0xC8);
constexpr int kZone = 20;
constexpr int kLineStep = 180;
}  // namespace

CScrollBarRv::CScrollBarRv(QWidget* parent) : QWidget(parent), m_thumbColour(kThumb) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent, true);
}

void CScrollBarRv::Create(QWidget* owner, const QRect& rect) {
    m_owner = owner;
    setParent(owner);
    setGeometry(rect);
    setProperty("controlId", 3000);
    show();
    OnSize();
}

void CScrollBarRv::SetInfo(const ScrollInfo& in) {
    m_info = in;
    PostWindowMessage(HandleOf(this), WM_SIZE_MESSAGE, 0, (height() << 16) | (width() & 0xFFFF));
}

void CScrollBarRv::LineUp() {
    if (m_info.nPos > m_info.nMin) {
        m_info.nPos = std::max(m_info.nPos - kLineStep, m_info.nMin);
        update();
        Notify(SB_LINEUP);
    }
}

void CScrollBarRv::LineDown() {
    if (m_info.nPos < m_info.nMax) {
        m_info.nPos = std::min(m_info.nPos + kLineStep, m_info.nMax);
        update();
        Notify(SB_LINEDOWN);
    }
}

void CScrollBarRv::PageUp() {
    if (m_info.nPos > m_info.nMin) {
        m_info.nPos = std::max(m_info.nPos - m_info.nPage + 1, m_info.nMin);
        update();
        Notify(SB_PAGEUP);
    }
}

void CScrollBarRv::PageDown() {
    if (m_info.nPos < m_info.nMax) {
        m_info.nPos = std::min(m_info.nPos + m_info.nPage - 1, m_info.nMax);
        update();
        Notify(SB_PAGEDOWN);
    }
}

void CScrollBarRv::Notify(uint32_t code) {
    if (m_owner)
        PostWindowMessage(HandleOf(m_owner), WM_VSCROLL_MESSAGE, code, static_cast<std::intptr_t>(HandleOf(this)));
}

void CScrollBarRv::OnSize() {
    const int range = m_info.nMax - m_info.nMin;
    setVisible(range >= 1);
    m_client = rect();
    const int h = m_client.height();
    m_upRect = QRect(0, 0, m_client.width(), kZone);
    m_downRect = QRect(0, h - kZone, m_client.width(), kZone);
    int length = 0;
    if (h > 55 && range >= 1) {
        length =
            range < m_info.nPage ? (h - 40) * m_info.nPage / (range + m_info.nPage) : (h - 40) * m_info.nPage / range;
        length = std::max(length, 10);
    }
    m_thumbLength = length;
    m_thumbBase = QRect(0, kZone, m_client.width(), length);
    update();
}

QRect CScrollBarRv::Thumb() const {
    const int range = m_info.nMax - m_info.nMin;
    if (range < 1 || m_thumbLength == 0) return QRect();
    const int travel = m_client.height() - m_thumbLength - 40;
    return m_thumbBase.translated(0, travel * (m_info.nPos - m_info.nMin) / range);
}

void CScrollBarRv::paintEvent(QPaintEvent*) {
    // Drawn whole into a buffer, then copied: no flicker while dragging.
    QImage buffer(size(), QImage::Format_RGB32);
    buffer.fill(Qt::white);
    const QRect thumb = Thumb();
    if (!thumb.isEmpty()) {
        QPainter p(&buffer);
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setPen(QPen(m_thumbColour, 1));
        p.setBrush(m_thumbColour);
        const qreal radius = std::min<qreal>(5.0, thumb.width() / 2.0);
        p.drawRoundedRect(QRectF(thumb).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    }
    QPainter(this).drawImage(0, 0, buffer);
}

void CScrollBarRv::resizeEvent(QResizeEvent*) { OnSize(); }

bool CScrollBarRv::event(QEvent* e) {
    if (e->type() == WindowMessageEvent::EventType()) {
        auto* m = static_cast<WindowMessageEvent*>(e);
        if (m->Message() == WM_SIZE_MESSAGE) OnSize();
        if (m->Message() == WM_TIMER_MESSAGE) OnTimer(m->WParam());
        return true;
    }
    if (e->type() == QEvent::Wheel) return false;  // the owner's wheel scrolls by lines
    return QWidget::event(e);
}

void CScrollBarRv::OnTimer(std::uintptr_t id) {
    if (++m_repeat <= 5) return;
    switch (id) {
        case 2: LineUp(); break;
        case 3: LineDown(); break;
        case 4: PageUp(); break;
        case 5: PageDown(); break;
        default: break;
    }
}

void CScrollBarRv::LeftDown(QPoint p) {
    grabMouse();
    const QRect thumb = Thumb();
    const WindowHandle self = HandleOf(this);
    m_repeat = 0;
    if (thumb.contains(p)) {
        m_dragging = true;
        m_thumbColour = kThumbLit;
        m_dragOffset = p - thumb.center();
        update();
    } else if (m_upRect.contains(p)) {
        LineUp();
        SetTimer(self, 2, 100);
    } else if (m_downRect.contains(p)) {
        LineDown();
        SetTimer(self, 3, 100);
    } else if (!thumb.isEmpty() && p.y() < thumb.top()) {
        PageUp();
        SetTimer(self, 4, 100);
    } else if (!thumb.isEmpty() && p.y() > thumb.bottom()) {
        PageDown();
        SetTimer(self, 5, 100);
    }
}

void CScrollBarRv::mousePressEvent(QMouseEvent* event) {
    const QPoint p = event->position().toPoint();
    if (event->button() == Qt::LeftButton) {
        LeftDown(p);
    } else if (event->button() == Qt::RightButton) {
        if (m_downRect.contains(p)) {
            m_info.nPos = m_info.nMax;
            update();
            Notify(SB_BOTTOM);
        } else if (m_upRect.contains(p)) {
            m_info.nPos = m_info.nMin;
            update();
            Notify(SB_TOP);
        } else {
            PositionFromPoint(p, SB_THUMBPOSITION);
        }
    }
}

void CScrollBarRv::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) LeftDown(event->position().toPoint());
}

void CScrollBarRv::Reset() {
    m_thumbColour = kThumb;
    m_dragging = false;
    m_overHotZone = false;
    m_overThumb = false;
    const WindowHandle self = HandleOf(this);
    for (std::uintptr_t id = 2; id <= 5; ++id) KillTimer(self, id);
    update();
}

void CScrollBarRv::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    releaseMouse();
    const bool wasDragging = m_dragging;
    Reset();
    if (wasDragging) {
        m_dragging = true;  // the drag offset still counts for the last position
        PositionFromPoint(event->position().toPoint(), SB_THUMBPOSITION);
        m_dragging = false;
    }
}

void CScrollBarRv::PositionFromPoint(QPoint p, uint32_t code) {
    const int range = m_info.nMax - m_info.nMin;
    const int travel = m_client.height() - m_thumbLength - 40;
    if (range < 1 || travel <= 0) return;
    int y = p.y() - kZone - m_thumbLength / 2;
    if (m_dragging) y -= m_dragOffset.y();
    const long long pos = m_info.nMin + static_cast<long long>(range) * y / travel;
    m_info.nPos = static_cast<int>(std::clamp<long long>(pos, m_info.nMin, m_info.nMax));
    m_info.nTrackPos = m_info.nPos;
    update();
    Notify(code);
}

void CScrollBarRv::mouseMoveEvent(QMouseEvent* event) {
    const QPoint p = event->position().toPoint();
    m_overHotZone = m_upRect.contains(p) || m_downRect.contains(p);
    setCursor(m_overHotZone ? Qt::PointingHandCursor : Qt::ArrowCursor);
    if (!m_dragging) {
        const bool over = Thumb().contains(p);
        if (over != m_overThumb) {
            m_overThumb = over;
            m_thumbColour = over ? kThumbLit : kThumb;
            update();
        }
    } else {
        PositionFromPoint(p, SB_THUMBTRACK);
    }
}

void CScrollBarRv::leaveEvent(QEvent*) {
    if (!m_dragging) Reset();
}

}  // namespace marrowfin
