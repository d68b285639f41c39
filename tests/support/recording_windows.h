#pragma once
// A window system for tests: window 1 is alive and records what it is posted;
// a message sent to it answers its number plus wParam.

#include <mutex>
#include <string>
#include <vector>

#include "platform/window_messages.h"

namespace marrowfin::test {

class RecordingWindows : public WindowSystem {
public:
    static constexpr WindowHandle kPanel = 1;
    RecordingWindows() { InstallWindowSystem(this); }
    ~RecordingWindows() override { InstallWindowSystem(nullptr); }

    bool IsWindow(WindowHandle w) const override { return w == kPanel; }
    bool Post(WindowHandle w, WindowMessage m) override {
        if (!IsWindow(w)) return false;
        std::lock_guard<std::mutex> lock(m_mutex);
        Record r{m.message, m.wParam, m.lParam, {}};
        if (auto* text = dynamic_cast<OwnedText*>(m.payload.get())) r.text = text->value;
        m_records.push_back(std::move(r));
        return true;
    }
    std::intptr_t Send(WindowHandle w, WindowMessage m) override {
        return IsWindow(w) ? static_cast<std::intptr_t>(m.message + m.wParam) : 0;
    }

    struct Record {
        uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
        std::u16string text;
    };
    std::vector<Record> Messages(uint32_t message) {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<Record> out;
        for (const Record& r : m_records)
            if (r.message == message) out.push_back(r);
        return out;
    }

private:
    std::mutex m_mutex;
    std::vector<Record> m_records;
};

}  // namespace marrowfin::test
