// Routes and target classes: a path of the host or a result row opened as a
// class row and its subclass button.
#include <QLineEdit>
#include <optional>
#include <vector>

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
        if (!IsSearchPage(m_nav.page)) SetTimer(Handle(), kTimerBuildClassList, kRouteRebuildMs);
        return;
    }
    if (IsSearchPage(m_nav.page)) {
        // The host's location comes back to the class it left; the panel's
        // own route replaces it, so no rebuild reopens the old one.
        if (source == RouteSource::Host) {
            if (m_searchEdit) m_searchEdit->clear();
        } else {
            m_nav.curClassPath.clear();
        }
        SearchCommand(ControlId::SearchBack);
    }
    if (route.rfind(kCollectionRoute, 0) == 0) {
        m_nav.targetClass = route;
        OpenTargetClass();
        return;
    }
    // Any other route may name a class that is not listed yet: it is added.
    OpenClassRoute(route);
}

void CBrindleDlg::OpenTargetClass() {
    if (!m_store || !m_store->root || m_nav.targetClass.empty()) return;
    if (!m_nav.classesReady && !m_rebuildingClasses) {
        const std::u16string saved = m_nav.targetClass;
        RebuildAndReopen();
        m_nav.targetClass = saved;
        KillTimer(Handle(), kTimerBuildClassList);
    }

    std::u16string target = m_nav.targetClass;
    if (target.find(kCollectionRoute) != std::u16string::npos) {
        if (m_collection.TargetNeedsReload(userId)) {
            ReloadCollection([this](int reloaded) {
                if (reloaded == 1 && userId >= 2) OpenTargetClass();
            });
            return;
        }
        m_nav.forceList = true;
        const size_t at = target.find(kCollectionText);
        target.replace(at, std::u16string_view(kCollectionText).size(), MirrorName(userId));
    }

    const std::optional<TargetRow> found = FindTargetRow(*m_store->root, target);
    if (!found) return;
    // SwitchClass opens the subclass button whose path is the target.
    m_nav.targetClass = found->path;

    if (IsSearchPage(m_nav.page)) {
        m_nav.curClassPath.clear();
        SearchCommand(ControlId::SearchBack);
    }
    if (found->rowName.empty()) return;
    std::vector<std::u16string> rows;
    if (m_classList)
        for (int i = 0; i < m_classList->GetItemCount(); ++i) rows.push_back(ToU16String(m_classList->GetItemText(i)));
    const int row = ClassRowOf(found->rowName, rows);
    if (row < 0) return;
    SelectClass(row, true);
}

}  // namespace marrowfin
