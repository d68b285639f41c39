#pragma once
// A stand-in for the CAD host's main window in tests: it records every
// request and notice the panel sends, answers the synchronous requests with
// preset values, and can run a check while a request is being answered.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "marrowfin/marrowfin.h"

namespace marrowfin::test {

class RecordingHost : public QWidget {
public:
    struct Record {
        uint32_t message = 0;
        uintptr_t wParam = 0;
        intptr_t lParam = 0;
        std::u16string text;  // the taken path of an insertion, the gallery name of request 8
    };

    // Answers; a request the host leaves unanswered keeps the preset value.
    bool answerRequests = true;
    uint32_t userNumber = 0;               // request 5
    std::u16string token = u"token-e2e";   // request 1
    std::u16string channel = u"channel-e2e";  // request 7
    int32_t permission = 0;                // request 6
    // Runs for each request and notice as it arrives, before a request is answered.
    std::function<void(const Record&)> onEvent;

    std::vector<Record> records;

    std::vector<Record> Requests(uintptr_t code) const {
        std::vector<Record> out;
        for (const Record& r : records)
            if (r.message == MARROWFIN_GALLERY_HOST_REQUEST && r.wParam == code) out.push_back(r);
        return out;
    }
    std::vector<Record> Notices(intptr_t code) const {
        std::vector<Record> out;
        for (const Record& r : records)
            if (r.message == MARROWFIN_GALLERY_HOST_NOTICE && r.lParam == code) out.push_back(r);
        return out;
    }
    // The request codes in the order they came.
    std::vector<uintptr_t> RequestOrder() const {
        std::vector<uintptr_t> out;
        for (const Record& r : records)
            if (r.message == MARROWFIN_GALLERY_HOST_REQUEST) out.push_back(r.wParam);
        return out;
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() != MarrowfinHostEventType) return QWidget::event(event);
        auto* host = static_cast<MarrowfinHostEvent*>(event);
        Record r{host->message, host->wParam, host->lParam, {}};
        if (host->message == MARROWFIN_GALLERY_HOST_REQUEST) {
            switch (host->wParam) {
                case MARROWFIN_REQUEST_INSERT:
                case MARROWFIN_REQUEST_INSERT_YL:
                case MARROWFIN_REQUEST_INSERT_PMMC:
                    if (auto path = host->TakeText()) r.text = *path;
                    break;
                case MARROWFIN_REQUEST_GALLERY_NAME:
                    r.text = *reinterpret_cast<std::u16string*>(host->lParam);
                    break;
                default:
                    break;
            }
        }
        if (onEvent) onEvent(r);
        if (host->message == MARROWFIN_GALLERY_HOST_REQUEST && answerRequests) Answer(*host);
        records.push_back(std::move(r));
        return true;
    }

private:
    void Answer(MarrowfinHostEvent& request) {
        switch (request.wParam) {
            case MARROWFIN_REQUEST_TOKEN:
                *reinterpret_cast<std::u16string*>(request.lParam) = token;
                break;
            case MARROWFIN_REQUEST_SIGN_IN:
                *reinterpret_cast<uint32_t*>(request.lParam) = userNumber;
                break;
            case MARROWFIN_REQUEST_PERMISSION:
                *reinterpret_cast<int32_t*>(request.lParam) = permission;
                break;
            case MARROWFIN_REQUEST_CHANNEL:
                *reinterpret_cast<std::u16string*>(request.lParam) = channel;
                break;
            default:
                break;
        }
    }
};

// Runs the event loop until `done` holds or `ms` pass; answers `done()`.
inline bool SpinUntil(const std::function<bool()>& done, int ms) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

inline void Spin(int ms) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

}  // namespace marrowfin::test
