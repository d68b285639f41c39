#include <gtest/gtest.h>

#include <set>

#include "fault_switches.h"
#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "store/tree_update.h"
#include "platform/files.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "recording_windows.h"
#include "request_counters.h"
#include "service_handle.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "test_store.h"

using namespace marrowfin;
using marrowfin::test::TempHome;
using marrowfin::test::TestStore;

namespace {

// Waits until the queue is idle: both arrays empty and every worker returned.
bool WaitIdle(GalleryStore& store, uint32_t limitMs = 30000) {
    const uint32_t start = GetTickCount();
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(store.downloadLock);
            if (store.downloadsWaiting.empty() && store.downloadsRunning.empty() && LiveDownloadWorkers() == 0)
                return true;
        }
        if (TicksSince(start) > limitMs) return false;
        SleepMs(5);
    }
}

std::vector<GalleryNode*> AllBlocks(GalleryStore& store) {
    std::vector<GalleryNode*> blocks;
    for (GalleryNode* g : store.root->dirChildren)
        for (GalleryNode* c : g->dirChildren)
            for (GalleryNode* b : c->fileChildren) blocks.push_back(b);
    return blocks;
}

// A tree of two galleries from the service, with files not yet fetched.
struct QueueWorld {
    TempHome home;
    test::RecordingWindows windows;
    service::ServiceHandle svc;
    TestStore store;
    QueueWorld() : svc(test::StartLiveService(test::SampleLibrary({2, 3, 20}))) {
        for (const auto& name : test::GalleryNames(test::SampleLibrary({2, 3, 20}))) AddGalleryToShowList(name);
        BuildFirstTree(store);
        AdoptTreeUpdates(store);
        SetDownloadNotifyWindow(test::RecordingWindows::kPanel);
    }
    ~QueueWorld() { SetDownloadNotifyWindow(0); }
};

}  // namespace

TEST(LiveQueue, ABurstNeverRunsMoreThanSixAndEveryPathLeaves) {
    QueueWorld w;
    const auto blocks = AllBlocks(w.store);
    ASSERT_GE(blocks.size(), 50u);
    w.svc.faults().set("/files/*", {.latencyMs = 60});
    for (size_t i = 0; i < 50; ++i) {
        EnqueueDownload(w.store, blocks[i]->Path());
        if (i % 5 == 0) EnqueueDownload(w.store, blocks[i]->Path());  // duplicates are fetched once
    }
    EnqueueDownload(w.store, blocks[0]->Path());
    ASSERT_TRUE(WaitIdle(w.store));
    const auto files = w.svc.counters().get("/files/*");
    EXPECT_EQ(files.count, 50);
    EXPECT_LE(files.peak, 6);
    EXPECT_EQ(files.peak, 6);  // with latency the six slots fill up
    std::set<std::u16string> ready;
    for (const auto& m : w.windows.Messages(MsgFileReady)) ready.insert(m.text);
    EXPECT_EQ(ready.size(), 50u);
    for (size_t i = 0; i < 50; ++i) {
        EXPECT_TRUE(ready.count(blocks[i]->Path()));
        EXPECT_GE(FileSize(blocks[i]->Path()), kMinBlockFileSize);
    }
    EXPECT_EQ(w.windows.Messages(MsgFileReady).size(), 50u);
}

TEST(LiveQueue, FailuresLeaveNoFileAndPresentFilesNeedNoTraffic) {
    QueueWorld w;
    const auto blocks = AllBlocks(w.store);

    // Not in the tree: fails at once, no notice, nothing asked of the service.
    EnqueueDownload(w.store, w.store.root->Path() + u"/nowhere/x.dwg");
    ASSERT_TRUE(WaitIdle(w.store));
    EXPECT_EQ(w.svc.counters().get("/files/*").count, 0);

    // Already on disk and large enough: success without traffic.
    ASSERT_TRUE(CreateDirectories(blocks[0]->parent->Path()));
    ASSERT_TRUE(WriteFileAtomic(blocks[0]->Path(), std::string(2048, 'd')));
    EnqueueDownload(w.store, blocks[0]->Path());
    ASSERT_TRUE(WaitIdle(w.store));
    EXPECT_EQ(w.svc.counters().get("/files/*").count, 0);
    ASSERT_EQ(w.windows.Messages(MsgFileReady).size(), 1u);
    EXPECT_EQ(w.windows.Messages(MsgFileReady)[0].text, blocks[0]->Path());

    // 1,024 bytes is an error page, 1,025 a block.
    service::Fault page{.body = std::string(1024, 'p'), .remaining = 1};
    w.svc.faults().set("/files/*", page);
    EnqueueDownload(w.store, blocks[1]->Path());
    ASSERT_TRUE(WaitIdle(w.store));
    EXPECT_FALSE(PathExists(blocks[1]->Path()));
    page.body = std::string(1025, 'p');
    w.svc.faults().set("/files/*", page);
    EnqueueDownload(w.store, blocks[1]->Path());
    ASSERT_TRUE(WaitIdle(w.store));
    EXPECT_EQ(FileSize(blocks[1]->Path()), 1025);

    // Broken transfers of every kind leave nothing behind and no notice.
    const size_t noticesBefore = w.windows.Messages(MsgFileReady).size();
    const service::Fault broken[] = {
        {.status = 404}, {.status = 500}, {.truncateAt = 300}, {.drop = true}, {.emptyBody = true}};
    for (const service::Fault& fault : broken) {
        SCOPED_TRACE(service::FaultText(fault));
        w.svc.faults().set("/files/*", fault);
        for (size_t i = 2; i < 6; ++i) EnqueueDownload(w.store, blocks[i]->Path());
        ASSERT_TRUE(WaitIdle(w.store));
        for (size_t i = 2; i < 6; ++i) EXPECT_FALSE(PathExists(blocks[i]->Path()));
    }
    EXPECT_EQ(w.windows.Messages(MsgFileReady).size(), noticesBefore);
    // After the faults clear, the same blocks can be asked for again.
    w.svc.faults().clearAll();
    for (size_t i = 2; i < 6; ++i) EnqueueDownload(w.store, blocks[i]->Path());
    ASSERT_TRUE(WaitIdle(w.store));
    for (size_t i = 2; i < 6; ++i) EXPECT_GE(FileSize(blocks[i]->Path()), kMinBlockFileSize);
}

TEST(LiveQueue, ResolvingStaysSafeWhileTheTreeIsRebuilt) {
    QueueWorld w;
    w.svc.faults().set("/files/*", {.latencyMs = 5});
    // Downloads keep resolving paths on workers while the tree is rebuilt on this thread.
    for (int round = 0; round < 3; ++round) {
        for (GalleryNode* b : AllBlocks(w.store)) EnqueueDownload(w.store, b->Path());
        BuildFirstTree(w.store);
        AdoptTreeUpdates(w.store);
    }
    ASSERT_TRUE(WaitIdle(w.store));
    // Every block announced is whole on disk, whatever tree it was resolved in.
    const auto ready = w.windows.Messages(MsgFileReady);
    EXPECT_FALSE(ready.empty());
    for (const auto& m : ready) EXPECT_GE(FileSize(m.text), kMinBlockFileSize);
}

TEST(LiveQueue, AWorkerThatCannotStartLeavesThePathWaitingAndALaterPumpRunsIt) {
    QueueWorld w;
    const auto blocks = AllBlocks(w.store);
    auto lists = [&w] {
        std::lock_guard<std::mutex> lock(w.store.downloadLock);
        return std::make_pair(w.store.downloadsWaiting, w.store.downloadsRunning);
    };
    using Paths = std::vector<std::u16string>;

    // From the panel's pump: the path goes back to the head of the waiting list.
    FailThreadStartsForTests(1);
    EnqueueDownload(w.store, blocks[0]->Path());
    EXPECT_EQ(lists(), std::make_pair(Paths{blocks[0]->Path()}, Paths{}));
    EXPECT_EQ(LiveDownloadWorkers(), 0u);
    PumpDownloads(w.store);
    ASSERT_TRUE(WaitIdle(w.store));
    EXPECT_GE(FileSize(blocks[0]->Path()), kMinBlockFileSize);

    // From a finishing worker's pump: the seventh path waits for the next finish.
    w.svc.faults().set("/files/*", {.latencyMs = 150});
    for (size_t i = 1; i <= 7; ++i) EnqueueDownload(w.store, blocks[i]->Path());
    EXPECT_EQ(lists().first, Paths{blocks[7]->Path()});
    FailThreadStartsForTests(1);
    ASSERT_TRUE(WaitIdle(w.store));
    for (size_t i = 0; i <= 7; ++i) EXPECT_GE(FileSize(blocks[i]->Path()), kMinBlockFileSize) << i;
    EXPECT_EQ(w.windows.Messages(MsgFileReady).size(), 8u);
    EXPECT_EQ(w.svc.counters().get("/files/*").count, 8);
    FailThreadStartsForTests(0);
}
