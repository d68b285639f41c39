#pragma once
// The one process-wide store: owner of the gallery tree and the download queue.

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "store/tree_update.h"

namespace marrowfin {

struct GalleryNode;

// Where a queued block is fetched from and which folders it needs: taken
// from the tree when the block is queued, so that workers never read it.
struct DownloadTarget {
    std::u16string url;
    std::u16string galleryPath;
    std::u16string classPath;
};

struct GalleryStore {
    // 1 while a first tree is being built on its worker.
    std::atomic<int32_t> syncBusy{0};
    // The tree and the three maps belong to the owner thread (see tree_update.h).
    GalleryNode* root = nullptr;
    // Raised by the owner whenever nodes are freed; NodeList handles compare it.
    uint64_t treeEpoch = 0;
    std::map<std::u16string, int32_t> staleClasses;
    std::map<std::u16string, int32_t> galleryVersions;
    std::map<std::u16string, uint32_t> galleryFetchTicks;
    // Guarded by downloadLock.
    std::vector<std::u16string> downloadsWaiting;
    std::vector<std::u16string> downloadsRunning;
    std::map<std::u16string, DownloadTarget> downloadTargets;
    std::mutex downloadLock;
    // Updates deposited by workers for the owner to adopt.
    std::deque<TreeUpdate> treeUpdates;
    std::mutex treeUpdateLock;

    // Built on first use and never destroyed, so that workers still running at exit find it.
    static GalleryStore& Instance();
};

}  // namespace marrowfin
