// The search run seen from the panel: starting it, taking its outcome, the
// local fallback and the rows put into the result list. The rows are written
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

    const bool hasRoot = m_store && m_store->root;
    switch (m_search.BeginSearch(text, g_searchGeneration.load(), hasRoot)) {
        case SearchStart::AlreadyRunning: return;
        case SearchStart::Nothing: ShowHotWords(false); return;
        case SearchStart::Run: ShowHotWords(false); break;
    }
    ListRows();
    if (m_searchList) m_searchList->hide();
    RepaintResultArea(*this);

    const int generation = ++g_searchGeneration;
    m_search.RunStarted(generation);
    const WindowHandle self = Handle();
    const bool started = StartPanelWorker([self, generation, root = m_store->root->Path(),
                                           words = text.toStdU16String(), collected = m_search.collected] {
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
    const auto oldHits = [this] {
        return OldCollectionHits(m_store ? m_store->root : nullptr, m_search.lastSearch.toStdU16String());
    };
    switch (m_search.TakeOutcome(generation, g_searchGeneration.load(), m_nav.page, outcome ? &outcome->value : nullptr,
                                 oldHits)) {
        case SearchTaken::Dropped: return;
        case SearchTaken::Failed: SearchFailed(generation); return;
        case SearchTaken::Staged: ShowStagedRows(); break;
        case SearchTaken::None: break;
    }
    RepaintResultArea(*this);
}

void CBrindleDlg::SearchFailed(int generation) {
    // Within the quiet time of the search that failed, the local search is
    // refused and the area keeps "网络中断，请检查后重试".
    if (m_search.LocalAfterFailure(generation, g_searchGeneration.load())) SearchCommand(ControlId::LocalSearch);
    m_search.EndRun(generation);
    update();
}

void CBrindleDlg::RunLocalSearch() {
    if (!m_search.BeginLocalSearch(m_store && m_store->root)) return;
    m_search.localHits.Reset(*m_store);
    std::vector<GalleryNode*> nodes;
    const bool found = m_search.ListLocalHits(
        LocalBlockSearch(m_store->root, m_search.lastSearch.toStdU16String(), m_search.collected, &nodes));
    for (GalleryNode* node : nodes) m_search.localHits.Add(node);
    ListRows();
    if (found && m_searchList) m_searchList->show();
    RepaintResultArea(*this);
}

void CBrindleDlg::ShowStagedRows() {
    if (!m_search.ShowStaged(m_nav.page)) return;
    ListRows();
    if (m_searchList) m_searchList->show();
}

void CBrindleDlg::ListRows() {
    // Thumbnails and checks asked for the rows before belong to them.
    ++m_rowGeneration;
    m_rowPreviewJobs.clear();
    m_search.rowsToCheck.clear();
    if (!m_searchList) return;
    m_searchList->SetSearchKey(m_search.lastSearch);
    m_searchList->SetRows(&m_search.rows);
}

void CBrindleDlg::OpenHotWord(const QString& word) {
    if (m_searchEdit) m_searchEdit->show();
    (void)AddGalleryToShowList(word.toStdU16String());
    ApplyShowList(1);
    KillTimer(Handle(), kTimerBuildClassList);
    RebuildAndReopen();
    OpenRoute(u"/" + word.toStdU16String());
}

bool CBrindleDlg::SearchEnded() const { return m_search.SearchEnded(g_searchGeneration.load()); }

}  // namespace marrowfin
