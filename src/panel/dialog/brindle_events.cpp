// The panel's timers and MsgPanelEvent.

#include "net/gallery_sync.h"
#include "panel/classes/class_table_refresh.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/hot_words.h"
#include "panel/dialog/hourly_refresh.h"
#include "panel/model/panel_numbers.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

constexpr int kStatusButtons[] = {ControlId::ReplaceCloud, ControlId::KeepCloud, ControlId::RetrySync,
                                  ControlId::AddBlocksEmpty};

}  // namespace

void CBrindleDlg::ReapplyClassTable() {
    const bool hadTable = !m_generalKinds.empty() || !m_boutiqueKinds.empty();
    (void)ApplyClassTable(u"", m_classTable, m_classVersions);
    m_showDesc = m_classTable.showDesc;
    // The first table of a first run comes after start-up: what the host was
    // told about boutique blocks without it must not outlive it.
    if (!hadTable) m_boutiqueCache.clear();
    m_classTableComing = false;
    if (m_manager) m_manager->TableChanged();
}

void CBrindleDlg::OnClassTableRefresh(std::uintptr_t code, std::unique_ptr<MessagePayload> payload) {
    if (code == ClassTableCached) {
        SetTimer(Handle(), kTimerClassTableApply, kClassTableApplyMs);
        return;
    }
    if (code != HotWordsFetched) return;
    auto* words = dynamic_cast<HotWordsPayload*>(payload.get());
    // The search page shows the default word in its empty box.
    if (words && TakeHotWords(m_hotWords, words->value) && m_nav.page == PageSearch) update();
}

void CBrindleDlg::OnTimer(std::uintptr_t id) {
    const WindowHandle self = Handle();
    switch (id) {
        case kTimerHourlyRefresh: {
            if (DecideHourlyRefresh(LocalHour(), RollPercent()) == HourlyStep::Wait) return;
            KillTimer(self, kTimerHourlyRefresh);
            if (GetOptionInt(u"RequestNetwork", -1) != 0) StartClassTableRefresh(self);
            return;
        }
        case kTimerRightStrip:
            KillTimer(self, id);
            update(QRect(width() - ScaleUnits(35), 0, ScaleUnits(35), height()));
            return;
        case kTimerBuildClassList:
            KillTimer(self, id);
            RebuildAndReopen();
            return;
        case kTimerClassSwitch:
            KillTimer(self, id);
            SwitchClass(m_nav.TakePendingClass());
            return;
        case kTimerRepaintAll:
            KillTimer(self, id);
            update();
            return;
        case kTimerThumbRequest: RequestVisibleThumbs(*this); return;
        case kTimerClassTableApply:
            KillTimer(self, id);
            ReapplyClassTable();
            RefreshClassRows();
            return;
        case kTimerRowCheck: CheckShownRows(); return;
        case kTimerRowUse:
        case kTimerRowCollect:
        case kTimerRowClassLink: {
            KillTimer(self, id);
            const int row = m_searchList ? m_searchList->ClickedRow() : -1;
            if (id == kTimerRowUse) UseRow(row);
            else if (id == kTimerRowCollect) CollectRow(row);
            else GoToRowClass(row);
            return;
        }
        case kTimerSyncPoll: PollCloudSync(); return;
        default: return;
    }
}

void CBrindleDlg::OnPanelEvent(std::uintptr_t code, std::intptr_t lParam, std::unique_ptr<MessagePayload> payload) {
    // A payload (a worker's path) is freed when this returns.
    switch (code) {
        case PanelEvent::ThumbMissing: QueueThumbCheck(*this, lParam); return;
        case PanelEvent::ThumbDone:
        case PanelEvent::ThumbFailed:
            if (auto* path = dynamic_cast<OwnedText*>(payload.get()))
                ThumbDownloadEnded(*this, code == PanelEvent::ThumbDone, path->value);
            return;
        case PanelEvent::NextThumb: NextCollectionThumb(); return;
        case PanelEvent::LayoutStatus: LayoutStatusButtons(); return;
        case PanelEvent::SyncStatus: SetSyncStatus(static_cast<int>(lParam)); return;
        case PanelEvent::SyncDone:
        case PanelEvent::SyncFailed: CloudSyncEnded(code == PanelEvent::SyncDone); return;
        case PanelEvent::ThumbMenu: ThumbnailMenu(lParam); return;
        case PanelEvent::FolderMenu: FolderButtonMenu(lParam); return;
        case PanelEvent::DeleteFolder: AskDeleteFolder(reinterpret_cast<CSubclassButton*>(lParam)); return;
        case PanelEvent::MoveBlock: MoveBlock(lParam); return;
        default: return;
    }
}

void CBrindleDlg::LayoutStatusButtons() {
    for (int id : kStatusButtons)
        if (CSkinButton* button = Button(id)) button->hide();
    for (int id : m_nav.StatusButtons())
        if (CSkinButton* button = Button(id)) button->show();
    update(ScaleRect(190, 110, 580, 300));
}

void CBrindleDlg::SetSyncStatus(int status) {
    m_nav.syncStatus = status;
    if (status == -2)
        for (int id : kStatusButtons)
            if (CSkinButton* button = Button(id)) button->hide();
    for (CSkinButton* button : m_collectionBtns)
        if (button) button->setVisible(status == -1);
    // Posted: the buttons follow the state the caller ends in.
    (void)PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::LayoutStatus, 0);
}

bool CBrindleDlg::IsOwnWindow(WindowHandle window) {
    if (window == 0) return false;
    if (window == Handle()) return true;
    for (QWidget* own :
         {static_cast<QWidget*>(m_pThumbList), static_cast<QWidget*>(m_searchList), static_cast<QWidget*>(m_classList)})
        if (own && HandleOf(own) == window) return true;
    return false;
}

}  // namespace marrowfin
