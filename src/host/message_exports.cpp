// Exports that the host's event loop calls for every event: whether the
// panel consumes an event, and whether a window is one of the panel's.

#include <QEvent>
#include <QObject>
#include <QWidget>

#include "host/boundary.h"
#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"

namespace {

// Widgets only: Qt hands an input event first to the top-level QWindow and
// then to the widget; the widget's delivery is the one that stands for the
// window message, so each event is walked once.
bool IsPanelOrDescendant(const marrowfin::CBrindleDlg& panel, QObject* receiver) {
    if (!receiver || !receiver->isWidgetType()) return false;
    for (QObject* at = receiver; at; at = at->parent()) {
        if (at == &panel) return true;
        // A window of its own (the class manager, a tip) is modal: the panel
        // does not pre-translate what belongs to it.
        if (static_cast<QWidget*>(at)->isWindow()) return false;
    }
    return false;
}

}  // namespace

using namespace marrowfin;

extern "C" MARROWFIN_API int GaDllPretanslateMsg(MarrowfinMsg* message) {
    return Shielded(0, [message] {
        CBrindleDlg* panel = ExistingPanel();
        // Hidden or missing: answered before the message is even read.
        if (!panel || !panel->isVisible()) return 0;
        if (!message || !message->event) return 0;
        auto* receiver = static_cast<QObject*>(message->receiver);
        if (!IsPanelOrDescendant(*panel, receiver)) return 0;
        return panel->PreTranslateMessage(receiver, static_cast<QEvent*>(message->event)) ? 1 : 0;
    });
}

extern "C" MARROWFIN_API int IsDLLHwnd(uint64_t window) {
    return Shielded(0, [window] {
        CBrindleDlg* panel = ExistingPanel();
        return panel && window != 0 && panel->IsOwnWindow(static_cast<WindowHandle>(window)) ? 1 : 0;
    });
}
