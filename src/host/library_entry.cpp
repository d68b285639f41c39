#include "host/library_entry.h"

#include "marrowfin/marrowfin.h"
#include "net/gallery_sync.h"
#include "store/gallery_store.h"

namespace marrowfin {

CBrindleDlg*& PanelSingleton() {
    static CBrindleDlg* panel = nullptr;
    return panel;
}

std::thread StartFirstSynchro(GalleryStore& store) {
    // Marked busy before the thread runs, so that a panel started right after
    // this call already sees the synchronisation and waits for it.
    store.syncBusy.store(1);
    return std::thread([&store] { BuildFirstTree(store); });
}

}  // namespace marrowfin

extern "C" MARROWFIN_API void FirstSynchro(void) {
    marrowfin::StartFirstSynchro(marrowfin::GalleryStore::Instance()).detach();
}
