#pragma once
// The host's feedback form (notice 13). While it is open the panel waits;
// closing it, sent or not, hands the user number back to the panel.

#include <QDialog>

class QPlainTextEdit;

namespace marrowfin::demo {

class FeedbackDialog : public QDialog {
    Q_OBJECT
public:
    explicit FeedbackDialog(QWidget* parent = nullptr);
    QPlainTextEdit* textField() const { return m_text; }

private:
    QPlainTextEdit* m_text;
};

}  // namespace marrowfin::demo
