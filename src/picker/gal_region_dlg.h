#pragma once
// The kind tabs of one section of the picker: CGalRegionDlg is the window
// that clips, CGalFullTypeDlg the strip of tabs inside it, which the arrows
// move when the tabs are wider than the region.

#include <QWidget>
#include <functional>
#include <vector>

#include "panel/classes/class_table.h"

namespace marrowfin {

class CSelTypeclassButton;

class CGalFullTypeDlg : public QWidget {
    Q_OBJECT
public:
    // Tabs for the kinds of the section's table, the current one checked;
    // `onSelect` runs for a clicked tab.
    CGalFullTypeDlg(QWidget* region, const KindMap& kinds, bool isBoutique,
                    std::function<void(CSelTypeclassButton*)> onSelect);

    std::vector<CSelTypeclassButton*> m_tabs;
    CSelTypeclassButton* m_curTab = nullptr;
    bool m_isBoutique = false;
    // Width of the tabs side by side, in pixels.
    int StripWidth() const { return width(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

class CGalRegionDlg : public QWidget {
    Q_OBJECT
public:
    CGalRegionDlg(QWidget* parent, const KindMap& kinds, bool isBoutique,
                  std::function<void(CSelTypeclassButton*)> onSelect);

    CGalFullTypeDlg* m_pStrip = nullptr;
    bool m_isBoutique = false;
    // The strip is wider than 800 units: the region narrows and the arrows show.
    bool m_overflow = false;

    // Moves the strip 50 units (less at its ends): +1 toward its left end, -1 toward its right.
    void ScrollStrip(int direction);

protected:
    void paintEvent(QPaintEvent* event) override;
};

// The kind name a section opens on: the one shown last when the table still
// has it, else the table's first.
std::u16string CurrentKind(const KindMap& kinds, const std::u16string& remembered);

}  // namespace marrowfin
