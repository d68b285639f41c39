#pragma once
// The panel's window timers by id, with their periods. One-shot timers kill
// themselves first in their handler; whoever wants the work done restarts
// them, so that a burst of requests ends in one action.

#include <cstdint>

namespace marrowfin {

inline constexpr std::uintptr_t kTimerClassTableApply = 1004;  // one-shot, 100 ms
inline constexpr std::uintptr_t kTimerHourlyRefresh = 1005;    // periodic until it refreshes
inline constexpr std::uintptr_t kTimerRowCheck = 1006;         // one-shot, 700 ms
inline constexpr std::uintptr_t kTimerRightStrip = 1007;       // one-shot, 1000 ms (400 on attach)
inline constexpr std::uintptr_t kTimerThumbRequest = 1008;     // one-shot, 500 ms
inline constexpr std::uintptr_t kTimerSyncPoll = 1010;         // periodic until the sync ends
inline constexpr std::uintptr_t kTimerBuildClassList = 1011;   // one-shot, 150 ms (250 at start)
inline constexpr std::uintptr_t kTimerClassSwitch = 2000;      // one-shot, 350 or 100 ms
inline constexpr std::uintptr_t kTimerRepaintAll = 2001;       // one-shot, 1200 ms
inline constexpr std::uintptr_t kTimerRowUse = 2002;           // one-shot, 300 ms
inline constexpr std::uintptr_t kTimerRowCollect = 2003;       // one-shot, 300 ms
inline constexpr std::uintptr_t kTimerRowClassLink = 2004;     // one-shot, 200 ms

inline constexpr unsigned kHourlyRefreshMs = 3600000;
inline constexpr unsigned kClassTableApplyMs = 100;
inline constexpr unsigned kFirstClassListMs = 250;
inline constexpr unsigned kClassListMs = 150;

}  // namespace marrowfin
