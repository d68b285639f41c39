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
    auto active = panel.m_activeDownloads.find(id);
    if (active == panel.m_activeDownloads.end()) return false;
    const int index = panel.FindRow(active->second);
    if (index < 0) return false;
    BlockRow& row = panel.m_rows[static_cast<std::size_t>(index)];
    if (row.size <= 0) return false;
    const int percent = static_cast<int>(ProgressPercent(bytes, row.size));
    if (!panel.m_searchList || !panel.m_searchList->isVisible() || row.prefetch || percent <= row.percent + 1)
        return false;
    row.percent = percent;
    // The list has no per-row redraw; the row is one of its few visible ones.
    panel.m_searchList->update();
    return true;
}

}  // namespace marrowfin
