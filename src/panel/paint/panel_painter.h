#pragma once
// The panel paints its background, title, status line and every empty or
// waiting state itself. The dialog fills a PanelPaintState from its fields and
// hands it over; nothing here reads the dialog.

#include <QColor>
#include <QRect>
#include <QString>

class QPainter;

namespace marrowfin {

struct PanelPaintState {
    int page = 1;  // PanelPage
    int classIndex = -1;  // m_nav.classIndex
    int itemCount = 0;  // m_nav.itemCount
    int syncStatus = -1;  // m_nav.syncStatus
    bool emptySubclassOpened = false;  // a gallery subclass was opened and had no blocks ("暂无图块")
    QString selectedName{};  // m_nav.selectedName
    bool searchUntouched = false;  // m_search.searchUntouched
    int searchState = 0;  // m_search.searchState
    int rowCount = 0;  // m_search.rows.size()
    bool searchEnded = false;  // PageSearch: the current search generation is known and has ended
    QString defaultHotWord{};  // g_defaultHotWord
};

struct BlockRow;

// Paints the whole client area (width and height in pixels) for the state.
void PaintPanel(QPainter& painter, const QSize& client, const PanelPaintState& state);

// The look of one result row beyond its data.
struct SearchRowLook {
    bool selected = false;
    int hoverButton = 0;  // 0 none, 1 "收藏", 2 "使用"
    bool hoverLink = false;  // the mouse is on the row's class link
    QString key{};  // m_search.lastSearch
};

// Paints row `row` of the search list into `item` (the list's item rectangle).
// Answers the width of the class line in pixels (the list keeps the first one
// for its link test).
int DrawSearchRow(QPainter& painter, const QRect& item, const BlockRow& row, const SearchRowLook& look);

// Paints one row of the class list. `row` 0 is "最近使用", 1 "我的收藏".
void DrawClassRow(QPainter& painter, const QRect& item, int row, const QString& text, bool boutique, bool selected,
                  bool hover);

// Draws `text` with every occurrence of `key` in the accent colour and the rest in `color`.
void DrawHighlighted(QPainter& painter, const QString& text, const QString& key, const QRect& rect,
                     const QColor& color);

}  // namespace marrowfin

namespace marrowfin {

// The x of the class row's icon cell in the skin sheet (y 88, size 16).
int ClassRowIconX(int row, bool boutique, bool selected);

// The name a result row shows: a trailing ".dwg" (any case) dropped when the
// name is longer than four characters.
QString RowDisplayName(const QString& name);
// The class line of a result row: class, ">", and the subclass from behind
// its first "..".
QString RowClassLine(const BlockRow& row);

// Where the status line's double-click hint stands: at 588 units, or further
// left (never past 530) when the face is too wide to end inside the window.
// A partial repaint of the hint should cover this rectangle.
QRect DoubleClickHintRect(const QSize& client);

}  // namespace marrowfin
