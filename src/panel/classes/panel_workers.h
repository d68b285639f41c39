#pragma once
// The panel's short-lived workers: detached threads that report only by
// posting to the panel. They are counted so that a program (or a test) can
// let the ones in flight end before it tears down what they read.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"

namespace marrowfin {

// Runs `work` on a detached thread; false (and nothing run) when no thread
// could be started.
bool StartPanelWorker(std::function<void()> work);

struct WorkerAnswer final : MessagePayload {
    std::function<void()> deliver;
};

// Runs `work` on a panel worker and hands its result to `then` on the
// thread of `window`, when the window takes the message; a window that is
// gone drops it. False (and nothing run) when no thread could be started.
template <class Result>
bool AskOnWorker(WindowHandle window, std::function<Result()> work, std::function<void(Result)> then) {
    return StartPanelWorker([window, work = std::move(work), then = std::move(then)]() mutable {
        auto answer = std::make_unique<WorkerAnswer>();
        answer->deliver = [result = work(), then = std::move(then)]() mutable { then(std::move(result)); };
        (void)PostWindowMessage(window, MsgWorkerAnswer, 0, 0, std::move(answer));
    });
}

// Workers that have not yet returned.
size_t LivePanelWorkers();
// Waits until none is left or `limit` has passed; true when none is left.
bool WaitForPanelWorkers(std::chrono::milliseconds limit);

}  // namespace marrowfin
