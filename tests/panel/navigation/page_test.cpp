// The pages whose buttons talk to the stand-in service.
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(LivePages, DownloadGalleryButtonTipsOnFailureAndFillsTheGalleryOnSuccess) {
    PanelWorld w(SampleLibrary());
    const std::u16string name = w.galleries[0];
    GalleryNode* gallery = w.AddGallery({name, 0, 0});
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    ASSERT_TRUE(w.OpenRow(2));
    ASSERT_TRUE(w.ButtonShown(ControlId::DownloadGallery));

    // Slow: the failure cannot come back inside the click's own event processing.
    w.service.faults().set("/gallery/g_all", {.latencyMs = 300, .status = 500});
    {
        TipWatcher watcher;
        w.ClickButton(ControlId::DownloadGallery);
        // The gallery comes on a worker: the button waits, disabled, and a
        // second press sends nothing.
        EXPECT_FALSE(p.Button(ControlId::DownloadGallery)->isEnabled());
        w.ClickButton(ControlId::DownloadGallery);
        ASSERT_TRUE(PumpUntil([&] { return watcher.seen == 1; }));
        EXPECT_TRUE(p.Button(ControlId::DownloadGallery)->isEnabled() && watcher.okText == QStringLiteral("确定") && !watcher.cancelShown);
    }
    EXPECT_TRUE(w.service.counters().get("/gallery/g_all").count == 1 && gallery->dirChildren.empty());
    ASSERT_TRUE(IsTimerRunning(p.Handle(), kTimerBuildClassList) && w.WaitForSwitch());
    EXPECT_TRUE(w.ButtonShown(ControlId::DownloadGallery));  // still empty

    w.service.faults().clearAll();
    {
        TipWatcher watcher;
        w.ClickButton(ControlId::DownloadGallery);
        ASSERT_TRUE(PumpUntil([&] { return !gallery->dirChildren.empty(); }));
        EXPECT_EQ(watcher.seen, 0);
    }
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_TRUE(!w.ButtonShown(ControlId::DownloadGallery) && w.Shown(p.m_pThumbList));
    EXPECT_EQ(w.VisibleSubclassButtons(), static_cast<int>(std::min<size_t>(18, gallery->dirChildren.size())));
    EXPECT_EQ(p.m_nav.curClassPath, gallery->dirChildren[0]->Path());
}

TEST(LivePages, SwitchingRefreshesAStaleGalleryAndOpeningAStaleClassFetchesItsBlocks) {
    PanelWorld w(SampleLibrary());
    const std::u16string name = w.galleries[1];
    GalleryNode* gallery = w.AddGallery({name, 0, 0});
    ASSERT_TRUE(FetchGalleryFull(w.store, name, false));
    ASSERT_GE(gallery->dirChildren.size(), 2u);
    // An hour later, with the blocks of the second class gone stale.
    gallery->refreshTick = GetTickCount() - kGalleryFreshMs - 1;
    GalleryNode* second = gallery->dirChildren[1];
    const size_t blocks = second->fileChildren.size();
    ASSERT_GT(blocks, 0u);
    w.store.staleClasses[second->Path()] = second->version + 1;
    w.service.counters().reset();
    w.MakePanel();
    CBrindleDlg& p = *w.panel;

    // Both fetches run on workers; the page follows when they come.
    ASSERT_TRUE(w.OpenRow(2));
    ASSERT_TRUE(PumpUntil([&] { return w.VisibleSubclassButtons() == static_cast<int>(gallery->dirChildren.size()); }));
    // One summary; the first class is up to date.
    EXPECT_EQ(std::make_pair(w.service.counters().get("/gallery/g_cs_s").count, w.service.counters().get("/gallery/g_cs").count),
              std::make_pair(1L, 0L));
    ASSERT_EQ(p.m_subclassBtns[1]->data, QString::fromStdU16String(second->Path()));

    w.service.faults().set("/gallery/g_cs", {.latencyMs = 400});
    w.ClickButton(2081, 400);
    EXPECT_EQ(p.m_nav.listNodes.size(), 0u);  // nothing listed while the blocks are on their way
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.listNodes.size() == blocks; }));
    EXPECT_EQ(std::make_tuple(w.service.counters().get("/gallery/g_cs").count, w.store.staleClasses.count(p.m_nav.curClassPath),
                              p.m_pThumbList->GetItemCount()),
              std::make_tuple(1L, size_t(0), static_cast<int>(blocks)));

    // A second switch within the hour asks nothing.
    ShiftTicksForTest(400);
    ASSERT_TRUE(w.OpenRow(2));
    EXPECT_EQ(w.service.counters().get("/gallery/g_cs_s").count, 1);
}
