#pragma once
// CShareDWGblockDlg: shares the user's collection with the service. The user
// picks a kind (shown and remembered, not sent) and presses "分享"; one
// request carrying only the token runs on a worker while a bar creeps on
// timers, then the dialog shows the outcome.

#include <QTimer>
#include <string>
#include <vector>

#include "collection_dialogs/collection_dialog_frame.h"

namespace marrowfin {

class CProgressCtrlOwner;
class ShareSelComboBox;

// The kind shown in the share dialog; outlives it, set anew at each opening.
extern std::u16string g_shareKind;

// The kind rows for the store root's child folders in tree order: all but
// "我的收藏", then "其他" when the root has exactly one child.
std::vector<std::u16string> ShareKindRows(const std::vector<std::u16string>& rootChildren);

class CShareDWGblockDlg : public CCollectionDialogFrame {
    Q_OBJECT
public:
    enum { IdShare = 1001, IdCancel = 1002, IdKindCombo = 1003, IdClose = 1005, IdProgress = 2223 };

    // `rootChildren`: the names of the store root's child folders, in tree order.
    CShareDWGblockDlg(QWidget* parent, std::u16string token, const std::vector<std::u16string>& rootChildren);

    // Shows the dialog modal to its parent; finished() comes when the user
    // closes it. Nothing for the caller to apply.
    void Open() { open(); }

    bool m_started = false;
    int m_result = -1;  // -1 running, 0 failed, 1 done
    bool m_hoverKind = false;
    int m_percent = 5;

    // The bar's steps, 500 ms; the pause before success shows, 2,000 ms.
    // Tests shorten them.
    int m_stepMs = 500;
    int m_settleMs = 2000;

    ShareSelComboBox* KindCombo() const { return m_combo; }
    CProgressCtrlOwner* Progress() const { return m_progress; }
    CSkinButton* ShareButton() const { return m_okButton; }
    CSkinButton* CancelButton() const { return m_cancel; }

protected:
    void PaintBody(QPainter& painter) override;
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void Start();
    void OnStepTimer();
    void OnSettleTimer();
    void PaintOutcome(QPainter& painter, const QString& text, int cellX);

    std::u16string m_token;
    ShareSelComboBox* m_combo = nullptr;
    CProgressCtrlOwner* m_progress = nullptr;
    CSkinButton* m_cancel = nullptr;
    QTimer m_stepTimer;  // 1001
    QTimer m_settleTimer;  // 1002
};

}  // namespace marrowfin
