#include <algorithm>
#include <set>

#include "live_world.h"

using namespace marrowfin;

namespace {

// A tree of two galleries from the service, with files not yet fetched.
struct QueueWorld : test::LiveWorld {
    test::TestStore store;
    QueueWorld() : LiveWorld({2, 3, 20}, 2) {
        test::BuildAndAdopt(store);
        SetDownloadNotifyWindow(test::RecordingWindows::kPanel);
    }
    ~QueueWorld() { SetDownloadNotifyWindow(0); }
    std::vector<GalleryNode*> Blocks() {
        std::vector<GalleryNode*> blocks;
        for (GalleryNode* g : store.root->dirChildren)
            for (GalleryNode* c : g->dirChildren) blocks.insert(blocks.end(), c->fileChildren.begin(), c->fileChildren.end());
        return blocks;
    }
    long Fetched() { return Count("/files/*"); }
    size_t Notices() { return windows.Messages(MsgFileReady).size(); }
    // Until both lists are empty and every worker has returned, noting the most running at once.
    size_t peakRunning = 0;
    bool WaitIdle() {
        for (const uint32_t start = GetTickCount(); TicksSince(start) < 30000; SleepMs(2)) {
            std::lock_guard<std::mutex> lock(store.downloadLock);
            peakRunning = std::max(peakRunning, store.downloadsRunning.size());
            if (store.downloadsWaiting.empty() && store.downloadsRunning.empty() && LiveDownloadWorkers() == 0) return true;
        }
        return false;
    }
};

}  // namespace

// One world through every road of the queue: a worker that cannot start, failures that
// leave no file, present files that need no traffic, a burst that never runs more than
// six at once, and paths resolved while the tree is rebuilt.
TEST(LiveQueue, EveryRoadOfTheQueueInOneLibrary) {
    QueueWorld w;
    const auto blocks = w.Blocks();
    ASSERT_GE(blocks.size(), 63u);
    auto lists = [&w] {
        std::lock_guard<std::mutex> lock(w.store.downloadLock);
        return std::make_pair(w.store.downloadsWaiting, w.store.downloadsRunning);
    };
    using Paths = std::vector<std::u16string>;

    // A worker that cannot start from the panel's pump: the path goes back to the head of the
    // waiting list, and a later pump runs it.
    FailThreadStartsForTests(1);
    EnqueueDownload(w.store, blocks[0]->Path());
    EXPECT_TRUE(lists() == std::make_pair(Paths{blocks[0]->Path()}, Paths{}) && LiveDownloadWorkers() == 0u);
    PumpDownloads(w.store);
    ASSERT_TRUE(w.WaitIdle());
    EXPECT_GE(FileSize(blocks[0]->Path()), kMinBlockFileSize);
    // From a finishing worker's pump: that worker carries the seventh path itself.
    w.faults().set("/files/*", {.latencyMs = 150});
    for (size_t i = 1; i <= 7; ++i) EnqueueDownload(w.store, blocks[i]->Path());
    EXPECT_EQ(lists().first, Paths{blocks[7]->Path()});
    FailThreadStartsForTests(1);
    ASSERT_TRUE(w.WaitIdle());
    for (size_t i = 0; i <= 7; ++i) EXPECT_GE(FileSize(blocks[i]->Path()), kMinBlockFileSize) << i;
    EXPECT_EQ(std::make_pair(w.Notices(), w.Fetched()), std::make_pair(size_t{8}, 8L));
    FailThreadStartsForTests(0);

    // Not in the tree: fails at once; already on disk and large enough: no traffic either.
    EnqueueDownload(w.store, w.store.root->Path() + u"/nowhere/x.dwg");
    ASSERT_TRUE(WriteFileAtomic(blocks[8]->Path(), std::string(2048, 'd')));
    EnqueueDownload(w.store, blocks[8]->Path());
    ASSERT_TRUE(w.WaitIdle());
    ASSERT_EQ(std::make_pair(w.Notices(), w.Fetched()), std::make_pair(size_t{9}, 8L));
    EXPECT_EQ(w.windows.Messages(MsgFileReady)[8].text, blocks[8]->Path());

    // Each fault on four blocks: nothing stands on disk and no notice goes out; a body of
    // 1,024 bytes is an error page, 1,025 a block; after the faults the blocks come.
    const std::pair<service::Fault, bool> cases[] = {{{.body = std::string(1024, 'p')}, false},
                                                     {{.status = 404}, false},
                                                     {{.truncateAt = 300}, false},
                                                     {{.drop = true}, false},
                                                     {{.emptyBody = true}, false},
                                                     {{.body = std::string(1025, 'p')}, true}};
    for (const auto& [fault, lands] : cases) {
        SCOPED_TRACE(service::FaultText(fault));
        w.faults().set("/files/*", fault);
        const size_t notices = w.Notices();
        for (size_t i = 9; i < 13; ++i) EnqueueDownload(w.store, blocks[i]->Path());
        ASSERT_TRUE(w.WaitIdle());
        for (size_t i = 9; i < 13; ++i) EXPECT_EQ(FileSize(blocks[i]->Path()), lands ? 1025 : -1);
        EXPECT_EQ(w.Notices(), notices + (lands ? 4 : 0));
    }

    // A burst of fifty with duplicates: each fetched once, six at a time with latency, never more.
    w.faults().set("/files/*", {.latencyMs = 60});
    const long fetched = w.Fetched();
    const size_t notices = w.Notices();
    w.peakRunning = 0;
    for (size_t i = 13; i < 63; ++i)
        for (int twice = 0; twice < (i % 5 == 0 ? 2 : 1); ++twice) EnqueueDownload(w.store, blocks[i]->Path());
    EnqueueDownload(w.store, blocks[13]->Path());
    ASSERT_TRUE(w.WaitIdle());
    EXPECT_EQ(std::make_tuple(w.Fetched(), w.peakRunning, w.live.handle.counters().get("/files/*").peak <= 6),
              std::make_tuple(fetched + 50, size_t{6}, true));
    const auto ready = w.windows.Messages(MsgFileReady);
    ASSERT_EQ(ready.size(), notices + 50);
    std::set<std::u16string> paths;
    for (size_t m = notices; m < ready.size(); ++m) paths.insert(ready[m].text);
    for (size_t i = 13; i < 63; ++i) EXPECT_TRUE(paths.count(blocks[i]->Path()) && FileSize(blocks[i]->Path()) >= kMinBlockFileSize) << i;

    // Downloads keep resolving paths on workers while the tree is rebuilt on this thread;
    // every block announced is whole on disk, whatever tree it was resolved in.
    w.faults().set("/files/*", {.latencyMs = 5});
    for (int round = 0; round < 3; ++round) {
        for (GalleryNode* b : w.Blocks()) EnqueueDownload(w.store, b->Path());
        test::BuildAndAdopt(w.store);
    }
    ASSERT_TRUE(w.WaitIdle());
    const auto all = w.windows.Messages(MsgFileReady);
    EXPECT_GT(all.size(), ready.size());
    for (const auto& m : all) EXPECT_GE(FileSize(m.text), kMinBlockFileSize);
}
