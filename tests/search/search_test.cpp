// The search's data side in one small store beside the stand-in service: the
// request on the wire, rows from the files on disk, the cache's versions,
// odd and broken replies, the offline fallback over the tree, the download
// ids and the row downloads with their size rule and progress.

#include <filesystem>
#include <thread>

#include "fault_switches.h"
#include "net/http_stack.h"
#include "platform/ini_file.h"
#include "request_counters.h"
#include "search/block_search.h"
#include "search/local_search.h"
#include "search/row_downloads.h"
#include "search/search_cache.h"
#include "store/store_fixture.h"
#include "support/live_service.h"
#include "support/recording_windows.h"

namespace marrowfin::test {
namespace {

using Lines = std::vector<std::string>;
// Ranked by the service: 门.dwg, then names starting with 门, then 推拉门.dwg.
const char kLibrary[] =
    "gallery\t建筑门窗\t0\nclass\t建筑门窗\t单开门\t3\nclass\t建筑门窗\t推拉窗\t6\ngallery\tDoors\t1\n"
    "class\tDoors\tSliding\t2\nblock\t建筑门窗\t单开门\t门.dwg\t0\nblock\t建筑门窗\t单开门\t门把手.dwg\t0\n"
    "block\t建筑门窗\t推拉窗\t推拉门.dwg\t0\nblock\tDoors\tSliding\t门-s.dwg\t0\nblock\tDoors\tSliding\tpanel.dwg\t0\n";

struct Search : StoreFixture {
    void SetUp() override {
        StoreFixture::SetUp();
        service = StartLiveService(WriteLibrary(data, kLibrary));
    }
    std::u16string At(const std::u16string& tail) { return rootPath + u"/" + tail; }
    SearchOutcome Run(const std::map<std::u16string, int>& collected = {}) {
        return RunBlockSearch(rootPath, u"门", collected, [] { return true; });
    }
    // Per row: the path under the root, state, " p" prefetch, " b" boutique, size, the url unless the
    // service's address of class/subclass/name, and " bad" unless the path ends in those.
    Lines Rows(const std::vector<SearchHit>& hits) {
        Lines lines;
        for (const SearchHit& h : hits) {
            const std::u16string tail = u"/" + h.klass + u"/" + h.subclass + u"/" + h.name;
            lines.push_back(Utf16ToUtf8(h.path.substr(rootPath.size() + 1)) + " " + std::to_string(h.state) + (h.prefetch ? " p" : "") +
                            (h.boutique ? " b " : " ") + std::to_string(h.size) +
                            (h.url == Utf8ToUtf16(service.baseUrl()) + u"/files" + tail ? "" : " " + Utf16ToUtf8(h.url)) +
                            (h.path.ends_with(tail) ? "" : " bad"));
        }
        return lines;
    }

    RecordingWindows windows;
    std::string data = home.file("data");
    service::ServiceHandle service;
};

TEST_F(Search, RowsComeFromTheFilesAndTheCacheIsRefreshedFirst) {
    for (const char16_t* tail : {u"建筑门窗/单开门/门.dwg", u"建筑门窗/单开门/门把手.dwg", u"search/Doors/Sliding/门-s.dwg"})
        Touch(At(tail));
    // No version is known yet, so the cached copy goes before the rows are made.
    EXPECT_EQ(Rows(Run({{At(u"建筑门窗/单开门/门把手.dwg"), 1}}).hits),
              (Lines{"建筑门窗/单开门/门.dwg 0 p 2000", "建筑门窗/单开门/门把手.dwg 1 p 2000", "search/Doors/Sliding/门-s.dwg 5 p b 2000",
                     "search/建筑门窗/推拉窗/推拉门.dwg 5 p 2000"}));
    // The text as typed (escaped by the transport), no exclusions, one request.
    EXPECT_TRUE(service.counters().get("/gallery/search_g").count == 1 &&
                service.counters().get("/gallery/search_g").last == "POST /gallery/search_g?search_content=%E9%97%A8&excepts=");
    // The same versions again: cached copies stay; nom="0" turns prefetch off for every hit.
    Touch(At(u"search/Doors/Sliding/门-s.dwg"));
    Touch(At(u"search/建筑门窗/推拉窗/推拉门.dwg"));
    service.setSettings({.nom = "0"});
    EXPECT_EQ(Rows(Run({{At(u"search/建筑门窗/推拉窗/推拉门.dwg"), 1}}).hits),
              (Lines{"建筑门窗/单开门/门.dwg 0 2000", "建筑门窗/单开门/门把手.dwg 0 2000", "search/Doors/Sliding/门-s.dwg 4 b 2000",
                     "search/建筑门窗/推拉窗/推拉门.dwg 1 2000"}));
    // Marks that would cut the query short reach the service as typed.
    (void)RunBlockSearch(rootPath, u"C++ & =%41", {}, [] { return true; });
    EXPECT_EQ(service.counters().get("/gallery/search_g").last, "POST /gallery/search_g?search_content=C%2B%2B%20%26%20%3D%2541&excepts=");
    int asks = 0;  // a run that is no longer the newest stages nothing more
    EXPECT_EQ(RunBlockSearch(rootPath, u"门", {}, [&] { return ++asks <= 2; }).hits.size(), 2u);
}

TEST_F(Search, RepliesThatAreOddOrBroken) {
    using enum SearchOutcome::Kind;
    const std::tuple<service::Fault, SearchOutcome::Kind, Lines> cases[] = {
        {{.body = "<root><item filename=\"..\" classify=\"G\" subclass=\"S\"/><item filename=\"a\" classify=\"../..\" "
                  "subclass=\"S\"/><item filename=\"ok\" classify=\"G\" subclass=\"S\"/></root>"},
         Hits,
         {"search/G/S/ok 5 p 0 "}},
        {{.body = "<other/>"}, NoRoot, {}},
        {{.body = "<root nom=\"0\"/>"}, Hits, {}},
        {{.status = 500}, Failed, {}},
        {{.emptyBody = true}, Failed, {}},
        {{.body = "<root><item filename=\"a\""}, Failed, {}}};
    for (const auto& [fault, kind, rows] : cases) {
        SCOPED_TRACE(service::FaultText(fault));
        service.faults().set("/gallery/search_g", fault);
        const SearchOutcome outcome = Run();
        EXPECT_EQ(std::make_pair(outcome.kind, Rows(outcome.hits)), std::make_pair(kind, rows));
    }
}

// A class whose version rose loses its cache folder, equal or lower keep it, names that would
// reach outside the cache delete nothing, and a ver.ini that cannot be read counts as -1.
TEST_F(Search, CacheVersionsEmptyOnlyRisenClasses) {
    const std::u16string cache = At(u"search"), ini = At(u"search/ver.ini");
    for (const char16_t* name : {u"A", u"B", u"C", u"D", u"../Doors"}) Touch(cache + u"/" + name + u"/s/x.dwg");
    for (const auto& [name, t] : {std::pair{u"A", u"4"}, {u"B", u"3"}, {u"C", u"2"}}) IniWriteString(ini, u"version", name, t);
    RefreshSearchCacheVersions(rootPath, {{u"A", 5}, {u"B", 3}, {u"C", 1}, {u"D", 0}, {u"..", 9}, {u"../Doors", 9}, {u"", 9}});
    std::string left;
    for (const char16_t* name : {u"A", u"B", u"C", u"D"})
        left += Utf16ToUtf8(name) + (FileExists(cache + u"/" + name + u"/s/x.dwg") ? "+" : "-") +
                std::to_string(IniGetInt(ini, u"version", name, -1));
    EXPECT_TRUE(left == "A-5B+3C+2D-0" && FileExists(ini) && PathExists(At(u"Doors/s/x.dwg"))) << left;
    ASSERT_TRUE(DeleteSearchCache(rootPath) && CreateDirectories(ini));
    Touch(cache + u"/A/s/x.dwg");
    RefreshSearchCacheVersions(rootPath, {{u"A", 0}});
    EXPECT_FALSE(PathExists(cache + u"/A"));
}

// Recent and common-use entries never count, nor blocks without a file (named "-" here);
// "我的收藏" and the paths collected in this run give collected rows.
TEST_F(Search, OfflineFallbackAndOldCollectionOverATree) {
    GalleryNode* doors = AddClass(AddGallery(u"建筑", true), u"单开门", 1, u"");
    GalleryNode* mine = AddGallery(u"我的收藏");
    GalleryNode *f1 = AddClass(mine, u"f1", 0, u""), *f2 = AddClass(mine, u"f2", 0, u"");
    for (auto [cls, name] : {std::pair{doors, u"木门A"}, {doors, u"-门B"}, {doors, u"DOOR门C"}, {f1, u"门1"}, {f1, u"-门2"}, {f2, u"门3"}})
        if (GalleryNode* b = AddBlock(cls, name, 1, false); name[0] != u'-') Touch(b->Path());
    const std::u16string wood = At(u"建筑/单开门/木门A");
    AddChild(store.root, new GalleryNode(kRootName, wood, u"门最近", kKindFile, false, false, 0), true);
    AddChild(doors->parent, new GalleryNode(kCommonUseTag, wood, u"木门A", kKindFile, false, false, 0), true);
    std::vector<GalleryNode*> nodes;  // the hits' nodes, in the rows' order
    EXPECT_EQ(Rows(LocalBlockSearch(store.root, u"门", {{At(u"建筑/单开门/DOOR门C"), 1}}, &nodes)),
              (Lines{"建筑/单开门/木门A 0 p b 1 ", "建筑/单开门/DOOR门C 1 p b 1 ", "我的收藏/f1/门1 1 p 1 ", "我的收藏/f2/门3 1 p 1 "}));
    EXPECT_TRUE(nodes.size() == 4 && nodes[0] == doors->fileChildren[0] && nodes[3] == f2->fileChildren[0]);
    // The old collection in found order, with or without a file: it heads a service search's rows.
    EXPECT_EQ(Rows(OldCollectionHits(store.root, u"门")),
              (Lines{"我的收藏/f1/门1 1 p 1 ", "我的收藏/f1/-门2 1 p 1 ", "我的收藏/f2/门3 1 p 1 "}));

    // A class with many hits is answered from its folder's listing, which
    // follows every change of the folder: a file gone, a file back, a name
    // that became a folder.
    GalleryNode* many = AddClass(AddGallery(u"门库"), u"全部", 0, u"");
    for (int i = 0; i < 12; ++i) Touch(AddBlock(many, u"窗" + std::u16string(1, u'a' + i), 1, false)->Path());
    // Written an hour ago: its listing is kept between searches.
    const std::filesystem::path folder = std::filesystem::u8path(Utf16ToUtf8(many->Path()));
    std::filesystem::last_write_time(folder, std::filesystem::last_write_time(folder) - std::chrono::hours(1));
    auto count = [&] { return LocalBlockSearch(store.root, u"窗", {}).size(); };
    EXPECT_EQ(count(), 12u);
    RemoveFile(many->fileChildren[3]->Path());
    EXPECT_EQ(count(), 11u);
    Touch(many->fileChildren[3]->Path());
    RemoveFile(many->fileChildren[5]->Path());
    CreateDirectories(many->fileChildren[5]->Path());
    EXPECT_EQ(count(), 11u);
}

// Ids run 1 to 50000 and round again; of two workers of one row racing, one enters; below 1,025
// bytes a block is an error page and leaves no file; progress goes to the window.
TEST_F(Search, RowDownloadsRunOnceAndKeepOnlyWholeBlocks) {
    int wraps = 0, steps = 0;
    for (uint16_t i = 0, last = NextDownloadId(), id; i < 50000; ++i, last = id)
        id = NextDownloadId(), wraps += last == 50000 && id == 1, steps += id == last + 1;
    const int sequence = NextQueueSequence();
    EXPECT_EQ(std::make_tuple(wraps, steps, NextQueueSequence()), std::make_tuple(1, 49999, sequence + 1));
    const RowKey key{u"门", u"G", u"http://h/门", u"/r/G/S/门"}, otherUrl{key.name, key.klass, u"http://h/2", key.path};
    for (int round = 0; round < 200; ++round) {
        ActiveRowDownloads active;
        std::atomic<int> ready{0}, won{0};
        auto begin = [&](uint16_t id) {
            for (++ready; ready < 2;) {}
            won += active.Begin(id, key);
        };
        std::thread a(begin, 1), b(begin, 2);
        a.join(), b.join();
        ASSERT_TRUE(won == 1 && active.Count() == 1 && active.Begin(9, otherUrl)) << round;
    }
    WriteBytes(data + "/blocks/Doors/Sliding/panel.dwg", std::string(1025, 'p'));
    WriteBytes(data + "/blocks/Doors/Sliding/门-s.dwg", std::string(1024, 's'));
    auto row = [&](const std::u16string& name) {
        return RowKey{name, u"Doors", Utf8ToUtf16(service.baseUrl()) + u"/files/Doors/Sliding/" + name, At(u"s/" + name)};
    };
    ActiveRowDownloads active;
    uint16_t id = 0;
    ASSERT_EQ(RunRowDownload(active, row(u"panel.dwg"), RecordingWindows::kPanel, &id), RowDownloadResult::Finished);
    const auto progress = windows.Messages(MsgProgress);
    ASSERT_TRUE(!progress.empty() && active.Find(id) == row(u"panel.dwg"));
    EXPECT_EQ(std::make_tuple(FileSize(At(u"s/panel.dwg")), progress.back().wParam, progress.back().lParam),
              std::make_tuple(int64_t{1025}, std::uintptr_t{id} << 16, std::intptr_t{1025}));
    EXPECT_EQ(RunRowDownload(active, row(u"panel.dwg"), 0, nullptr), RowDownloadResult::AlreadyRunning);
    // One byte less is an error page: failed, and no file (refusals: the panel's search road).
    EXPECT_TRUE(RunRowDownload(active, row(u"门-s.dwg"), 0, nullptr) == RowDownloadResult::Failed && !PathExists(row(u"门-s.dwg").path) &&
                service.counters().get("/files/*").count == 2);
}

}  // namespace
}  // namespace marrowfin::test
