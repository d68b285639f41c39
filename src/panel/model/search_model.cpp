#include "panel/model/search_model.h"

#include <algorithm>

#include "panel/model/panel_page.h"
#include "search/row_downloads.h"

namespace marrowfin {

namespace {

constexpr size_t kQueueLimit = 100;  // a queue holding more refuses the next row

}  // namespace

// ---- search runs ------------------------------------------------------------------

SearchStart SearchModel::BeginSearch(const QString& text, int newest, bool hasRoot) {
    // The same text still on its way: one request is enough.
    const auto run = searchRuns.find(newest);
    if (run != searchRuns.end() && run->second == 1 && text == lastSearch) return SearchStart::AlreadyRunning;
    searchRuns.clear();
    searchUntouched = false;
    if (text.isEmpty()) return SearchStart::Nothing;
    lastSearch = text;
    if (!hasRoot) return SearchStart::Nothing;
    rows.clear();
    searchState = 1;
    return SearchStart::Run;
}

SearchTaken SearchModel::TakeOutcome(int generation, int newest, int page, const SearchOutcome* outcome,
                                     const std::function<std::vector<SearchHit>()>& oldHits) {
    // A run overtaken by a newer one, or one whose page was left: what it
    // found goes, and the area stays as the newer run or the page has it.
    if (generation != newest || !outcome || !IsSearchPage(page)) {
        if (auto run = searchRuns.find(generation); run != searchRuns.end()) run->second = 0;
        return SearchTaken::Dropped;
    }
    if (outcome->kind == SearchOutcome::Failed) {
        searchState = 2;
        return SearchTaken::Failed;
    }
    serverRows.clear();
    if (outcome->kind == SearchOutcome::Hits) {
        // Blocks of the old local collection head the service's rows.
        if (oldHits)
            for (const SearchHit& hit : oldHits()) serverRows.push_back(RowOfHit(hit));
        for (const SearchHit& hit : outcome->hits) serverRows.push_back(RowOfHit(hit));
    }
    searchState = serverRows.empty() ? 3 : 0;
    searchRuns[generation] = 0;
    return serverRows.empty() ? SearchTaken::None : SearchTaken::Staged;
}

bool SearchModel::SearchEnded(int newest) const {
    const auto run = searchRuns.find(newest);
    return run != searchRuns.end() && run->second == 0;
}

bool SearchModel::BeginLocalSearch(bool hasRoot) {
    searchState = 0;
    return !lastSearch.isEmpty() && hasRoot;
}

bool SearchModel::ListLocalHits(const std::vector<SearchHit>& hits) {
    rows.clear();
    for (const SearchHit& hit : hits) rows.push_back(RowOfHit(hit));
    if (rows.empty()) searchState = 3;
    return !rows.empty();
}

bool SearchModel::ShowStaged(int page) {
    if (!IsSearchPage(page)) return false;
    rows = serverRows;
    return true;
}

// ---- the collection search page -------------------------------------------------

bool SearchModel::BeginCollectionFilter(const QString& text, bool hasRoot) {
    if (text == lastSearch) return false;
    searchRuns.clear();
    searchUntouched = false;
    if (text.isEmpty()) return false;
    lastSearch = text;
    // Rows still on their way: the filter runs when they land.
    return hasRoot && !collectionRowsPending;
}

bool SearchModel::FilterCollection(const std::function<bool(const QString&)>& fileExists) {
    rows.clear();
    serverRows.clear();
    lastSearch = lastSearch.toLower();
    for (const BlockRow& row : collectionRows) {
        if (!row.name.toLower().contains(lastSearch)) continue;
        BlockRow hit = row;
        hit.state = fileExists(hit.path) ? RowCollected : RowRemote;
        serverRows.push_back(std::move(hit));
    }
    searchState = serverRows.empty() ? 3 : 0;
    return !serverRows.empty();
}

std::uintptr_t SearchModel::LoadCollectionRows() {
    collectionRowsPending = true;
    searchState = 1;  // "图块加载中，请稍候"
    return ++collectionRowsGeneration;
}

CollectionRowsTaken SearchModel::TakeCollectionRows(std::uintptr_t generation, int page,
                                                    std::vector<BlockRow>* loaded) {
    // An older load, or a page the user has left: the rows go with the message.
    if (generation != collectionRowsGeneration || !collectionRowsPending || page != PageCollectionSearch)
        return CollectionRowsTaken::Dropped;
    collectionRowsPending = false;
    searchState = 0;
    if (loaded) collectionRows = std::move(*loaded);
    // A filter asked for while the rows were on their way runs now.
    return lastSearch.isEmpty() ? CollectionRowsTaken::Wait : CollectionRowsTaken::Filter;
}

void SearchModel::ForgetCollectionRows() {
    ++collectionRowsGeneration;
    if (!collectionRowsPending) return;
    collectionRowsPending = false;
    searchState = 0;  // as a load that brought nothing would have left it
}

// ---- pages --------------------------------------------------------------------

void SearchModel::EnterPage(int page, const GalleryStore* store) {
    searchUntouched = true;
    if (store) localHits.Reset(*store);
    if (page == PageCollectionSearch) collectionRows.clear();
}

void SearchModel::LeavePage() {
    lastSearch.clear();
    searchUntouched = false;
}

void SearchModel::GoBack() {
    localHits.clear();
    rows.clear();
    searchState = 0;
    downloadQueue.clear();  // waiting downloads go; running ones find no row
}

// ---- rows and downloads ---------------------------------------------------------

int SearchModel::FindRow(const RowKey& key) const {
    for (size_t i = 0; i < rows.size(); ++i)
        if (RowHasKey(rows[i], key)) return static_cast<int>(i);
    return -1;
}

bool SearchModel::Enqueue(BlockRow& row) {
    if (downloadQueue.size() > kQueueLimit) return false;
    row.state = RowDownloading;
    BlockRow copy = row;
    copy.thumbnail = QImage();
    copy.sequence = NextQueueSequence();
    downloadQueue[copy.sequence] = std::move(copy);
    return true;
}

RowEnd SearchModel::DownloadEnded(const std::optional<RowKey>& key, bool ok, int page, int* index) {
    // A download whose row has gone (the page was left, a new search came) is
    // retired all the same, so that the same row may be fetched again later.
    *index = key ? FindRow(*key) : -1;
    if (key) std::erase_if(downloadQueue, [&](const auto& entry) { return RowHasKey(entry.second, *key); });
    if (*index < 0) return RowEnd::Gone;
    BlockRow& row = rows[static_cast<size_t>(*index)];
    if (ok) {
        row.state = page == PageCollectionSearch ? RowCollected : RowFetched;
        row.thumbnailTried = false;
        return RowEnd::Fetched;
    }
    if (row.prefetch) {
        row.state = RowRemote;
        row.prefetch = false;
        return RowEnd::QuietFailure;
    }
    row.state = RowFailed;
    return RowEnd::Failed;
}

int SearchModel::BackToRemoteIfFailed(const RowKey& key) {
    const int at = FindRow(key);
    if (at < 0 || rows[static_cast<size_t>(at)].state != RowFailed) return -1;
    rows[static_cast<size_t>(at)].state = RowRemote;
    return at;
}

RowUse SearchModel::Use(int index) {
    if (index < 0 || index >= static_cast<int>(rows.size())) return RowUse::Nothing;
    BlockRow& row = rows[static_cast<size_t>(index)];
    switch (row.state) {
        case RowFresh:
        case RowCollected:
        case RowFetched: return RowUse::Insert;
        case RowRemote: row.prefetch = false; return Enqueue(row) ? RowUse::Queued : RowUse::Nothing;
        case RowDownloading: {
            auto queued = std::find_if(downloadQueue.begin(), downloadQueue.end(),
                                       [&](const auto& entry) { return SameRow(entry.second, row); });
            if (queued == downloadQueue.end()) {
                row.state = RowRemote;
            } else if (queued->second.prefetch) {
                // A quiet fetch becomes a visible one: its progress shows from the next report on.
                queued->second.prefetch = false;
                row.prefetch = false;
            }
            return RowUse::Redraw;
        }
        default: return RowUse::Nothing;
    }
}

int SearchModel::Progress(const RowKey& key, std::intptr_t bytes) {
    const int index = FindRow(key);
    if (index < 0) return -1;
    BlockRow& row = rows[static_cast<size_t>(index)];
    if (row.size <= 0 || row.prefetch) return -1;
    const double share = static_cast<double>(bytes) * 100.0 / static_cast<double>(row.size);
    const int percent = static_cast<int>(std::max(8.0, share));
    if (percent <= row.percent + 1) return -1;
    row.percent = percent;
    return index;
}

void SearchModel::NoteRowToCheck(int row) {
    if (std::find(rowsToCheck.begin(), rowsToCheck.end(), row) == rowsToCheck.end()) rowsToCheck.push_back(row);
}

bool SearchModel::QueueRowsInView(const std::function<bool(int)>& inView) {
    std::sort(rowsToCheck.begin(), rowsToCheck.end());
    bool queued = false;
    for (int index : rowsToCheck) {
        // Rows scrolled past in the meantime are not fetched.
        if (index < 0 || index >= static_cast<int>(rows.size()) || !inView(index)) continue;
        BlockRow& row = rows[static_cast<size_t>(index)];
        if (!row.prefetch || row.state != RowRemote || !Enqueue(row)) continue;
        row.thumbnailTried = false;
        queued = true;
    }
    rowsToCheck.clear();
    return queued;
}

}  // namespace marrowfin
