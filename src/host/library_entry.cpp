#include "host/library_entry.h"

#include "host/boundary.h"
#include "marrowfin/marrowfin.h"
#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "platform/threads.h"
#include "store/gallery_store.h"

namespace marrowfin {

QPointer<CBrindleDlg>& PanelSingleton() {
    static QPointer<CBrindleDlg> panel;
    return panel;
}

bool StartFirstSynchro(GalleryStore& store, std::thread& thread) {
    // Marked busy before the thread runs, so that a panel started right after
    // this call already sees the synchronisation and waits for it.
    const int before = store.syncBusy.exchange(1);
    if (StartThread(thread, [&store] { BuildFirstTree(store); })) return true;
    store.syncBusy.store(before);
    return false;
}

}  // namespace marrowfin

extern "C" MARROWFIN_API void FirstSynchro(void) {
    marrowfin::Shielded([] {
        std::thread sync;
        if (marrowfin::StartFirstSynchro(marrowfin::GalleryStore::Instance(), sync)) sync.detach();
        // Without a thread there is no tree until a later run (the host's
        // "UpdateShow", a refresh) builds one; the panel does not wait.
    });
}
