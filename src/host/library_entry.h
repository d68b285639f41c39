#pragma once
// What every export stands on: the panel singleton and the first synchronisation.

#include <thread>

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does; never cleared.
CBrindleDlg*& PanelSingleton();

// Starts the first-synchronisation thread on `thread` (the export detaches
// it; tests wait for it). False when no thread could be started: the store is
// then not left marked busy, so that no panel waits for a run that never comes.
bool StartFirstSynchro(GalleryStore& store, std::thread& thread);

}  // namespace marrowfin
