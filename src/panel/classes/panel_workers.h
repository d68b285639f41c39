#pragma once
// The panel's short-lived workers: detached threads that report only by
// posting to the panel. They are counted so that a program (or a test) can
// let the ones in flight end before it tears down what they read.

#include <chrono>
#include <cstddef>
#include <functional>

namespace marrowfin {

// Runs `work` on a detached thread; false (and nothing run) when no thread
// could be started.
bool StartPanelWorker(std::function<void()> work);

// Workers that have not yet returned.
size_t LivePanelWorkers();
// Waits until none is left or `limit` has passed; true when none is left.
bool WaitForPanelWorkers(std::chrono::milliseconds limit);

}  // namespace marrowfin
