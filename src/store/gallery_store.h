#pragma once
// The one process-wide store: owner of the gallery tree and the download queue.

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace marrowfin {

struct GalleryNode;

struct GalleryStore {
    // 1 while BuildFirstTree runs; read by the panel's wait from another thread.
    std::atomic<int32_t> syncBusy{0};
    GalleryNode* root = nullptr;
    std::map<std::u16string, int32_t> staleClasses;
    std::map<std::u16string, int32_t> galleryVersions;
    std::map<std::u16string, uint32_t> galleryFetchTicks;
    // Guarded by downloadLock.
    std::vector<std::u16string> downloadsWaiting;
    std::vector<std::u16string> downloadsRunning;
    std::mutex downloadLock;

    // Built on first use, never destroyed before the process ends.
    static GalleryStore& Instance();
};

}  // namespace marrowfin
