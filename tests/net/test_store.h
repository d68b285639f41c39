#pragma once
// A store of a test's own, freed with its tree once no download worker is left.

#include <chrono>

#include "net/download_queue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin::test {

struct TestStore : GalleryStore {
    ~TestStore() {
        WaitForDownloadWorkers(std::chrono::seconds(30));
        if (root) {
            DestroySubtree(root);
            delete root;
        }
    }
};

}  // namespace marrowfin::test
