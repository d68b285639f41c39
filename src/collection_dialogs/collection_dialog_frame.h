#pragma once
// The common frame of the collection's small dialogs: no system frame, a
// white client inside a one-pixel frame of the dialog's colour, the grey
// title strip, a drag by a press in the title rows, and Enter and Esc kept
// from the dialog's default handling. Requests to the service run on panel
// workers: while one is on its way the dialog shows that it waits and takes
// no second press; its answer comes back as a window message, which a dialog
// closed meanwhile never receives.

#include <QColor>
#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

#include "collection/collection_messages.h"
#include "platform/qt/qt_window_system.h"
#include "platform/window_messages.h"
#include "skin/pop_tip_dlg.h"

namespace marrowfin {

class CSkinButton;

class CCollectionDialogFrame : public QDialog {
    Q_OBJECT
public:
    // The tip box open above the dialog, or null.
    CPopTipDlg* CurrentTip() const { return m_tip.data(); }
    // A request is on its way.
    bool Waiting() const { return m_waiting; }

protected:
    struct FrameLook {
        int width = 0, height = 0;  // base units
        QColor frame;
        QString title;
        int titleLeft = 8;  // base units
        int dragRows = 31;  // a press above this many units drags
        bool dragInclusive = true;  // ... or on it
        QColor titleColour{0x33, 0x33, 0x33};
        QRect titleRect;  // base units; empty: from titleLeft across the strip
    };
    CCollectionDialogFrame(QWidget* parent, const FrameLook& look);

    // The body, painted over the frame and the title strip.
    virtual void PaintBody(QPainter& painter) = 0;
    // A message posted to the dialog (a worker's answer, the combo's 1124).
    virtual void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                 MessagePayload* payload);

    // Runs `work` on a panel worker and posts what it returns to this dialog
    // as `message`, its value owned by the message. Marks the dialog waiting
    // (the OK button disabled, a busy cursor); false when no worker started.
    template <class T>
    bool Request(uint32_t message, std::function<T()> work);
    void SetWaiting(bool waiting);

    // Opens a tip over the dialog for `shown`; `then` gets 1 for its first
    // button, 2 for the second or the close button.
    void ShowTip(const CollectionMessage& shown, std::function<void(int)> then);

    CSkinButton* MakeButton(const QString& caption, int kind, const QRect& rect, int id);
    CSkinButton* MakeCloseButton(const QRect& rect, int id);

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    bool StartWorker(std::function<void()> work);

    CSkinButton* m_okButton = nullptr;

private:
    FrameLook m_look;
    bool m_waiting = false;
    bool m_dragging = false;
    QPoint m_dragOffset;
    QPointer<CPopTipDlg> m_tip;
};

// The value a worker's answer carries, or null for another payload.
template <class T>
const T* PayloadValue(MessagePayload* payload) {
    auto* owned = dynamic_cast<OwnedValue<T>*>(payload);
    return owned ? &owned->value : nullptr;
}

template <class T>
bool CCollectionDialogFrame::Request(uint32_t message, std::function<T()> work) {
    if (m_waiting) return false;
    const WindowHandle self = HandleOf(this);
    SetWaiting(true);
    const bool started = StartWorker([self, message, work = std::move(work)] {
        // A dialog gone by now has a dead handle: the answer is dropped with its message.
        (void)PostWindowMessage(self, message, 0, 0, std::make_unique<OwnedValue<T>>(work()));
    });
    if (!started) SetWaiting(false);
    return started;
}

}  // namespace marrowfin
