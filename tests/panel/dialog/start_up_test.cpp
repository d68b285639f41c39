// The start-up: the host link, the timers, the modes, the class table option
// and the first tree, which the panel takes when it comes.

#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(PanelStartUp, HostLinkTimersModesAndTheClassTableOption) {
    {
        SampleWorld world({.parentIsHost = true});
        CBrindleDlg& panel = *world.panel;
        EXPECT_EQ(panel.windowFlags() & (Qt::WindowType_Mask | Qt::WindowStaysOnTopHint),
                  Qt::Tool | Qt::WindowStaysOnTopHint);  // a tool window of the host, on top
        EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), -7);  // no stored class table: untouched
        // The host window is taken and its channel text kept (asked once: the end-to-end test).
        EXPECT_EQ(std::make_pair(panel.hostWindow, panel.m_hostChannel), std::make_pair(HandleOf(&world.host), std::u16string(u"频道-7")));
        // Created, not shown, never hidden by hand in the ordinary mode.
        EXPECT_FALSE(panel.isVisible() || panel.testAttribute(Qt::WA_WState_ExplicitShowHide));
        // 250 ms later the class list timer has built the list and killed itself.
        const bool readyAtOnce = panel.m_nav.classesReady;
        Pump(600);
        EXPECT_EQ(std::make_tuple(IsTimerRunning(panel.Handle(), kTimerBuildClassList), readyAtOnce, panel.m_nav.classesReady,
                                  IsTimerRunning(panel.Handle(), kTimerHourlyRefresh)),
                  std::make_tuple(false, false, true, true));
        EXPECT_TRUE(!panel.Create(nullptr) && panel.parentWidget() == &world.host);  // a second Create changes nothing
    }
    {
        SampleWorld world({.attachHost = false});
        EXPECT_TRUE(world.panel->hostWindow == 0u && world.host.records.empty());
    }
    // No Show.xml: start-up builds the tree itself (an empty one), on a worker.
    SampleWorld world({.listGallery = false, .firstSync = false});
    ASSERT_TRUE(PumpUntil([] { return GalleryStore::Instance().root != nullptr; }));
    const GalleryStore& built = GalleryStore::Instance();
    EXPECT_EQ(std::make_tuple(built.root->Path(), built.root->dirChildren.size(), built.syncBusy.load()),
              std::make_tuple(StoreRoot(), size_t(0), 0));

    // A stored class table with the option absent: it becomes 1; set to 0 by the user, it stays 0.
    ASSERT_TRUE(CreateDirectories(StoreRoot()));
    ASSERT_TRUE(WriteFileAtomic(ClassTablePath(), "<r/>"));
    for (int expected : {1, 0}) {
        CBrindleDlg another;
        another.Create(nullptr);
        EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), expected);
        ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 0));
    }
}

TEST(PanelStartUp, OpensAtOnceAndTakesTheTreeWhenItComes) {
    // The panel is made while FirstSynchro's worker waits for a slow service.
    SampleWorld world({.firstSync = false});
    ResetGalleryStore();
    world.service.faults().set("/gallery/g_all_s", {.latencyMs = 3000});
    GalleryStore& store = GalleryStore::Instance();
    ASSERT_TRUE(StartFirstTree(store));
    CBrindleDlg panel;
    panel.Create(nullptr);
    panel.show();
    // Create did not wait for the service, and nothing but the panel's own
    // thread puts the tree in place.
    EXPECT_EQ(std::make_tuple(store.syncBusy.load(), store.root, panel.m_treeWaiting), std::make_tuple(1, nullptr, true));
    // The panel answers meanwhile: its class list is built without galleries.
    ASSERT_TRUE(PumpUntil([&] { return panel.m_classList->GetItemCount() == 2; }));
    EXPECT_EQ(store.syncBusy.load(), 1);

    // The tree comes as a message, and the class list is rebuilt with it.
    ASSERT_TRUE(PumpUntil([&] { return panel.m_classList->GetItemCount() == 3; }, 15000));
    ASSERT_TRUE(!panel.m_treeWaiting && store.root && store.root->dirChildren.size() == 1u);
    EXPECT_TRUE(!store.root->dirChildren[0]->dirChildren.empty() && world.service.counters().get("/gallery/g_all_s").count == 1);
}
