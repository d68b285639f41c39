// The panel's timers and messages: the hourly refresh rule, the one-shot
// timers, payloads that must be freed and the download percent of a result
// row.

#include "panel/dialog/hourly_refresh.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

struct Tracked final : MessagePayload {
    explicit Tracked(int* freed) : freed(freed) {}
    ~Tracked() override { ++*freed; }
    int* freed;
};

}  // namespace

TEST(PanelEvents, HourlyTimerWaitsAtBusyHoursOneShotTimersEndPayloadsAreFreedAndProgressFindsItsRow) {
    // At 9, 10, 14 and 15 o'clock only a roll of 10 or less refreshes.
    for (int hour = 0; hour < 24; ++hour) {
        const bool busy = hour == 9 || hour == 10 || hour == 14 || hour == 15;
        EXPECT_EQ(DecideHourlyRefresh(hour, 10), HourlyStep::Refresh) << hour;
        EXPECT_EQ(DecideHourlyRefresh(hour, 11), busy ? HourlyStep::Wait : HourlyStep::Refresh) << hour;
    }
    bool low = false, high = false;  // the real dice reach both sides of 10, within 1 to 100
    for (int i = 0; i < 2000; ++i) {
        const int roll = RollPercent();
        ASSERT_TRUE(roll >= 1 && roll <= 100);
        (roll <= 10 ? low : high) = true;
    }
    EXPECT_TRUE(low && high);

    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    const WindowHandle self = panel.Handle();
    // Hour, roll, whether the timer runs on: a busy hour waits; a refresh, or no network, ends it.
    for (const auto& [hour, roll, keepsRunning] : {std::tuple{10, 50, true}, {12, 99, false}, {14, 3, false}}) {
        if (hour == 14) WriteOptionInt(u"RequestNetwork", 0);
        if (!IsTimerRunning(self, kTimerHourlyRefresh)) SetTimer(self, kTimerHourlyRefresh, kHourlyRefreshMs);
        SetHourlyRefreshSourcesForTest([hour] { return hour; }, [roll] { return roll; });
        SendWindowMessage(self, WM_TIMER_MESSAGE, kTimerHourlyRefresh);
        EXPECT_EQ(IsTimerRunning(self, kTimerHourlyRefresh), keepsRunning) << hour;
    }
    SetHourlyRefreshSourcesForTest({}, {});

    Pump(400);
    for (std::uintptr_t id : {kTimerRightStrip, kTimerBuildClassList, kTimerRepaintAll, kTimerClassTableApply, kTimerRowCheck,
                              kTimerThumbRequest, kTimerRowUse, kTimerRowCollect, kTimerRowClassLink, kTimerClassSwitch}) {
        ASSERT_TRUE(SetTimer(self, id, 60000));
        SendWindowMessage(self, WM_TIMER_MESSAGE, id);
        EXPECT_FALSE(IsTimerRunning(self, id)) << id;
    }

    // Codes that join later, a finished file and a progress report: the payload goes.
    int freed = 0;
    EXPECT_TRUE(PostWindowMessage(self, MsgPanelEvent, 1, 0, std::make_unique<Tracked>(&freed)));
    EXPECT_TRUE(PostWindowMessage(self, MsgFileReady, 0, 0, std::make_unique<Tracked>(&freed)));
    EXPECT_EQ(SendWindowMessage(self, MsgProgress, 7u << 16, 100, std::make_unique<Tracked>(&freed)), 0);
    Pump(20);
    EXPECT_EQ(freed, 3);
    // A copy-data message without a record is answered 0 (the records themselves are the host link's).
    EXPECT_EQ(SendWindowMessage(self, WM_COPYDATA_MESSAGE, 0, 0), 0);

    // A download's report reaches its row by the high word of its id while the list shows (the
    // steps: the search model's test).
    panel.ShowPanel();
    panel.m_search.rows = {BlockRow{.name = {},
                                    .klass = {},
                                    .subclass = {},
                                    .url = {},
                                    .path = QStringLiteral("/tmp/阀门.dwg"),
                                    .thumbnail = {},
                                    .prefetch = false,
                                    .size = 1000}};
    ASSERT_TRUE(panel.m_activeDownloads->Begin(0x1234, KeyOf(panel.m_search.rows[0])));
    SendWindowMessage(self, MsgProgress, std::uintptr_t{0x1234} << 16, 900);  // the list hidden
    panel.m_searchList->show();
    SendWindowMessage(self, MsgProgress, 0x1234, 900);
    SendWindowMessage(self, MsgProgress, std::uintptr_t{0x1235} << 16, 900);
    EXPECT_EQ(panel.m_search.rows[0].percent, 5);
    SendWindowMessage(self, MsgProgress, std::uintptr_t{0x1234} << 16, 900);
    EXPECT_EQ(panel.m_search.rows[0].percent, 90);
}
