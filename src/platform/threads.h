#pragma once
// Starting a worker thread without an exception: a system that has no thread
// to give answers false, and the caller undoes what it prepared for the
// worker. The body runs shielded too, so that nothing thrown on a worker
// ends the host's process.

#include <thread>
#include <utility>

namespace marrowfin {

namespace threads_detail {
bool TakeStartFailure();
}  // namespace threads_detail

// Test seam: the next `count` starts fail as if the system had no thread left.
void FailThreadStartsForTests(int count);

// Starts `work` on `thread`, which must not be running. False when no thread
// could be started; `work` has not run then and has been destroyed.
template <class Work>
bool StartThread(std::thread& thread, Work&& work) noexcept {
    if (threads_detail::TakeStartFailure()) return false;
    try {
        thread = std::thread([body = std::forward<Work>(work)]() mutable noexcept {
            try {
                body();
            } catch (...) {
                // A worker reports only by posting; an exception has nobody to go to.
            }
        });
        return true;
    } catch (...) { return false; }
}

// As StartThread, for a worker that ends by itself.
template <class Work>
bool StartDetachedThread(Work&& work) noexcept {
    std::thread thread;
    if (!StartThread(thread, std::forward<Work>(work))) return false;
    thread.detach();
    return true;
}

}  // namespace marrowfin
