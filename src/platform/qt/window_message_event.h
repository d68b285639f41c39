#pragma once
// The one Qt event that carries a window message. A posted event owns its
// payload; when Qt drops the event (the window died first) the payload goes
// with it.

#include <QEvent>

#include "platform/window_messages.h"

namespace marrowfin {

// Message numbers the Qt layer itself produces.
inline constexpr uint32_t WM_SIZE_MESSAGE = 0x0005;
inline constexpr uint32_t WM_TIMER_MESSAGE = 0x0113;

class WindowMessageEvent final : public QEvent {
public:
    explicit WindowMessageEvent(WindowMessage message);
    ~WindowMessageEvent() override;

    static QEvent::Type EventType();

    uint32_t Message() const { return m_message.message; }
    std::uintptr_t WParam() const { return m_message.wParam; }
    std::intptr_t LParam() const { return m_message.lParam; }
    MessagePayload* Payload() const { return m_message.payload.get(); }
    // The receiver takes the payload over; afterwards the event holds none.
    std::unique_ptr<MessagePayload> TakePayload() { return std::move(m_message.payload); }

    // The answer of a sent message.
    std::intptr_t result = 0;

private:
    WindowMessage m_message;
};

}  // namespace marrowfin
