#pragma once
// The scrolling of one row list: its RowWindow, the skin's list scroll bar
// over the list's right edge (shown only while the rows overflow) and the
// wheel. The list calls Relayout when its rows or size change and hears of
// every move of the top row through `onScroll`.

#include <functional>

#include "panel/lists/row_window.h"

class QWidget;
class QWheelEvent;

namespace marrowfin {

class CScrollBarEx;

class ListScroller {
public:
    ListScroller(QWidget* list, std::function<void()> onScroll);
    ListScroller(const ListScroller&) = delete;
    ListScroller& operator=(const ListScroller&) = delete;

    const RowWindow& Window() const { return m_window; }
    CScrollBarEx* Bar() const { return m_bar; }
    // The first pixel column covered by the bar (the list's width without it).
    int RowsRight() const;

    void Relayout(int count, int rowHeight);
    // A wheel turn: lines per notch as the platform sets them, fine wheels
    // gathered until they make a notch. Answers whether the top row moved.
    bool Wheel(const QWheelEvent& event);
    bool EnsureVisible(int row);
    bool SetFirst(int row);

private:
    void SyncBar();
    void Moved();

    QWidget* m_list;
    CScrollBarEx* m_bar;
    std::function<void()> m_onScroll;
    RowWindow m_window;
    int m_wheelRest = 0;
};

}  // namespace marrowfin
