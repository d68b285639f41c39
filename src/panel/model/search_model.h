#pragma once
// The search pages' state: the runs, the result rows and their downloads,
// the collection's rows and their filter, with the decisions over them as
// plain operations. No widgets: CBrindleDlg starts the workers, applies what
// an operation answers to the result list, posts and repaints; tests drive
// it without a window.

#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "panel/model/block_row.h"
#include "search/block_search.h"
#include "store/node_list.h"

namespace marrowfin {

struct GalleryStore;

// What a search request asks of the panel.
enum class SearchStart {
    AlreadyRunning,  // the same text is on its way: nothing changes
    Nothing,  // no text, or no store: no run
    Run,  // rows cleared and waiting: take a generation and start the worker
};

// What a run's outcome asks of the panel.
enum class SearchTaken {
    Dropped,  // overtaken, or the page was left: the area stays
    Failed,  // "网络中断，请检查后重试", the local search may answer
    Staged,  // rows in serverRows to show
    None,  // nothing found
};

// What the collection's rows arriving ask of the panel.
enum class CollectionRowsTaken { Dropped, Filter, Wait };

// What a finished download did to its row.
enum class RowEnd {
    Gone,  // its row is no longer listed
    Fetched,  // the file is there: its thumbnail and a redraw
    QuietFailure,  // a quiet fetch failed: the row waits for "使用"
    Failed,  // "下载失败，检查网络" shows, then the row goes back to remote
};

// What "使用" on a row asks of the panel.
enum class RowUse {
    Nothing,
    Queued,  // redraw the row and start the downloads
    Redraw,
    Insert,  // the file should be there: check it and insert it
};

class SearchModel {
public:
    std::vector<BlockRow> rows;  // the rows in the result list
    std::vector<BlockRow> serverRows;  // a run's or a filter's rows, staged
    std::vector<BlockRow> collectionRows;  // the collection's blocks, for its filter
    // The collection's rows are asked for on a worker; an answer counts only
    // for the newest load while its page is still open.
    std::uintptr_t collectionRowsGeneration = 0;
    bool collectionRowsPending = false;
    NodeList localHits;  // the tree's nodes of a local search, by row
    bool searchUntouched = false;  // the page shows its first look
    int searchState = 0;  // 0 rows or none yet, 1 waiting, 2 failed, 3 nothing found
    QString lastSearch;
    std::map<int, int> searchRuns;  // search generation -> 1 while it runs, 0 once ended
    std::map<int, BlockRow> downloadQueue;  // by queue sequence
    std::map<std::u16string, int> collected;  // paths collected in this session
    std::vector<int> rowsToCheck;  // rows shown lately, fetched when still in view

    // ---- search runs --------------------------------------------------------
    // A search for `text`; `newest` is the newest run's generation.
    SearchStart BeginSearch(const QString& text, int newest, bool hasRoot);
    void RunStarted(int generation) { searchRuns[generation] = 1; }
    // A run's outcome (null when the message carried none). `oldHits` gives the
    // old local collection's hits for lastSearch; they head the service's rows.
    SearchTaken TakeOutcome(int generation, int newest, int page, const SearchOutcome* outcome,
                            const std::function<std::vector<SearchHit>()>& oldHits);
    // A failed run: whether the local search should answer in its place.
    bool LocalAfterFailure(int generation, int newest) const { return generation == newest && searchState == 2; }
    void EndRun(int generation) { searchRuns[generation] = 0; }
    // The newest run is known and has ended (the result count may show).
    bool SearchEnded(int newest) const;
    // The local search: false when there is nothing to search for.
    bool BeginLocalSearch(bool hasRoot);
    // The tree's hits become the rows; false (and "nothing found") when none.
    bool ListLocalHits(const std::vector<SearchHit>& hits);
    // The staged rows shown on a search page; false elsewhere.
    bool ShowStaged(int page);

    // ---- the collection search page -----------------------------------------
    // The filter box's search: true when the filter should run now.
    bool BeginCollectionFilter(const QString& text, bool hasRoot);
    // Rows whose name contains lastSearch (both lower case), collected when
    // the file is there, else remote. False (state 3) when none.
    bool FilterCollection(const std::function<bool(const QString&)>& fileExists);
    // A load of the collection's rows starts: its generation.
    std::uintptr_t LoadCollectionRows();
    CollectionRowsTaken TakeCollectionRows(std::uintptr_t generation, int page, std::vector<BlockRow>* loaded);
    // The collection search page is left: an answer on its way is dropped.
    void ForgetCollectionRows();

    // ---- pages --------------------------------------------------------------
    void EnterPage(int page, const GalleryStore* store);
    void LeavePage();
    // "返回": rows, local hits and waiting downloads go.
    void GoBack();

    // ---- rows and downloads -------------------------------------------------
    int FindRow(const RowKey& key) const;
    // Marks the row downloading and queues a copy; false when the queue is full.
    bool Enqueue(BlockRow& row);
    // A download ended; `key` is its row (none when unknown). The queue
    // forgets the row; `index` gets the row's index or -1.
    RowEnd DownloadEnded(const std::optional<RowKey>& key, bool ok, int page, int* index);
    // The failed row shown again as remote; its index or -1.
    int BackToRemoteIfFailed(const RowKey& key);
    RowUse Use(int index);
    // A download of `key` reports `bytes`: the row's index when the percentage
    // it shows grows by more than one (at least 8, against the row's size;
    // never on a quiet fetch or a row without a size), else -1.
    int Progress(const RowKey& key, std::intptr_t bytes);
    void NoteRowToCheck(int row);
    // The rows noted, still in view (`inView`), fetched quietly: true when any was queued.
    bool QueueRowsInView(const std::function<bool(int)>& inView);
};

}  // namespace marrowfin
