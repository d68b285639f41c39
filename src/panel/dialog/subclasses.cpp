// The subclass buttons: opening one lists its blocks; the collection bar
// moves them down a row.
#include <optional>
#include <utility>

#include "collection/collection_folders.h"
#include "net/gallery_sync.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/model/panel_numbers.h"
#include "platform/product_texts.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/window_timers.h"
#include "platform/ticks.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

void CBrindleDlg::OpenSubclass(int id) {
    if (!m_nav.AcceptSubclassPress(GetTickCount())) return;

    const int index = id - ControlId::FirstSubclass;
    if (index < 0 || index >= static_cast<int>(m_subclassBtns.size())) return;
    CSubclassButton* button = m_subclassBtns[index];
    if (!button) return;
    if (button == OpenedSubclass() && !m_nav.forceList) return;

    EnableBlockDelete(false);
    m_nav.forceList = false;
    if (CSubclassButton* last = OpenedSubclass(); last && last != button) {
        last->selected = false;
        last->Redraw();
    }
    button->selected = true;
    button->Redraw();
    SetShown(Button(ControlId::AddBlocksEmpty), false);
    SetShown(Button(ControlId::DownloadGallery), false);

    if (!m_store || !m_store->root) return;
    const std::u16string path = ToU16String(button->data);
    GalleryNode* opened = FindNodeByPath(m_store->root, path);
    if (!opened) return;

    m_nav.curClassPath = path;
    m_nav.listNodes.Reset(*m_store);
    m_nav.itemsPending.clear();
    NoteOpenedSubclass(button);
    // A folder of the collections takes its blocks from the service first;
    // their arrival lists it.
    if (opened->OwnerName() == kCollectionClass) {
        if (!LoadFolderBlocks(button, path)) ListSubclass(button, path);
        return;
    }
    // Outdated blocks are fetched on a worker; their arrival lists the class.
    if (ClassIsStale(*m_store, path)) {
        if (std::optional<TreeRequest> request = PrepareClassItems(*m_store, path)) {
            if (StartTreeRequest(*m_store, std::move(*request))) {
                m_nav.itemsPending = path;
                return;
            }
        }
    }
    ListSubclass(button, path);
}

void CBrindleDlg::ListSubclass(CSubclassButton* button, const std::u16string& path) {
    GalleryNode* node = m_store && m_store->root ? FindNodeByPath(m_store->root, path) : nullptr;
    if (!node) return;
    m_nav.listNodes.Reset(*m_store);

    // A tile takes the first cell as an empty path and a null node; the
    // blocks follow it and selection starts behind it.
    std::vector<std::u16string> paths;
    const int first = ClassShowsAdTile(*this) ? 1 : 0;
    if (first) {
        paths.emplace_back();
        m_nav.listNodes.Add(nullptr);
    }
    for (GalleryNode* child : node->fileChildren) {
        if (!child) continue;
        paths.push_back(child->Path());
        m_nav.listNodes.Add(child);
    }
    m_nav.itemCount = static_cast<int>(m_nav.listNodes.size()) - first;
    m_nav.emptySubclassOpened = false;

    if (m_nav.itemCount > 0) {
        if (m_pThumbList) {
            m_pThumbList->show();
            m_pThumbList->SetPaths(paths);
        }
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        if (m_pThumbList) {
            m_pThumbList->SetSelectedItem(first);
            m_pThumbList->EnsureVisible(first);
            m_pThumbList->setFocus();
        }
        SelectionChanged(first);
    } else {
        SelectionChanged(-1);
        if (m_nav.classIndex == 1) {
            SetShown(Button(ControlId::AddBlocksEmpty), true);
            SetShown(Button(ControlId::DownloadGallery), false);
        } else {
            SetShown(Button(ControlId::AddBlocksEmpty), false);
            if (button->text() != ToQString(kCommonText)) {
                SetShown(Button(ControlId::DownloadGallery), true);
                m_nav.emptySubclassOpened = true;
            }
        }
        SetShown(m_pThumbList, false);
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        update();
    }

    NoteOpenedSubclass(button);
    if (m_nav.focusPending) {
        m_nav.focusPending = false;
        if (m_pThumbList) {
            int item = first;
            const std::u16string name = ToU16String(m_nav.focusRow.name);
            for (size_t i = 0; i < m_nav.listNodes.size(); ++i) {
                const GalleryNode* listed = m_nav.listNodes.At(*m_store, i);
                if (listed && listed->name == name) {
                    item = static_cast<int>(i);
                    break;
                }
            }
            m_pThumbList->SetSelectedItem(item);
            m_pThumbList->EnsureVisible(item);
            m_pThumbList->setFocus();
        }
        m_nav.focusRow = BlockRow{};
    }
}

CSubclassButton* CBrindleDlg::OpenedSubclass() const {
    const int slot = m_nav.openedSubclass;
    return slot >= 0 && slot < static_cast<int>(m_subclassBtns.size()) ? m_subclassBtns[static_cast<size_t>(slot)]
                                                                       : nullptr;
}

void CBrindleDlg::NoteOpenedSubclass(CSubclassButton* button) {
    m_nav.openedSubclass = button ? button->ControlId() - ControlId::FirstSubclass : -1;
}

void CBrindleDlg::LayoutCollectionBar(bool shown) {
    if (!shown) SetSyncStatus(-2);
    const int firstTop = shown ? 79 : 41;
    const int secondTop = shown ? 113 : 75;
    for (size_t i = 0; i < m_subclassBtns.size(); ++i) {
        CSubclassButton* button = m_subclassBtns[i];
        if (!button) continue;
        const int n = static_cast<int>(i);
        const int left = n < kSubclassRow ? 136 + 68 * n : 136 + 68 * (n - kSubclassRow);
        button->move(ScaleUnits(left), ScaleUnits(n < kSubclassRow ? firstTop : secondTop));
    }
    for (CSkinButton* button : m_collectionBtns) SetShown(button, shown);
}

}  // namespace marrowfin
