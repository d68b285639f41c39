// Routes and target classes: a path of the host or a result row opened as a
// class row and its subclass button.
#include <QLineEdit>

#include "collection/collection_folders.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/model/panel_numbers.h"
#include "platform/product_texts.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/window_timers.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

void CBrindleDlg::OpenRoute(const std::u16string& route, RouteSource source) {
    if (route.empty()) {
        if (!IsSearchPage(m_page)) SetTimer(Handle(), kTimerBuildClassList, kRouteRebuildMs);
        return;
    }
    if (IsSearchPage(m_page)) {
        // The host's location comes back to the class it left; the panel's
        // own route replaces it, so no rebuild reopens the old one.
        if (source == RouteSource::Host) {
            if (m_searchEdit) m_searchEdit->clear();
        } else {
            m_curClassPath.clear();
        }
        SearchCommand(ControlId::SearchBack);
    }
    if (route.rfind(kCollectionRoute, 0) == 0) {
        m_targetClass = route;
        OpenTargetClass();
        return;
    }
    // Any other route may name a class that is not listed yet: it is added.
    OpenClassRoute(route);
}

void CBrindleDlg::OpenTargetClass() {
    if (!m_store || !m_store->root || m_targetClass.empty()) return;
    if (!m_classesReady && !m_rebuildingClasses) {
        const std::u16string saved = m_targetClass;
        SendWindowMessage(Handle(), MsgPanelCommand, PanelCommand::RebuildClassList, 0);
        m_targetClass = saved;
        KillTimer(Handle(), kTimerBuildClassList);
    }

    std::u16string target = m_targetClass;
    if (target.find(kCollectionRoute) != std::u16string::npos) {
        if (userId < 2 || userId != m_collectionUser) {
            m_collectionUser = userId;
            ReloadCollection([this](int reloaded) {
                if (reloaded == 1 && userId >= 2) OpenTargetClass();
            });
            return;
        }
        m_forceList = true;
        const size_t at = target.find(kCollectionText);
        target.replace(at, std::u16string_view(kCollectionText).size(),
                       MirrorName(userId));
    }

    GalleryNode* root = m_store->root;
    const std::u16string full = root->Path() + target;
    GalleryNode* node = FindNodeByPath(root, full);
    if (!node) return;
    // SwitchClass opens the subclass button whose path is the target.
    m_targetClass = full;

    if (IsSearchPage(m_page)) {
        m_curClassPath.clear();
        SearchCommand(ControlId::SearchBack);
    }

    GalleryNode* parent = node->parent;
    if (!parent) return;
    std::u16string name;
    if (parent == root)
        name = node->name;
    else if (parent->parent == root)
        name = parent->name;
    else
        return;

    int row = -1;
    if (name == kCollectionText) {
        row = 1;
    } else if (name == kRecentText) {
        row = 0;
    } else if (m_classList) {
        const QString wanted = ToQString(name);
        for (int i = 0; i < m_classList->GetItemCount(); ++i) {
            if (m_classList->GetItemText(i) == wanted) {
                row = i;
                break;
            }
        }
    }
    if (row < 0) return;
    SelectClass(row, true);
}

}  // namespace marrowfin
