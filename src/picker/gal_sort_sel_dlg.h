#pragma once
// CGalSortSelDlg: the little drop-down behind the class manager's "排序∨"
// button. Three choices set the order in which the service lists the
// classes (the option GalDefSort); a choice asks the panel for the class
// table in that order and the picker to reapply it.

#include <QWidget>

#include "platform/window_messages.h"

namespace marrowfin {

class CSkinButton;
class CSelTypeclassButton;

class CGalSortSelDlg : public QWidget {
    Q_OBJECT
public:
    // The choices by control id, in their order on screen.
    static constexpr int kChoiceIds[3] = {1000, 1002, 1001};

    // `owner` is the picker (it gets MsgPanelCommand 1000), `sortButton` its
    // button 1200 whose `selected` byte means "menu closed", `panel` the
    // window that gets MsgPanelCommand 24. A popup of `owner`, hidden.
    CGalSortSelDlg(QWidget* owner, CSkinButton* sortButton, WindowHandle panel);

    // Checks the choice, closes the menu, writes GalDefSort (id less 1000)
    // and asks for the class table in the new order, even when the choice
    // was the current one.
    void ChooseSort(int id);
    // Hides the menu and resets the sort button to "排序∨".
    void CloseMenu();
    // Shows the menu under the sort button: left less 50 units, at its bottom.
    void PopUpBelow(const QRect& buttonOnScreen);

    CSelTypeclassButton* Choice(int id) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    void OnInitDialog();

    QWidget* m_owner = nullptr;
    CSkinButton* m_sortButton = nullptr;
    WindowHandle m_panel = 0;
    CSelTypeclassButton* m_choices[3] = {};
};

}  // namespace marrowfin
