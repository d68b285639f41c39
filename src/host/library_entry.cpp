#include "host/library_entry.h"

#include "host/boundary.h"
#include "marrowfin/marrowfin.h"
#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "store/gallery_store.h"

namespace marrowfin {

QPointer<QObject>& PanelSingleton() {
    static QPointer<QObject> panel;
    return panel;
}

}  // namespace marrowfin

extern "C" MARROWFIN_API void FirstSynchro(void) {
    // Marked busy before the worker runs, so that a panel started right after
    // this call already waits for its tree; without a worker nothing waits.
    marrowfin::Shielded([] { (void)marrowfin::StartFirstTree(marrowfin::GalleryStore::Instance()); });
}
