#include "store/gallery_store.h"

namespace marrowfin {

GalleryStore& GalleryStore::Instance() {
    // Never destroyed: detached workers (a first tree, a download) may still
    // report into it while the process ends.
    static GalleryStore* const store = new GalleryStore;
    return *store;
}

}  // namespace marrowfin
