#include "panel/dialog/host_requests.h"

#include <QCoreApplication>
#include <QPointer>
#include <memory>

#include "marrowfin/marrowfin.h"
#include "platform/qt/qt_window_system.h"

namespace marrowfin {

namespace {

// A QPointer, so that a host that deletes its main window leaves no dangling
// parent behind for a panel made later.
QPointer<QWidget>& MainWindowSlot() {
    static QPointer<QWidget> window;
    return window;
}

}  // namespace

QWidget* ApplicationMainWindow() { return MainWindowSlot().data(); }

void SetApplicationMainWindow(QWidget* window) { MainWindowSlot() = window; }

bool PostHostInsertion(WindowHandle host, uint32_t code, std::u16string path) {
    QObject* target = ObjectOf(host);
    if (!target || !QCoreApplication::instance()) return false;
    // The event owns the path until the host takes it; a host that never
    // takes it (or dies before the event is delivered) frees it with the event.
    QCoreApplication::postEvent(target, new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_REQUEST, code, 0,
                                                               std::make_unique<std::u16string>(std::move(path))));
    return true;
}

void SendHostRequest(WindowHandle host, uint32_t code, void* answer) {
    QObject* target = ObjectOf(host);
    if (!target) return;  // no host: the preset answer stands
    MarrowfinHostEvent event(MARROWFIN_GALLERY_HOST_REQUEST, code, reinterpret_cast<intptr_t>(answer));
    QCoreApplication::sendEvent(target, &event);
}

bool PostHostNotice(WindowHandle host, WindowHandle panel, int notice) {
    QObject* target = ObjectOf(host);
    if (!target || !QCoreApplication::instance()) return false;
    QCoreApplication::postEvent(target, new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_NOTICE, panel, notice));
    return true;
}

}  // namespace marrowfin
