#pragma once
// The panel's side of the thumbnail grid: the hooks the grid asks while
// painting, the missing files gathered and asked for after a quiet moment,
// a finished file redrawn, and the activation of a block (the insertion
// request to the host and the usage lists).

#include <cstdint>
#include <string>

namespace marrowfin {

class CBrindleDlg;

// The grid's questions (scan flag, boutique marks) answered by the panel,
// and the store's finished downloads sent to the panel.
void WireThumbList(CBrindleDlg& panel);
// MsgPanelEvent 0: item reported missing; (re)starts the quiet timer.
void QueueThumbCheck(CBrindleDlg& panel, std::intptr_t item);
// Timer 1008: asks for the files of the reported items still in view.
void RequestVisibleThumbs(CBrindleDlg& panel);
// MsgFileReady: redraws the item of a finished file.
void ThumbFileReady(CBrindleDlg& panel, const std::u16string& path);
// MsgPanelEvent 1 and 2: a collection thumbnail download ended.
void ThumbDownloadEnded(CBrindleDlg& panel, bool succeeded, const std::u16string& path);
// MsgPanelCommand 3: a double click on item i of the grid.
void ActivateBlock(CBrindleDlg& panel, std::intptr_t item);
// An inserted block's boutique flag, for the host's later question; the
// cache starts over once it holds more than 100 paths.
void NoteBoutique(CBrindleDlg& panel, const std::u16string& path, bool boutique);
// The insertion code the host expects for a show mode.
uint32_t InsertionCode(const std::u16string& showMode);

}  // namespace marrowfin
