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

constexpr int kStartsPerScan = 15;  // queue entries one start visits
constexpr int kFailedShowMs = 3000;  // "下载失败，检查网络" stands this long

}  // namespace

void CBrindleDlg::RedrawResultRow(int row) {
    if (m_searchList && m_searchList->isVisible()) m_searchList->RedrawRow(row);
}

// ---- thumbnails -----------------------------------------------------------------

void CBrindleDlg::RowThumbnail(std::intptr_t index) {
    if (index < 0 || index >= static_cast<std::intptr_t>(m_search.rows.size())) return;
    const BlockRow& row = m_search.rows[static_cast<size_t>(index)];
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
    if (result.generation != m_rowGeneration || result.item < 0 ||
        result.item >= static_cast<int>(m_search.rows.size()))
        return;
    BlockRow& row = m_search.rows[static_cast<size_t>(result.item)];
    // A missing file stays untried: its download may still bring it.
    if (row.path.toStdU16String() != result.path || result.outcome == PreviewOutcome::Missing) return;
    row.thumbnailTried = true;
    row.thumbnail = std::move(result.picture);
    RedrawResultRow(result.item);
}

// ---- rows in view ---------------------------------------------------------------

void CBrindleDlg::NoteRowToCheck(std::intptr_t index) {
    m_search.NoteRowToCheck(static_cast<int>(index));
    SetTimer(Handle(), kTimerRowCheck, kRowCheckMs);
}

void CBrindleDlg::CheckShownRows() {
    KillTimer(Handle(), kTimerRowCheck);
    if (!IsSearchPage(m_nav.page)) return;
    const bool queued = m_search.QueueRowsInView([this](int index) {
        if (!m_searchList) return false;
        const QRect rect = m_searchList->RowRect(index);
        return !rect.isEmpty() && rect.intersects(m_searchList->rect());
    });
    // All at once rather than 70 ms apart: the panel's thread does not sleep,
    // and a screen holds only a few rows.
    if (queued) StartRowDownloads();
}

// ---- downloads ------------------------------------------------------------------

void CBrindleDlg::StartRowDownloads() {
    int visited = 0;
    const WindowHandle self = Handle();
    for (auto& [sequence, row] : m_search.downloadQueue) {
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
    int index = -1;
    switch (m_search.DownloadEnded(key, ok, m_nav.page, &index)) {
        case RowEnd::Fetched:
            if (m_searchList && m_searchList->isVisible()) {
                RowThumbnail(index);
                m_searchList->RedrawRow(index);
            }
            break;
        case RowEnd::Failed:
            RedrawResultRow(index);
            QTimer::singleShot(kFailedShowMs, this, [this, failed = *key] {
                const int at = m_search.BackToRemoteIfFailed(failed);
                if (at >= 0) RedrawResultRow(at);
            });
            break;
        case RowEnd::Gone:
        case RowEnd::QuietFailure: break;
    }
    // Posted: the pump takes one step per turn, after this download's row is drawn.
    if (m_activeDownloads->Any() || !m_search.downloadQueue.empty())
        PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::StartRowDownloads, 0);
}

void CBrindleDlg::RowBackToRemote(std::intptr_t index) {
    if (index < 0 || index >= static_cast<std::intptr_t>(m_search.rows.size())) return;
    m_search.rows[static_cast<size_t>(index)].state = RowRemote;
    RedrawResultRow(static_cast<int>(index));
}

// ---- "使用" and "收藏" ----------------------------------------------------------

void CBrindleDlg::UseRow(std::intptr_t index) {
    if (!m_searchList || !m_searchList->isVisible()) return;
    const bool listed = index >= 0 && index < static_cast<std::intptr_t>(m_search.rows.size());
    const int at = listed ? static_cast<int>(index) : -1;
    switch (m_search.Use(at)) {
        case RowUse::Nothing: return;
        case RowUse::Queued:
            m_searchList->RedrawRow(at);
            PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::StartRowDownloads, 0);
            return;
        case RowUse::Redraw: m_searchList->RedrawRow(at); return;
        case RowUse::Insert: break;
    }
    BlockRow& row = m_search.rows[static_cast<size_t>(at)];

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
