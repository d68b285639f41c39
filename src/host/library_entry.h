#pragma once
// What every export stands on: the panel singleton and the first synchronisation.

#include <thread>

namespace marrowfin {

class CBrindleDlg;
struct GalleryStore;

// The panel: null until an export that may create it does; never cleared.
CBrindleDlg*& PanelSingleton();

// Obtains the store and starts the first-synchronisation thread; returns the
// thread so that tests can wait for it (the export detaches it).
std::thread StartFirstSynchro(GalleryStore& store);

}  // namespace marrowfin
