#pragma once
// CClassListCtrl: the panel's left column of classes. Rows are texts; the
// owner finds what a row means. A click posts MsgPanelCommand 21 with the row
// to the owner window; the owner selects. Rows are 28 units plus one pixel
// high on one column of 112 units; the skin's list scroll bar shows over the
// right edge while the rows overflow.

#include <QString>
#include <QStringList>
#include <QWidget>
#include <functional>

namespace marrowfin {

class CScrollBarEx;

class CClassListCtrl : public QWidget {
    Q_OBJECT
public:
    explicit CClassListCtrl(QWidget* parent = nullptr);
    ~CClassListCtrl() override;

    void DeleteAllItems();
    // Inserts before `row` (at the end when row >= count); answers the row.
    int InsertItem(int row, const QString& text);
    int GetItemCount() const;
    QString GetItemText(int row) const;

    int GetSelectedRow() const;  // -1 when none
    void SetSelectedRow(int row);  // selects (or clears with -1) and repaints
    int HoverRow() const;  // -1 when the mouse is on no row
    bool IsRowInClient(int row) const;  // the row's rectangle lies inside the client area
    void EnsureVisible(int row);

    // The top row shown, the bar's state and the row geometry (client pixels).
    int FirstVisibleRow() const;
    bool IsScrollBarShown() const;
    CScrollBarEx* ScrollBar() const;
    QRect RowRect(int row) const;  // empty for no row
    int RowAt(QPoint point) const;  // -1 when the point is on no row

    // Asked while painting: whether the class named by a row text is boutique.
    std::function<bool(const QString& text)> isBoutique;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace marrowfin
