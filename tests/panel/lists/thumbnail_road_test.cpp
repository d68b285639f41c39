// The panel with its thumbnail grid: a class's files fetched while in view
// from the stand-in service, the quiet timer, and the activation of a block
// (insertion request, recent and common-use lists, the tip for a file that is
// not ready).

#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::vector<std::u16string> PathsOf(const std::vector<GalleryNode*>& nodes) {
    std::vector<std::u16string> out;
    for (const GalleryNode* n : nodes) out.push_back(n ? n->Path() : u"");
    return out;
}

std::vector<std::u16string> PathsOf(const CBrindleDlg& panel) {
    std::vector<std::u16string> out;
    for (size_t i = 0; i < panel.m_nav.listNodes.size(); ++i) out.push_back(panel.m_nav.listNodes.At(*panel.m_store, i)->Path());
    return out;
}

// A library of one gallery with a class of 300 blocks, its tree handed over, the class open.
CDWGListView* OpenLargeClass(PanelWorld& w, const service::Fault& files) {
    EXPECT_TRUE(w.service.ok()) << w.service.error();
    AddGalleryToShowList(w.galleries.at(0));
    BuildFirstTree(w.store);
    AdoptTreeUpdates(w.store);
    w.service.faults().set("/files/*", files);
    w.MakePanel();
    EXPECT_TRUE(w.OpenRow(w.RowOf(w.galleries.at(0))));
    CDWGListView* list = w.panel->m_pThumbList;
    EXPECT_TRUE(PumpUntil([&] { return list->GetItemCount() == 300; }, 5000));
    return list;
}

bool AllStatesFinal(CDWGListView* list) {
    for (int i = list->FirstVisibleItem(); i <= list->LastVisibleItem(); ++i)
        if (list->ItemState(i) != CDWGListView::kStateFinal) return false;
    return true;
}

}  // namespace

TEST(ThumbnailRoad, ALargeClassShowsPlaceholdersThenPicturesFetchingOnlyWhatIsInView) {
    PanelWorld w(SampleLibrary({1, 1, 300}));
    CDWGListView* list = OpenLargeClass(w, {.latencyMs = 80});  // the six places fill up
    Pump(50);
    // Placeholders first: nothing on disk, nothing asked before the quiet time.
    EXPECT_TRUE(list->ItemState(0) == CDWGListView::kStateFresh && IsTimerRunning(w.panel->Handle(), kTimerThumbRequest));
    EXPECT_EQ(w.service.counters().get("/files/*").count, 0);
    ASSERT_TRUE(PumpUntil([&] { return AllStatesFinal(list); }, 20000));
    ASSERT_TRUE(WaitForDownloadWorkers(std::chrono::milliseconds(5000)));
    const int shown = list->LastVisibleItem() - list->FirstVisibleItem() + 1;
    const auto files = w.service.counters().get("/files/*");
    EXPECT_EQ(files.count, shown) << "only the files in view are fetched";
    EXPECT_TRUE(files.peak >= 2 && files.peak <= 6) << files.peak;
    EXPECT_GE(list->CachedPictures(), shown) << "every arrived file shows its preview";
}

TEST(ThumbnailRoad, ABurstOfReportsMakesOneRequestRunAndDoubleClickInsertsAndHeadsTheUsageLists) {
    PanelWorld w;
    w.AddGallery({u"建筑", 2, 120});
    GalleryNode* gallery = w.AddGallery({u"机械", 2, 5});
    GalleryNode* cls = gallery->dirChildren[0];
    w.WriteBlockFiles(cls);
    const std::u16string p1 = cls->fileChildren[1]->Path(), p2 = cls->fileChildren[2]->Path();
    const std::u16string p3 = cls->fileChildren[3]->Path(), p4 = cls->fileChildren[4]->Path();
    w.AddRecent(p4);
    w.AddRecent(p3);
    RecordingHost host;
    auto insertions = [&] { return host.Requests(2, 4); };
    w.MakePanel();
    w.panel->hostWindow = HandleOf(&host);
    CDWGListView* list = w.panel->m_pThumbList;

    // 100 reports over 400 ms of 40 items: all gathered, none run during the burst; one run after the quiet time.
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"建筑")));
    Pump(700);  // the opened class's own reports run out
    PumpUntil([&] { return !IsTimerRunning(w.panel->Handle(), kTimerThumbRequest); }, 2000);
    w.panel->m_thumbs.toCheck.clear();
    for (int n = 0; n < 100; ++n) {
        PostWindowMessage(w.panel->Handle(), MsgPanelEvent, 0, n % 40);
        QTest::qWait(4);
    }
    EXPECT_EQ(w.panel->m_thumbs.toCheck.size(), 40u) << "no run during the burst";
    ASSERT_TRUE(PumpUntil([&] { return w.panel->m_thumbs.toCheck.empty(); }, 1500));
    EXPECT_FALSE(IsTimerRunning(w.panel->Handle(), kTimerThumbRequest)) << "one run, and the timer is gone";

    // A double click inserts (request 2, 3 or 4 by the show mode) and heads the recent and common-use lists.
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"机械")));
    ASSERT_EQ(PathsOf(*w.panel), PathsOf(cls->fileChildren));
    DoubleClickItem(list, 2);
    w.panel->showMode = u"YL";
    DoubleClickItem(list, 1);
    w.panel->showMode = u"PMMC";
    DoubleClickItem(list, 2);
    ASSERT_EQ(insertions().size(), 3u);
    EXPECT_EQ(std::vector<std::uintptr_t>({insertions()[0].wParam, insertions()[1].wParam, insertions()[2].wParam}),
              std::vector<std::uintptr_t>({2, 3, 4}));
    using Paths = std::vector<std::u16string>;
    EXPECT_EQ(std::make_tuple(insertions()[0].text, PathsOf(gallery->fileChildren), PathsOf(w.root()->fileChildren)),
              std::make_tuple(p2, Paths{p2, p1}, Paths{p2, p1, p4, p3}));
    EXPECT_TRUE(gallery->fileChildren[0]->OwnerName() == kCommonUseTag && w.panel->m_boutiqueCache.count(p2) == 1u);
    // On the recent list the order stays.
    w.panel->showMode.clear();
    ASSERT_TRUE(w.OpenRow(0));
    DoubleClickItem(list, 2);
    ASSERT_EQ(insertions().size(), 4u);
    EXPECT_EQ(std::make_pair(insertions()[3].text, PathsOf(w.root()->fileChildren)), std::make_pair(p4, Paths{p2, p1, p4, p3}));

    // A file that is not there: the tip with 取消, no insertion, and the file is asked for.
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"机械")));
    ASSERT_EQ(PathsOf(*w.panel), (Paths{p2, p1}));  // its "常用" list now
    Pump(700);
    RemoveFile(p1);
    w.panel->m_thumbs.toCheck.clear();
    {
        TipWatcher tip(/*accept*/ false);
        DoubleClickItem(list, 1);
        EXPECT_TRUE(tip.seen == 1 && tip.cancelShown);
    }
    EXPECT_TRUE(insertions().size() == 4u && PumpUntil([&] { return std::ranges::count(w.panel->m_thumbs.toCheck, 1) > 0; }, 2000));
    EXPECT_TRUE(IsTimerRunning(w.panel->Handle(), kTimerThumbRequest));
    // The host's window gone: nothing is sent and nothing moves.
    w.panel->hostWindow = 0;
    DoubleClickItem(list, 0);
    EXPECT_EQ(std::make_pair(insertions().size(), PathsOf(w.root()->fileChildren)), std::make_pair(size_t(4), Paths{p2, p1, p4, p3}));
}
