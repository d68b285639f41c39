#pragma once
// CSearchListCtrl: the owner-drawn result rows of the search pages. It shows
// the owner's rows; it never copies them. Rows are 60 units plus one pixel
// high on one column of 723 units, scrolled whole by the skin's list scroll
// bar and the wheel. The mouse's row and zone and the selected row go to the
// painter; a press selects its row and notes it as the clicked row.
//
// What it tells its owner window (SetOwner), as a list control notifies its
// parent: a press restarts the owner's timer of its zone (2003 "收藏",
// 2002 "使用", 2004 the class line) and a double click on the picture or the
// texts restarts 2002, the owner reading ClickedRow when the timer fires;
// rows that come into view are sent as MsgPanelCommand 9 (the cache hint),
// and every row drawn posts MsgPanelCommand 18 (its display data asked for).

#include <QWidget>
#include <vector>

#include "panel/model/block_row.h"
#include "platform/window_messages.h"

namespace marrowfin {

class CScrollBarEx;

class CSearchListCtrl : public QWidget {
    Q_OBJECT
public:
    explicit CSearchListCtrl(QWidget* parent = nullptr);
    ~CSearchListCtrl() override;

    // The window that hears the list's commands and owns the row timers; 0 for none.
    void SetOwner(WindowHandle owner);

    // The rows to show (the panel's m_search.rows); null shows none. Repaints.
    void SetRows(std::vector<BlockRow>* rows);
    int GetItemCount() const;
    // The key of the highlight rule (m_search.lastSearch).
    void SetSearchKey(const QString& key);

    // Call SetRows again whenever the owner's rows were replaced, added or
    // removed: it scrolls to the top, clears the selection and measures the
    // class lines anew. A row that only changed its state needs RedrawRow.
    void RedrawRow(int row);

    int GetSelectedRow() const;  // -1 when none
    void SetSelectedRow(int row);  // a row that isn't there clears it
    int HotRow() const;  // the row under the mouse, -1 for none (m_hotRow)
    int HotZone() const;  // its zone, SearchRowZone (m_hotZone)
    int ClickedRow() const;  // the row of the last press, -1 before one (m_clickedRow)
    // The class line's width as first drawn, 0 before (m_lineWidths).
    int LineWidth(int row) const;

    void EnsureVisible(int row);
    int FirstVisibleRow() const;
    bool IsScrollBarShown() const;
    CScrollBarEx* ScrollBar() const;
    QRect RowRect(int row) const;  // empty for no row
    int RowAt(QPoint point) const;  // -1 when the point is on no row

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace marrowfin
