#include "host/library_entry.h"

#include "marrowfin/marrowfin.h"
#include "net/gallery_sync.h"
#include "store/gallery_store.h"

namespace marrowfin {

CBrindleDlg*& PanelSingleton() {
    static CBrindleDlg* panel = nullptr;
    return panel;
}

}  // namespace marrowfin

extern "C" MARROWFIN_API void FirstSynchro(void) {
    // Marked busy before the worker runs, so that a panel started right after
    // this call already waits for its tree.
    (void)marrowfin::StartFirstTree(marrowfin::GalleryStore::Instance());
}
