#pragma once
// Advertising tiles: a picture with a caption that takes the first cell of a
// class's thumbnail list. The list is cached in <root>/ad/ad.xml with one
// picture <root>/ad/<key>.png per tile; the key is the class name.

#include <map>
#include <string>
#include <string_view>

namespace marrowfin {

struct AdTile {
    std::u16string name;  // caption of the cell
    std::u16string url;  // where the picture is downloaded from
    std::u16string target;  // address a click opens
    std::u16string ver = u"0";
    // The picture file the tile holds; empty while it holds none. A file that
    // is missing or unreadable still counts as held (it draws as nothing).
    std::u16string picture;
    bool on = false;  // shown and saved

    bool operator==(const AdTile&) const = default;
};

// By class name, ordered by plain comparison of the UTF-16 units.
using AdTileMap = std::map<std::u16string, AdTile>;

// <root>/ad/<key>.png
std::u16string AdPicturePath(std::u16string_view key);

// Items of a list document (ad.xml or the service's reply), later keys
// winning, pictures not attached. `ok` is false without a root.
struct AdItems {
    bool ok = false;
    AdTileMap tiles;
};
AdItems ParseAdFile(std::u16string_view path);
AdItems ParseAdReply(std::u16string_view text);

// The cached list at start: creates the folder (empty map) when it is
// missing; every tile read holds its picture file.
AdTileMap LoadAdTiles();
// The bytes of ad.xml: UTF-8 with a byte order mark, lines ended by a lone
// CR, only tiles that are on, values written as they stand (no escaping).
std::string ComposeAdFile(const AdTileMap& tiles);
// Writes ad.xml atomically; false (and nothing else) when it cannot.
bool SaveAdTiles(const AdTileMap& tiles);

// A text read as a C wide-to-int conversion reads it: blanks, a sign,
// digits, the rest ignored, clamped to the int range.
int TextToInt(std::u16string_view text);

}  // namespace marrowfin
