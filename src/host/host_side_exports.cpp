// Functions the host calls on its own side of the link: naming its windows
// and sending its orders to the panel.

#include <QObject>
#include <QWidget>

#include "host/boundary.h"
#include "host/panel_access.h"
#include "host/string_arg.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/model/panel_messages.h"
#include "platform/qt/qt_window_system.h"

using namespace marrowfin;

namespace {

// Orders go to the panel only; any other handle answers 0 untouched.
bool IsPanel(uint64_t window) {
    CBrindleDlg* panel = ExistingPanel();
    return panel && window != 0 && static_cast<uint64_t>(panel->Handle()) == window;
}

}  // namespace

extern "C" MARROWFIN_API uint64_t MarrowfinWindowOf(void* qobject) {
    return Shielded<uint64_t>(0, [qobject] {
        return static_cast<uint64_t>(InstallQtWindowSystem().HandleOf(static_cast<QObject*>(qobject)));
    });
}

extern "C" MARROWFIN_API void MarrowfinSetMainWindow(void* qwidget) {
    Shielded([qwidget] {
        InstallQtWindowSystem();
        SetApplicationMainWindow(static_cast<QWidget*>(qwidget));
    });
}

extern "C" MARROWFIN_API intptr_t MarrowfinSendPanelControl(uint64_t panel, uintptr_t code, intptr_t lParam) {
    return Shielded<intptr_t>(0, [=]() -> intptr_t {
        if (!IsPanel(panel)) return 0;
        return InstallQtWindowSystem().Send(static_cast<WindowHandle>(panel),
                                            WindowMessage{GalleryPanelControl, code, lParam, nullptr});
    });
}

extern "C" MARROWFIN_API intptr_t MarrowfinSendCopyData(uint64_t panel, uintptr_t code, const char16_t* text) {
    return Shielded<intptr_t>(0, [=]() -> intptr_t {
        // Copied first: the panel may run a modal loop in which the host reuses its buffer.
        const std::u16string copy = TakeHostText(text);
        if (!IsPanel(panel)) return 0;
        CopyDataStruct data;
        data.dwData = code;
        data.cbData = static_cast<uint32_t>((copy.size() + 1) * sizeof(char16_t));
        data.lpData = copy.c_str();
        return InstallQtWindowSystem().Send(
            static_cast<WindowHandle>(panel),
            WindowMessage{WM_COPYDATA_MESSAGE, 0, reinterpret_cast<intptr_t>(&data), nullptr});
    });
}
