#pragma once
// What every export stands on: the panel singleton.

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does; never cleared.
CBrindleDlg*& PanelSingleton();

}  // namespace marrowfin
