// MsgPanelCommand: the panel's central command handler.
#include "panel/dialog/brindle_dlg.h"

namespace marrowfin {

void CBrindleDlg::OnPanelCommand(std::uintptr_t, std::intptr_t) {}

}  // namespace marrowfin
