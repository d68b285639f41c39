// The panel's own buttons: the empty states, the title bar, the sync prompt
// and "添加更多分类".
#include <optional>
#include <utility>

#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/navigation_steps.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/model/panel_numbers.h"
#include "platform/product_texts.h"
#include "platform/qt/qt_text.h"
#include "platform/qt/window_timers.h"
#include "skin/pop_tip_dlg.h"
#include "skin/skin_button.h"
#include "store/gallery_store.h"
#include "store/store_ini.h"

namespace marrowfin {

void CBrindleDlg::OnPanelButton(int id) {
    switch (id) {
        case ControlId::AddBlocksEmpty: OnButton(ControlId::AddBlocks); return;
        case ControlId::DownloadGallery: {
            if (!m_classList || m_nav.classIndex < 0 || m_nav.classIndex >= m_classList->GetItemCount()) return;
            if (m_galleryFetchPending || !m_store) return;  // one download at a time
            const std::u16string name = ToU16String(m_classList->GetItemText(m_nav.classIndex));
            // The gallery comes on a worker; its arrival (or failure) carries on.
            std::optional<TreeRequest> request = PrepareGalleryFull(*m_store, name, false);
            if (request && StartTreeRequest(*m_store, std::move(*request))) {
                m_galleryFetchPending = true;
                if (CSkinButton* download = Button(ControlId::DownloadGallery)) download->setEnabled(false);
                return;
            }
            CPopTipDlg tip(this);
            tip.Configure(ToQString(kProductTitle), false, ToQString(kGalleryFetchFailed), QString(),
                          QStringLiteral("确定"), QString());
            (void)tip.DoModal();
            SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
            return;
        }
        case ControlId::Feedback: FeedbackButton(); return;
        case ControlId::Statistics: StatisticsButton(); return;
        case ControlId::ReplaceCloud: ReplaceCloudButton(); return;
        case ControlId::RetrySync:
            ReloadCollection([this](int reloaded) { ContinueCollectionSwitch(-2, reloaded); });
            return;
        case ControlId::KeepCloud:
            (void)WriteOldCollectTip(u"1");  // a failed write only brings the notice back
            m_nav.forceList = true;
            SelectClass(1, false);
            return;
        case ControlId::OpenSearch: GoToPage(PageSearch); return;
        case ControlId::AddClasses: ManageClasses(); return;
        default: return;
    }
}

}  // namespace marrowfin
