#pragma once
// A window system for tests: window 1 is alive and records what it is posted;
// a message sent to it answers its number plus wParam.

#include <mutex>

#include "platform/window_messages.h"
#include "support/message_log.h"

namespace marrowfin::test {

class RecordingWindows : public WindowSystem, MessageLog {
public:
    static constexpr WindowHandle kPanel = 1;
    RecordingWindows() { InstallWindowSystem(this); }
    ~RecordingWindows() override { InstallWindowSystem(nullptr); }

    bool IsWindow(WindowHandle w) const override { return w == kPanel; }
    bool Post(WindowHandle w, WindowMessage m) override {
        if (!IsWindow(w)) return false;
        std::lock_guard<std::mutex> lock(m_mutex);
        records.push_back({m.message, m.wParam, m.lParam, {}});
        if (auto* text = dynamic_cast<OwnedText*>(m.payload.get())) records.back().text = text->value;
        return true;
    }
    std::intptr_t Send(WindowHandle w, WindowMessage m) override {
        return IsWindow(w) ? static_cast<std::intptr_t>(m.message + m.wParam) : 0;
    }
    // Posted so far (from any thread).
    std::vector<RecordedMessage> Messages(uint32_t message) {
        std::lock_guard<std::mutex> lock(m_mutex);
        return Of(message);
    }

private:
    std::mutex m_mutex;
};

}  // namespace marrowfin::test
