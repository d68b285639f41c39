#pragma once
// What every export stands on: the panel singleton.

#include <QPointer>

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does. Guarded, because
// the panel that `show` makes is a child of the host's main window and goes
// when the host destroys that window; it reads null again then. Held as a
// QObject: while the window is being destroyed it is no panel any more, and
// only ExistingPanel's checked cast may turn it into one.
QPointer<QObject>& PanelSingleton();

}  // namespace marrowfin
