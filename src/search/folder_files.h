#pragma once
// Which files a class folder holds. A local search with many hits asks for
// each hit whether its file is on disk; a folder's listing, kept for as long
// as the folder's write time stands, answers that without asking the system
// once per file. Creating, deleting or renaming a file in a folder changes
// its write time, so a kept listing is never older than the folder.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace marrowfin {

// Names looked up as views, without a copy per lookup.
struct NameHash {
    using is_transparent = void;
    size_t operator()(std::u16string_view name) const { return std::hash<std::u16string_view>()(name); }
};
using FileNames = std::unordered_set<std::u16string, NameHash, std::equal_to<>>;

class FolderFiles {
public:
    // The regular files of `folder`, listed again when its write time changed
    // since the last listing. The set stays valid while the caller holds it.
    std::shared_ptr<const FileNames> FilesOf(const std::u16string& folder);

private:
    struct Listing {
        int64_t stamp = -1;
        bool settled = false;  // written long enough before it was listed to be kept
        std::shared_ptr<const FileNames> files;
    };
    std::mutex m_lock;
    std::unordered_map<std::u16string, Listing> m_folders;
};

// The process's listings, shared by every search.
FolderFiles& SharedFolderFiles();

}  // namespace marrowfin
