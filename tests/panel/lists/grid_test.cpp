// The thumbnail grid: states and previews of the shown range and its
// read-ahead, the reports of missing files, the cache's bound, what the mouse
// and keys post, name fitting, the cells drawn at two rates; and its previews
// read off the panel's thread, watched through the decoder seam: which thread
// reads, in which order, what is dropped when the grid scrolls on or gets a
// new listing, and how the loader stops.

#include <QCoreApplication>
#include <QTemporaryDir>

#include "panel/lists/dwg_list_view.h"
#include "panel/model/panel_messages.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "skin/measure_text.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "support/event_pump.h"
#include "support/message_recorder.h"
#include "support/reference_picture.h"
#include "support/test_paths.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

// A plain window holding the grid at the panel's size, recording what it
// posts, over a folder of drawings made to order (b000.dwg and so on).
enum class Make { Preview, PngPreview, NoPreview, Cut, Missing };

struct GridWorld {
    QTemporaryDir dir;
    std::vector<std::u16string> paths;
    QWidget window;
    MessageRecorder posted{&window, /*consume*/ true};
    CDWGListView* view;
    std::vector<RecordedMessage> commands;  // what was posted besides the reports of missing files

    explicit GridWorld(const std::vector<Make>& kinds, float rate = 1.0f) {
        for (size_t i = 0; i < kinds.size(); ++i) {
            paths.push_back(dir.filePath(QString::asprintf("b%03zu.dwg", i)).toStdU16String());
            Write(i, kinds[i]);
        }
        SetSkinRateForTest(rate);
        LoadSkinSheet();
        window.resize(ScaleUnits(640), ScaleUnits(360));
        view = new CDWGListView(&window);
        view->setGeometry(ScaleBox(0, 0, 617, 343));
    }
    // Hands the paths over, shows the grid and lets its previews come in.
    bool Show() {
        view->SetPaths(paths);
        if (!ShowExposed(&window)) return false;
        Repaint();
        return true;
    }
    void Write(size_t item, Make kind) {
        static const std::string dwg = SharedDir() + "/testdata/dwg/";
        static const std::string bytes[] = {ReadBytes(dwg + "bmp8_ac1015.dwg"),
                                            ReadBytes(dwg + "png_ac1027.dwg"),
                                            ReadBytes(dwg + "no_preview_ac1009.dwg"),
                                            std::string(600, 'x'),
                                            {}};
        ASSERT_GT(bytes[0].size(), 4096u) << "test drawings not found";
        if (kind != Make::Missing) WriteBytes(QString::fromStdU16String(paths[item]).toStdString(), bytes[int(kind)]);
    }
    // The items whose missing files were reported, each once, ascending.
    std::vector<int> Missing() {
        std::set<int> out;
        for (const RecordedMessage& r : posted.Take())
            (r.message == MsgPanelEvent && r.wParam == 0) ? void(out.insert(int(r.lParam))) : commands.push_back(r);
        return {out.begin(), out.end()};
    }
    // Paints, waits for the previews this asked for, and paints what they brought.
    void Repaint() {
        view->repaint();
        EXPECT_TRUE(Settle()) << "previews still pending";
        view->repaint();
    }
    bool Settle() {
        return PumpUntil([this] { return !view->PreviewsPending(); }, 10000);
    }
};

using Ints = std::vector<int>;

TEST(DwgListView, ShownRangeLoadsPreviewsReportsMissingFilesAndKeepsStates) {
    // 0 preview, 1 no preview, 2 missing, 3 cut download, 4 png preview, then previews; 25 missing out of view.
    std::vector<Make> kinds = {Make::Preview, Make::NoPreview, Make::Missing, Make::Cut, Make::PngPreview};
    kinds.resize(300, Make::Preview);
    kinds[25] = Make::Missing;
    GridWorld w(kinds);
    ASSERT_TRUE(w.Show());
    const int last = w.view->LastVisibleItem();
    EXPECT_EQ(last, 15) << "four columns, four rows, the fourth in part";
    const auto state = [&](int i) { return w.view->ItemState(i); };
    // How far the read-ahead reaches shows in the count of reads and in the loading test.
    EXPECT_EQ(Ints({state(0), state(4), state(1), state(2)}),
              Ints({CDWGListView::kStateFinal, CDWGListView::kStateFinal, CDWGListView::kStateTriedOnce, CDWGListView::kStateFresh}));
    EXPECT_FALSE(FileExists(w.paths[3])) << "a cut download is deleted";
    EXPECT_EQ(w.Missing(), Ints({2, 3})) << "only shown cells report, not the read-ahead's 25";
    const int reads = w.view->PreviewReads();
    EXPECT_EQ(reads, 2 * (last + 1) - 3);  // every present file once
    // A second look at the file without preview makes it final; loaded previews are not read again.
    for (int look = 0; look < 2; ++look) {
        w.view->RedrawItem(1);
        w.Repaint();
    }
    EXPECT_EQ(std::make_pair(state(1), w.view->PreviewReads()), std::make_pair(int(CDWGListView::kStateFinal), reads + 1));
    // While the owner scans, shown cells report nothing; scrolled in, the missing 25 reports.
    (void)w.Missing();
    w.view->isScanBusy = [] { return true; };
    w.view->RedrawItem(2);
    w.Repaint();
    EXPECT_TRUE(w.Missing().empty());
    w.view->isScanBusy = nullptr;
    Wheel(w.view, QPoint(50, 50), -1);
    w.Repaint();
    EXPECT_EQ(w.Missing(), Ints({25}));
    // The file arrives: refresh 1 redraws the cell and its preview loads.
    Wheel(w.view, QPoint(50, 50), 1);
    w.Repaint();
    (void)w.Missing();
    w.Write(2, Make::Preview);
    ASSERT_TRUE(PostWindowMessage(HandleOf(w.view), MsgListRefresh, 1, 2));
    QCoreApplication::processEvents();
    w.Repaint();
    EXPECT_EQ(std::make_pair(state(2), w.Missing()), std::make_pair(int(CDWGListView::kStateFinal), Ints({3})));
    // Down to the end and back: the cache stays bounded; dropped cells are read again and stay final.
    int peak = 0;
    for (int step = 0; step < 40 && w.view->LastVisibleItem() < 299; ++step) {
        Wheel(w.view, QPoint(50, 50), -1);
        w.Repaint();
        peak = std::max(peak, w.view->CachedPictures());
    }
    EXPECT_TRUE(w.view->LastVisibleItem() == 299 && peak <= 48) << peak;
    const int before = w.view->PreviewReads();
    w.view->EnsureVisible(0);
    w.Repaint();
    EXPECT_TRUE(w.view->PreviewReads() > before && state(0) == CDWGListView::kStateFinal);
}

TEST(DwgListView, NamesFitCellsDrawInTheirStatesAndTheMouseAndKeysPost) {
    for (float rate : {1.0f, 1.5f}) {
        SetSkinRateForTest(rate);
        // A name as wide as the cell stands whole; one character more ends in "..." inside the cell.
        QString exact;
        while (MeasureText(exact + QStringLiteral("D")) <= ScaleUnits(132)) exact += QStringLiteral("D");
        EXPECT_EQ(CDWGListView::FitName(exact), exact);
        const QString fitted = CDWGListView::FitName(QStringLiteral("画") + exact);
        EXPECT_TRUE(fitted.endsWith(QStringLiteral("...")) && (QStringLiteral("画") + exact).startsWith(fitted.chopped(3)));
        EXPECT_LE(MeasureText(fitted.chopped(3)), ScaleUnits(132 - 5));

        // Arrived previews (BMP and PNG), missing files, the page mark of a file without preview, and a
        // selected boutique item.
        GridWorld w(
            {Make::Preview, Make::PngPreview, Make::Missing, Make::NoPreview, Make::Preview, Make::Missing, Make::Preview, Make::Missing},
            rate);
        w.view->isBoutique = [](int item) { return item == 4 || item == 6; };
        ASSERT_TRUE(w.Show());
        w.view->RedrawItem(3);
        (void)w.Missing();
        w.commands.clear();
        Click(w.view, w.view->IconRect(4).center());
        w.Repaint();
        MoveAway(&w.window);
        EXPECT_TRUE(MatchesReference(w.view->grab().toImage().convertToFormat(QImage::Format_RGB32), "panel/lists",
                                     rate == 1.0f ? "grid_1.0" : "grid_1.5"));

        // What the mouse and keys post. A click selects (1) and tells the panel (22); a double click on the
        // picture inserts (3), on the label renames (4).
        using Posted = std::vector<RecordedMessage>;
        auto commands = [&] { return (void)w.Missing(), std::exchange(w.commands, {}); };
        EXPECT_EQ(commands(), (Posted{{MsgPanelCommand, 1, 4, {}}, {MsgPanelCommand, 22, 4, {}}}));
        auto has = [](const Posted& got, std::uintptr_t code) {
            return std::find(got.begin(), got.end(), RecordedMessage{MsgPanelCommand, code, 4, {}}) != got.end();
        };
        DoubleClick(w.view, w.view->IconRect(4).center());
        EXPECT_TRUE(has(commands(), 3));
        DoubleClick(w.view, w.view->LabelRect(4).center());
        const Posted onLabel = commands();
        EXPECT_TRUE(has(onLabel, 4) && !has(onLabel, 3));
        // Right clicks: a menu for tried items only; beside the items the selection clears quietly.
        for (int item : {2, 3, 0}) Click(w.view, w.view->IconRect(item).center(), Qt::RightButton);
        Click(w.view, QPoint(w.view->ItemRect(3).center().x(), w.view->ItemRect(7).bottom() + 20));
        EXPECT_EQ(std::make_pair(w.view->GetSelectedItem(), commands()),
                  std::make_pair(-1, Posted{{MsgPanelEvent, 8, 3, {}}, {MsgPanelEvent, 8, 0, {}}}));
        // Keys move the selection and tell the owner; the edges hold.
        w.view->SetSelectedItem(0);
        for (Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Right}) Key(w.view, key);
        EXPECT_EQ(std::make_pair(w.view->GetSelectedItem(), commands()),
                  std::make_pair(5, Posted{{MsgPanelCommand, 1, 4, {}}, {MsgPanelCommand, 1, 5, {}}}));
    }
    EXPECT_EQ(CDWGListView::TitleOf(u"/store/建筑/门.窗.dwg"), QStringLiteral("门.窗"));
}

// Notes the item of every call of the decoder, and holds the first calls (one,
// or every one) at a gate until the test opens it. No call may run on
// the thread that made the watch (the panel's).
struct WatchedDecoder {
    enum Hold : size_t { First = 1, Every = SIZE_MAX };
    explicit WatchedDecoder(Hold hold) : m_hold(hold) {}
    PreviewDecoder Decoder(const std::vector<std::u16string>& paths) {
        return [this, paths](const std::u16string& path, double rate) {
            EXPECT_NE(std::this_thread::get_id(), m_panel) << "read on the panel's thread";
            PreviewDecode decode = DecodeCellPreview(path, rate);
            std::unique_lock<std::mutex> lock(m_mutex);
            m_items.push_back(int(std::find(paths.begin(), paths.end(), path) - paths.begin()));
            m_changed.notify_all();
            if (m_items.size() <= m_hold) m_changed.wait(lock, [this] { return m_open; });
            return decode;
        };
    }
    void Open() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }
    // Waits (without running the panel's events) until `n` calls came in.
    bool WaitForCalls(size_t n) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_items.size() >= n; });
    }
    std::vector<int> Items() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_items;
    }
    const size_t m_hold;
    const std::thread::id m_panel = std::this_thread::get_id();
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_items;
    bool m_open = false;
};

TEST(PreviewLoading, WorkersReadShownCellsOnceDropThoseScrolledPastAndLateResultsOfAnOldListingAndOfAGoneGrid) {
    GridWorld w(std::vector<Make>(400, Make::Preview));
    WatchedDecoder watch(WatchedDecoder::Every);
    w.view->SetPreviewDecoder(watch.Decoder(w.paths));
    w.view->SetPaths(w.paths);
    ASSERT_TRUE(ShowExposed(&w.window));
    w.view->repaint();
    ASSERT_TRUE(watch.WaitForCalls(2)) << "both workers take a cell";
    // Meanwhile the cells show one placeholder.
    const QImage waiting = w.view->grab().toImage();
    EXPECT_TRUE(w.view->ItemState(0) == CDWGListView::kStateFresh &&
                waiting.copy(w.view->IconRect(0)) == waiting.copy(w.view->IconRect(7)));
    // Scrolling fast to the end while the workers are busy with the first cells.
    while (w.view->LastVisibleItem() < 399) {
        Wheel(w.view, QPoint(50, 50), -1);
        w.view->repaint();
    }
    watch.Open();
    ASSERT_TRUE(w.Settle());
    w.view->repaint();
    const int first = w.view->FirstVisibleItem(), screen = 400 - first;
    std::vector<int> items = watch.Items();
    // The two taken before the scroll, then the last screen and a screen of read-ahead above it, each once.
    ASSERT_EQ(int(items.size()), 2 + 2 * screen);
    EXPECT_EQ(std::set<int>(items.begin(), items.begin() + 2), (std::set<int>{0, 1}));
    EXPECT_EQ(std::set<int>(items.begin() + 2, items.end()).size(), size_t(2 * screen));
    EXPECT_GE(*std::min_element(items.begin() + 2, items.end()), first - screen) << "scrolled past, yet read";
    for (int i = first; i <= 399; ++i) EXPECT_EQ(w.view->ItemState(i), CDWGListView::kStateFinal) << i;

    // Listed again after its files changed: only the listing's generation tells a late picture of the
    // old listing, held back here, from the new ones.
    WatchedDecoder held(WatchedDecoder::First);
    w.view->SetPreviewDecoder(held.Decoder(w.paths));
    w.view->SetPaths(w.paths);
    w.view->repaint();
    ASSERT_TRUE(held.WaitForCalls(1));
    const QImage old = DecodeCellPreview(w.paths[0], 1.0).picture;
    for (size_t i = 0; i < w.paths.size(); ++i) w.Write(i, Make::PngPreview);
    w.view->SetPaths(w.paths);
    w.view->repaint();
    const QImage fresh = DecodeCellPreview(w.paths[0], 1.0).picture;
    ASSERT_NE(fresh, old);
    auto allFresh = [&] {
        for (int i = w.view->FirstVisibleItem(); i <= w.view->LastVisibleItem(); ++i)
            if (w.view->CachedPicture(i) != fresh) return false;
        return true;
    };
    ASSERT_TRUE(PumpUntil(allFresh)) << "the new listing loads beside the held job";
    held.Open();
    ASSERT_TRUE(w.Settle());
    EXPECT_TRUE(allFresh()) << "the held old picture was dropped";

    // Listed once more and destroyed while its previews are on their way back.
    const int reads = w.view->PreviewReads();
    w.view->SetPaths(w.paths);
    w.view->repaint();
    for (int n = 0; n < 5000 && w.view->PreviewReads() < reads + 2; ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_GE(w.view->PreviewReads(), reads + 2);
    delete w.view;
    QCoreApplication::processEvents();
}

TEST(PreviewLoading, ShownJobsRunInOrderAndOnlyWhileWanted) {
    WatchedDecoder watch(WatchedDecoder::First);
    std::vector<std::pair<uint64_t, int>> delivered;
    PreviewLoader loader([&](PreviewResult r) { delivered.emplace_back(r.generation, r.item); }, 1);
    std::vector<std::u16string> paths;
    for (int i = 0; i < 30; ++i) paths.push_back(u"/nowhere/" + std::u16string(1, char16_t(u'a' + i)) + u".dwg");
    loader.SetDecoder(watch.Decoder(paths));
    std::vector<PreviewJob> jobs;
    for (int i : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}) jobs.push_back({i, paths[size_t(i)]});
    loader.Want(1, jobs, 1.0);
    ASSERT_TRUE(watch.WaitForCalls(1));
    // Scrolled: 0 is still being read and is not queued twice; 1 to 7 are dropped.
    loader.Want(1, {{8, paths[8]}, {9, paths[9]}, {0, paths[0]}, {20, paths[20]}}, 1.0);
    EXPECT_TRUE(loader.Busy());
    watch.Open();
    ASSERT_TRUE(PumpUntil([&] { return !loader.Busy(); }));
    EXPECT_EQ(watch.Items(), (std::vector<int>{0, 8, 9, 20}));
    EXPECT_EQ(delivered, (std::vector<std::pair<uint64_t, int>>{{1, 0}, {1, 8}, {1, 9}, {1, 20}}));
    EXPECT_EQ(loader.Decodes(), 0) << "no file was there to read";
}

TEST(PreviewLoading, StoppingWithJobsPendingReturnsPromptlyAndDeliversNothing) {
    std::atomic<int> calls{0};
    int delivered = 0;
    auto loader = std::make_unique<PreviewLoader>([&](PreviewResult) { ++delivered; });
    loader->SetDecoder([&calls](const std::u16string&, double) {
        ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return PreviewDecode{PreviewOutcome::NoPicture, {}};
    });
    std::vector<PreviewJob> jobs(500, {0, u"/x.dwg"});
    for (int i = 0; i < 500; ++i) jobs[size_t(i)].item = i;
    loader->Want(1, std::move(jobs), 1.0);
    for (int n = 0; n < 5000 && calls < 3; ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    loader.reset();
    EXPECT_LE(calls.load(), 6) << "the queue is dropped, not worked off";
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0) << "what was posted went with the loader";
}

}  // namespace
}  // namespace marrowfin::test
