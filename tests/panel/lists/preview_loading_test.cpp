// Previews read off the panel's thread: which thread reads, in which order,
// what is dropped when the grid scrolls on or gets a new listing, and how the
// loader stops. The reading is watched through the decoder seam.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "list_world.h"
#include "panel/preview/preview_loader.h"
#include "support/event_pump.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

// Notes every call of the decoder (thread and item), and can hold calls at a
// gate until the test opens it: every call, or only the first.
class WatchedDecoder {
public:
    enum class Hold { None, Every, First };
    explicit WatchedDecoder(Hold hold = Hold::None) : m_hold(hold) {}
    PreviewDecoder Decoder(const std::vector<std::u16string>& paths) {
        return [this, paths](const std::u16string& path, double rate) {
            PreviewDecode decode = DecodeCellPreview(path, rate);
            std::unique_lock<std::mutex> lock(m_mutex);
            m_calls.push_back({std::this_thread::get_id(), int(std::find(paths.begin(), paths.end(), path) - paths.begin())});
            m_changed.notify_all();
            if (m_hold == Hold::Every || (m_hold == Hold::First && m_calls.size() == 1))
                m_changed.wait(lock, [this] { return m_open; });
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
        return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_calls.size() >= n; });
    }
    std::vector<int> Items() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<int> out;
        for (const auto& [thread, item] : m_calls) out.push_back(item);
        return out;
    }
    int OnThread(std::thread::id id) const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return int(std::count_if(m_calls.begin(), m_calls.end(), [id](const auto& c) { return c.first == id; }));
    }

private:
    const Hold m_hold;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::pair<std::thread::id, int>> m_calls;
    bool m_open = false;
};

TEST(PreviewLoading, WorkersReadTheShownCellsOnceAndDropThoseScrolledPast) {
    GridWorld w(std::vector<Make>(400, Make::Preview));
    WatchedDecoder watch(WatchedDecoder::Hold::Every);
    w.view->SetPreviewDecoder(watch.Decoder(w.paths));
    w.view->SetPaths(w.paths);
    ASSERT_TRUE(ShowExposed(&w.window));
    w.view->repaint();
    ASSERT_TRUE(watch.WaitForCalls(2)) << "both workers take a cell";
    // Meanwhile the cells show one placeholder.
    const QImage waiting = w.view->grab().toImage();
    EXPECT_EQ(w.view->ItemState(0), CDWGListView::kStateFresh);
    EXPECT_EQ(waiting.copy(w.view->IconRect(0)), waiting.copy(w.view->IconRect(7)));
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
    EXPECT_EQ(watch.OnThread(std::this_thread::get_id()), 0) << "nothing is read on the panel's thread";
    // The two taken before the scroll, then the last screen and a screen of read-ahead above it, each once.
    ASSERT_EQ(int(items.size()), 2 + 2 * screen);
    EXPECT_EQ(std::set<int>(items.begin(), items.begin() + 2), (std::set<int>{0, 1}));
    EXPECT_EQ(std::set<int>(items.begin() + 2, items.end()).size(), size_t(2 * screen));
    EXPECT_GE(*std::min_element(items.begin() + 2, items.end()), first - screen) << "scrolled past, yet read";
    for (int i = first; i <= 399; ++i) EXPECT_EQ(w.view->ItemState(i), CDWGListView::kStateFinal) << i;
    EXPECT_EQ(w.view->grab().toImage().copy(w.view->IconRect(first)), w.view->CachedPicture(first));
}

TEST(PreviewLoading, ALateResultOfTheOldListingNeverLandsInTheNewOne) {
    // The same paths listed again after their files changed: only the listing's
    // generation tells the old pictures from the new.
    GridWorld w(std::vector<Make>(40, Make::Preview));
    WatchedDecoder watch(WatchedDecoder::Hold::First);
    w.view->SetPreviewDecoder(watch.Decoder(w.paths));
    w.view->SetPaths(w.paths);
    ASSERT_TRUE(ShowExposed(&w.window));
    w.view->repaint();
    ASSERT_TRUE(watch.WaitForCalls(1)) << "one old picture held back";
    const QImage old = DecodeCellPreview(w.paths[0], 1.0).picture;
    for (size_t i = 0; i < w.paths.size(); ++i) w.Write(i, Make::PngPreview);

    w.view->SetPaths(w.paths);
    w.view->repaint();
    const QImage fresh = DecodeCellPreview(w.paths[0], 1.0).picture;
    ASSERT_NE(fresh, old);
    const int last = w.view->LastVisibleItem();
    auto allFresh = [&] {
        for (int i = 0; i <= last; ++i)
            if (w.view->CachedPicture(i) != fresh) return false;
        return true;
    };
    ASSERT_TRUE(PumpUntil(allFresh)) << "the new listing loads beside the held job";
    watch.Open();
    ASSERT_TRUE(w.Settle());
    EXPECT_TRUE(allFresh()) << "the held old picture was dropped";
    w.view->repaint();
    EXPECT_EQ(w.view->grab().toImage().copy(w.view->IconRect(0)), fresh);
}

TEST(PreviewLoading, ShownJobsRunInOrderAndOnlyWhileWanted) {
    WatchedDecoder watch(WatchedDecoder::Hold::First);
    std::vector<std::pair<uint64_t, int>> delivered;
    PreviewLoader loader([&](PreviewResult r) { delivered.emplace_back(r.generation, r.item); }, 1);
    std::vector<std::u16string> paths;
    for (int i = 0; i < 30; ++i) paths.push_back(u"/nowhere/" + std::u16string(1, char16_t(u'a' + i)) + u".dwg");
    loader.SetDecoder(watch.Decoder(paths));
    auto jobs = [&](std::vector<int> items) {
        std::vector<PreviewJob> out;
        for (int i : items) out.push_back({i, paths[size_t(i)]});
        return out;
    };

    loader.Want(1, jobs({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), 1.0);
    ASSERT_TRUE(watch.WaitForCalls(1));
    // Scrolled: 0 is still being read and is not queued twice; 1 to 7 are dropped.
    loader.Want(1, jobs({8, 9, 0, 20}), 1.0);
    EXPECT_TRUE(loader.Busy());
    watch.Open();
    ASSERT_TRUE(PumpUntil([&] { return !loader.Busy(); }));
    EXPECT_EQ(watch.Items(), (std::vector<int>{0, 8, 9, 20}));
    EXPECT_EQ(delivered, (std::vector<std::pair<uint64_t, int>>{{1, 0}, {1, 8}, {1, 9}, {1, 20}}));
    EXPECT_EQ(loader.Decodes(), 0) << "no file was there to read";

    // A new generation while an old job runs: the old result is dropped.
    WatchedDecoder held(WatchedDecoder::Hold::First);
    loader.SetDecoder(held.Decoder(paths));
    delivered.clear();
    loader.Want(1, jobs({3}), 1.0);
    ASSERT_TRUE(held.WaitForCalls(1));
    loader.Want(2, jobs({3, 4}), 1.0);
    held.Open();
    ASSERT_TRUE(PumpUntil([&] { return !loader.Busy(); }));
    EXPECT_EQ(held.Items(), (std::vector<int>{3, 3, 4}));
    EXPECT_EQ(delivered, (std::vector<std::pair<uint64_t, int>>{{2, 3}, {2, 4}}));
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
    std::vector<PreviewJob> jobs;
    for (int i = 0; i < 500; ++i) jobs.push_back({i, u"/x.dwg"});
    loader->Want(1, std::move(jobs), 1.0);
    for (int n = 0; n < 5000 && calls < 3; ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    loader.reset();
    EXPECT_LE(calls.load(), 6) << "the queue is dropped, not worked off";
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0) << "what was posted went with the loader";

    // A grid destroyed while its previews are on their way back.
    GridWorld w(std::vector<Make>(100, Make::Preview));
    w.view->SetPaths(w.paths);
    ASSERT_TRUE(ShowExposed(&w.window));
    w.view->repaint();
    CDWGListView* view = w.view;
    for (int n = 0; n < 5000 && view->PreviewReads() < 2; ++n) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_GE(view->PreviewReads(), 2);
    delete view;
    QCoreApplication::processEvents();
    EXPECT_TRUE(w.window.findChildren<CDWGListView*>().isEmpty());
}

}  // namespace
}  // namespace marrowfin::test
