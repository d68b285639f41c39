#include "store/gallery_store.h"

namespace marrowfin {

GalleryStore& GalleryStore::Instance() {
    static GalleryStore store;
    return store;
}

}  // namespace marrowfin
