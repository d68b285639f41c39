#pragma once
// Packs a folder into a new zip file for the hand-over of the old collection.

#include <string_view>

namespace marrowfin {

// The folder's own name is the first part of every entry name, and parts are
// joined by two slashes: "<folder>//<sub>//<file>". A folder below the top is
// an entry of no data, "<folder>//<sub>/", followed by what it holds; the top
// itself has no entry. Every entry takes part in the order the system lists
// it, whatever its kind (what is neither file nor folder, and a link to a
// folder, is an entry of no data). Deflate at the default level, no password,
// times and attributes zero. A folder that does not exist gives an empty
// archive. False when the archive cannot be written or something below the
// top cannot be read: the archive then lacks data and must not be sent.
bool ZipFolder(std::u16string_view folder, std::u16string_view zipPath);

}  // namespace marrowfin
