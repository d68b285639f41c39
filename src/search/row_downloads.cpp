#include "search/row_downloads.h"

#include <atomic>

#include "net/http_transport.h"
#include "platform/files.h"

namespace marrowfin {

namespace {

std::atomic<int> g_queueSequence{0};
std::mutex g_idMutex;
uint16_t g_downloadId = 0;

std::u16string FolderOf(const std::u16string& path) {
    const size_t slash = path.rfind(u'/');
    return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash);
}

}  // namespace

int NextQueueSequence() { return ++g_queueSequence; }

uint16_t NextDownloadId() {
    std::lock_guard lock(g_idMutex);
    if (++g_downloadId > 50000) g_downloadId = 1;
    return g_downloadId;
}

bool ActiveRowDownloads::Begin(uint16_t id, const RowKey& row) {
    std::lock_guard lock(m_mutex);
    for (const auto& [running, key] : m_rows)
        if (key == row) return false;
    m_rows[id] = row;
    return true;
}

std::optional<RowKey> ActiveRowDownloads::Finish(uint16_t id) {
    std::lock_guard lock(m_mutex);
    auto it = m_rows.find(id);
    if (it == m_rows.end()) return std::nullopt;
    RowKey row = std::move(it->second);
    m_rows.erase(it);
    return row;
}

std::optional<RowKey> ActiveRowDownloads::Find(uint16_t id) const {
    std::lock_guard lock(m_mutex);
    auto it = m_rows.find(id);
    if (it == m_rows.end()) return std::nullopt;
    return it->second;
}

bool ActiveRowDownloads::Contains(const RowKey& row) const {
    std::lock_guard lock(m_mutex);
    for (const auto& [running, key] : m_rows)
        if (key == row) return true;
    return false;
}

bool ActiveRowDownloads::Any() const {
    std::lock_guard lock(m_mutex);
    return !m_rows.empty();
}

size_t ActiveRowDownloads::Count() const {
    std::lock_guard lock(m_mutex);
    return m_rows.size();
}

RowDownloadResult RunRowDownload(ActiveRowDownloads& active, const RowKey& row, WindowHandle progressWindow,
                                 uint16_t* id) {
    if (active.Contains(row)) return RowDownloadResult::AlreadyRunning;
    const uint16_t mine = NextDownloadId();
    // Checked and entered in one step: two workers of one row race here.
    if (!active.Begin(mine, row)) return RowDownloadResult::AlreadyRunning;
    if (id) *id = mine;
    const std::u16string folder = FolderOf(row.path);
    if (!folder.empty() && !DirectoryExists(folder)) (void)CreateDirectories(folder);
    if (DownloadFile(row.url, row.path, progressWindow, mine)) {
        const int64_t size = FileSize(row.path);
        if (size >= kMinBlockFileBytes) return RowDownloadResult::Finished;
    }
    (void)RemoveFile(row.path);
    return RowDownloadResult::Failed;
}

}  // namespace marrowfin
