#pragma once
// ShareSelComboBox: the hidden combo box behind a painted choice field. Its
// owner opens the list from a click on the field; a choice is remembered as
// `m_current`, told to the owner by message 1124 (wParam 2) and closes the list.

#include <QComboBox>

namespace marrowfin {

// Posted to the owner when a row was chosen; wParam 2.
inline constexpr uint32_t MsgComboChoice = 1124;
inline constexpr uintptr_t kComboChoiceMade = 2;

class ShareSelComboBox : public QComboBox {
    Q_OBJECT
public:
    // Rows `rowUnits` base units high (16, 20 in the share dialog); hidden.
    ShareSelComboBox(QWidget* owner, int rowUnits, const QRect& rect, int id);

    int m_current = 0;
    int ControlId() const { return m_id; }

    // Opens the list under the field the owner paints where the box lies.
    void ShowDropDown();
    // The text of the row `m_current`, or empty.
    QString CurrentText() const;

private:
    void OnChosen(int index);

    QWidget* m_owner = nullptr;
    int m_id = 0;
};

}  // namespace marrowfin
