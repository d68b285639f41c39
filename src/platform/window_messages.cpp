#include "platform/window_messages.h"

#include <atomic>

namespace marrowfin {

namespace {
std::atomic<WindowSystem*> g_windowSystem{nullptr};
}

void InstallWindowSystem(WindowSystem* system) { g_windowSystem.store(system, std::memory_order_release); }

WindowSystem* CurrentWindowSystem() { return g_windowSystem.load(std::memory_order_acquire); }

bool IsWindow(WindowHandle window) {
    WindowSystem* system = CurrentWindowSystem();
    return window != 0 && system && system->IsWindow(window);
}

bool PostWindowMessage(WindowHandle window, uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                       std::unique_ptr<MessagePayload> payload) {
    WindowSystem* system = CurrentWindowSystem();
    if (window == 0 || !system) return false;  // the payload is freed here
    return system->Post(window, WindowMessage{message, wParam, lParam, std::move(payload)});
}

std::intptr_t SendWindowMessage(WindowHandle window, uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                std::unique_ptr<MessagePayload> payload) {
    WindowSystem* system = CurrentWindowSystem();
    if (window == 0 || !system) return 0;
    return system->Send(window, WindowMessage{message, wParam, lParam, std::move(payload)});
}

}  // namespace marrowfin
