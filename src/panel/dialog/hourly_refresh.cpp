#include "panel/dialog/hourly_refresh.h"

#include <QRandomGenerator>
#include <QTime>

namespace marrowfin {

namespace {

std::function<int()>& HourSource() {
    static std::function<int()> source;
    return source;
}

std::function<int()>& RollSource() {
    static std::function<int()> source;
    return source;
}

}  // namespace

HourlyStep DecideHourlyRefresh(int hour, int roll) {
    const bool busyHour = hour == 9 || hour == 10 || hour == 14 || hour == 15;
    if (busyHour && roll > 10) return HourlyStep::Wait;
    return HourlyStep::Refresh;
}

int LocalHour() {
    if (HourSource()) return HourSource()();
    return QTime::currentTime().hour();
}

int RollPercent() {
    if (RollSource()) return RollSource()();
    return static_cast<int>(QRandomGenerator::global()->bounded(1, 101));
}

void SetHourlyRefreshSourcesForTest(std::function<int()> hour, std::function<int()> roll) {
    HourSource() = std::move(hour);
    RollSource() = std::move(roll);
}

}  // namespace marrowfin
