#include "recording_host.h"

namespace marrowfin::test {

std::vector<RecordedMessage> RecordingHost::Notices(std::intptr_t code) const {
    std::vector<RecordedMessage> out;
    for (const RecordedMessage& r : Of(MARROWFIN_GALLERY_HOST_NOTICE))
        if (r.lParam == code) out.push_back(r);
    return out;
}

std::vector<std::uintptr_t> RecordingHost::RequestOrder() const {
    std::vector<std::uintptr_t> out;
    for (const RecordedMessage& r : Of(MARROWFIN_GALLERY_HOST_REQUEST)) out.push_back(r.wParam);
    return out;
}

std::vector<std::intptr_t> RecordingHost::NoticeOrder() const {
    std::vector<std::intptr_t> out;
    for (const RecordedMessage& r : Of(MARROWFIN_GALLERY_HOST_NOTICE)) out.push_back(r.lParam);
    return out;
}

bool RecordingHost::event(QEvent* event) {
    if (event->type() != MarrowfinHostEventType) return QWidget::event(event);
    auto* host = static_cast<MarrowfinHostEvent*>(event);
    RecordedMessage r{host->message, host->wParam, host->lParam, {}};
    const bool request = host->message == MARROWFIN_GALLERY_HOST_REQUEST;
    if (auto path = host->TakeText()) {
        r.text = *path;
    } else if (request && host->wParam == MARROWFIN_REQUEST_GALLERY_NAME && host->lParam) {
        r.text = *reinterpret_cast<const std::u16string*>(host->lParam);
    }
    records.push_back(r);
    if (onEvent) onEvent(r);
    if (!request || !answerRequests || !host->lParam) return true;
    switch (host->wParam) {
        case MARROWFIN_REQUEST_TOKEN: *reinterpret_cast<std::u16string*>(host->lParam) = token; break;
        case MARROWFIN_REQUEST_SIGN_IN: *reinterpret_cast<uint32_t*>(host->lParam) = userNumber; break;
        case MARROWFIN_REQUEST_PERMISSION: *reinterpret_cast<int32_t*>(host->lParam) = permission; break;
        case MARROWFIN_REQUEST_CHANNEL: *reinterpret_cast<std::u16string*>(host->lParam) = channel; break;
        default: break;
    }
    return true;
}

}  // namespace marrowfin::test
