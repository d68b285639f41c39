#include "panel/model/thumbnail_queue.h"

#include <algorithm>
#include <mutex>

#include "net/download_queue.h"
#include "platform/files.h"
#include "store/gallery_store.h"

namespace marrowfin {

namespace {

// A long session's bound on the files remembered as arrived.
constexpr size_t kArrivedBound = 4096;

bool Holds(const std::vector<std::u16string>& paths, const std::u16string& path) {
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

}  // namespace

void ThumbnailQueue::Report(int item) {
    if (std::find(toCheck.begin(), toCheck.end(), item) == toCheck.end()) toCheck.push_back(item);
}

std::vector<int> ThumbnailQueue::TakeReported() {
    std::vector<int> items = std::move(toCheck);
    toCheck.clear();
    std::sort(items.begin(), items.end());
    return items;
}

bool ThumbnailQueue::Wait(const std::u16string& path) {
    if (Holds(waiting, path)) return false;
    waiting.push_back(path);
    return true;
}

std::u16string ThumbnailQueue::TakeNext() {
    if (running.size() >= kLanes || waiting.empty()) return {};
    std::u16string path = std::move(waiting.front());
    waiting.erase(waiting.begin());
    return path;
}

void ThumbnailQueue::Ended(const std::u16string& path) { std::erase(running, path); }

bool ThumbnailQueue::Arriving(const std::u16string& path, bool storeHolds) const {
    if (m_arrived.count(path)) return false;
    return storeHolds || Holds(running, path);
}

void ThumbnailQueue::Arrived(const std::u16string& path) {
    if (m_arrived.size() > kArrivedBound) m_arrived.clear();
    m_arrived.insert(path);
}

bool BlockFileReady(GalleryStore& store, const std::u16string& path) {
    {
        std::lock_guard<std::mutex> lock(store.downloadLock);
        if (Holds(store.downloadsWaiting, path) || Holds(store.downloadsRunning, path)) return false;
    }
    return FileSize(path) >= kMinBlockFileSize;
}

}  // namespace marrowfin
