// The collection's state and the thumbnail queue without a window: which
// reload's result reaches which `then`, which folder read counts, what the
// folder map keeps across reads, renames and deletions, the hand-over's poll,
// and what the thumbnail queue asks for next.
#include "collection/handover_calls.h"
#include "net/download_queue.h"
#include "panel/model/collection_model.h"
#include "panel/model/thumbnail_queue.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(CollectionModel, ReloadsFolderReadsAndTheMapFollowTheNewestAnswer) {
    CollectionModel c;
    std::vector<std::pair<int, int>> heard;  // (which then, result)
    auto then = [&heard](int which) { return [&heard, which](int result) { heard.emplace_back(which, result); }; };

    // A reload overtaken on its way: its answer no longer counts and its `then`
    // is never called. Asked for from outside, it left the page's status alone.
    c.quietCollect = true;
    const std::uintptr_t first = c.BeginReload();
    c.HoldReload(first, then(1));
    EXPECT_TRUE(c.Busy() && !c.LoadStatus(LoadStep::Failed));
    c.quietCollect = false;
    const std::uintptr_t second = c.BeginReload();
    c.HoldReload(first, then(1));  // a late step of the overtaken one holds nothing
    EXPECT_FALSE(c.Busy() || c.IsNewestReload(first) || c.EndReload() || !c.LoadStatus(LoadStep::Failed))
        << "the overtaken reload leaves no then, no hold and no quiet behind";
    c.HoldReload(second, then(2));
    if (auto end = c.EndReload()) end(1);
    EXPECT_FALSE(c.Busy() || c.EndReload()) << "a result reaches its then once";
    EXPECT_EQ(heard, (std::vector<std::pair<int, int>>{{2, 1}}));

    // The first read of a run wipes the mirror; a read folder keeps its blocks
    // only while its path is the same; the eighteenth folder leaves no room.
    EXPECT_TRUE(c.WipesMirror());
    CollectedBlock bolt{u"b1", u"螺栓.dwg", u"http://x/1", {}, u"/m/螺栓/螺栓.dwg"};
    EXPECT_TRUE(c.AdoptFolders({{u"1", u"螺栓", u"/m/螺栓", {}}, {u"2", u"管件", u"/m/管件", {}}}));
    c.FolderBlocksRead(u"/m/螺栓", {bolt});
    c.FolderBlocksRead(u"/m/管件", {bolt});
    EXPECT_FALSE(c.WipesMirror());
    std::vector<struct CollectionFolder> many{{u"1", u"螺栓", u"/m/螺栓", {}}, {u"2", u"门窗", u"/m/门窗", {}}};
    for (int i = 3; i <= kMaxCollectionFolders; ++i) many.push_back({Utf8ToUtf16(std::to_string(i)), u"f", u"/m/f", {}});
    EXPECT_FALSE(c.AdoptFolders(many));
    EXPECT_EQ(std::make_tuple(c.folderMap.size(), c.folderMap[u"1"].blocks.size(), c.folderMap[u"2"].blocks.size()),
              std::make_tuple(size_t(kMaxCollectionFolders), size_t(1), size_t(0)));
    EXPECT_TRUE(c.AdoptFolders({many[0], many[1]})) << "a folder gone makes room again";

    // A rename moves the folder and its blocks' paths; a deletion takes the block of that name in that folder only.
    c.FolderBlocksRead(u"/m/门窗", {{u"b2", u"门.dwg", {}, {}, u"/m/门窗/门.dwg"}, {u"b3", u"螺栓.dwg", {}, {}, u"/m/门窗/螺栓.dwg"}});
    c.FolderRenamed(u"/m/螺栓", u"/m/紧固件", u"紧固件");
    EXPECT_EQ(std::make_tuple(c.folderMap[u"1"].name, c.folderMap[u"1"].path, c.folderMap[u"1"].blocks.at(0).path),
              std::make_tuple(std::u16string(u"紧固件"), std::u16string(u"/m/紧固件"), std::u16string(u"/m/紧固件/螺栓.dwg")));
    c.BlockDeleted(u"/m/门窗", u"螺栓.dwg");
    EXPECT_EQ(std::make_tuple(c.folderMap[u"1"].blocks.size(), c.folderMap[u"2"].blocks.size(), c.folderMap[u"2"].blocks.at(0).filename),
              std::make_tuple(size_t(1), size_t(1), std::u16string(u"门.dwg")));

    // Folder reads: only the newest counts, and only while its folder is open;
    // an older answer leaves the newer read pending.
    const std::uintptr_t read1 = c.BeginFolderRead(), read2 = c.BeginFolderRead();
    c.folderReading = true;
    EXPECT_TRUE(!c.EndFolderRead(read1, true) && c.Busy());
    EXPECT_FALSE(c.EndFolderRead(read2, false) || c.Busy()) << "a read whose folder was left still ends";
    // A made folder opens after its reload only if no folder was opened since and the user is on the collections.
    EXPECT_EQ((std::vector<bool>{c.OpensMadeFolder(1, read2, 1), c.OpensMadeFolder(0, read2, 1), c.OpensMadeFolder(2, read2, 1),
                                 c.OpensMadeFolder(1, read2, 3)}),
              (std::vector<bool>{true, false, false, false}));

    // A route into the collections reads them first for an unknown user or another one.
    EXPECT_EQ((std::vector<bool>{c.TargetNeedsReload(7), c.TargetNeedsReload(7), c.TargetNeedsReload(9), c.TargetNeedsReload(1),
                                 c.TargetNeedsReload(1)}),
              (std::vector<bool>{true, false, true, true, true}));

    // The hand-over's poll is never asked twice at once; working goes on, idle has landed, anything else failed.
    EXPECT_EQ((std::vector<bool>{c.BeginSyncPoll(), c.BeginSyncPoll(), c.SyncPolled(SyncWorking) == SyncPoll::GoOn, c.BeginSyncPoll()}),
              (std::vector<bool>{true, false, true, true}));
    EXPECT_EQ((std::vector<SyncPoll>{c.SyncPolled(SyncIdle), c.SyncPolled(2), c.SyncPolled(-1)}),
              (std::vector<SyncPoll>{SyncPoll::Landed, SyncPoll::Failed, SyncPoll::Failed}));
}

TEST(ThumbnailQueue, ReportsScansLanesArrivalsAndWhatIsReadyToInsert) {
    ThumbnailQueue q;
    // A burst of reports: each item once, scanned in order, and the list empty again.
    for (int item : {7, 3, 7, 12, 3, 0}) q.Report(item);
    EXPECT_EQ(q.TakeReported(), (std::vector<int>{0, 3, 7, 12}));
    EXPECT_TRUE(q.toCheck.empty() && q.TakeReported().empty());

    // Mirror files: each waits once, in order; six run at a time, a seventh waits for a lane.
    std::vector<std::u16string> paths;
    for (int i = 0; i < 8; ++i) paths.push_back(u"/m/f" + Utf8ToUtf16(std::to_string(i)) + u".dwg");
    for (const auto& path : paths) EXPECT_TRUE(q.Wait(path) && !q.Wait(path));
    std::vector<std::u16string> started;
    for (std::u16string next; !(next = q.TakeNext()).empty(); q.Run(next)) started.push_back(next);
    EXPECT_EQ(started, std::vector<std::u16string>(paths.begin(), paths.begin() + ThumbnailQueue::kLanes));
    q.Ended(paths[2]);
    q.Run(q.TakeNext());
    EXPECT_TRUE(q.running.back() == paths[6] && q.TakeNext().empty()) << "the freed lane is taken by the next waiting";
    q.Ended(paths[0]);
    EXPECT_TRUE(q.TakeNext() == paths[7] && q.waiting.empty());

    // Arriving: while a list holds it and it has not arrived since it was last asked for.
    EXPECT_EQ((std::vector<bool>{q.Arriving(paths[1], false), q.Arriving(u"/g/a.dwg", true), q.Arriving(u"/g/b.dwg", false)}),
              (std::vector<bool>{true, true, false}));
    q.Arrived(u"/g/a.dwg");
    EXPECT_FALSE(q.Arriving(u"/g/a.dwg", true)) << "arrived while the worker still stands in the running list";
    q.Asked(u"/g/a.dwg");
    EXPECT_TRUE(q.Arriving(u"/g/a.dwg", true));

    // Ready to insert: a whole file (from 1,025 bytes) that no download still holds.
    TempHome home;
    GalleryStore store;
    auto file = [&](const char* name, int64_t size) {
        if (size >= 0) WriteBytes(home.file(name), std::string(static_cast<size_t>(size), 'b'));
        return Utf8ToUtf16(home.file(name));
    };
    store.downloadsRunning.push_back(file("running.dwg", 4096));
    store.downloadsWaiting.push_back(file("waiting.dwg", 4096));
    EXPECT_EQ(
        (std::vector<bool>{BlockFileReady(store, file("whole.dwg", kMinBlockFileSize)),
                           BlockFileReady(store, file("cut.dwg", kMinBlockFileSize - 1)), BlockFileReady(store, store.downloadsRunning[0]),
                           BlockFileReady(store, store.downloadsWaiting[0]), BlockFileReady(store, file("none.dwg", -1))}),
        (std::vector<bool>{true, false, false, false, false}));
}
