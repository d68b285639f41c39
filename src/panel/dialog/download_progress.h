#pragma once
// The display of a block download's progress on its result row.

#include <cstdint>

namespace marrowfin {

class CBrindleDlg;

// MsgProgress: the high 16 bits of wParam name the download, lParam is the
// bytes received. The row's percentage moves (SearchModel::Progress) and the
// row is redrawn only while the result list shows. Answers whether it was.
bool ShowDownloadProgress(CBrindleDlg& panel, std::uintptr_t wParam, std::intptr_t bytes);

}  // namespace marrowfin
