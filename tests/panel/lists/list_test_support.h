#pragma once
// Helpers of the list tests: an owner window that records the window
// messages posted to it, the two row lists placed as the panel places them,
// real clicks through the platform's window, and image comparisons of rows.

#include <QColor>
#include <QImage>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/model/block_row.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {

struct Recorded {
    uint32_t message;
    std::uintptr_t wParam;
    std::intptr_t lParam;
    bool operator==(const Recorded&) const = default;
};

class RecordingOwner final : public QWidget {
public:
    std::vector<Recorded> messages;
    // Lets posted messages arrive, then answers and forgets them.
    std::vector<Recorded> Take();

protected:
    bool event(QEvent* event) override;
};

// The panel's colours the probes look for.
inline const QColor kAccent(0x29, 0x75, 0xE6);
inline const QColor kBoutique(0xBB, 0x9D, 0x6A);
inline const QColor kBand(0xF2, 0xF3, 0xF5);
inline const QColor kHoverFill(0xCE, 0xE8, 0xFE);

// An owner window with the class list where the panel has it: 132 by 295
// units (ten rows) from `left`, 12 units down, holding the first `rows` of
// a fixed set of class names.
struct ClassBoard {
    static constexpr int kFullRows = 10, kRowUnits = 28;
    RecordingOwner owner;
    CClassListCtrl* list = nullptr;

    explicit ClassBoard(float rate, int rows = 0, int left = 1);
    // Another list on the same owner.
    CClassListCtrl* Add(int left, int rows);
    void Fill(int rows);  // replaces the rows
    int Hot() const { return list->HoverRow(); }
    bool InClient(int row) const { return list->IsRowInClient(row); }
    QPoint Centre(int row) const { return list->RowRect(row).center(); }
};

// The result list where the panel has it: 740 by 343 units (five rows and a
// part), showing `rows`.
struct SearchBoard {
    static constexpr int kFullRows = 5, kRowUnits = 60;
    RecordingOwner owner;
    CSearchListCtrl* list = nullptr;
    std::vector<BlockRow> rows;

    explicit SearchBoard(float rate, int rowCount = 0, int heightUnits = 343);
    // `count` plain rows of one block, handed to the list.
    void Fill(int count);
    int Hot() const { return list->HotRow(); }
    bool InClient(int row) const { return list->rect().contains(list->RowRect(row)); }
    QPoint Centre(int row) const { return list->RowRect(row).center(); }
    // A point, or an area, of row `row` in units from the row's corner.
    QPoint At(int row, int x, int y) const { return list->RowRect(row).topLeft() + QPoint(ScaleUnits(x), ScaleUnits(y)); }
    QRect Area(int row, int l, int t, int r, int b) const {
        return ScaleRect(l, t, r, b).translated(list->RowRect(row).topLeft());
    }
};

BlockRow MakeRow(const char* name, const char* subclass, int state);

// A click (or double click) delivered through the top-level window, as the
// platform delivers it.
void ClickAt(QWidget* widget, QPoint pos, Qt::MouseButton button = Qt::LeftButton, bool twice = false);
inline void DoubleClickAt(QWidget* widget, QPoint pos) { ClickAt(widget, pos, Qt::LeftButton, true); }
// A wheel turn of `delta` eighths of a degree over `pos`.
void WheelAt(QWidget* widget, QPoint pos, int delta);
void Pump(int ms);
// Shows the window and waits until it is exposed.
bool ShowAndWait(QWidget* window);
// Whether the two images differ anywhere inside `area`.
bool Differs(const QImage& a, const QImage& b, const QRect& area);
// Whether `area` of `a` shows the same pixels as `b` at `atB` (same size).
bool SameBlock(const QImage& a, const QRect& area, const QImage& b, QPoint atB);

}  // namespace marrowfin::test
