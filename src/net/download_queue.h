#pragma once
// Block files are fetched when somebody needs them: one short-lived worker
// per block, at most six at once. The queue knows blocks by their local path
// only; the tree gives the URL and the folders to create.

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/window_messages.h"

namespace marrowfin {

struct GalleryStore;
struct DownloadTarget;

inline constexpr uint32_t MsgFileReady = 2526;
inline constexpr size_t kMaxRunningDownloads = 6;
// A file of 1,024 bytes or less is an error page or a cut transfer, not a block.
inline constexpr int64_t kMinBlockFileSize = 1025;

// The window told of each finished block (the panel's); 0 for none.
void SetDownloadNotifyWindow(WindowHandle window);

// Owner thread. A block that is not in the tree is not queued.
void EnqueueDownload(GalleryStore& store, std::u16string_view path);
// Starts at most one worker.
void PumpDownloads(GalleryStore& store);
void FinishDownload(GalleryStore& store, bool succeeded, const std::u16string& path);
// Finds the block below a class and gives its download URL and folders (owner
// thread). False when the block is not in the tree or not below a class.
bool ResolveDownload(const GalleryStore& store, const std::u16string& path, DownloadTarget& target);

// Workers that have not yet returned; for an orderly end of tests and benchmarks.
size_t LiveDownloadWorkers();
bool WaitForDownloadWorkers(std::chrono::milliseconds limit);

}  // namespace marrowfin
