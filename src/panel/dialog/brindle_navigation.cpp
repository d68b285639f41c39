// Pages, class switching, subclasses, routes, search commands and the panel buttons.
#include "panel/dialog/brindle_dlg.h"

namespace marrowfin {

void CBrindleDlg::SelectClass(int, bool) {}
void CBrindleDlg::SwitchClass(int) {}
void CBrindleDlg::OpenSubclass(int) {}
void CBrindleDlg::GoToPage(int) {}
void CBrindleDlg::OpenTargetClass() {}
void CBrindleDlg::OpenRoute(const std::u16string&) {}
void CBrindleDlg::SearchCommand(int) {}
void CBrindleDlg::LayoutCollectionBar(bool) {}
void CBrindleDlg::RebuildClassList() {}
bool CBrindleDlg::RunClassManager() { return false; }
void CBrindleDlg::OnPanelButton(int) {}

}  // namespace marrowfin
