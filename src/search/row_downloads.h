#pragma once
// Downloads of result rows: the process-wide counters, the set of downloads
// running now (written by the workers, read by the panel), and the worker's
// body. The panel keeps its queue of waiting rows itself.

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

#include "platform/window_messages.h"
#include "search/search_hit.h"

namespace marrowfin {

// A downloaded block below this size is a service's error page, not a drawing.
inline constexpr int64_t kMinBlockFileBytes = 1025;

// The next queue sequence: rises by one with every entry, process-wide.
int NextQueueSequence();
// The next download id: 1 to 50000, then 1 again; guarded.
uint16_t NextDownloadId();

class ActiveRowDownloads {
public:
    // False when the same row is running already; else the row is entered under `id`.
    bool Begin(uint16_t id, const RowKey& row);
    // The row of a download, taken out; none when the id is not running.
    std::optional<RowKey> Finish(uint16_t id);
    std::optional<RowKey> Find(uint16_t id) const;
    bool Contains(const RowKey& row) const;
    bool Any() const;
    size_t Count() const;

private:
    mutable std::mutex m_mutex;
    std::map<uint16_t, RowKey> m_rows;
};

enum class RowDownloadResult {
    AlreadyRunning,  // the same row runs: nothing was done, nothing is reported
    Finished,  // the file is there and large enough
    Failed,  // no file, an unreadable size or a small one: what existed is gone
};

// The worker's body: enters the row under a new id (`*id`), makes the
// folder, downloads `row.url` to `row.path` with progress to
// `progressWindow` under that id, and checks the result.
RowDownloadResult RunRowDownload(ActiveRowDownloads& active, const RowKey& row, WindowHandle progressWindow,
                                 uint16_t* id);

}  // namespace marrowfin
