#pragma once
// What the library sends to a window, as tests read it back: the messages of
// the data layers' window system (RecordingWindows), the window messages that
// reach a Qt object (MessageRecorder) and the requests and notices that reach
// the host's main window (RecordingHost) keep the same records.

#include <cstdint>
#include <string>
#include <vector>

namespace marrowfin::test {

struct RecordedMessage {
    uint32_t message = 0;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;
    std::u16string text;  // the path of an insertion or of a file ready, the gallery name of request 8
    bool operator==(const RecordedMessage&) const = default;
};

struct MessageLog {
    std::vector<RecordedMessage> records;

    // The records of `message` with a wParam from `first` to `last`.
    std::vector<RecordedMessage> Of(uint32_t message, std::uintptr_t first = 0, std::uintptr_t last = UINTPTR_MAX) const {
        std::vector<RecordedMessage> out;
        for (const RecordedMessage& r : records)
            if (r.message == message && r.wParam >= first && r.wParam <= last) out.push_back(r);
        return out;
    }
    int Count(uint32_t message, std::uintptr_t wParam) const { return static_cast<int>(Of(message, wParam, wParam).size()); }
};

}  // namespace marrowfin::test
