#pragma once
// The display of a block download's progress on its result row.

#include <cstdint>

namespace marrowfin {

class CBrindleDlg;

// The percentage a report shows: bytes against the row's size, at least 8.
double ProgressPercent(std::intptr_t bytes, int size);

// MsgProgress: the high 16 bits of wParam name the download, lParam is the
// bytes received. The row's percentage moves (and the row is redrawn) only
// when the result list shows, the row is not a background fetch and the
// shown number grows by more than 1. Answers whether the row was redrawn.
bool ShowDownloadProgress(CBrindleDlg& panel, std::uintptr_t wParam, std::intptr_t bytes);

}  // namespace marrowfin
