// What the start-up order leaves behind: timers, the host link, the class
// table option, the first tree, the wait for a running synchronisation.

#include <gtest/gtest.h>

#include <thread>

#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;


TEST(PanelStartUp, TimersHostLinkAndTheFirstClassListBuild) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    const WindowHandle self = panel.Handle();
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), -7);  // no stored class table: the option is not touched
    EXPECT_NE(self, 0u);
    EXPECT_EQ(ObjectOf(self), &panel);
    EXPECT_EQ(panel.m_store, &GalleryStore::Instance());

    EXPECT_TRUE(IsTimerRunning(self, kTimerHourlyRefresh));
    EXPECT_TRUE(IsTimerRunning(self, kTimerBuildClassList));

    // The host window was taken and asked once for its channel text.
    EXPECT_EQ(panel.hostWindow, HandleOf(&world.host));
    EXPECT_EQ(world.host.Requests(MARROWFIN_REQUEST_CHANNEL, MARROWFIN_REQUEST_CHANNEL).size(), 1u);
    EXPECT_EQ(panel.m_hostChannel, u"频道-7");

    // Created, not shown, never hidden by hand in the ordinary mode.
    EXPECT_FALSE(panel.isVisible());
    EXPECT_FALSE(panel.testAttribute(Qt::WA_WState_ExplicitShowHide));

    // 250 ms later timer 1011 has killed itself and posted command 0, once.
    MessageSpy spy(&panel);
    Pump(600);
    EXPECT_FALSE(IsTimerRunning(self, kTimerBuildClassList));
    EXPECT_EQ(spy.Count(MsgPanelCommand, 0), 1);
    EXPECT_TRUE(IsTimerRunning(self, kTimerHourlyRefresh));
}

TEST(PanelStartUp, WithoutAHostWindowInTheUpdateModeAndWithoutAFirstSync) {
    {
        SampleWorld world({.attachHost = false});
        EXPECT_EQ(world.panel->hostWindow, 0u);
        EXPECT_TRUE(world.panel->m_hostChannel.empty());
        EXPECT_TRUE(world.host.records.empty());
        EXPECT_FALSE(world.panel->testAttribute(Qt::WA_WState_ExplicitShowHide));
    }
    {
        SampleWorld world({.mode = u"UpdateShow"});
        // Hidden on purpose at the end of the start-up, after the channel request.
        EXPECT_TRUE(world.panel->testAttribute(Qt::WA_WState_ExplicitShowHide));
        EXPECT_TRUE(world.panel->isHidden());
        EXPECT_EQ(world.panel->m_hostChannel, u"频道-7");
    }
    {
        // Show.xml lists a gallery: start-up leaves the tree to FirstSynchro.
        SampleWorld world({.firstSync = false});
        EXPECT_EQ(GalleryStore::Instance().root, nullptr);
    }
    // No Show.xml: start-up builds the tree itself (an empty one here), on a worker.
    SampleWorld world({.listGallery = false, .firstSync = false});
    ASSERT_TRUE(PumpUntil([] { return GalleryStore::Instance().root != nullptr; }));
    GalleryNode* root = GalleryStore::Instance().root;
    EXPECT_EQ(root->Path(), StoreRoot());
    EXPECT_TRUE(root->dirChildren.empty());
    EXPECT_EQ(GalleryStore::Instance().syncBusy.load(), 0);

    // A stored class table with the option absent: it becomes 1; set to 0 by the user, it stays 0.
    ASSERT_TRUE(CreateDirectories(StoreRoot()));
    ASSERT_TRUE(WriteFileAtomic(ClassTablePath(), "<r/>"));
    CBrindleDlg second;
    second.Create(nullptr);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), 1);
    ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 0));
    CBrindleDlg third;
    third.Create(nullptr);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), 0);
}

TEST(PanelStartUp, OpensAtOnceAndTakesTheTreeWhenItComes) {
    // The panel is made while FirstSynchro's worker waits for a slow service.
    SampleWorld world({.firstSync = false});
    ResetGalleryStore();
    service::Fault slow;
    slow.latencyMs = 3000;
    world.service.faults().set("/gallery/g_all_s", slow);

    GalleryStore& store = GalleryStore::Instance();
    ASSERT_TRUE(StartFirstTree(store));
    CBrindleDlg panel;
    panel.Create(nullptr);
    panel.show();
    // Create did not wait for the service, and nothing but the panel's own
    // thread puts the tree in place.
    EXPECT_EQ(store.syncBusy.load(), 1);
    EXPECT_EQ(store.root, nullptr);
    EXPECT_TRUE(panel.m_treeWaiting);
    // The panel answers meanwhile: its class list is built without galleries.
    ASSERT_TRUE(PumpUntil([&] { return panel.m_classList->GetItemCount() == 2; }));
    EXPECT_EQ(store.syncBusy.load(), 1);

    // The tree comes as a message, and the class list is rebuilt with it.
    ASSERT_TRUE(PumpUntil([&] { return panel.m_classList->GetItemCount() == 3; }, 15000));
    EXPECT_FALSE(panel.m_treeWaiting);
    ASSERT_NE(store.root, nullptr);
    ASSERT_EQ(store.root->dirChildren.size(), 1u);
    EXPECT_FALSE(store.root->dirChildren[0]->dirChildren.empty());
    EXPECT_EQ(world.service.counters().get("/gallery/g_all_s").count, 1);
}
