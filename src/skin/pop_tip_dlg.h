#pragma once
// CPopTipDlg: the module's message box, in the skin: a title, one or two
// lines, one or two buttons. exec() answers 1 for the first button and 2 for
// the second, the close button and Esc.

#include <QDialog>

namespace marrowfin {

class CSkinButton;

class CPopTipDlg : public QDialog {
    Q_OBJECT
public:
    explicit CPopTipDlg(QWidget* parent = nullptr);

    void Configure(const QString& title, bool twoButtons, const QString& text1, const QString& text2,
                   const QString& okText, const QString& cancelText);
    // Builds the window; exec() calls it, tests may call it to look without a loop.
    void OnInitDialog();
    int DoModal() { return exec(); }

    const QString& FirstLine() const { return m_text1; }
    CSkinButton* OkButton() const { return m_ok; }
    CSkinButton* CancelButton() const { return m_cancel; }
    CSkinButton* CloseButton() const { return m_close; }

    int exec() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString m_title, m_text1, m_text2, m_okText, m_cancelText;
    bool m_twoLines = false, m_configured = false, m_twoButtons = false, m_built = false;
    CSkinButton* m_ok = nullptr;
    CSkinButton* m_cancel = nullptr;
    CSkinButton* m_close = nullptr;
};

}  // namespace marrowfin
