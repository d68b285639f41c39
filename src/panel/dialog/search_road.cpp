// The search run seen from the panel: starting it, taking its outcome, the
// local fallback and the rows put into the result list. m_rows is written
// here, on the panel's thread only; the worker sends its rows in a message.
#include "panel/dialog/search_road.h"

#include <QLineEdit>

#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/hot_words.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/model/panel_numbers.h"
#include "platform/profile.h"
#include "platform/qt/window_timers.h"
#include "search/local_search.h"
#include "skin/skin_scale.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/show_list.h"

namespace marrowfin {

std::atomic<int> g_searchGeneration{0};

namespace {

void RepaintResultArea(CBrindleDlg& panel) {
    panel.repaint(ScaleRect(8, 68, 574, 288));
    panel.repaint(ScaleRect(10, 427, 760, 447));
}

}  // namespace

void CBrindleDlg::StartSearch(QString text) {
    // The placeholder follows the last search unless the options keep the service's word.
    if (GetOptionInt(u"GalDefSearch", 0) == 0) g_defaultHotWord = text;
    update(ScaleRect(12, 40, 686, 64));

    // The same text still on its way: one request is enough.
    const auto newest = m_searchRuns.find(g_searchGeneration.load());
    if (newest != m_searchRuns.end() && newest->second == 1 && text == m_lastSearch) return;

    m_searchRuns.clear();
    m_searchUntouched = false;
    ShowHotWords(false);
    if (text.isEmpty()) return;
    m_lastSearch = text;
    if (!m_store || !m_store->root) return;

    m_rows.clear();
    ListRows();
    if (m_searchList) m_searchList->hide();
    m_searchState = 1;
    RepaintResultArea(*this);

    const int generation = ++g_searchGeneration;
    m_searchRuns[generation] = 1;
    const WindowHandle self = Handle();
    const bool started = StartPanelWorker([self, generation, root = m_store->root->Path(),
                                           words = text.toStdU16String(), collected = m_collected] {
        SearchOutcome outcome =
            RunBlockSearch(root, words, collected, [generation] { return generation == g_searchGeneration.load(); });
        (void)PostWindowMessage(self, MsgSearchOutcome, static_cast<std::uintptr_t>(generation), 0,
                                std::make_unique<SearchOutcomePayload>(std::move(outcome)));
    });
    // No thread: as a request that failed at once.
    if (!started) OnSearchOutcome(generation, std::make_unique<SearchOutcomePayload>(SearchOutcome{}));
}

void CBrindleDlg::OnSearchOutcome(int generation, std::unique_ptr<MessagePayload> payload) {
    auto* outcome = dynamic_cast<SearchOutcomePayload*>(payload.get());
    // A run overtaken by a newer one, or one whose page was left: what it
    // found goes, and the area stays as the newer run or the page has it.
    if (generation != g_searchGeneration.load() || !outcome || !IsSearchPage(m_nav.page)) {
        if (auto run = m_searchRuns.find(generation); run != m_searchRuns.end()) run->second = 0;
        return;
    }
    switch (outcome->value.kind) {
        case SearchOutcome::Failed:
            m_searchState = 2;
            SearchFailed(generation);
            return;
        case SearchOutcome::NoRoot: m_serverRows.clear(); break;
        case SearchOutcome::Hits: {
            m_serverRows.clear();
            // Blocks of the old local collection head the service's rows.
            const std::vector<SearchHit> old =
                OldCollectionHits(m_store ? m_store->root : nullptr, m_lastSearch.toStdU16String());
            for (const SearchHit& hit : old) m_serverRows.push_back(RowOfHit(hit));
            for (const SearchHit& hit : outcome->value.hits) m_serverRows.push_back(RowOfHit(hit));
            break;
        }
    }
    m_searchState = m_serverRows.empty() ? 3 : 0;
    m_searchRuns[generation] = 0;
    if (!m_serverRows.empty()) ShowStagedRows();
    RepaintResultArea(*this);
}

void CBrindleDlg::SearchFailed(int generation) {
    // Within the quiet time of the search that failed, the local search is
    // refused and the area keeps "网络中断，请检查后重试".
    if (generation == g_searchGeneration.load() && m_searchState == 2) SearchCommand(ControlId::LocalSearch);
    m_searchRuns[generation] = 0;
    update();
}

void CBrindleDlg::RunLocalSearch() {
    m_searchState = 0;
    if (m_lastSearch.isEmpty() || !m_store || !m_store->root) return;
    m_rows.clear();
    m_localHits.Reset(*m_store);
    std::vector<GalleryNode*> nodes;
    for (const SearchHit& hit : LocalBlockSearch(m_store->root, m_lastSearch.toStdU16String(), m_collected, &nodes))
        m_rows.push_back(RowOfHit(hit));
    for (GalleryNode* node : nodes) m_localHits.Add(node);
    ListRows();
    if (!m_rows.empty()) {
        if (m_searchList) m_searchList->show();
    } else {
        m_searchState = 3;
    }
    RepaintResultArea(*this);
}

void CBrindleDlg::ShowStagedRows() {
    if (!IsSearchPage(m_nav.page)) return;
    m_rows = m_serverRows;
    ListRows();
    if (m_searchList) m_searchList->show();
}

void CBrindleDlg::ListRows() {
    // Thumbnails and checks asked for the rows before belong to them.
    ++m_rowGeneration;
    m_rowPreviewJobs.clear();
    m_rowsToCheck.clear();
    if (!m_searchList) return;
    m_searchList->SetSearchKey(m_lastSearch);
    m_searchList->SetRows(&m_rows);
}

void CBrindleDlg::OpenHotWord(const QString& word) {
    if (m_searchEdit) m_searchEdit->show();
    (void)AddGalleryToShowList(word.toStdU16String());
    ApplyShowList(1);
    KillTimer(Handle(), kTimerBuildClassList);
    RebuildAndReopen();
    OpenRoute(u"/" + word.toStdU16String());
}

bool CBrindleDlg::SearchEnded() const {
    const auto run = m_searchRuns.find(g_searchGeneration.load());
    return run != m_searchRuns.end() && run->second == 0;
}

}  // namespace marrowfin
