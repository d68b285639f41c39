#pragma once
// The CAD host's main window in tests: records every request and notice the
// panel sends it (taking the path of an insertion), answers the synchronous
// requests with preset values, and can run a check while a request is being
// answered. Needs only the exported header, so it serves tests that reach the
// library through libmarrowfin.so as well as those linked to its layers.

#include <QWidget>
#include <functional>

#include "marrowfin/marrowfin.h"
#include "support/message_recorder.h"

namespace marrowfin::test {

class RecordingHost : public QWidget, public MessageLog {
public:
    // Answers; with answerRequests off the panel's preset values stay.
    bool answerRequests = true;
    uint32_t userNumber = 0;  // request 5
    std::u16string token = u"token-host";  // request 1
    std::u16string channel = u"频道-7";  // request 7
    int32_t permission = 0;  // request 6
    // Runs for each request and notice as it arrives, before it is answered.
    std::function<void(const RecordedMessage&)> onEvent;

    // Requests with a code from `first` to `last`.
    std::vector<RecordedMessage> Requests(std::uintptr_t first, std::uintptr_t last) const {
        return Of(MARROWFIN_GALLERY_HOST_REQUEST, first, last);
    }
    std::vector<RecordedMessage> Requests(std::uintptr_t code) const { return Requests(code, code); }
    // The codes of the requests (their wParam) or of the notices (their lParam), in the order they came.
    std::vector<std::intptr_t> Codes(uint32_t message) const;

protected:
    bool event(QEvent* event) override;
};

}  // namespace marrowfin::test
