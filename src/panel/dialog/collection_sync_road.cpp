// The panel's side of the one-time hand-over of the old local collection:
// the check before every action on the collection, "替换", the transfer's
// worker, the poll of a transfer from an earlier run, and their ends.
#include "collection/cloud_replacement.h"
#include "collection/handover_calls.h"
#include "collection/old_collection_check.h"
#include "collection_dialogs/collection_tip.h"
#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/model/panel_numbers.h"
#include "platform/qt/window_timers.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/store_ini.h"

namespace marrowfin {

HandoverInput CBrindleDlg::HandoverOf() const {
    return {userId, userToken, m_store && m_store->root ? m_store->root->Path() : std::u16string()};
}

void CBrindleDlg::CheckOldCollectionThen(std::function<void(int)> then) {
    const bool started = AskOnWorker<OldCollectionVerdict>(
        Handle(), [input = HandoverOf()] { return CheckOldCollection(input); },
        [this, then](OldCollectionVerdict verdict) {
            if (verdict.syncStatus) SetSyncStatus(*verdict.syncStatus);
            if (verdict.startPollTimer) (void)SetTimer(Handle(), kTimerSyncPoll, kSyncPollMs);
            if (verdict.startReplacement) StartCloudReplacement();
            if (verdict.message.kind == CollectionMessage::Tip)
                (void)OpenCollectionTip(this, verdict.message, this, nullptr);
            if (then) then(verdict.result);
        });
    if (!started && then) then(0);
}

void CBrindleDlg::StartCloudReplacement() {
    const WindowHandle panel = Handle();
    // The worker reports only by posting; a panel hidden meanwhile still hears it.
    const bool started = StartPanelWorker([panel, input = HandoverOf()] {
        const bool landed = ReplaceCloudCollection(input);
        (void)PostWindowMessage(panel, MsgPanelEvent, landed ? PanelEvent::SyncDone : PanelEvent::SyncFailed, 0);
    });
    if (!started) (void)PostWindowMessage(panel, MsgPanelEvent, PanelEvent::SyncFailed, 0);
}

void CBrindleDlg::ReplaceCloudButton() {
    StartCloudReplacement();
    SetSyncStatus(2);
}

void CBrindleDlg::CloudSyncEnded(bool landed) {
    const HandoverEnd end = CollectionModel::CloudSyncEnded(landed);
    if (end.settle) {
        (void)WriteOldCollectTip(u"1");  // a failed write asks again at the next opening
        m_nav.forceList = true;
        SelectClass(1, true);
        return;
    }
    m_nav.syncStatus = end.syncStatus;
    // The service hears that the transfer is over; its answer is not read.
    (void)StartPanelWorker([token = userToken] { EndCollectionTransfer(token); });
    LayoutStatusButtons();
}

void CBrindleDlg::PollCloudSync() {
    if (!m_collection.BeginSyncPoll()) return;
    const bool started = AskOnWorker<int>(
        Handle(), [token = userToken] { return QuerySyncStatus(token); },
        [this](int status) {
            const SyncPoll polled = m_collection.SyncPolled(status);
            if (polled == SyncPoll::GoOn) return;
            KillTimer(Handle(), kTimerSyncPoll);
            (void)PostWindowMessage(Handle(), MsgPanelEvent,
                                    polled == SyncPoll::Landed ? PanelEvent::SyncDone : PanelEvent::SyncFailed, 0);
        });
    if (!started) m_collection.syncPollPending = false;
}

}  // namespace marrowfin

#include <QCollator>
#include <QLocale>

#include <algorithm>

#include "collection/old_collection.h"
#include "store/gallery_tree.h"

namespace marrowfin {

void CBrindleDlg::ReloadOldCollection() {
    if (!m_store || !m_store->root) return;
    GalleryNode* old = FindNodeByPath(m_store->root, OldCollectionDir(m_store->root->Path()));
    if (!old) return;
    if (!old->dirChildren.empty()) {
        ++m_store->treeEpoch;  // handles into the folders that go are stale
        for (GalleryNode* folder : old->dirChildren) SubtreeDeleter()(folder);
        old->dirChildren.clear();
    }
    std::vector<OldCollectionFolder> folders = ReadOldCollectionFolders(old->Path());
    // Folders by name as a Chinese reader sorts them, at most one per subclass button.
    QCollator collator{QLocale(QLocale::Chinese, QLocale::China)};
    std::stable_sort(folders.begin(), folders.end(), [&](const OldCollectionFolder& a, const OldCollectionFolder& b) {
        return collator.compare(QString::fromStdU16String(a.name), QString::fromStdU16String(b.name)) < 0;
    });
    if (folders.size() > static_cast<size_t>(kMaxCollectionFolders)) folders.resize(kMaxCollectionFolders);
    const std::u16string owner = u"/" + std::u16string(kCollectionClass);
    for (const OldCollectionFolder& read : folders) {
        const std::u16string path = old->Path() + u"/" + read.name;
        auto* folder = new GalleryNode(owner, path, read.name, kKindDir, false, false, 0);
        folder->parent = old;
        old->dirChildren.push_back(folder);
        for (const std::u16string& drawing : read.drawings) {
            auto* block = new GalleryNode(read.name, path + u"/" + drawing, drawing, kKindFile, false, false, 0);
            block->parent = folder;
            folder->fileChildren.push_back(block);
        }
    }
    RelistNodes();
    m_nav.forceList = true;
    SelectClass(1, true);
}

}  // namespace marrowfin
