#include "host/panel_access.h"

#include <QApplication>

#include "host/library_entry.h"
#include "panel/dialog/brindle_dlg.h"
#include "platform/qt/qt_window_system.h"

namespace marrowfin {

// Events still reach the host's filter while the panel's window is torn down
// with the host's main window; by then the object is a plain widget, and the
// checked cast answers null where a plain one would be undefined.
CBrindleDlg* ExistingPanel() { return qobject_cast<CBrindleDlg*>(PanelSingleton().data()); }

CBrindleDlg* EnsurePanel(QWidget* parent, const std::function<void(CBrindleDlg&)>& beforeCreate) {
    if (CBrindleDlg* existing = ExistingPanel()) return existing;
    QPointer<QObject>& panel = PanelSingleton();
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return nullptr;
    // Window handles and posted messages need the Qt window system before
    // the panel's start-up sends its first request.
    InstallQtWindowSystem();
    // Stored before Create: the start-up runs exports' helpers that look for it.
    // Lives until the process ends, or until the host destroys the parent.
    auto* made = new CBrindleDlg;
    panel = made;
    if (beforeCreate) beforeCreate(*made);
    made->Create(parent);
    return ExistingPanel();
}

}  // namespace marrowfin
