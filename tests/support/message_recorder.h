#pragma once
// What the library sends to a window, as tests read it back: the window
// messages that reach an object (MessageRecorder, here) and the requests and
// notices that reach the host's main window (RecordingHost). Both keep the
// same records and answer the same questions.

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowfin::test {

struct RecordedMessage {
    uint32_t message = 0;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;
    std::u16string text;  // the path of an insertion, the gallery name of request 8
    bool operator==(const RecordedMessage&) const = default;
};

struct MessageLog {
    std::vector<RecordedMessage> records;

    // The records of `message` with a wParam from `first` to `last`.
    std::vector<RecordedMessage> Of(uint32_t message, std::uintptr_t first = 0,
                                    std::uintptr_t last = UINTPTR_MAX) const;
    int Count(uint32_t message, std::uintptr_t wParam) const;
};

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
