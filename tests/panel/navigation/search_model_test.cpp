// The search model without a window: which searches start, which outcomes
// count, the collection filter and its late rows, and the result rows'
// queue, downloads and "使用".
#include "panel/model/panel_page.h"
#include "panel/model/search_model.h"
#include "panel_world.h"

using namespace marrowfin;

namespace {

SearchHit Hit(const char16_t* name, int state = RowRemote) {
    SearchHit hit;
    hit.name = name;
    hit.url = u"http://x/" + hit.name;
    hit.path = u"/mirror/" + hit.name;
    hit.state = state;
    return hit;
}

BlockRow Row(const char16_t* name) { return RowOfHit(Hit(name)); }

// "name:state" of each row.
std::string Look(const std::vector<BlockRow>& rows) {
    QStringList look;
    for (const BlockRow& row : rows) look << row.name + ':' + QString::number(row.state);
    return look.join(' ').toStdString();
}

}  // namespace

TEST(SearchModel, ASearchRunsOnceAndOnlyTheNewestOutcomeOnAnOpenPageCounts) {
    SearchModel s;
    s.rows = {Row(u"旧")};
    EXPECT_EQ(s.BeginSearch({}, 0, true), SearchStart::Nothing);
    EXPECT_TRUE(s.BeginSearch(QStringLiteral("门"), 0, false) == SearchStart::Nothing && s.rows.size() == 1);  // no store
    ASSERT_EQ(s.BeginSearch(QStringLiteral("门"), 0, true), SearchStart::Run);
    EXPECT_TRUE(s.rows.empty() && s.searchState == 1);
    s.RunStarted(1);
    EXPECT_EQ(s.BeginSearch(QStringLiteral("门"), 1, true), SearchStart::AlreadyRunning);
    ASSERT_EQ(s.BeginSearch(QStringLiteral("窗"), 1, true), SearchStart::Run);
    s.RunStarted(2);

    const SearchOutcome found{SearchOutcome::Hits, {Hit(u"窗1"), Hit(u"窗2")}};
    const auto old = [] { return std::vector<SearchHit>{Hit(u"窗旧", RowCollected)}; };
    // Overtaken, or the page left, or no outcome: dropped; the newest run has ended all the same.
    EXPECT_EQ(s.TakeOutcome(1, 2, PageSearch, &found, old), SearchTaken::Dropped);
    EXPECT_FALSE(s.SearchEnded(2));
    EXPECT_EQ(s.TakeOutcome(2, 2, PageCollection, &found, old), SearchTaken::Dropped);
    EXPECT_EQ(s.TakeOutcome(2, 2, PageSearch, nullptr, old), SearchTaken::Dropped);
    EXPECT_TRUE(s.serverRows.empty() && s.searchState == 1 && s.SearchEnded(2));
    // Taken: the old collection's hits head the service's, staged until shown on a search page.
    EXPECT_EQ(s.TakeOutcome(2, 2, PageCollectionSearch, &found, old), SearchTaken::Staged);
    EXPECT_EQ(Look(s.serverRows), "窗旧:1 窗1:5 窗2:5");
    EXPECT_TRUE(s.searchState == 0 && s.rows.empty() && !s.ShowStaged(PageBrowse) && s.ShowStaged(PageSearch) && s.rows.size() == 3);
    // An answer without root lists nothing, not even the old collection.
    const SearchOutcome noRoot{SearchOutcome::NoRoot, found.hits};
    EXPECT_EQ(s.TakeOutcome(2, 2, PageSearch, &noRoot, old), SearchTaken::None);
    EXPECT_TRUE(s.serverRows.empty() && s.searchState == 3);

    // A failure keeps its run open until handled; only the newest falls back to the store.
    s.RunStarted(3);
    const SearchOutcome failed{};
    EXPECT_EQ(s.TakeOutcome(3, 3, PageSearch, &failed, old), SearchTaken::Failed);
    EXPECT_TRUE(s.searchState == 2 && !s.SearchEnded(3) && s.LocalAfterFailure(3, 3) && !s.LocalAfterFailure(3, 4));
    s.EndRun(3);
    EXPECT_TRUE(s.SearchEnded(3) && !s.BeginLocalSearch(false) && !s.ListLocalHits({}) && s.rows.empty() && s.searchState == 3);
    s.LeavePage();
    EXPECT_FALSE(s.BeginLocalSearch(true));
}

TEST(SearchModel, TheCollectionFilterWaitsForItsRowsFoldsCaseAndDropsAnswersOfALeftPage) {
    SearchModel s;
    s.collectionRows = {Row(u"left")};
    s.EnterPage(PageCollectionSearch, nullptr);
    EXPECT_TRUE(s.collectionRows.empty() && s.searchUntouched);
    const std::uintptr_t first = s.LoadCollectionRows();
    EXPECT_FALSE(s.BeginCollectionFilter(QStringLiteral("BOLT"), true));  // kept for the rows' arrival
    EXPECT_TRUE(s.lastSearch == QStringLiteral("BOLT") && !s.searchUntouched && s.searchState == 1);

    std::vector<BlockRow> loaded = {Row(u"螺栓M8.dwg"), Row(u"Bolt-Large.dwg"), Row(u"bolt.dwg")};
    EXPECT_EQ(s.TakeCollectionRows(first - 1, PageCollectionSearch, &loaded), CollectionRowsTaken::Dropped);
    EXPECT_EQ(s.TakeCollectionRows(first, PageCollection, &loaded), CollectionRowsTaken::Dropped);
    ASSERT_EQ(s.TakeCollectionRows(first, PageCollectionSearch, &loaded), CollectionRowsTaken::Filter);
    EXPECT_TRUE(s.collectionRows.size() == 3 && !s.collectionRowsPending && s.searchState == 0);
    EXPECT_EQ(s.TakeCollectionRows(first, PageCollectionSearch, nullptr), CollectionRowsTaken::Dropped);

    // Case folded; collected when the file is there; the old hits go.
    const auto onDisk = [](const QString& path) { return path.endsWith(QStringLiteral("bolt.dwg")); };
    s.rows = {Row(u"old")};
    EXPECT_TRUE(s.FilterCollection(onDisk));
    EXPECT_EQ(Look(s.serverRows), "Bolt-Large.dwg:5 bolt.dwg:1");
    EXPECT_TRUE(s.lastSearch == QStringLiteral("bolt") && s.rows.empty() && s.searchState == 0);
    EXPECT_FALSE(s.BeginCollectionFilter(QStringLiteral("bolt"), true));
    ASSERT_TRUE(s.BeginCollectionFilter(QStringLiteral("垫圈"), true));
    EXPECT_TRUE(!s.FilterCollection(onDisk) && s.serverRows.empty() && s.searchState == 3);
    EXPECT_FALSE(s.BeginCollectionFilter(QStringLiteral("螺"), false));

    // Leaving while a load is on its way: no longer waiting, and its answer is dropped.
    const std::uintptr_t second = s.LoadCollectionRows();
    s.ForgetCollectionRows();
    EXPECT_TRUE(!s.collectionRowsPending && s.searchState == 0);
    EXPECT_EQ(s.TakeCollectionRows(second, PageCollectionSearch, &loaded), CollectionRowsTaken::Dropped);
    s.LeavePage();
    EXPECT_EQ(s.TakeCollectionRows(s.LoadCollectionRows(), PageCollectionSearch, &loaded), CollectionRowsTaken::Wait);
}

TEST(SearchModel, RowsInViewQueueWithinTheLimitAndEndedDownloadsAndUseFollowTheRowsState) {
    SearchModel s;
    s.rows = {Row(u"a"), Row(u"b"), Row(u"c"), Row(u"d")};
    s.rows[2].prefetch = false;
    for (int row : {3, 1, 3, 9, 0, 2}) s.NoteRowToCheck(row);
    EXPECT_EQ(s.rowsToCheck, std::vector<int>({3, 1, 9, 0, 2}));
    EXPECT_TRUE(s.QueueRowsInView([](int row) { return row <= 2; }));
    EXPECT_EQ(Look(s.rows), "a:2 b:2 c:5 d:5");
    EXPECT_TRUE(s.downloadQueue.size() == 2 && s.rowsToCheck.empty());

    const auto key = [&](int row) { return std::optional<RowKey>(KeyOf(s.rows[size_t(row)])); };
    int index = -1;
    EXPECT_EQ(s.DownloadEnded(key(0), true, PageCollectionSearch, &index), RowEnd::Fetched);
    EXPECT_TRUE(index == 0 && s.rows[0].state == RowCollected && s.downloadQueue.size() == 1);
    // A quiet fetch fails quietly; "使用" then fetches visibly, and that failure shows until put back.
    EXPECT_EQ(s.DownloadEnded(key(1), false, PageSearch, &index), RowEnd::QuietFailure);
    EXPECT_TRUE(s.rows[1].state == RowRemote && s.downloadQueue.empty());
    EXPECT_EQ(s.Use(1), RowUse::Queued);
    EXPECT_EQ(s.DownloadEnded(key(1), false, PageSearch, &index), RowEnd::Failed);
    EXPECT_EQ(s.Use(1), RowUse::Nothing);
    EXPECT_EQ(s.BackToRemoteIfFailed(*key(1)), 1);
    EXPECT_EQ(s.BackToRemoteIfFailed(*key(1)), -1);
    BlockRow gone = Row(u"gone");
    ASSERT_TRUE(s.Enqueue(gone));
    EXPECT_EQ(s.DownloadEnded(KeyOf(gone), true, PageSearch, &index), RowEnd::Gone);
    EXPECT_TRUE(index == -1 && s.downloadQueue.empty());

    // "使用" of a quiet fetch under way makes it visible; of a row lost from the queue, remote again.
    ASSERT_TRUE(s.Enqueue(s.rows[3]));
    EXPECT_EQ(s.Use(3), RowUse::Redraw);
    EXPECT_TRUE(!s.rows[3].prefetch && !s.downloadQueue.begin()->second.prefetch);
    s.downloadQueue.clear();
    EXPECT_TRUE(s.Use(3) == RowUse::Redraw && s.rows[3].state == RowRemote);
    for (int state : {RowFresh, RowCollected, RowFetched}) {
        s.rows[0].state = state;
        EXPECT_EQ(s.Use(0), RowUse::Insert) << state;
    }
    EXPECT_TRUE(s.Use(-1) == RowUse::Nothing && s.Use(4) == RowUse::Nothing);

    // The queue takes a row while it holds at most a hundred.
    for (int i = 0; i < 100; ++i) s.downloadQueue[-1 - i] = gone;
    EXPECT_EQ(s.Use(3), RowUse::Queued);
    s.rows[0].state = RowRemote;
    EXPECT_TRUE(s.Use(0) == RowUse::Nothing && s.rows[0].state == RowRemote && s.downloadQueue.size() == 101);
    s.NoteRowToCheck(2);
    s.rows[2].prefetch = true;
    EXPECT_FALSE(s.QueueRowsInView([](int) { return true; }));

    // Progress shows on a visible download with a size: at least 8 %, in steps above one.
    s.rows[1].size = 1000;
    std::vector<int> shown;
    for (std::intptr_t bytes : {20, 99, 100, 1000}) shown.push_back(s.Progress(*key(1), bytes) == 1 ? s.rows[1].percent : -1);
    EXPECT_EQ(shown, std::vector<int>({8, -1, 10, 100}));
    s.rows[2].size = 1000;
    EXPECT_TRUE(s.Progress(*key(2), 900) == -1 && s.Progress(*key(3), 900) == -1);  // a quiet fetch; no size

    s.searchState = 3;
    s.GoBack();  // "返回"
    EXPECT_TRUE(s.rows.empty() && s.downloadQueue.empty() && s.searchState == 0);
}
