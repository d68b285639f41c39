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
            m_search.GoBack();
            ListRows();
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
    const QString text = m_searchEdit ? m_searchEdit->text() : QString();
    if (m_search.BeginCollectionFilter(text, m_store && m_store->root)) FilterCollectionRows();
}

void CBrindleDlg::FilterCollectionRows() {
    SetShown(m_searchList, false);
    if (m_search.FilterCollection([](const QString& path) { return FileExists(ToU16String(path)); })) ShowStagedRows();
    repaint(ScaleRect(8, 68, 574, 288));
    repaint(ScaleRect(10, 427, 760, 447));
    RepaintResults();
}

}  // namespace marrowfin
