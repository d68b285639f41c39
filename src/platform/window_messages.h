#pragma once
// Window handles and message posting as the data layers see them. The Qt side
// implements WindowSystem; the data layers only post through it, so they
// never include a window toolkit. A heap payload travels with its message and
// belongs to it until the receiver takes it: a dropped message frees it.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace marrowfin {

// An opaque number naming a live window; 0 is no window.
using WindowHandle = std::uintptr_t;

struct MessagePayload {
    virtual ~MessagePayload() = default;
};

// A payload holding one value, such as the path of a finished download.
template <class T>
struct OwnedValue final : MessagePayload {
    explicit OwnedValue(T v) : value(std::move(v)) {}
    T value;
};
using OwnedText = OwnedValue<std::u16string>;

struct WindowMessage {
    uint32_t message = 0;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;
    std::unique_ptr<MessagePayload> payload;
};

class WindowSystem {
public:
    virtual ~WindowSystem() = default;
    virtual bool IsWindow(WindowHandle window) const = 0;
    // Queues the message for the window's thread; safe from any thread. False
    // (and the payload freed) when the window is gone.
    virtual bool Post(WindowHandle window, WindowMessage message) = 0;
    // Delivers at once on the calling (user-interface) thread and answers the result.
    virtual std::intptr_t Send(WindowHandle window, WindowMessage message) = 0;
};

// The window system in use; null until the Qt side (or a test) installs one.
void InstallWindowSystem(WindowSystem* system);
WindowSystem* CurrentWindowSystem();

bool IsWindow(WindowHandle window);
bool PostWindowMessage(WindowHandle window, uint32_t message, std::uintptr_t wParam = 0, std::intptr_t lParam = 0,
                       std::unique_ptr<MessagePayload> payload = nullptr);
std::intptr_t SendWindowMessage(WindowHandle window, uint32_t message, std::uintptr_t wParam = 0,
                                std::intptr_t lParam = 0, std::unique_ptr<MessagePayload> payload = nullptr);

// Posts an owned text: the receiver frees it, as with a new string on Windows.
inline bool PostText(WindowHandle window, uint32_t message, std::uintptr_t wParam, std::u16string text) {
    return PostWindowMessage(window, message, wParam, 0, std::make_unique<OwnedText>(std::move(text)));
}

}  // namespace marrowfin
