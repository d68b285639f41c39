#pragma once
// Packs a folder into a new zip file for the hand-over of the old collection.

#include <string_view>

namespace marrowfin {

// Entries are named "<folder name>//<file>", subfolders "<prefix>//<name>/"
// with no content, recursing with that name as prefix. A folder that does
// not exist gives an empty archive. False when the archive cannot be written.
bool ZipFolder(std::u16string_view folder, std::u16string_view zipPath);

}  // namespace marrowfin
