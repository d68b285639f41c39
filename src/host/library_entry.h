#pragma once
// What every export stands on: the panel singleton.

#include <QPointer>

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does. Guarded, because
// the panel that `show` makes is a child of the host's main window and goes
// when the host destroys that window; it reads null again then.
QPointer<CBrindleDlg>& PanelSingleton();

}  // namespace marrowfin
