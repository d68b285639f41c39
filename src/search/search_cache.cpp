#include "search/search_cache.h"

#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/text.h"

namespace marrowfin {

std::u16string SearchCacheDir(const std::u16string& root) { return root + u"/search"; }
std::u16string SearchCacheVersions(const std::u16string& root) { return SearchCacheDir(root) + u"/ver.ini"; }

bool EnsureSearchCache(const std::u16string& root) {
    const std::u16string dir = SearchCacheDir(root);
    return DirectoryExists(dir) || CreateDirectories(dir);
}

bool DeleteSearchCache(const std::u16string& root) {
    const std::u16string dir = SearchCacheDir(root);
    if (DirectoryExists(dir)) RemoveDirectoryTree(dir);
    return !PathExists(dir);
}

void RefreshSearchCacheVersions(const std::u16string& root,
                                const std::vector<std::pair<std::u16string, int>>& versions) {
    const std::u16string ini = SearchCacheVersions(root);
    for (const auto& [name, version] : versions) {
        // A name that would reach outside the cache deletes nothing.
        if (!IsSafePathSegment(name)) continue;
        if (IniGetInt(ini, u"version", name, -1) >= version) continue;
        const std::u16string dir = SearchCacheDir(root) + u"/" + name;
        if (DirectoryExists(dir)) RemoveDirectoryTree(dir);
        (void)IniWriteString(ini, u"version", name, Utf8ToUtf16(std::to_string(version)));
    }
}

}  // namespace marrowfin
