// The search page's commands 2200 to 2205 and the collection filter.
#include <QLineEdit>

#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/hot_words.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/model/panel_numbers.h"
#include "platform/files.h"
#include "platform/qt/qt_text.h"
#include "platform/ticks.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "store/gallery_store.h"

namespace marrowfin {

void CBrindleDlg::SearchCommand(int id) {
    if (!m_nav.AcceptSearchCommand(id, GetTickCount())) return;

    switch (id) {
        case ControlId::ClearSearch:
            if (m_searchEdit) m_searchEdit->clear();
            if (!m_searchBtns.empty()) SetShown(m_searchBtns[0], false);
            if (m_searchEdit) m_searchEdit->setFocus();
            return;
        case ControlId::Search:
            if (m_nav.page == PageCollectionSearch) {
                RunCollectionFilter();
                return;
            }
            if (m_nav.page != PageSearch) return;
            break;  // as 2204
        case ControlId::SearchBack:
            m_localHits.clear();
            m_rows.clear();
            ListRows();
            m_searchState = 0;
            m_downloadQueue.clear();  // waiting downloads go; running ones find no row
            m_nav.forceList = true;
            GoToPage(PageBrowse);
            ShowHotWords(false);
            return;
        case ControlId::LocalSearch: RunLocalSearch(); return;
        case ControlId::StartSearch:
        case ControlId::SearchFromHost: break;
        default: return;
    }

    // 2204 and what continues as it: the text to search.
    QString text = m_searchEdit ? m_searchEdit->text() : QString();
    if (m_nav.page == PageSearch && text.isEmpty()) {
        text = g_defaultHotWord;
        if (m_searchEdit) m_searchEdit->setText(text);
    }
    StartSearch(text);
}

void CBrindleDlg::RunCollectionFilter() {
    QString text = m_searchEdit ? m_searchEdit->text() : QString();
    if (text == m_lastSearch) return;
    m_searchRuns.clear();
    m_searchUntouched = false;
    if (text.isEmpty()) return;
    m_lastSearch = text;
    if (!m_store || !m_store->root) return;
    // Rows still on their way: the filter runs when they land.
    if (m_collectionRowsPending) return;
    FilterCollectionRows();
}

void CBrindleDlg::FilterCollectionRows() {
    SetShown(m_searchList, false);
    m_rows.clear();
    m_serverRows.clear();
    m_searchState = 0;

    m_lastSearch = m_lastSearch.toLower();
    for (const BlockRow& row : m_collectionRows) {
        if (!row.name.toLower().contains(m_lastSearch)) continue;
        BlockRow hit = row;
        hit.state = FileExists(ToU16String(hit.path)) ? RowCollected : RowRemote;
        m_serverRows.push_back(std::move(hit));
    }
    if (!m_serverRows.empty()) {
        ShowStagedRows();
        m_searchState = 0;
    } else {
        m_searchState = 3;
    }
    repaint(ScaleRect(8, 68, 574, 288));
    repaint(ScaleRect(10, 427, 760, 447));
    RepaintResults();
}

}  // namespace marrowfin
