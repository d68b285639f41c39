#pragma once
// Milliseconds of a monotonic clock as a 32-bit number that wraps, so that
// tick differences behave as GetTickCount arithmetic expects.

#include <cstdint>

namespace marrowfin {

uint32_t GetTickCount();
// Elapsed ticks from `since` to now, across a wrap.
inline uint32_t TicksSince(uint32_t since) { return GetTickCount() - since; }
// Tests move the clock: the offset is added to every later reading.
void ShiftTicksForTest(int64_t offsetMs);
void SleepMs(uint32_t ms);

}  // namespace marrowfin
