#pragma once
// CDomodalDlg: the invisible wait of the feedback button. It keeps the
// panel's caller in a loop of its own while the host's feedback form is open
// and reminds the host every third tick of its 800 ms timer.

#include <QDialog>
#include <cstdint>

#include "panel/model/panel_numbers.h"

namespace marrowfin {

class CBrindleDlg;

class CDomodalDlg final : public QDialog {
    Q_OBJECT
public:
    static constexpr std::uintptr_t kTimerId = kTimerFeedbackWait;
    static constexpr unsigned kPeriodMs = kFeedbackWaitMs;

    explicit CDomodalDlg(CBrindleDlg& panel);

    // Ticks counted since the last notice (0 to 2).
    int TickCount() const { return m_ticks; }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void OnTimer();

    CBrindleDlg& m_panel;
    int m_ticks = 0;
};

}  // namespace marrowfin
