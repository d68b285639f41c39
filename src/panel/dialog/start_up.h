#pragma once
// Pieces of the panel's start-up that stand apart from the window.

namespace marrowfin {

class CBrindleDlg;

// The option RequestNetwork as start-up reads it: absent (-1) becomes 1 and
// is written back. True when background requests of the class table may run.
bool TakeRequestNetworkOption();

// Reads the class table and its versions and applies the stored table,
// starting the background refresh when allowed; without a stored table the
// refresh asks the service for the first one.
void StartUpClassTable(CBrindleDlg& panel);

}  // namespace marrowfin
