#include "collection/ad_refresh.h"

#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marrowfin {

std::u16string AdRequestUrl(std::u16string_view channel, std::u16string_view skinSuffix) {
    std::u16string url = ServiceBaseUrl() + u"/gallery/gad?type=";
    url += channel;
    return url + u"&img_type=" + Utf8ToUtf16(std::to_string(TextToInt(skinSuffix)));
}

AdTileMap RefreshAdTiles(AdTileMap tiles, std::u16string_view channel, std::u16string_view skinSuffix, bool* answered) {
    std::u16string reply;
    // A failed request leaves an empty or an error text: it mentions no key.
    const bool delivered = PostForm(AdRequestUrl(channel, skinSuffix), u"", reply);
    if (answered) *answered = delivered;

    for (auto& [key, tile] : tiles)
        if (reply.find(key) == std::u16string::npos) tile.on = false;
    AdItems items = ParseAdReply(reply);
    for (auto& [key, fresh] : items.tiles) {
        // A key naming another folder would put its picture outside the tiles' own.
        if (key.find(u'/') != std::u16string::npos || key.find(u'\0') != std::u16string::npos) continue;
        const std::u16string png = AdPicturePath(key);
        AdTile& stored = tiles[key];
        const bool current =
            FileExists(png) && TextToInt(fresh.ver) >= TextToInt(stored.ver) && fresh.url == stored.url;
        // The new picture replaces the old one only once it is all in, so a
        // failed fetch leaves the tile with the picture it had.
        if (!current) (void)DownloadFile(fresh.url, png, 0, 0);
        fresh.picture = png;
        stored = std::move(fresh);
    }
    return tiles;
}

}  // namespace marrowfin
