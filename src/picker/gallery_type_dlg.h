#pragma once
// CGalleryTypeDlg: the class manager's catalogue. Every class of the class
// table is a button, grouped in the boutique and the general section and,
// within a section, by kind behind a row of tabs. A click adds the class to
// the selection (newest first) or takes it out. The contents scroll as a
// whole inside the manager; the picker reports its content height.

#include <QWidget>
#include <functional>
#include <map>
#include <vector>

#include "panel/classes/class_table.h"
#include "picker/class_selection.h"

namespace marrowfin {

class CGalRegionDlg;
class CSelTypeclassButton;

class CGalleryTypeDlg : public QWidget {
    Q_OBJECT
public:
    // Reads `table` while it lives (the panel may replace its contents; the
    // picker reads it only in its own operations). `selection` is Show.xml
    // as the manager read it; names the table no longer knows are dropped.
    CGalleryTypeDlg(QWidget* parent, const ClassTable& table, bool showDesc, ClassSelection selection);
    // Writes NewAddGalleryType.xml, so that cleared marks stay cleared after a cancel too.
    ~CGalleryTypeDlg() override;

    ClassSelection m_selection;
    int m_contentHeight = 0;  // pixels
    int m_lastOffset = 0;  // the scroll position the contents stand at
    bool m_boutiqueOpen = true;
    bool m_generalOpen = true;

    // The manager's scroll range follows the content height.
    std::function<void()> onContentChanged;
    // The panel forgets the class it shows once the selection is cleared.
    std::function<void()> onSelectionCleared;

    void ToggleClass(CSelTypeclassButton* button);
    void ClearSelection();
    void ToggleSection(int id);  // 1000 boutique, 1001 general
    void SelectKind(CSelTypeclassButton* tab, bool boutique);
    void RefreshButtons(bool reopen);
    // Moves the contents by `dy` pixels (the manager's scroll bar moved).
    void ScrollContents(int dy);

    // For the manager and the tests.
    const std::vector<CSelTypeclassButton*>& ClassButtons() const { return m_classButtons; }
    CSelTypeclassButton* VisibleClassButton(const QString& name) const;
    CGalRegionDlg* Region(bool boutique) const { return boutique ? m_boutiqueRegion : m_generalRegion; }
    CSelTypeclassButton* Tab(bool boutique, const QString& kind) const;
    CSelTypeclassButton* SectionTitle(bool boutique) const { return boutique ? m_boutiqueTitleBtn : m_generalTitleBtn; }
    CSelTypeclassButton* Arrow(int id) const;

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    using Groups = std::map<std::u16string, std::vector<CSelTypeclassButton*>>;
    void BuildButtons();
    CSelTypeclassButton* MakeClassButton(const ClassItem& item, int id);
    void Decorate(CSelTypeclassButton* button, const ClassItem& item, bool toolWithDesc);
    // Places both sections from the top; the height follows the content.
    void Relayout();
    // Places the current kind's buttons from `top` (pixels); answers the last bottom, or -1 when none.
    int PlaceGroup(Groups& groups, const std::u16string& current, bool open, int top);
    void ScrollStrip(bool boutique, int direction);

    const ClassTable& m_table;
    bool m_showDesc = false;
    QWidget* m_canvas = nullptr;  // holds every child; moved to scroll
    std::vector<CSelTypeclassButton*> m_classButtons;
    Groups m_generalGroups, m_boutiqueGroups;
    CGalRegionDlg* m_boutiqueRegion = nullptr;
    CGalRegionDlg* m_generalRegion = nullptr;
    CSelTypeclassButton* m_arrows[4] = {};  // 1002 to 1005
    CSelTypeclassButton* m_boutiqueTitleBtn = nullptr;
    CSelTypeclassButton* m_generalTitleBtn = nullptr;
};

}  // namespace marrowfin
