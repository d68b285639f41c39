// The life of a result row after it was listed: its thumbnail, the quiet
// fetch of rows in view, the download queue and "使用".
#include <QTimer>
#include <algorithm>

#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/model/panel_numbers.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/lists/search_list_ctrl.h"
#include "platform/files.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_scale.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/usage_lists.h"

namespace marrowfin {

namespace {

constexpr size_t kQueueLimit = 100;  // a queue holding more refuses the next row
constexpr int kStartsPerScan = 15;  // queue entries one start visits
constexpr int kFailedShowMs = 3000;  // "下载失败，检查网络" stands this long

}  // namespace

bool CBrindleDlg::EnqueueRow(BlockRow& row) {
    if (m_downloadQueue.size() > kQueueLimit) return false;
    row.state = RowDownloading;
    BlockRow copy = row;
    copy.thumbnail = QImage();
    copy.sequence = NextQueueSequence();
    m_downloadQueue[copy.sequence] = std::move(copy);
    return true;
}

void CBrindleDlg::RedrawResultRow(int row) {
    if (m_searchList && m_searchList->isVisible()) m_searchList->RedrawRow(row);
}

// ---- thumbnails -----------------------------------------------------------------

void CBrindleDlg::RowThumbnail(std::intptr_t index) {
    if (index < 0 || index >= static_cast<std::intptr_t>(m_rows.size())) return;
    const BlockRow& row = m_rows[static_cast<size_t>(index)];
    if (row.path.isEmpty() || row.thumbnailTried || !RowHasFile(row.state)) return;
    const int item = static_cast<int>(index);
    const std::u16string path = row.path.toStdU16String();
    const bool asked = std::any_of(m_rowPreviewJobs.begin(), m_rowPreviewJobs.end(),
                                   [&](const PreviewJob& job) { return job.item == item && job.path == path; });
    if (asked) return;
    if (!m_rowPreviews)
        m_rowPreviews =
            std::make_unique<PreviewLoader>([this](PreviewResult result) { OnRowPreview(std::move(result)); });
    m_rowPreviewJobs.push_back({item, path});
    // The drawing is read on the loader's workers, never here.
    m_rowPreviews->Want(m_rowGeneration, m_rowPreviewJobs, Rate());
}

void CBrindleDlg::OnRowPreview(PreviewResult result) {
    std::erase_if(m_rowPreviewJobs,
                  [&](const PreviewJob& job) { return job.item == result.item && job.path == result.path; });
    if (result.generation != m_rowGeneration || result.item < 0 || result.item >= static_cast<int>(m_rows.size()))
        return;
    BlockRow& row = m_rows[static_cast<size_t>(result.item)];
    // A missing file stays untried: its download may still bring it.
    if (row.path.toStdU16String() != result.path || result.outcome == PreviewOutcome::Missing) return;
    row.thumbnailTried = true;
    row.thumbnail = std::move(result.picture);
    RedrawResultRow(result.item);
}

// ---- rows in view ---------------------------------------------------------------

void CBrindleDlg::NoteRowToCheck(std::intptr_t index) {
    const int row = static_cast<int>(index);
    if (std::find(m_rowsToCheck.begin(), m_rowsToCheck.end(), row) == m_rowsToCheck.end()) m_rowsToCheck.push_back(row);
    SetTimer(Handle(), kTimerRowCheck, kRowCheckMs);
}

void CBrindleDlg::CheckShownRows() {
    KillTimer(Handle(), kTimerRowCheck);
    if (!IsSearchPage(m_nav.page)) return;
    std::sort(m_rowsToCheck.begin(), m_rowsToCheck.end());
    bool queued = false;
    for (int index : m_rowsToCheck) {
        if (index < 0 || index >= static_cast<int>(m_rows.size()) || !m_searchList) continue;
        // Rows scrolled past in the meantime are not fetched.
        const QRect rect = m_searchList->RowRect(index);
        if (rect.isEmpty() || !rect.intersects(m_searchList->rect())) continue;
        BlockRow& row = m_rows[static_cast<size_t>(index)];
        if (!row.prefetch || row.state != RowRemote || !EnqueueRow(row)) continue;
        row.thumbnailTried = false;
        queued = true;
    }
    m_rowsToCheck.clear();
    // All at once rather than 70 ms apart: the panel's thread does not sleep,
    // and a screen holds only a few rows.
    if (queued) StartRowDownloads();
}

// ---- downloads ------------------------------------------------------------------

void CBrindleDlg::StartRowDownloads() {
    int visited = 0;
    const WindowHandle self = Handle();
    for (auto& [sequence, row] : m_downloadQueue) {
        if (visited++ >= kStartsPerScan) break;
        // One worker per entry: a second one could start after the first had
        // ended and been retired, and fetch the block again.
        if (row.workerStarted) continue;
        row.workerStarted = StartPanelWorker([self, active = m_activeDownloads, key = KeyOf(row)] {
            uint16_t id = 0;
            const RowDownloadResult result = RunRowDownload(*active, key, self, &id);
            if (result == RowDownloadResult::AlreadyRunning) return;
            (void)PostWindowMessage(
                self, MsgPanelCommand,
                result == RowDownloadResult::Finished ? PanelCommand::RowDownloaded : PanelCommand::RowDownloadFailed,
                id);
        });
    }
}

void CBrindleDlg::RowDownloadEnded(std::intptr_t id, bool ok) {
    const std::optional<RowKey> key = m_activeDownloads->Finish(static_cast<uint16_t>(id));
    // A download whose row has gone (the page was left, a new search came) is
    // retired all the same, so that the same row may be fetched again later.
    const int index = key ? FindRow(*key) : -1;
    if (key) std::erase_if(m_downloadQueue, [&](const auto& entry) { return KeyOf(entry.second) == *key; });
    if (index >= 0) {
        BlockRow& row = m_rows[static_cast<size_t>(index)];
        if (ok) {
            row.state = m_nav.page == PageCollectionSearch ? RowCollected : RowFetched;
            row.thumbnailTried = false;
            if (m_searchList && m_searchList->isVisible()) {
                RowThumbnail(index);
                m_searchList->RedrawRow(index);
            }
        } else if (row.prefetch) {
            // A quiet fetch fails quietly: the row waits for "使用".
            row.state = RowRemote;
            row.prefetch = false;
        } else {
            row.state = RowFailed;
            RedrawResultRow(index);
            QTimer::singleShot(kFailedShowMs, this, [this, failed = *key] {
                const int at = FindRow(failed);
                if (at >= 0 && m_rows[static_cast<size_t>(at)].state == RowFailed) RowBackToRemote(at);
            });
        }
    }
    // Posted: the pump takes one step per turn, after this download's row is drawn.
    if (m_activeDownloads->Any() || !m_downloadQueue.empty())
        PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::StartRowDownloads, 0);
}

void CBrindleDlg::RowBackToRemote(std::intptr_t index) {
    if (index < 0 || index >= static_cast<std::intptr_t>(m_rows.size())) return;
    m_rows[static_cast<size_t>(index)].state = RowRemote;
    RedrawResultRow(static_cast<int>(index));
}

// ---- "使用" and "收藏" ----------------------------------------------------------

void CBrindleDlg::UseRow(std::intptr_t index) {
    if (!m_searchList || !m_searchList->isVisible()) return;
    if (index < 0 || index >= static_cast<std::intptr_t>(m_rows.size())) return;
    const int at = static_cast<int>(index);
    BlockRow& row = m_rows[static_cast<size_t>(index)];
    switch (row.state) {
        case RowFresh:
        case RowCollected:
        case RowFetched: break;
        case RowRemote:
            row.prefetch = false;
            if (EnqueueRow(row)) {
                m_searchList->RedrawRow(at);
                PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::StartRowDownloads, 0);
            }
            return;
        case RowDownloading: {
            auto queued = std::find_if(m_downloadQueue.begin(), m_downloadQueue.end(),
                                       [&](const auto& entry) { return SameRow(entry.second, row); });
            if (queued == m_downloadQueue.end()) {
                row.state = RowRemote;
            } else if (queued->second.prefetch) {
                // A quiet fetch becomes a visible one: its progress shows from the next report on.
                queued->second.prefetch = false;
                row.prefetch = false;
            }
            m_searchList->RedrawRow(at);
            return;
        }
        default: return;
    }

    if (!m_store || !m_store->root || !IsWindow(hostWindow)) return;
    const std::u16string path = row.path.toStdU16String();
    if (!FileExists(path)) return;
    const int64_t size = FileSize(path);
    if (size >= 0 && size < kFailedDownloadBytes) {
        // An error page saved as a block: fetch it again on the next press.
        (void)RemoveFile(path);
        row.state = RowRemote;
        m_searchList->RedrawRow(at);
        return;
    }
    NoteBoutique(*this, path, row.boutique);

    const uint32_t code = InsertionCode(showMode);
    if (code == 2) HidePanel();
    (void)PostHostInsertion(hostWindow, code, path);

    GalleryNode* node = FindBlockByPath(m_store->root, path, false);
    if (node && m_nav.classIndex != 0) {
        // The recent list may drop an entry: handles into the tree go stale first.
        ++m_store->treeEpoch;
        RememberRecent(*m_store, node->Path(), node->name.str());
        RelistNodes();
    }
}

}  // namespace marrowfin
