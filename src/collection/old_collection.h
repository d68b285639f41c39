#pragma once
// The old collection on the disk: <root>/我的收藏, one directory per folder,
// kept from the time before collections lived on the service. It is read
// here and handed over once; it is never deleted.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

// <root>/我的收藏
std::u16string OldCollectionDir(std::u16string_view root);
// <root>/<userId>: the old folder's name while it is packed, so that the
// user number becomes the archive's top directory.
std::u16string PackingDir(std::u16string_view root, int32_t userId);

// Whether anything but a directory lies anywhere below `folder`: directories
// alone, or no folder at all, are no old data.
bool HoldsOldFiles(std::u16string_view folder);
// The names of the directories directly in `folder`, in listing order, joined by "*".
std::u16string OldFolderNames(std::u16string_view folder);

// A folder of the old collection as the panel lists it.
struct OldCollectionFolder {
    std::u16string name;
    std::vector<std::u16string> drawings;  // the ".dwg" files, oldest first
};
// The directories of `folder` in listing order, each with its drawings.
std::vector<OldCollectionFolder> ReadOldCollectionFolders(std::u16string_view folder);

// A process that ended while packing left the old folder under the user
// number: gives it its name back. Nothing happens while a hand-over of this
// process runs (its packing name is its own) or when the old name is taken.
void RestoreOldCollectionName(std::u16string_view root, int32_t userId);

// Marks a running hand-over for RestoreOldCollectionName, for its lifetime.
class HandoverRunning {
public:
    HandoverRunning();
    ~HandoverRunning();
    HandoverRunning(const HandoverRunning&) = delete;
    HandoverRunning& operator=(const HandoverRunning&) = delete;
};

}  // namespace marrowfin
