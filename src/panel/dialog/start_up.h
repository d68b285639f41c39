#pragma once
// Pieces of the panel's start-up that stand apart from the window.

namespace marrowfin {

class CBrindleDlg;

// The option RequestNetwork as start-up reads it: absent (-1) becomes 1 and
// is written back. True when background requests of the class table may run.
bool TakeRequestNetworkOption();

// Reads the class table and its versions, applies the stored table or asks
// the service for one, and starts the background refresh when allowed.
void StartUpClassTable(CBrindleDlg& panel);

}  // namespace marrowfin
