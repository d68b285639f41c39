#include "recording_host.h"

namespace marrowfin::test {

std::vector<std::intptr_t> RecordingHost::Codes(uint32_t message) const {
    std::vector<std::intptr_t> out;
    for (const RecordedMessage& r : Of(message))
        out.push_back(message == MARROWFIN_GALLERY_HOST_REQUEST ? static_cast<std::intptr_t>(r.wParam) : r.lParam);
    return out;
}

bool RecordingHost::event(QEvent* event) {
    if (event->type() != MarrowfinHostEventType) return QWidget::event(event);
    auto* host = static_cast<MarrowfinHostEvent*>(event);
    RecordedMessage r{host->message, host->wParam, host->lParam, {}};
    const bool request = host->message == MARROWFIN_GALLERY_HOST_REQUEST;
    if (auto path = host->TakeText()) r.text = *path;
    if (request && host->wParam == MARROWFIN_REQUEST_GALLERY_NAME && host->lParam)
        r.text = *reinterpret_cast<const std::u16string*>(host->lParam);
    records.push_back(r);
    if (onEvent) onEvent(r);
    if (!request || !answerRequests || !host->lParam) return true;
    void* answer = reinterpret_cast<void*>(host->lParam);
    switch (host->wParam) {
        case MARROWFIN_REQUEST_TOKEN: *static_cast<std::u16string*>(answer) = token; break;
        case MARROWFIN_REQUEST_SIGN_IN: *static_cast<uint32_t*>(answer) = userNumber; break;
        case MARROWFIN_REQUEST_PERMISSION: *static_cast<int32_t*>(answer) = permission; break;
        case MARROWFIN_REQUEST_CHANNEL: *static_cast<std::u16string*>(answer) = channel; break;
        default: break;
    }
    return true;
}

}  // namespace marrowfin::test
