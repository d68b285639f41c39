// The class column: selecting a row, the switch it schedules, and what the
// switch shows (the recent list, the collections, a gallery's subclasses).
#include <optional>
#include <utility>

#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/model/panel_numbers.h"
#include "platform/files.h"
#include "platform/product_texts.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

void CBrindleDlg::SelectClass(int row, bool highlight) {
    if (highlight && m_classList && m_classList->GetSelectedRow() != row) {
        m_classList->SetSelectedRow(row);
        if (!m_classList->IsRowInClient(row)) m_classList->EnsureVisible(row);
    }
    // A burst of selections restarts the one timer and ends in one switch.
    SetTimer(Handle(), kTimerClassSwitch, m_nav.SelectClass(row));
}

void CBrindleDlg::RebuildClassList() {
    if (!m_classList) return;
    // Rows ask while painting whether their gallery is boutique; the mark
    // lives on the gallery's node (command 19 refreshes it).
    if (!m_classList->isBoutique) {
        m_classList->isBoutique = [this](const QString& text) {
            if (!m_store || !m_store->root) return false;
            const std::u16string name = ToU16String(text);
            for (const GalleryNode* gallery : m_store->root->dirChildren)
                if (gallery && gallery->name == name) return gallery->boutique;
            return false;
        };
    }
    m_classList->DeleteAllItems();
    m_classList->InsertItem(0, ToQString(kRecentText));
    m_classList->InsertItem(1, ToQString(kCollectionText));
    if (!m_store || !m_store->root) return;
    for (const GalleryNode* gallery : m_store->root->dirChildren) {
        if (!gallery || gallery->name == kCollectionText) continue;
        m_classList->InsertItem(m_classList->GetItemCount(), ToQString(gallery->name));
    }
}

void CBrindleDlg::PlaceThumbList(int entries) {
    if (!m_pThumbList) return;
    int top = entries <= kSubclassRow ? 72 : 106;
    int height = entries <= kSubclassRow ? 343 : 309;
    // The collection bar takes a strip above the buttons.
    if (m_nav.page == PageCollection) {
        top += 38;
        height -= 38;
    }
    m_pThumbList->setGeometry(ScaleBox(133, top, 617, height));
}

// A class without a directory or without subclasses: the page stands empty,
// with "添加图块" on the collections and "下载图库" elsewhere.
void CBrindleDlg::ShowEmptyClass(int row, const std::u16string& path) {
    m_nav.itemCount = 0;
    SetShown(Button(ControlId::AddBlocksEmpty), row == 1);
    SetShown(Button(ControlId::DownloadGallery), row != 1);
    SetShown(m_pThumbList, false);
    SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
    update();
    m_nav.classIndex = row;
    m_nav.targetClass.clear();
    m_nav.curClassPath = path;
}

bool CBrindleDlg::ClassIsBoutique(const std::u16string& path) const { return IsBoutiqueClass(m_classTable, path); }

void CBrindleDlg::SwitchClass(int row) {
    if (!m_classList) return;
    const std::u16string text = ToU16String(m_classList->GetItemText(row));
    if (!m_store || !m_store->root) return;
    ClearForSwitch(row);
    if (text == kRecentText) return ListRecentBlocks(row);

    const bool justRead = std::exchange(m_collection.justRead, false);
    if (row == 1) {
        // The folders come from the service; the page shows that it loads.
        const int previous = m_nav.classIndex;
        m_nav.classIndex = 1;
        if (justRead) return ContinueCollectionSwitch(previous, 1);
        ReloadCollection([this, previous](int reloaded) { ContinueCollectionSwitch(previous, reloaded); });
        return;
    }
    ShowClassOf(row, text);
}

// The switch's first step: the old class's list, buttons and status go, the
// page follows the row.
void CBrindleDlg::ClearForSwitch(int row) {
    SelectionChanged(-1);
    m_nav.BeginSwitch(row, *m_store);
    // Posted: the status buttons follow the state the switch ends in.
    PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::LayoutStatus, 0);

    const bool barShown = !m_collectionBtns.empty() && m_collectionBtns[0] && m_collectionBtns[0]->isVisible();
    if (m_nav.classIndex >= 0 && (m_nav.classIndex == 1 || barShown)) LayoutCollectionBar(false);
    if (row == 1) {
        LayoutCollectionBar(true);
        EnableBlockDelete(false);
    }
    for (CSubclassButton* button : m_subclassBtns) SetShown(button, false);
    SetShown(Button(ControlId::AddBlocksEmpty), false);
    SetShown(Button(ControlId::DownloadGallery), false);
}

// "最近使用": the root's own entries, without subclass buttons.
void CBrindleDlg::ListRecentBlocks(int row) {
    GalleryNode* root = m_store->root;
    m_nav.curClassPath = root->Path();
    std::vector<std::u16string> paths;
    for (GalleryNode* entry : root->fileChildren) {
        if (!entry) continue;
        paths.push_back(entry->Path());
        m_nav.listNodes.Add(entry);
    }
    m_nav.itemCount = static_cast<int>(m_nav.listNodes.size());
    if (m_nav.itemCount > 0) {
        if (m_pThumbList) {
            m_pThumbList->setGeometry(ScaleBox(133, 72, 617, 343));
            m_pThumbList->show();
            m_pThumbList->SetPaths(paths);
        }
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        update(ScaleRect(115, 42, 205, 65));
    } else {
        SetShown(m_pThumbList, false);
        SetTimer(Handle(), kTimerRightStrip, kRightStripMs);
        update();
    }
    m_nav.classIndex = row;
    m_nav.targetClass.clear();
}

// The class switch's half after the reload: the folders on the subclass
// buttons, or back to the row the user came from when nothing could be read.
void CBrindleDlg::ContinueCollectionSwitch(int previous, int reloaded) {
    // The user went elsewhere while the folders were on their way.
    if (m_nav.classIndex != 1 || m_nav.page != PageCollection) return;
    if (reloaded == 0) {
        if (previous == -2) return;  // "重试" keeps the page with its failure
        m_nav.forceList = true;
        SelectClass(previous == 1 || previous < 0 ? 0 : previous, true);
        return;
    }
    if (reloaded == 2 || userId < 2) return;
    ShowClassOf(1, MirrorName(userId));
}

void CBrindleDlg::ShowClassOf(int row, const std::u16string& text) {
    GalleryNode* root = m_store ? m_store->root : nullptr;
    if (!root) return;
    const std::u16string path = root->Path() + u"/" + text;
    if (!DirectoryExists(path)) {
        ShowEmptyClass(row, path);
        return;
    }

    GalleryNode* node = FindNodeByPath(root, path);
    bool hasClasses = false;
    if (node && !IsFile(*node))
        for (const GalleryNode* child : node->dirChildren) hasClasses = hasClasses || child != nullptr;
    if (!hasClasses) {
        ShowEmptyClass(row, node ? node->Path() : path);
        return;
    }

    m_nav.classIndex = row;
    if (row >= 2) {
        // An outdated summary is fetched on a worker; its arrival shows the classes.
        if (std::optional<TreeRequest> request = PrepareClassSummary(*m_store, text)) {
            if (StartTreeRequest(*m_store, std::move(*request))) {
                m_nav.summaryPending = text;
                return;
            }
        }
    }
    ShowGalleryClasses(row, path);
}

void CBrindleDlg::ShowGalleryClasses(int row, const std::u16string& path) {
    GalleryNode* root = m_store ? m_store->root : nullptr;
    GalleryNode* node = root ? FindNodeByPath(root, path) : nullptr;
    if (!node) {
        ShowEmptyClass(row, path);
        return;
    }

    const SubclassPlan plan = PlanSubclasses(*node, row >= 2, m_nav.targetClass,
                                             [this](const std::u16string& klass) { return ClassIsBoutique(klass); });
    for (size_t i = 0; i < plan.buttons.size() && i < m_subclassBtns.size(); ++i) {
        const SubclassEntry& entry = plan.buttons[i];
        CSubclassButton* button = m_subclassBtns[i];
        button->data = ToQString(entry.data);
        button->setText(ToQString(entry.caption));
        button->selected = false;
        button->show();
        button->setToolTip(ToQString(entry.tip));
        button->boutique = entry.boutique;
    }
    m_nav.itemCount = plan.entries;
    if (m_nav.itemCount < 1) {
        ShowEmptyClass(row, path);
        return;
    }
    m_nav.forceList = true;
    PlaceThumbList(m_nav.itemCount);
    // The 350 ms rule damps presses on the buttons. The switch's own opening
    // is no press: damped, it would leave the new class's buttons over the
    // old class's list. It still counts as the last opening for the rule.
    m_nav.ExemptNextSubclassPress();
    OpenSubclass(ControlId::FirstSubclass + static_cast<int>(plan.chosen));

    m_nav.targetClass.clear();
    if (m_nav.classIndex == 1) SetTimer(Handle(), kTimerRepaintAll, kRepaintAllMs);
}

}  // namespace marrowfin
