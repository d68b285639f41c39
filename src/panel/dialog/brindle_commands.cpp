// MsgPanelCommand: the panel's central command handler. Every command answers 0.
#include <map>
#include <mutex>
#include <set>
#include <shared_mutex>

#include "panel/classes/class_table_refresh.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/start_up.h"
#include "platform/product_texts.h"
#include "platform/files.h"
#include "panel/model/panel_numbers.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/search_list_ctrl.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/tree_update.h"
#include "store/show_list.h"
#include "store/store_paths.h"

namespace marrowfin {

// One case per command: the table reads best whole, and each case only forwards.
void CBrindleDlg::OnPanelCommand(std::uintptr_t code, std::intptr_t lParam) {
    switch (code) {
        case PanelCommand::RebuildClassList: RebuildAndReopen(); return;
        case PanelCommand::SelectionChanged: SelectionChanged(lParam); return;
        case PanelCommand::RenameFolder: RenameFolder(lParam); return;
        case PanelCommand::ActivateBlock: ActivateBlock(*this, lParam); return;
        case PanelCommand::RenameBlock: RenameBlock(lParam); return;
        case PanelCommand::EnableBlockDelete: EnableBlockDelete(lParam >= 0); return;
        case PanelCommand::ApplyShowList: ApplyShowList(lParam); return;
        case PanelCommand::OpenTargetClass:
            if (!m_nav.targetClass.empty()) OpenTargetClass();
            return;
        case PanelCommand::RowShown: RowThumbnail(lParam); return;
        case PanelCommand::CollectRow: CollectRow(lParam); return;
        case PanelCommand::UseRow: UseRow(lParam); return;
        case PanelCommand::RowDownloaded:
        case PanelCommand::RowDownloadFailed: RowDownloadEnded(lParam, code == PanelCommand::RowDownloaded); return;
        case PanelCommand::RowBackToRemote: RowBackToRemote(lParam); return;
        case PanelCommand::StartRowDownloads: StartRowDownloads(); return;
        case PanelCommand::ShowStagedRows: ShowStagedRows(); return;
        case PanelCommand::RowDrawn: NoteRowToCheck(lParam); return;
        case PanelCommand::RepaintResults: RepaintResults(); return;
        case PanelCommand::RefreshClassRows: RefreshClassRows(); return;
        case PanelCommand::SearchFailed: SearchFailed(static_cast<int>(lParam)); return;
        case PanelCommand::ClassClicked:
            if (m_classList && lParam >= 0 && lParam < m_classList->GetItemCount()) {
                const int row = static_cast<int>(lParam);
                // The list leaves its selection to its owner, as a clicked row
                // of a list control is selected before it notifies.
                m_classList->SetSelectedRow(row);
                SelectClass(row, false);
            }
            return;
        case PanelCommand::ThumbClicked:
            // A click only matters on an advertising tile in the first cell.
            if (m_store && m_store->root && IsWindow(hostWindow)) (void)OpenAdTileAt(*this, lParam);
            return;
        case PanelCommand::GoToRowClass: GoToRowClass(lParam); return;
        case PanelCommand::NewSort:
            // A new sort: nothing to reorder without a cached table.
            if (!FileExists(ClassTablePath())) return;
            ReapplyClassTable();
            if (TakeRequestNetworkOption()) StartClassTableRefresh(Handle());
            return;
        default:
            // 7 and anything above 24 do nothing.
            return;
    }
}

void CBrindleDlg::SelectionChanged(std::intptr_t item) {
    m_nav.selectedName.clear();
    if (item >= 0) {
        const size_t i = static_cast<size_t>(item);
        const NodeList& nodes = IsSearchPage(m_nav.page) ? m_search.localHits : m_nav.listNodes;
        if (const GalleryNode* node = m_store ? nodes.At(*m_store, i) : nullptr)
            m_nav.selectedName = QString::fromStdU16String(node->name.str());
        if (m_nav.classIndex == 1) EnableBlockDelete(true);
    } else if (m_nav.classIndex == 1) {
        EnableBlockDelete(false);
    }
    update(ScaleRect(9, 424, 540, 450));
    update(ScaleRect(568, 427, 760, 447));
}

void CBrindleDlg::GoToRowClass(std::intptr_t row) {
    if (row < 0 || row >= static_cast<std::intptr_t>(m_search.rows.size())) return;
    m_nav.focusRow = m_search.rows[static_cast<size_t>(row)];
    m_nav.focusPending = true;
    OpenRoute(u"/" + m_nav.focusRow.klass.toStdU16String() + u"/" + m_nav.focusRow.subclass.toStdU16String());
}

void CBrindleDlg::EnableBlockDelete(bool enabled) {
    if (m_collectionBtns.size() > 2 && m_collectionBtns[2]) m_collectionBtns[2]->setEnabled(enabled);
}

void CBrindleDlg::RepaintResults() {
    if (!IsSearchPage(m_nav.page)) return;
    update(ScaleRect(8, 68, 554, 288));
    update(ScaleRect(10, 427, 768, 447));
}

void CBrindleDlg::RebuildAndReopen() {
    // OpenTargetClass below must not send this command again before the list is ready.
    m_rebuildingClasses = true;
    GalleryNode* root = m_store ? m_store->root : nullptr;
    // The fixed rows stand while the first tree is still on its way.
    RebuildClassList();
    if (root) {
        if (CSkinButton* more = Button(ControlId::AddClasses)) more->show();
        RefreshClassRows();
    }
    LayoutCollectionBar(m_nav.classIndex == 1);

    bool reopened = false;
    if (!m_nav.curClassPath.empty()) {
        if (!root) {
            m_nav.forceList = true;
            SelectClass(0, true);
        } else if (GalleryNode* node = FindNodeByPath(root, m_nav.curClassPath); node && node != root) {
            reopened = true;
            if (GalleryNode* parent = node->parent) {
                if (parent == root) m_nav.targetClass = u"/" + node->name;
                else m_nav.targetClass = u"/" + parent->name + u"/" + node->name;
                OpenTargetClass();
            }
        }
    }
    if (!reopened) {
        // The recent list is the panel's start page.
        m_nav.forceList = true;
        SelectClass(0, true);
    }
    m_rebuildingClasses = false;
    m_nav.classesReady = true;
}

void CBrindleDlg::ApplyShowList(std::intptr_t force) {
    if (!isVisible() && force == 0) return;
    if (!m_store || !m_store->root) return;
    GalleryNode* root = m_store->root;

    // The user's picks in file order, each with its folder; a name listed twice counts once.
    std::vector<std::u16string> names;
    std::set<std::u16string> listed;
    for (const ShowItem& item : ReadShowList(true))
        if (!item.name.empty() && listed.insert(item.name).second) names.push_back(item.name);

    bool oldCollectionListed = false;
    {
        // The collections (the cloud's mirror and an old local one) stay.
        std::vector<GalleryNode*> collections;
        std::vector<GalleryNode*> dropped;
        std::map<std::u16string, GalleryNode*> kept;
        for (GalleryNode* child : root->dirChildren) {
            if (!child) continue;
            if (child->name == kCollectionText) {
                collections.push_back(child);
            } else if (listed.count(child->name.str()) && !kept.count(child->name.str())) {
                kept[child->name.str()] = child;
            } else {
                dropped.push_back(child);
            }
        }
        root->dirChildren.clear();
        if (!dropped.empty()) {
            // Handles into the galleries that go are stale from here on.
            ++m_store->treeEpoch;
            ReleaseSubtreesLater(std::move(dropped));
        }
        for (GalleryNode* collection : collections) root->dirChildren.push_back(collection);
        for (const std::u16string& name : names) {
            if (auto it = kept.find(name); it != kept.end()) {
                // Put back as it was: AddChild would read the common-use list a second time.
                root->dirChildren.push_back(it->second);
                continue;
            }
            const std::u16string path = root->Path() + u"/" + name;
            if (FindNodeByPath(root, path)) continue;
            auto* gallery = new GalleryNode(root->name, path, name, u"dir", false, false, 0);
            if (!AddChild(root, gallery, false)) delete gallery;
            // A gallery's classes come from its next opening; the old local
            // collection is read from the disk.
            if (name == kCollectionText) oldCollectionListed = true;
        }
    }

    RelistNodes();
    if (oldCollectionListed) ReloadOldCollection();
    SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
    RefreshClassRows();
}

void CBrindleDlg::RefreshClassRows() {
    if (!m_store || !m_store->root) return;
    // The class table is the verdict on boutique galleries once it is read.
    for (GalleryNode* gallery : m_store->root->dirChildren)
        if (gallery) gallery->boutique = IsBoutiqueClass(m_classTable, gallery->Path());
    if (m_classList) m_classList->update();
}

}  // namespace marrowfin
