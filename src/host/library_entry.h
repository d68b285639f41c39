#pragma once
// What every export stands on: the panel singleton and the first synchronisation.

#include <QPointer>
#include <thread>

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does. Guarded, because
// the panel that `show` makes is a child of the host's main window and goes
// when the host destroys that window; it reads null again then.
QPointer<CBrindleDlg>& PanelSingleton();

// Starts the first-synchronisation thread on `thread` (the export detaches
// it; tests wait for it). False when no thread could be started: the store is
// then not left marked busy, so that no panel waits for a run that never comes.
bool StartFirstSynchro(GalleryStore& store, std::thread& thread);

}  // namespace marrowfin
