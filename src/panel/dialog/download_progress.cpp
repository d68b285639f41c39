#include "panel/dialog/download_progress.h"

#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/search_list_ctrl.h"

namespace marrowfin {

bool ShowDownloadProgress(CBrindleDlg& panel, std::uintptr_t wParam, std::intptr_t bytes) {
    const int id = static_cast<int>((wParam >> 16) & 0xffff);
    const std::optional<RowKey> active = panel.m_activeDownloads->Find(static_cast<uint16_t>(id));
    if (!active || !panel.m_searchList || !panel.m_searchList->isVisible()) return false;
    const int index = panel.m_search.Progress(*active, bytes);
    if (index < 0) return false;
    panel.m_searchList->RedrawRow(index);
    return true;
}

}  // namespace marrowfin
