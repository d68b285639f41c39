#include "platform/ticks.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace marrowfin {

namespace {
std::atomic<int64_t> g_tickOffset{0};
}

uint32_t GetTickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const int64_t ms = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    return static_cast<uint32_t>(static_cast<uint64_t>(ms + g_tickOffset.load(std::memory_order_relaxed)));
}

void ShiftTicksForTest(int64_t offsetMs) { g_tickOffset.fetch_add(offsetMs, std::memory_order_relaxed); }

void SleepMs(uint32_t ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

}  // namespace marrowfin
