#include "panel/classes/panel_workers.h"

#include "platform/threads.h"

#include <atomic>
#include <thread>

namespace marrowfin {

namespace {

std::atomic<size_t> g_liveWorkers{0};

}  // namespace

bool StartPanelWorker(std::function<void()> work) {
    ++g_liveWorkers;
    if (StartDetachedThread([work = std::move(work)] {
            work();
            --g_liveWorkers;  // the last touch of shared state
        }))
        return true;
    --g_liveWorkers;
    return false;
}

size_t LivePanelWorkers() { return g_liveWorkers.load(); }

bool WaitForPanelWorkers(std::chrono::milliseconds limit) {
    // The steady clock, not the ticks: tests move the ticks on.
    const auto end = std::chrono::steady_clock::now() + limit;
    while (g_liveWorkers.load() != 0) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace marrowfin
