#pragma once
// Brings the local tree and the catalogues up to date from the service, by
// class version: all listed galleries at start, one gallery, one gallery's
// class versions, or one class's blocks. A failed or unusable reply never
// destroys what the tree had: the catalogues stand in at start.

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowfin {

struct GalleryStore;

// A gallery's cached state counts as fresh this long after its last fetch.
inline constexpr uint32_t kGalleryFreshMs = 3600000;
inline constexpr int kWaitForSyncSteps = 51;
inline constexpr uint32_t kWaitForSyncStepMs = 400;

void BuildFirstTree(GalleryStore& store);
// Sleeps in 400 ms steps, at most 51 times, until no synchronisation runs.
void WaitForSync(GalleryStore& store);
bool FetchGalleryFull(GalleryStore& store, std::u16string_view name, bool createIfMissing);
void OpenAddedGallery(GalleryStore& store, std::u16string_view name);
void RefreshClassSummary(GalleryStore& store, std::u16string_view name);
void OpenClass(GalleryStore& store, std::u16string_view path);
void FetchClassItems(GalleryStore& store, std::u16string_view path);

}  // namespace marrowfin
