// Timers and MsgPanelEvent, and how messages reach their handlers.

#include <gtest/gtest.h>

#include "panel/dialog/hourly_refresh.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::vector<int> ShownStatusButtons(CBrindleDlg& panel) {
    std::vector<int> shown;
    for (int id : {2150, 2155, 2156, 2157})
        if (!panel.Button(id)->isHidden()) shown.push_back(id);
    return shown;
}

int ShownCollectionButtons(CBrindleDlg& panel) {
    int n = 0;
    for (CSkinButton* b : panel.m_collectionBtns) n += b->isHidden() ? 0 : 1;
    return n;
}

// A payload that tells when it is freed.
struct Tracked final : MessagePayload {
    explicit Tracked(int* freed) : freed(freed) {}
    ~Tracked() override { ++*freed; }
    int* freed;
};

struct HourlySources {
    HourlySources(int hour, int roll) {
        SetHourlyRefreshSourcesForTest([hour] { return hour; }, [roll] { return roll; });
    }
    ~HourlySources() { SetHourlyRefreshSourcesForTest({}, {}); }
};

}  // namespace

TEST(PanelEvents, HourlyRuleAtEveryHour) {
    for (int hour = 0; hour < 24; ++hour) {
        const bool busy = hour == 9 || hour == 10 || hour == 14 || hour == 15;
        EXPECT_EQ(DecideHourlyRefresh(hour, 1), HourlyStep::Refresh) << hour;
        EXPECT_EQ(DecideHourlyRefresh(hour, 10), HourlyStep::Refresh) << hour;
        EXPECT_EQ(DecideHourlyRefresh(hour, 11), busy ? HourlyStep::Wait : HourlyStep::Refresh) << hour;
        EXPECT_EQ(DecideHourlyRefresh(hour, 100), busy ? HourlyStep::Wait : HourlyStep::Refresh) << hour;
    }
    // The real dice stay within 1 to 100 and reach both sides of 10.
    SetHourlyRefreshSourcesForTest({}, {});
    bool low = false, high = false;
    for (int i = 0; i < 2000; ++i) {
        const int roll = RollPercent();
        ASSERT_GE(roll, 1);
        ASSERT_LE(roll, 100);
        (roll <= 10 ? low : high) = true;
    }
    EXPECT_TRUE(low && high);
    const int hour = LocalHour();
    EXPECT_TRUE(hour >= 0 && hour < 24);
}

TEST(PanelEvents, TimersEndAsTheyShouldAndMessagesReachTheirHandlers) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    const WindowHandle self = panel.Handle();
    {
        SCOPED_TRACE("the hourly timer waits at busy hours and ends once it runs");
        struct Tick {
            int hour, roll;
            bool network;
            bool keepsRunning;
        };
        const Tick ticks[] = {
            {10, 50, true, true},    // 10:30, most ticks wait
            {12, 99, true, false},   // 12:30 always runs
            {14, 3, false, false},   // the refresh is off: it still ends outside the dice
        };
        ASSERT_TRUE(IsTimerRunning(self, kTimerHourlyRefresh));
        for (const Tick& t : ticks) {
            SCOPED_TRACE(t.hour);
            if (!t.network) WriteOptionInt(u"RequestNetwork", 0);
            if (!IsTimerRunning(self, kTimerHourlyRefresh)) {
                ASSERT_TRUE(SetTimer(self, kTimerHourlyRefresh, kHourlyRefreshMs));
            }
            HourlySources at(t.hour, t.roll);
            SendWindowMessage(self, WM_TIMER_MESSAGE, kTimerHourlyRefresh);
            EXPECT_EQ(IsTimerRunning(self, kTimerHourlyRefresh), t.keepsRunning);
        }
    }
    {
        SCOPED_TRACE("one-shot timers kill themselves");
        Pump(400);
        for (std::uintptr_t id : {kTimerRightStrip, kTimerBuildClassList, kTimerRepaintAll, kTimerClassTableApply,
                                  kTimerRowCheck, kTimerThumbRequest, kTimerRowUse, kTimerRowCollect,
                                  kTimerRowClassLink}) {
            ASSERT_TRUE(SetTimer(self, id, 60000));
            SendWindowMessage(self, WM_TIMER_MESSAGE, id);
            EXPECT_FALSE(IsTimerRunning(self, id)) << id;
        }
        // 2000: the slow switch is used up and the pending class is switched to.
        panel.m_slowSwitch = true;
        panel.m_pendingClass = 0;
        ASSERT_TRUE(SetTimer(self, kTimerClassSwitch, 60000));
        SendWindowMessage(self, WM_TIMER_MESSAGE, kTimerClassSwitch);
        EXPECT_FALSE(IsTimerRunning(self, kTimerClassSwitch));
        EXPECT_FALSE(panel.m_slowSwitch);
        // A restart inside the 1011 cycle collapses into one tick.
        for (int i = 0; i < 20; ++i) SetTimer(self, kTimerBuildClassList, 50);
        Pump(300);
        EXPECT_FALSE(IsTimerRunning(self, kTimerBuildClassList));
    }
    SCOPED_TRACE("messages");
    int freed = 0;
    // Codes that join later, a finished file and a progress report: the payload goes.
    EXPECT_TRUE(PostWindowMessage(self, MsgPanelEvent, 1, 0, std::make_unique<Tracked>(&freed)));
    EXPECT_TRUE(PostWindowMessage(self, MsgFileReady, 0, 0, std::make_unique<Tracked>(&freed)));
    EXPECT_EQ(SendWindowMessage(self, MsgProgress, 7u << 16, 100, std::make_unique<Tracked>(&freed)), 0);
    EXPECT_EQ(freed, 1);
    Pump();
    EXPECT_EQ(freed, 3);

    // A copy-data message without its record answers 0; with one it is the host link's.
    EXPECT_EQ(SendWindowMessage(self, WM_COPYDATA_MESSAGE, 0, 0), 0);
    const std::u16string mode = u"YL";
    CopyDataStruct data;
    data.dwData = MARROWFIN_COPY_MODE;
    data.lpData = mode.c_str();
    SendWindowMessage(self, WM_COPYDATA_MESSAGE, 0, reinterpret_cast<std::intptr_t>(&data));
    EXPECT_EQ(panel.showMode, u"YL");
    // The panel control message answers through the window's result.
    EXPECT_EQ(SendWindowMessage(self, GalleryPanelControl, MARROWFIN_CONTROL_SET_USER, 42), 0);
    EXPECT_EQ(panel.userId, 42);
    EXPECT_EQ(SendWindowMessage(self, 0x7777, 1, 2), 0);

    // The panel's own windows are itself and its three lists.
    using Widgets = std::initializer_list<QWidget*>;
    for (QWidget* own : Widgets{&panel, panel.m_pThumbList, panel.m_searchList, panel.m_classList})
        EXPECT_TRUE(panel.IsOwnWindow(HandleOf(own)));
    for (QWidget* other : Widgets{panel.Button(1000), panel.m_searchEdit, &world.host})
        EXPECT_FALSE(panel.IsOwnWindow(HandleOf(other)));
    EXPECT_FALSE(panel.IsOwnWindow(0));
    EXPECT_FALSE(panel.IsOwnWindow(0x7fffffff));
}

TEST(PanelEvents, StatusEventsLayOutTheCollectionButtons) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    struct Step {
        int classIndex, itemCount, status;
        std::vector<int> statusButtons;
        int collectionButtons;  // -1: not looked at
    };
    const Step steps[] = {
        {1, 0, -1, {2150}, 6},        // empty collection
        {1, 0, 0, {2155, 2156}, 0},   // differs from the cloud
        {1, 0, 3, {2157}, -1},
        {1, 0, 4, {2157}, -1},
        {1, 0, 1, {}, -1},
        {1, 0, 0, {2155, 2156}, -1},
        {1, 0, -2, {}, 0},
        {1, 3, -1, {}, 6},            // with blocks shown, no status button
        {0, 0, 0, {}, -1},            // off the collections row neither
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(testing::Message() << "row " << s.classIndex << ", items " << s.itemCount << ", " << s.status);
        panel.m_classIndex = s.classIndex;
        panel.m_itemCount = s.itemCount;
        SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, s.status);  // it posts event 4
        Pump();
        EXPECT_EQ(panel.m_syncStatus, s.status);
        EXPECT_EQ(ShownStatusButtons(panel), s.statusButtons);
        if (s.collectionButtons >= 0) {
            EXPECT_EQ(ShownCollectionButtons(panel), s.collectionButtons);
        }
    }
    // Event 4 on its own follows the stored status.
    panel.m_classIndex = 1;
    panel.m_syncStatus = 3;
    SendWindowMessage(panel.Handle(), MsgPanelEvent, 4, 0);
    EXPECT_EQ(ShownStatusButtons(panel), std::vector<int>{2157});
}

TEST(PanelEvents, ProgressMovesTheRowPercentOnlyInStepsAboveOne) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    const WindowHandle self = panel.Handle();
    panel.ShowPanel();
    panel.m_searchList->show();

    BlockRow row;
    row.name = QStringLiteral("阀门.dwg");
    row.klass = QStringLiteral("管道");
    row.url = QStringLiteral("http://127.0.0.1/b/1");
    row.path = QStringLiteral("/tmp/阀门.dwg");
    row.size = 1000;
    row.prefetch = false;
    row.state = RowDownloading;
    BlockRow other = row;
    other.name = QStringLiteral("other.dwg");
    panel.m_rows = {other, row};
    panel.m_activeDownloads[0x1234] = row;
    const std::uintptr_t id = std::uintptr_t{0x1234} << 16;
    auto percent = [&] { return panel.m_rows[1].percent; };

    SendWindowMessage(self, MsgProgress, id, 20);  // 2 % shows 8 %
    EXPECT_EQ(percent(), 8);
    SendWindowMessage(self, MsgProgress, id, 99);  // 9 %: one more, not drawn
    EXPECT_EQ(percent(), 8);
    SendWindowMessage(self, MsgProgress, id, 100);  // 10 %
    EXPECT_EQ(percent(), 10);
    SendWindowMessage(self, MsgProgress, id, 1000);
    EXPECT_EQ(percent(), 100);
    EXPECT_EQ(panel.m_rows[0].percent, 5);  // the other row is untouched

    // No display: an unknown id, a foreign low word, a row gone from the list,
    // a background fetch, a hidden list, a row without a size.
    panel.m_rows[1].percent = 20;
    SendWindowMessage(self, MsgProgress, std::uintptr_t{0x1235} << 16, 900);
    SendWindowMessage(self, MsgProgress, 0x1234, 900);
    EXPECT_EQ(percent(), 20);
    const std::pair<const char*, std::function<void(bool)>> quiet[] = {
        {"a background fetch", [&](bool on) { panel.m_rows[1].prefetch = on; }},
        {"a hidden list", [&](bool on) { panel.m_searchList->setVisible(!on); }},
        {"a row without a size", [&](bool on) { panel.m_rows[1].size = on ? 0 : 1000; }},
        {"a row of another file", [&](bool on) { panel.m_rows[1].path = on ? QStringLiteral("/tmp/x.dwg") : row.path; }},
    };
    for (const auto& [name, set] : quiet) {
        SCOPED_TRACE(name);
        set(true);
        SendWindowMessage(self, MsgProgress, id, 900);
        EXPECT_EQ(percent(), 20);
        set(false);
    }
    // Posted, as the HTTP clients do, it arrives the same way.
    PostWindowMessage(self, MsgProgress, id, 900);
    Pump();
    EXPECT_EQ(percent(), 90);
}
