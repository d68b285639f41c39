#include "panel/dialog/download_progress.h"

#include <algorithm>

#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/search_list_ctrl.h"

namespace marrowfin {

double ProgressPercent(std::intptr_t bytes, int size) {
    return std::max(8.0, static_cast<double>(bytes) * 100.0 / static_cast<double>(size));
}

bool ShowDownloadProgress(CBrindleDlg& panel, std::uintptr_t wParam, std::intptr_t bytes) {
    const int id = static_cast<int>((wParam >> 16) & 0xffff);
    const std::optional<RowKey> active = panel.m_activeDownloads->Find(static_cast<uint16_t>(id));
    if (!active) return false;
    const int index = panel.FindRow(*active);
    if (index < 0) return false;
    BlockRow& row = panel.m_rows[static_cast<std::size_t>(index)];
    if (row.size <= 0) return false;
    const int percent = static_cast<int>(ProgressPercent(bytes, row.size));
    if (!panel.m_searchList || !panel.m_searchList->isVisible() || row.prefetch || percent <= row.percent + 1)
        return false;
    row.percent = percent;
    panel.m_searchList->RedrawRow(index);
    return true;
}

}  // namespace marrowfin
