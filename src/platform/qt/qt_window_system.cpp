#include "platform/qt/qt_window_system.h"

#include <QCoreApplication>

#include "platform/qt/window_message_event.h"

namespace marrowfin {

QtWindowSystem& QtWindowSystem::Instance() {
    static QtWindowSystem* system = new QtWindowSystem;  // lives until the process ends
    return *system;
}

QtWindowSystem& InstallQtWindowSystem() {
    QtWindowSystem& system = QtWindowSystem::Instance();
    InstallWindowSystem(&system);
    return system;
}

WindowHandle QtWindowSystem::HandleOf(QObject* object) {
    if (!object) return 0;
    WindowHandle handle = 0;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        auto it = m_handles.find(object);
        if (it != m_handles.end()) return it->second;
        handle = m_next++;
        m_handles.emplace(object, handle);
        m_objects.emplace(handle, object);
    }
    // Emitted from ~QObject before its pending events are removed: a Post that
    // still found the object under the lock has queued an event Qt will free.
    QObject::connect(
        object, &QObject::destroyed, object, [this, handle] { Forget(handle); }, Qt::DirectConnection);
    return handle;
}

void QtWindowSystem::Forget(WindowHandle window) {
    std::lock_guard<std::mutex> guard(m_lock);
    auto it = m_objects.find(window);
    if (it == m_objects.end()) return;
    m_handles.erase(it->second);
    m_objects.erase(it);
}

QObject* QtWindowSystem::ObjectOf(WindowHandle window) const {
    std::lock_guard<std::mutex> guard(m_lock);
    auto it = m_objects.find(window);
    return it == m_objects.end() ? nullptr : it->second;
}

bool QtWindowSystem::IsWindow(WindowHandle window) const { return ObjectOf(window) != nullptr; }

bool QtWindowSystem::Post(WindowHandle window, WindowMessage message) {
    auto event = std::make_unique<WindowMessageEvent>(std::move(message));
    std::lock_guard<std::mutex> guard(m_lock);
    auto it = m_objects.find(window);
    if (it == m_objects.end() || !QCoreApplication::instance()) return false;  // event and payload freed here
    QCoreApplication::postEvent(it->second, event.release());
    return true;
}

std::intptr_t QtWindowSystem::Send(WindowHandle window, WindowMessage message) {
    QObject* target = ObjectOf(window);
    if (!target) return 0;
    WindowMessageEvent event(std::move(message));
    QCoreApplication::sendEvent(target, &event);
    return event.result;
}

}  // namespace marrowfin
