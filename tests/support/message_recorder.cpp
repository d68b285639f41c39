#include "message_recorder.h"

#include <QCoreApplication>
#include <utility>

#include "platform/qt/window_message_event.h"

namespace marrowfin::test {

MessageRecorder::MessageRecorder(QObject* target, bool consume) : m_target(target), m_consume(consume) {
    m_target->installEventFilter(this);
}

MessageRecorder::~MessageRecorder() {
    if (m_target) m_target->removeEventFilter(this);
}

std::vector<RecordedMessage> MessageRecorder::Take() {
    QCoreApplication::sendPostedEvents();
    return std::exchange(records, {});
}

bool MessageRecorder::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_target || event->type() != WindowMessageEvent::EventType()) return false;
    const auto* message = static_cast<WindowMessageEvent*>(event);
    records.push_back({message->Message(), message->WParam(), message->LParam(), {}});
    return m_consume;
}

}  // namespace marrowfin::test
