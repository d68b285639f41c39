#pragma once
// The rule of the hourly class-table refresh. At the busy hours (9, 10, 14
// and 15 o'clock) only about one tick in ten goes on, so that the service is
// not asked by every panel at once; at other hours the refresh runs at once.
// Once it has run, the timer is gone for the rest of the run.

#include <functional>

namespace marrowfin {

enum class HourlyStep {
    Wait,  // leave the timer running; the next hour tries again
    Refresh,  // kill the timer, then refresh when the option allows
};

// `hour` is the local hour 0..23, `roll` a number from 1 to 100.
HourlyStep DecideHourlyRefresh(int hour, int roll);

// The local hour and a roll from 1 to 100, as the timer reads them.
int LocalHour();
int RollPercent();

// Tests replace the clock and the dice; empty functions restore them.
void SetHourlyRefreshSourcesForTest(std::function<int()> hour, std::function<int()> roll);

}  // namespace marrowfin
