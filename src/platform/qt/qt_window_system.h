#pragma once
// The Qt side of the window interface: a registry that gives live QObjects
// opaque handles, and message delivery through WindowMessageEvent. Handles are
// never reused, so a handle of a destroyed window stays dead for good.

#include <QObject>
#include <mutex>
#include <unordered_map>

#include "platform/window_messages.h"

namespace marrowfin {

class QtWindowSystem final : public WindowSystem {
public:
    // The process-wide instance; installed as the current window system by
    // InstallQtWindowSystem. Needs a QCoreApplication (the host's) to deliver.
    static QtWindowSystem& Instance();

    // The handle of `object`, registered on first use; 0 for null.
    WindowHandle HandleOf(QObject* object);
    // The live object behind a handle, or null. Only meaningful on the GUI thread.
    QObject* ObjectOf(WindowHandle window) const;

    bool IsWindow(WindowHandle window) const override;
    bool Post(WindowHandle window, WindowMessage message) override;
    std::intptr_t Send(WindowHandle window, WindowMessage message) override;

private:
    QtWindowSystem() = default;
    void Forget(WindowHandle window);

    mutable std::mutex m_lock;
    std::unordered_map<WindowHandle, QObject*> m_objects;
    std::unordered_map<const QObject*, WindowHandle> m_handles;
    WindowHandle m_next = 0x10000;
};

// Installs the Qt window system as the platform's current one (idempotent).
QtWindowSystem& InstallQtWindowSystem();

// Shorthands for widgets.
inline WindowHandle HandleOf(QObject* object) { return QtWindowSystem::Instance().HandleOf(object); }
inline QObject* ObjectOf(WindowHandle window) { return QtWindowSystem::Instance().ObjectOf(window); }

}  // namespace marrowfin
