#pragma once
// CScrollBarRv: a vertical scroll bar drawn from scratch, for a child that is
// moved rather than scrolled. Every change of position is posted to the owner
// as the vertical scroll message with its code in wParam and the bar in lParam.

#include <QWidget>

namespace marrowfin {

struct ScrollInfo {
    int cbSize = 28;
    int fMask = 23;
    int nMin = 0;
    int nMax = 100;
    int nPage = 10;
    int nPos = 0;
    int nTrackPos = 0;
};

class CScrollBarRv : public QWidget {
    Q_OBJECT
public:
    explicit CScrollBarRv(QWidget* parent = nullptr);
    // A visible child of `owner` at `rect` (pixels), id 3000.
    void Create(QWidget* owner, const QRect& rect);

    void GetInfo(ScrollInfo& out) const { out = m_info; }
    // Stores the state; the thumb is made anew in message order (a posted size message).
    void SetInfo(const ScrollInfo& in);
    void LineUp();
    void LineDown();
    void PageUp();
    void PageDown();

    const ScrollInfo& Info() const { return m_info; }
    int ThumbLength() const { return m_thumbLength; }
    QRect Thumb() const;
    QColor ThumbColour() const { return m_thumbColour; }
    bool Dragging() const { return m_dragging; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void OnSize();
    void OnTimer(std::uintptr_t id);
    void LeftDown(QPoint p);
    void Reset();
    void PositionFromPoint(QPoint p, uint32_t code);
    void Notify(uint32_t code);

    ScrollInfo m_info;
    QWidget* m_owner = nullptr;
    QRect m_client, m_upRect, m_downRect, m_thumbBase;
    int m_thumbLength = 0;
    QColor m_thumbColour;
    bool m_dragging = false;
    int m_repeat = 0;
    QPoint m_dragOffset;
    bool m_overHotZone = false, m_overThumb = false;
};

}  // namespace marrowfin
