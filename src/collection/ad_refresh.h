#pragma once
// The refresh of the advertising tiles, run once per panel start on a worker:
// it asks the service, fetches the pictures that changed and hands the new
// map back; the panel adopts it on its own thread.

#include <string>
#include <string_view>

#include "collection/ad_tiles.h"

namespace marrowfin {

// ServiceBaseUrl() + "/gallery/gad?type=<channel>&img_type=<n>": the channel
// as the host gave it, n the skin suffix read as an integer (a suffix such as
// "_2" begins with an underscore, so it reads as 0).
std::u16string AdRequestUrl(std::u16string_view channel, std::u16string_view skinSuffix);

// From the cached map: a tile whose key the reply does not mention anywhere
// is switched off (without a reply, all of them); each item of the reply
// replaces its tile, its picture fetched when missing, when the url changed
// or when the version went down. A failed fetch keeps the picture there was.
// Blocks. The map is the caller's own copy, so no lock is taken: the panel's
// thread takes the store's download lock, and must not wait on the fetches.
// `answered`, when given, tells whether the service answered at all.
AdTileMap RefreshAdTiles(AdTileMap tiles, std::u16string_view channel, std::u16string_view skinSuffix,
                         bool* answered = nullptr);

}  // namespace marrowfin
