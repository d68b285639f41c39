#pragma once
// CSelClassDlg: the class manager. The user picks the classes the panel
// shows; nothing reaches Show.xml until "完成". Without a class table the
// window shows its failure face and "重新加载" asks the service again, on a
// worker, while the button waits.
//
// It is modal to the panel only and runs without a loop of its own: Open()
// returns at once and `onFinished` runs when the window has ended, so the
// host and the panel's workers go on meanwhile.

#include <QDialog>
#include <functional>
#include <string>

#include "panel/classes/class_table.h"
#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"

namespace marrowfin {

class CGalleryTypeDlg;
class CGalSortSelDlg;
class CScrollBarRv;
class CSkinButton;

class CSelClassDlg : public QDialog {
    Q_OBJECT
public:
    // `panel` stands below the manager: it leaves top-most for the manager's
    // life. `table` is the panel's class table, read and reloaded in place.
    CSelClassDlg(QWidget* panel, ClassTable& table);
    ~CSelClassDlg() override;

    bool m_tableMissing = false;
    bool m_wantSearch = false;
    bool m_showSearchTip = true;
    bool m_showDesc = false;
    // The panel is still fetching its first table: the window waits for it.
    bool m_tableComing = false;

    // The panel applies a fetched table (and refreshes what shows it).
    std::function<void(const std::u16string& text)> applyTable;
    // The panel window that gets the sort selector's command 24.
    WindowHandle panelHandle = 0;
    // The picker's ClearSelection: the panel forgets the class it shows.
    std::function<void()> onSelectionCleared;
    // Runs once the window has ended, with its result (1 after "完成").
    std::function<void(int result, bool wantSearch)> onFinished;

    // Builds the window and shows it modal to the panel; returns at once.
    void Open();

    // The panel applied a class table (or its fetch ended): a failure face
    // gives way to the picker, or stops waiting.
    void TableChanged();
    void Finish();  // button 999
    void ToggleSortMenu();
    void CloseSearchTip();
    void ScrollPicker();
    void UpdateScrollRange();

    CGalleryTypeDlg* Picker() const { return m_picker; }
    CScrollBarRv* ScrollBar() const { return m_scrollBar; }
    CGalSortSelDlg* SortMenu() const { return m_pSortDlg; }
    CSkinButton* Button(int id) const;
    bool Reloading() const { return m_reloading; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void OnInitDialog();
    void CreateButtons();
    void MakePicker();
    void Layout();
    void OnTableFetched(const std::u16string& text);

    QWidget* m_panel = nullptr;
    bool m_panelWasTopMost = false;
    ClassTable& m_table;
    CSkinButton* m_buttons[6] = {};  // 996, 1000, 999, 998, 997, 1200
    CScrollBarRv* m_scrollBar = nullptr;
    CGalleryTypeDlg* m_picker = nullptr;
    CGalSortSelDlg* m_pSortDlg = nullptr;
    bool m_reloading = false;
    bool m_built = false;
    QPoint m_dragFrom;
    bool m_dragging = false;
};

}  // namespace marrowfin
