#include "panel/dialog/thumbnail_road.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>

#include "net/download_queue.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/model/panel_numbers.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_timers.h"
#include "skin/pop_tip_dlg.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/usage_lists.h"

namespace marrowfin {

namespace {

// The host's boutique answers are cached; the cache is emptied when it holds more than this.
constexpr size_t kBoutiqueCacheBound = 100;

GalleryStore& StoreOf(CBrindleDlg& panel) { return panel.m_store ? *panel.m_store : GalleryStore::Instance(); }

// The boutique mark a grid cell wears: on the recent list each block's own
// gallery decides, elsewhere the opened gallery; collections have none.
bool ItemIsBoutique(CBrindleDlg& panel, int item) {
    if (!panel.m_pThumbList) return false;
    if (panel.m_nav.classIndex == 0) {
        const std::u16string path = panel.m_pThumbList->GetPath(item);
        return !path.empty() && panel.IsBlkBoutique(path);
    }
    if (panel.m_nav.classIndex == 1 || panel.m_nav.page == PageCollection || !panel.m_classList) return false;
    const GalleryStore& store = StoreOf(panel);
    if (!store.root) return false;
    const std::u16string name = panel.m_classList->GetItemText(panel.m_nav.classIndex).toStdU16String();
    for (const GalleryNode* gallery : store.root->dirChildren)
        if (gallery && gallery->name == name) return gallery->boutique;
    return false;
}

}  // namespace

static void TrimBoutiqueCache(CBrindleDlg& panel) {
    if (panel.m_boutiqueCache.size() > kBoutiqueCacheBound) panel.m_boutiqueCache.clear();
}

void NoteBoutique(CBrindleDlg& panel, const std::u16string& path, bool boutique) {
    TrimBoutiqueCache(panel);
    panel.m_boutiqueCache[path] = boutique ? 1 : 0;
}

uint32_t InsertionCode(const std::u16string& showMode) {
    if (showMode == u"YL") return 3;
    if (showMode == u"PMMC") return 4;
    return 2;
}

void WireThumbList(CBrindleDlg& panel) {
    SetDownloadNotifyWindow(panel.Handle());
    CDWGListView* list = panel.m_pThumbList;
    if (!list) return;
    CBrindleDlg* self = &panel;
    list->isScanBusy = [self] { return self->m_thumbs.scanBusy; };
    list->isBoutique = [self](int item) { return ItemIsBoutique(*self, item); };
    // The worker may not yet have left the store's running list when its message arrives.
    list->isArriving = [self](const std::u16string& path) {
        GalleryStore& store = StoreOf(*self);
        std::lock_guard<std::mutex> lock(store.downloadLock);
        auto holds = [&path](const std::vector<std::u16string>& paths) {
            return std::find(paths.begin(), paths.end(), path) != paths.end();
        };
        return self->m_thumbs.Arriving(path, holds(store.downloadsRunning) || holds(store.downloadsWaiting));
    };
    list->tileAtZero = [self](QImage* picture, QString* name) {
        AdTile tile;
        if (!GetAdTile(*self, &tile, picture)) return false;
        *name = QString::fromStdU16String(tile.name);
        return true;
    };
}

void QueueThumbCheck(CBrindleDlg& panel, std::intptr_t item) {
    panel.m_thumbs.Report(static_cast<int>(item));
    // A burst of reports while scrolling ends in one request, 500 ms after the last.
    (void)SetTimer(panel.Handle(), kTimerThumbRequest, kThumbRequestMs);
}

void RequestVisibleThumbs(CBrindleDlg& panel) {
    KillTimer(panel.Handle(), kTimerThumbRequest);
    CDWGListView* list = panel.m_pThumbList;
    panel.m_thumbs.scanBusy = true;
    for (int item : panel.m_thumbs.TakeReported()) {
        if (!list || item < 0 || item >= list->GetItemCount()) continue;
        const QRect cell = list->ItemRect(item);
        const bool visible = cell.isEmpty() || !(cell.bottom() < 0 || cell.top() >= list->height());
        const std::u16string path = list->GetPath(item);
        if (!visible || path.empty()) continue;
        if (panel.m_nav.classIndex == 1) {
            // The collections fetch their own thumbnails (events 1 to 3).
            if (panel.m_thumbs.Wait(path))
                (void)PostWindowMessage(panel.Handle(), MsgPanelEvent, PanelEvent::NextThumb, 0);
        } else {
            panel.m_thumbs.Asked(path);
            EnqueueDownload(StoreOf(panel), path);
        }
    }
    panel.m_thumbs.scanBusy = false;
}

void ThumbFileReady(CBrindleDlg& panel, const std::u16string& path) {
    panel.m_thumbs.Arrived(path);
    CDWGListView* list = panel.m_pThumbList;
    if (!list) return;
    for (int item = 0; item < list->GetItemCount(); ++item) {
        if (list->GetPath(item) == path) {
            (void)PostWindowMessage(HandleOf(list), MsgListRefresh, 1, item);
            return;
        }
    }
}

void ThumbDownloadEnded(CBrindleDlg& panel, bool succeeded, const std::u16string& path) {
    (void)PostWindowMessage(panel.Handle(), MsgPanelEvent, PanelEvent::NextThumb, 0);
    if (succeeded) ThumbFileReady(panel, path);
    panel.m_thumbs.Ended(path);
}

void ActivateBlock(CBrindleDlg& panel, std::intptr_t item) {
    GalleryStore& store = StoreOf(panel);
    if (!store.root || !IsWindow(panel.hostWindow)) return;
    if (item < 0) return;
    if (OpenAdTileAt(panel, item)) return;
    GalleryNode* node = panel.m_nav.listNodes.At(store, static_cast<size_t>(item));
    if (!node) return;

    GalleryNode* parent = node->parent;
    GalleryNode* grand = parent ? parent->parent : nullptr;
    if (parent && grand) {
        const GalleryNode* gallery = node->OwnerName() == kCommonUseTag ? parent : grand;
        NoteBoutique(panel, node->Path(), gallery->boutique);
    } else {
        TrimBoutiqueCache(panel);
    }

    const std::u16string path = node->Path();
    const std::u16string name = node->name.str();
    if (!BlockFileReady(store, path)) {
        CPopTipDlg tip(&panel);
        tip.Configure(QStringLiteral("插入图块"), true, QStringLiteral("文件未下载，请稍后"), QString(),
                      QStringLiteral("确定"), QStringLiteral("取消"));
        (void)tip.DoModal();
        // Asked for through the grid's road unless the collections' own queue holds files.
        if (panel.m_thumbs.waiting.empty()) QueueThumbCheck(panel, item);
        return;
    }

    (void)PostHostInsertion(panel.hostWindow, InsertionCode(panel.showMode), path);
    if (panel.m_nav.classIndex == 0) return;  // the recent list keeps its order

    // Both lists may drop an entry of the same path: handles go stale first.
    ++store.treeEpoch;
    RememberRecent(store, path, name);
    // Only a block of a real subclass heads its gallery's common-use list.
    const bool common = parent && grand && node->OwnerName() == parent->name;
    if (common) {
        auto& entries = grand->fileChildren;
        for (auto it = entries.begin(); it != entries.end();) {
            GalleryNode* entry = *it;
            if (entry && entry->PathIs(path)) {
                SubtreeDeleter()(entry);
                it = entries.erase(it);
            } else {
                ++it;
            }
        }
        auto* head = new GalleryNode(std::u16string(kCommonUseTag), path, name, u"file", false, false, 0);
        if (!AddChild(grand, head, true)) delete head;
    }
    panel.RelistNodes();
}

}  // namespace marrowfin
