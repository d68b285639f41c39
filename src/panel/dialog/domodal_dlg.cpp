#include "panel/dialog/domodal_dlg.h"

#include <QEventLoop>
#include <QKeyEvent>

#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"

namespace marrowfin {

CDomodalDlg::CDomodalDlg(CBrindleDlg& panel) : QDialog(nullptr, Qt::FramelessWindowHint | Qt::Tool), m_panel(panel) {
    setObjectName(QStringLiteral("CDomodalDlg"));
    // A window of no size: it exists only for its modal loop and its timer.
    setFixedSize(0, 0);
    setAttribute(Qt::WA_TranslucentBackground);
}

void CDomodalDlg::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    resize(0, 0);
    SetTimer(HandleOf(this), kTimerId, kPeriodMs);
}

bool CDomodalDlg::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        if (message->Message() == WM_TIMER_MESSAGE && message->WParam() == kTimerId) OnTimer();
        return true;
    }
    return QDialog::event(event);
}

void CDomodalDlg::keyPressEvent(QKeyEvent* event) {
    // Enter would accept the dialog and end the wait behind the host's back.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void CDomodalDlg::OnTimer() {
    if (m_panel.userId != -2 || !ObjectOf(m_panel.hostWindow)) {
        (void)KillTimer(HandleOf(this), kTimerId);
        accept();
        return;
    }
    if (++m_ticks < 3) return;
    m_ticks = 0;
    (void)PostHostNotice(m_panel.hostWindow, m_panel.Handle(), MARROWFIN_NOTICE_FEEDBACK_WAITING);
}

int RunFeedbackWait(CBrindleDlg& panel) {
    // A loop of its own rather than exec(): exec() would make the dialog
    // application-modal, and the host's feedback form must stay usable while
    // the panel waits for it. The panel itself is disabled by the caller.
    CDomodalDlg wait(panel);
    QEventLoop loop;
    QObject::connect(&wait, &QDialog::finished, &loop, &QEventLoop::quit);
    wait.show();
    loop.exec();
    return wait.result();
}

}  // namespace marrowfin
