// The pages: browsing, the collections, the search and the collection search.
#include <QLineEdit>

#include "collection/collection_folders.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/collection_rows.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/model/panel_numbers.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"

namespace marrowfin {

void CBrindleDlg::GoToPage(int page) {
    SelectionChanged(-1);
    if (m_nav.page == PageCollectionSearch && page != m_nav.page) m_search.ForgetCollectionRows();
    switch (m_nav.GoToPage(page)) {
        case PageMove::EnterSearch:
        case PageMove::EnterCollectionSearch: ShowSearchControls(); return;
        case PageMove::LeaveSearch: ShowBrowseControls(); return;
        case PageMove::None: return;
    }
}

// A search page: the edit and its buttons instead of the class column, the
// subclasses and the thumbnails.
void CBrindleDlg::ShowSearchControls() {
    if (m_nav.classIndex == 1) LayoutCollectionBar(false);
    SetShown(Button(ControlId::OpenSearch), false);
    if (m_pThumbList) {
        m_pThumbList->setGeometry(ScaleBox(133, 72, 617, 343));
        m_pThumbList->hide();
    }
    SetShown(m_searchEdit, true);
    if (m_searchBtns.size() > 2) {
        SetShown(m_searchBtns[1], true);
        SetShown(m_searchBtns[2], true);
    }
    for (CSkinButton* button : m_collectionBtns) SetShown(button, false);
    for (CSubclassButton* button : m_subclassBtns) SetShown(button, false);
    SetShown(Button(ControlId::AddClasses), false);
    SetShown(Button(ControlId::AddBlocksEmpty), false);
    SetShown(Button(ControlId::DownloadGallery), false);
    SetShown(m_classList, false);
    m_search.EnterPage(m_nav.page, m_store);
    if (m_nav.page == PageSearch) {
        ShowHotWords(true);
        if (m_searchEdit) {
            m_searchEdit->setCursorPosition(0);
            m_searchEdit->setFocus();
        }
        update();
    } else {
        if (m_searchEdit) m_searchEdit->setFocus();
        update();
        LoadCollectionRows();
    }
}

// Back from a search page to the class that was shown.
void CBrindleDlg::ShowBrowseControls() {
    m_search.LeavePage();
    SetShown(Button(ControlId::OpenSearch), true);
    SetShown(m_searchEdit, false);
    SetShown(m_searchList, false);
    for (CSkinButton* button : m_searchBtns) SetShown(button, false);
    if (m_nav.page == PageCollection)
        for (CSkinButton* button : m_collectionBtns) SetShown(button, true);
    update();
    if (m_searchEdit) m_searchEdit->clear();
    SetShown(m_classList, true);
    SetShown(Button(ControlId::AddClasses), true);
    SetShown(Button(ControlId::AddBlocksEmpty), false);
    SetShown(Button(ControlId::DownloadGallery), false);
    // The tick rebuilds the class list and reopens the class.
    if (!m_nav.curClassPath.empty()) SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
}

void CBrindleDlg::LoadCollectionRows() {
    // Asked on a worker; the page shows "图块加载中，请稍候" until the rows land.
    const std::u16string base = m_store && m_store->root ? m_store->root->Path() : std::u16string();
    StartCollectionRowsFetch(Handle(), m_search.LoadCollectionRows(), userToken, base + u"/" + MirrorName(userId));
}

}  // namespace marrowfin
