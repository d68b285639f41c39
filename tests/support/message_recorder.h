#pragma once
// The window messages that reach a Qt object, as tests read them back.

#include <QObject>
#include <QPointer>

#include "support/message_log.h"

namespace marrowfin::test {

// Records the window messages that reach `target` (sent, or posted and
// delivered) while the recorder lives. With `consume` the target never sees
// them, so a plain QWidget can stand for a window that owns a list.
class MessageRecorder final : public QObject, public MessageLog {
public:
    explicit MessageRecorder(QObject* target, bool consume = false);
    ~MessageRecorder() override;

    // Lets posted messages arrive, then answers the records and forgets them.
    std::vector<RecordedMessage> Take();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QObject> m_target;
    bool m_consume;
};

}  // namespace marrowfin::test
