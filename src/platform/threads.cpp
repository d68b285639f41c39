#include "platform/threads.h"

#include <atomic>

namespace marrowfin {

namespace {

std::atomic<int> g_failedStartsLeft{0};

}  // namespace

void FailThreadStartsForTests(int count) { g_failedStartsLeft.store(count); }

bool threads_detail::TakeStartFailure() {
    int left = g_failedStartsLeft.load();
    while (left > 0 && !g_failedStartsLeft.compare_exchange_weak(left, left - 1)) {}
    return left > 0;
}

}  // namespace marrowfin
