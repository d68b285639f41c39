#pragma once
// The throw-away cache of blocks fetched for search rows: <root>/search, with
// ver.ini (section "version", one key per class, its last seen version).

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marrowfin {

std::u16string SearchCacheDir(const std::u16string& root);  // <root>/search
std::u16string SearchCacheVersions(const std::u16string& root);  // <root>/search/ver.ini

// Creates <root>/search when it is missing; false when it cannot be made.
bool EnsureSearchCache(const std::u16string& root);
// CloseGallery's clean-up: the cache goes as a whole. True when it is gone.
bool DeleteSearchCache(const std::u16string& root);

// For each class whose stored version (default -1) is below the given one,
// its folder of the cache goes and the new version is written. Equal or
// higher versions leave the cache alone.
void RefreshSearchCacheVersions(const std::u16string& root,
                                const std::vector<std::pair<std::u16string, int>>& versions);

}  // namespace marrowfin
