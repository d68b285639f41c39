#include "platform/qt/window_message_event.h"

namespace marrowfin {

WindowMessageEvent::WindowMessageEvent(WindowMessage message) : QEvent(EventType()), m_message(std::move(message)) {}

WindowMessageEvent::~WindowMessageEvent() = default;

QEvent::Type WindowMessageEvent::EventType() {
    static const QEvent::Type type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

}  // namespace marrowfin
