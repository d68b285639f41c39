// The panel with its thumbnail grid: a class's files fetched while in view
// from the stand-in service, the quiet timer, and the activation of a block
// (insertion request, recent and common-use lists, the tip for a missing file).
#include <gtest/gtest.h>

#include <QtTest/QTest>
#include <algorithm>
#include <mutex>

#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "panel_world.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "support/live_service.h"
#include "support/test_paths.h"

namespace marrowfin {
namespace {

using test::PanelWorld;
using test::PumpUntil;
using test::RecordingHost;

std::string PreviewDrawing() { return test::ReadBytes(test::SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg"); }

void DoubleClickItem(CDWGListView* list, int item) {
    list->EnsureVisible(item);
    // The scroll and a closing tip settle before the cell is aimed at.
    test::Pump(50);
    QWidget* top = list->window();
    QTest::mouseDClick(top->windowHandle(), Qt::LeftButton, {}, list->mapTo(top, list->IconRect(item).center()));
    QCoreApplication::processEvents();
}

std::vector<std::u16string> PathsOf(const std::vector<GalleryNode*>& nodes) {
    std::vector<std::u16string> out;
    for (const GalleryNode* n : nodes) out.push_back(n ? n->Path() : u"");
    return out;
}

std::vector<std::u16string> PathsOf(const CBrindleDlg& panel) {
    std::vector<std::u16string> out;
    for (size_t i = 0; i < panel.m_listNodes.size(); ++i) {
        const GalleryNode* n = panel.m_listNodes.At(*panel.m_store, i);
        out.push_back(n ? n->Path() : u"");
    }
    return out;
}

bool AllStatesFinal(CDWGListView* list) {
    for (int i = list->FirstVisibleItem(); i <= list->LastVisibleItem(); ++i)
        if (list->ItemState(i) != CDWGListView::kStateFinal) return false;
    return true;
}

TEST(ThumbnailRoad, ALargeClassShowsPlaceholdersThenPicturesFetchingOnlyWhatIsInView) {
    PanelWorld w(test::SampleLibrary({1, 1, 300}));
    ASSERT_TRUE(w.service.ok()) << w.service.error();
    const std::u16string gallery = w.galleries.at(0);
    AddGalleryToShowList(gallery);
    BuildFirstTree(w.store);
    AdoptTreeUpdates(w.store);
    w.service.faults().set("/files/*", [] {
        service::Fault f;
        f.latencyMs = 80;  // the six places fill up
        return f;
    }());
    w.MakePanel();
    ASSERT_TRUE(w.OpenRow(w.RowOf(gallery)));
    CDWGListView* list = w.panel->m_pThumbList;
    ASSERT_TRUE(PumpUntil([&] { return list->GetItemCount() == 300; }, 5000));
    test::Pump(50);

    // Placeholders first: nothing is on disk, nothing asked yet.
    EXPECT_EQ(list->ItemState(0), CDWGListView::kStateFresh);
    EXPECT_TRUE(IsTimerRunning(w.panel->Handle(), kTimerThumbRequest));
    EXPECT_EQ(w.service.counters().get("/files/*").count, 0);
    w.Render(QStringLiteral("thumbs_class_waiting"));

    ASSERT_TRUE(PumpUntil([&] { return AllStatesFinal(list); }, 20000));
    ASSERT_TRUE(WaitForDownloadWorkers(std::chrono::milliseconds(5000)));
    const int shown = list->LastVisibleItem() - list->FirstVisibleItem() + 1;
    const auto files = w.service.counters().get("/files/*");
    EXPECT_EQ(files.count, shown) << "only the files in view are fetched";
    EXPECT_LE(files.peak, 6);
    EXPECT_GE(files.peak, 2);
    EXPECT_FALSE(FileExists(list->GetPath(shown + 4))) << "out of view";
    EXPECT_GE(list->CachedPictures(), shown) << "every arrived file shows its preview, none the page mark";
    w.Render(QStringLiteral("thumbs_class_arrived"));

    // Scrolling on: the newly shown files are asked for after the quiet time.
    list->EnsureVisible(299);
    test::Pump(50);
    ASSERT_TRUE(PumpUntil([&] { return AllStatesFinal(list); }, 20000));
    ASSERT_TRUE(WaitForDownloadWorkers(std::chrono::milliseconds(5000)));
    EXPECT_EQ(w.service.counters().get("/files/*").count, shown + (list->LastVisibleItem() - list->FirstVisibleItem() + 1));
    EXPECT_LE(w.service.counters().get("/files/*").peak, 6);
}

TEST(ThumbnailRoad, ABurstOfReportsMakesOneRequestRunAndDoubleClickInsertsAndHeadsTheUsageLists) {
    PanelWorld w;
    w.AddGallery({u"建筑", 2, 120});
    GalleryNode* gallery = w.AddGallery({u"机械", 2, 5});
    GalleryNode* cls = gallery->dirChildren[0];
    const std::string drawing = PreviewDrawing();
    ASSERT_TRUE(CreateDirectories(cls->Path()));
    for (GalleryNode* block : cls->fileChildren) WriteFileAtomic(block->Path(), drawing);
    const std::u16string recentPath = cls->fileChildren[4]->Path();
    w.AddRecent(recentPath);
    w.AddRecent(cls->fileChildren[3]->Path());
    RecordingHost host;
    auto insertions = [&] { return host.Requests(2, 4); };
    w.MakePanel();
    w.panel->hostWindow = HandleOf(&host);
    CDWGListView* list = w.panel->m_pThumbList;
    {
        SCOPED_TRACE("a burst of reports");
        ASSERT_TRUE(w.OpenRow(w.RowOf(u"建筑")));
        test::Pump(700);  // the first round of reports from the opened class runs out
        PumpUntil([&] { return !IsTimerRunning(w.panel->Handle(), kTimerThumbRequest); }, 2000);
        w.panel->m_thumbsToCheck.clear();
        const WindowHandle panel = w.panel->Handle();

        // 100 reports over 400 ms: the list of items only grows, the timer waits.
        size_t before = 0;
        bool emptied = false;
        for (int n = 0; n < 100; ++n) {
            PostWindowMessage(panel, MsgPanelEvent, 0, n % 40);
            QTest::qWait(4);
            const size_t now = w.panel->m_thumbsToCheck.size();
            emptied |= now < before;
            before = now;
        }
        EXPECT_FALSE(emptied) << "no run during the burst";
        EXPECT_EQ(w.panel->m_thumbsToCheck.size(), 40u) << "each item once";
        EXPECT_TRUE(IsTimerRunning(panel, kTimerThumbRequest));
        ASSERT_TRUE(PumpUntil([&] { return w.panel->m_thumbsToCheck.empty(); }, 1500));
        EXPECT_FALSE(IsTimerRunning(panel, kTimerThumbRequest)) << "one run, and the timer is gone";
        EXPECT_FALSE(w.panel->m_thumbScanBusy);
    }

    ASSERT_TRUE(w.OpenRow(w.RowOf(u"机械")));
    ASSERT_EQ(PathsOf(*w.panel), PathsOf(cls->fileChildren));
    const std::u16string p2 = cls->fileChildren[2]->Path(), p1 = cls->fileChildren[1]->Path();

    DoubleClickItem(list, 2);
    test::Pump(30);
    ASSERT_EQ(insertions().size(), 1u);
    EXPECT_EQ(insertions()[0].wParam, 2u);
    EXPECT_EQ(insertions()[0].text, p2);
    ASSERT_FALSE(w.root()->fileChildren.empty());
    EXPECT_EQ(w.root()->fileChildren[0]->Path(), p2);
    ASSERT_FALSE(gallery->fileChildren.empty());
    EXPECT_EQ(gallery->fileChildren[0]->Path(), p2);
    EXPECT_EQ(gallery->fileChildren[0]->OwnerName(), kCommonUseTag);

    // Another block, then the first again: heads move, nothing doubles.
    w.panel->showMode = u"YL";
    DoubleClickItem(list, 1);
    w.panel->showMode = u"PMMC";
    DoubleClickItem(list, 2);
    test::Pump(30);
    ASSERT_EQ(insertions().size(), 3u);
    EXPECT_EQ(insertions()[1].wParam, 3u);
    EXPECT_EQ(insertions()[2].wParam, 4u);
    EXPECT_EQ(PathsOf(gallery->fileChildren), (std::vector<std::u16string>{p2, p1}));
    EXPECT_EQ(PathsOf(w.root()->fileChildren),
              (std::vector<std::u16string>{p2, p1, recentPath, cls->fileChildren[3]->Path()}));
    EXPECT_EQ(w.panel->m_boutiqueCache.count(p2), 1u);

    // On the recent list the order stays as it is.
    w.panel->showMode.clear();
    const std::vector<std::u16string> recentBefore = PathsOf(w.root()->fileChildren);
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_EQ(PathsOf(*w.panel), recentBefore);
    DoubleClickItem(list, 2);
    test::Pump(30);
    ASSERT_EQ(insertions().size(), 4u);
    EXPECT_EQ(insertions()[3].text, recentPath);
    EXPECT_EQ(PathsOf(w.root()->fileChildren), recentBefore);

    // A file that is not there: the tip, no insertion, and the file is asked for.
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"机械")));
    // The gallery opens on its "常用" list now, the blocks used above.
    ASSERT_EQ(PathsOf(*w.panel), (std::vector<std::u16string>{p2, p1}));
    test::Pump(700);
    RemoveFile(p1);
    w.panel->m_thumbsToCheck.clear();
    {
        test::TipWatcher tip(QStringLiteral("thumbs_missing_tip"), /*accept*/ false);
        DoubleClickItem(list, 1);
        test::Pump(30);
        EXPECT_EQ(tip.seen, 1);
        EXPECT_TRUE(tip.cancelShown) << "the tip offers 确定 and 取消";
    }
    EXPECT_EQ(insertions().size(), 4u);
    EXPECT_NE(std::find(w.panel->m_thumbsToCheck.begin(), w.panel->m_thumbsToCheck.end(), 1),
              w.panel->m_thumbsToCheck.end());
    EXPECT_TRUE(IsTimerRunning(w.panel->Handle(), kTimerThumbRequest));

    // The host's window gone: nothing is sent and nothing moves.
    const std::vector<std::u16string> recentNow = PathsOf(w.root()->fileChildren);
    w.panel->hostWindow = 0;
    DoubleClickItem(list, 0);
    test::Pump(30);
    EXPECT_EQ(insertions().size(), 4u);
    EXPECT_EQ(PathsOf(w.root()->fileChildren), recentNow);
}

TEST(ThumbnailRoad, ABlockInFlightOrTooSmallIsRefusedWithTheTipAndAskedFor) {
    PanelWorld w(test::SampleLibrary({1, 1, 300}));
    ASSERT_TRUE(w.service.ok()) << w.service.error();
    const std::u16string gallery = w.galleries.at(0);
    AddGalleryToShowList(gallery);
    BuildFirstTree(w.store);
    AdoptTreeUpdates(w.store);
    w.service.faults().set("/files/*", {.latencyMs = 20000});  // the files in view stay in flight
    w.MakePanel();
    RecordingHost host;
    w.panel->hostWindow = HandleOf(&host);
    ASSERT_TRUE(w.OpenRow(w.RowOf(gallery)));
    CDWGListView* list = w.panel->m_pThumbList;
    ASSERT_TRUE(PumpUntil([&] { return list->GetItemCount() == 300; }, 5000));
    std::u16string running, waiting;
    ASSERT_TRUE(PumpUntil([&] {
        std::lock_guard<std::mutex> lock(w.store.downloadLock);
        if (w.store.downloadsRunning.size() < kMaxRunningDownloads || w.store.downloadsWaiting.empty()) return false;
        running = w.store.downloadsRunning.front();
        waiting = w.store.downloadsWaiting.front();
        return true;
    }, 5000));
    auto itemOf = [&](const std::u16string& path) {
        for (int i = 0; i < list->GetItemCount(); ++i)
            if (list->GetPath(i) == path) return i;
        return -1;
    };
    // A whole drawing already stands under the names in flight, as a copy
    // from elsewhere would: the running download is still to replace it.
    const std::string drawing = PreviewDrawing();
    ASSERT_GE(static_cast<int64_t>(drawing.size()), kMinBlockFileSize);
    // The class folder is made by the first worker that runs: not yet, maybe.
    ASSERT_TRUE(CreateDirectories(w.panel->m_curClassPath));
    ASSERT_TRUE(WriteFileAtomic(running, drawing));
    ASSERT_TRUE(WriteFileAtomic(waiting, drawing));
    const int small = 299, bound = 298;  // out of view: nobody asked for them yet
    ASSERT_TRUE(WriteFileAtomic(list->GetPath(small), std::string(kMinBlockFileSize - 1, 'b')));
    ASSERT_TRUE(WriteFileAtomic(list->GetPath(bound), std::string(kMinBlockFileSize, 'b')));

    struct Case { const char* what; int item; bool inserted; };
    const Case cases[] = {{"running", itemOf(running), false},
                          {"waiting", itemOf(waiting), false},
                          {"1,024 bytes", small, false},
                          {"1,025 bytes", bound, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_GE(c.item, 0);
        const std::vector<std::u16string> recent = PathsOf(w.root()->fileChildren);
        const size_t sent = host.Requests(2, 4).size();
        w.panel->m_thumbsToCheck.clear();
        test::TipWatcher tip(QStringLiteral("thumbs_in_flight_tip"), /*accept*/ false);
        DoubleClickItem(list, c.item);
        test::Pump(30);
        if (c.inserted) {
            EXPECT_EQ(tip.seen, 0);
            ASSERT_EQ(host.Requests(2, 4).size(), sent + 1);
            EXPECT_EQ(host.Requests(2, 4).back().text, list->GetPath(c.item));
            ASSERT_FALSE(w.root()->fileChildren.empty());
            EXPECT_EQ(w.root()->fileChildren[0]->Path(), list->GetPath(c.item));
            continue;
        }
        EXPECT_EQ(tip.seen, 1) << "the tip that the file is not downloaded";
        EXPECT_EQ(host.Requests(2, 4).size(), sent) << "nothing posted to the host";
        EXPECT_EQ(PathsOf(w.root()->fileChildren), recent) << "the recent list is left alone";
        EXPECT_TRUE(w.root()->dirChildren.at(0)->fileChildren.empty()) << "nothing heads the common-use list";
        EXPECT_NE(std::find(w.panel->m_thumbsToCheck.begin(), w.panel->m_thumbsToCheck.end(), c.item),
                  w.panel->m_thumbsToCheck.end())
            << "the file is asked for";
    }
    w.service.faults().clearAll();
    ASSERT_TRUE(WaitForDownloadWorkers(std::chrono::milliseconds(20000)));
}

TEST(ThumbnailRoad, RendersASelectedBoutiqueBlockAndMissingFiles) {
    for (float rate : {1.0f, 1.5f}) {
        PanelWorld w;
        GalleryNode* gallery = w.AddGallery({u"精品家具", 1, 9, 0, true});
        GalleryNode* cls = gallery->dirChildren[0];
        const std::string drawing = PreviewDrawing();
        ASSERT_TRUE(CreateDirectories(cls->Path()));
        for (size_t i = 0; i < cls->fileChildren.size(); ++i)
            if (i % 3 != 2) WriteFileAtomic(cls->fileChildren[i]->Path(), drawing);
        w.MakePanel(true, rate);
        ASSERT_TRUE(w.OpenRow(w.RowOf(u"精品家具")));
        CDWGListView* list = w.panel->m_pThumbList;
        // The previews of the files on disk come in from the loader.
        ASSERT_TRUE(PumpUntil([&] { return list->ItemState(3) == CDWGListView::kStateFinal && !list->PreviewsPending(); }));
        QTest::mouseClick(list->window()->windowHandle(), Qt::LeftButton, {},
                          list->mapTo(list->window(), list->IconRect(4).center()));
        test::Pump(50);
        EXPECT_EQ(list->GetSelectedItem(), 4);
        EXPECT_EQ(w.panel->m_selectedName, QString::fromStdU16String(cls->fileChildren[4]->name));
        const QImage shot = w.Render(QString::asprintf("thumbs_panel_boutique_rate%.1f", rate));
        const QRect label = list->LabelRect(4).translated(list->mapTo(w.panel.get(), QPoint(0, 0)));
        EXPECT_EQ(shot.pixelColor(label.center().x(), label.bottom() + 2), QColor(0xbb, 0x9d, 0x6a));
        EXPECT_EQ(list->ItemState(2), CDWGListView::kStateFresh) << "missing: the spinner";
        EXPECT_EQ(list->ItemState(3), CDWGListView::kStateFinal);
    }
}

}  // namespace
}  // namespace marrowfin
