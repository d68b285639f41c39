#include "net/download_queue.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

std::atomic<WindowHandle> g_notifyWindow{0};
std::atomic<size_t> g_liveWorkers{0};

bool Holds(const std::vector<std::u16string>& list, std::u16string_view path) {
    return std::find(list.begin(), list.end(), path) != list.end();
}

void RunDownloadJob(GalleryStore& store, std::u16string path, DownloadTarget target) {
    if (!DirectoryExists(target.galleryPath)) (void)CreateDirectories(target.galleryPath);
    if (!DirectoryExists(target.classPath)) (void)CreateDirectories(target.classPath);
    const bool present = FileExists(path);
    const bool fetched = present || DownloadFile(target.url, path, 0, 0);
    if (fetched && FileSize(path) >= kMinBlockFileSize) {
        FinishDownload(store, true, path);
        return;
    }
    // Too small: remove it so that the block can be asked for again. A failed
    // transfer wrote nothing, and a file that came meanwhile is not ours.
    if (fetched) (void)RemoveFile(path);
    FinishDownload(store, false, path);
}

// Starts at most one worker. A worker that pumps as it finishes and cannot
// start a thread carries the path itself: the other workers may all have
// finished meanwhile, and a path put back then would wait for nobody.
void PumpNext(GalleryStore& store, bool onWorker) {
    std::u16string path;
    DownloadTarget target;
    {
        // The size test, the read of the first entry and the move happen under
        // one lock: workers pump from their own threads.
        std::lock_guard<std::mutex> lock(store.downloadLock);
        if (store.downloadsRunning.size() >= kMaxRunningDownloads || store.downloadsWaiting.empty()) return;
        path = std::move(store.downloadsWaiting.front());
        store.downloadsWaiting.erase(store.downloadsWaiting.begin());
        store.downloadsRunning.push_back(path);
        if (auto it = store.downloadTargets.find(path); it != store.downloadTargets.end()) {
            target = std::move(it->second);
            store.downloadTargets.erase(it);
        }
    }
    ++g_liveWorkers;
    const bool started = StartDetachedThread([&store, path, target] {
        RunDownloadJob(store, path, target);
        --g_liveWorkers;  // the last touch of shared state
    });
    if (started) return;
    --g_liveWorkers;
    if (onWorker) {
        RunDownloadJob(store, path, target);
        return;
    }
    // No thread to be had: the path goes back to the head of the waiting
    // list, so that it is not "running" for good; the next pump tries again.
    std::lock_guard<std::mutex> lock(store.downloadLock);
    auto& running = store.downloadsRunning;
    running.erase(std::remove(running.begin(), running.end(), path), running.end());
    store.downloadsWaiting.insert(store.downloadsWaiting.begin(), path);
    store.downloadTargets[path] = std::move(target);
}

}  // namespace

void SetDownloadNotifyWindow(WindowHandle window) { g_notifyWindow.store(window); }

void EnqueueDownload(GalleryStore& store, std::u16string_view path) {
    // The target is read from the tree here, on its owner's thread.
    DownloadTarget target;
    if (!ResolveDownload(store, std::u16string(path), target)) return;
    {
        std::lock_guard<std::mutex> lock(store.downloadLock);
        if (!Holds(store.downloadsWaiting, path) && !Holds(store.downloadsRunning, path)) {
            store.downloadsWaiting.emplace_back(path);
            store.downloadTargets[std::u16string(path)] = std::move(target);
        }
    }
    PumpDownloads(store);
}

void PumpDownloads(GalleryStore& store) { PumpNext(store, false); }

void FinishDownload(GalleryStore& store, bool succeeded, const std::u16string& path) {
    if (succeeded) (void)PostText(g_notifyWindow.load(), MsgFileReady, 0, path);
    {
        std::lock_guard<std::mutex> lock(store.downloadLock);
        auto it = std::find(store.downloadsRunning.begin(), store.downloadsRunning.end(), path);
        if (it != store.downloadsRunning.end()) store.downloadsRunning.erase(it);
    }
    PumpNext(store, true);
}

bool ResolveDownload(const GalleryStore& store, const std::u16string& path, DownloadTarget& target) {
    target = DownloadTarget{};
    if (!store.root) return false;
    const GalleryNode* block = FindBlockByPath(store.root, path, true);
    if (!block || !block->parent || !block->parent->parent) return false;
    target.galleryPath = block->parent->parent->Path();
    target.classPath = block->parent->Path();
    target.url = DownloadUrl(*block);
    return true;
}

size_t LiveDownloadWorkers() { return g_liveWorkers.load(); }

bool WaitForDownloadWorkers(std::chrono::milliseconds limit) {
    const uint32_t start = GetTickCount();
    while (g_liveWorkers.load() != 0) {
        if (TicksSince(start) > static_cast<uint32_t>(limit.count())) return false;
        SleepMs(5);
    }
    return true;
}

}  // namespace marrowfin
