// The panel's roads into the class manager: button 2002, the exports, the
// start-up without Show.xml, and a route to a class that is not listed.

#include <QPointer>
#include <QTimer>

#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/class_route.h"
#include "panel/model/panel_numbers.h"
#include "picker/sel_class_dlg.h"
#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "platform/files.h"
#include "platform/qt/window_timers.h"
#include "skin/pop_tip_dlg.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/show_list.h"
#include "store/store_paths.h"

namespace marrowfin {

namespace {}  // namespace

std::u16string ClassNameOfRoute(std::u16string_view route) {
    std::u16string name(route);
    const size_t last = name.rfind(u'/');
    if (last != std::u16string::npos && last >= 2) name.erase(last);
    std::erase(name, u'/');
    return name;
}

bool CBrindleDlg::RunClassManager(std::function<void(int result, bool wantSearch)> then, bool withDescriptions) {
    if (m_manager) {
        // One manager at a time: the open one comes forward.
        m_manager->raise();
        m_manager->activateWindow();
        return false;
    }
    auto* manager = new CSelClassDlg(this, m_classTable);
    m_manager = manager;
    manager->m_showDesc = withDescriptions && m_showDesc;
    manager->m_tableComing = m_classTableComing;
    manager->panelHandle = Handle();
    manager->applyTable = [this](const std::u16string& text) {
        (void)ApplyClassTable(text, m_classTable, m_classVersions);
        RefreshClassRows();
    };
    manager->onSelectionCleared = [this] {
        m_nav.curClassPath.clear();
        m_nav.listNodes.clear();
    };
    manager->onFinished = [this, manager, then = std::move(then)](int result, bool wantSearch) {
        // Gone at once for the panel, so that the continuation may open the
        // next one; the window itself goes when its click has returned.
        m_manager = nullptr;
        QTimer::singleShot(0, [doomed = QPointer<CSelClassDlg>(manager)] { delete doomed.data(); });
        if (then) then(result, wantSearch);
    };
    manager->Open();
    return true;
}

void CBrindleDlg::ManageClasses() {
    (void)RunClassManager([this](int result, bool wantSearch) {
        // A new list is fetched for the tree; meanwhile the column follows the file.
        if (result == 1) RebuildTree();
        if (wantSearch) GoToPage(PageSearch);
        else ApplyShowList(0);
    });
}

void CBrindleDlg::OpenClassRoute(const std::u16string& route) {
    const std::u16string name = ClassNameOfRoute(route);
    if (name.empty()) {
        SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
        return;
    }
    if (!FileExists(ShowListPath())) (void)WriteShowList({});
    ContinueClassRoute(route, name, false);
}

void CBrindleDlg::ContinueClassRoute(const std::u16string& route, const std::u16string& name, bool secondRound) {
    const ShowListing listing = CountShowList(name);
    if (listing.listed) {
        m_nav.targetClass = route;
        OpenTargetClass();
        return;
    }
    if (listing.count >= kRouteClassLimit) {
        if (secondRound) return;  // still full: nothing changes
        auto* tip = new CPopTipDlg(this);
        tip->setAttribute(Qt::WA_DeleteOnClose);
        tip->setWindowModality(Qt::WindowModal);
        tip->Configure(ToQString(kProductTitle), false,
                       QStringLiteral("最多可添加%1个分类").arg(static_cast<int>(kRouteClassLimit)), QString(),
                       QStringLiteral("去管理"), QString());
        tip->OnInitDialog();
        connect(tip, &QDialog::finished, this, [this, route, name](int answer) {
            if (answer != 1) {
                // Closed: the second round reads the list as it stands.
                ContinueClassRoute(route, name, true);
                return;
            }
            (void)RunClassManager(
                [this, route, name](int result, bool wantSearch) {
                    if (result == 1) ApplyShowList(0);
                    if (wantSearch) {
                        GoToPage(PageSearch);
                        return;
                    }
                    ContinueClassRoute(route, name, true);
                },
                false);
        });
        tip->open();
        return;
    }
    if (!m_store || !m_store->root) return;
    (void)AddGalleryToShowList(name);
    m_nav.curClassPath = m_store->root->Path() + route;
    m_nav.targetClass.clear();
    // The class comes on a worker; its arrival rebuilds the column and opens
    // it (OnTreeUpdate), as the rebuild followed the fetch when it waited.
    std::optional<TreeRequest> request = PrepareGalleryFull(*m_store, name, true);
    if (request && StartTreeRequest(*m_store, std::move(*request))) {
        m_routeGallery = name;
        m_routeTarget = m_nav.curClassPath;
        return;
    }
    SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
}

}  // namespace marrowfin
