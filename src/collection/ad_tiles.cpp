#include "collection/ad_tiles.h"

#include <climits>

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/text.h"
#include "store/store_paths.h"

namespace marrowfin {

namespace {

AdItems ReadItems(MarkupDocument& doc) {
    AdItems items;
    if (!doc.FindElement(u"root") || !doc.EnterElement()) return items;
    items.ok = true;
    while (doc.FindElement(u"item")) {
        AdTile tile;
        tile.on = doc.GetAttribute(u"on") == u"1";
        tile.name = doc.GetAttribute(u"name");
        tile.url = doc.GetAttribute(u"url");
        tile.target = doc.GetAttribute(u"target");
        tile.ver = doc.GetAttribute(u"ver");  // a missing one reads as empty, not "0"
        items.tiles[doc.GetElementText()] = std::move(tile);
    }
    return items;
}

}  // namespace

std::u16string AdPicturePath(std::u16string_view key) {
    std::u16string path = AdFolder() + u"/";
    path += key;
    return path + u".png";
}

AdItems ParseAdFile(std::u16string_view path) {
    MarkupDocument doc;
    if (!FileExists(path)) return {};
    (void)doc.LoadFile(path);  // a list not quite well-formed still yields what could be read
    return ReadItems(doc);
}

AdItems ParseAdReply(std::u16string_view text) {
    MarkupDocument doc;
    (void)doc.SetText(text);
    return ReadItems(doc);
}

AdTileMap LoadAdTiles() {
    if (!DirectoryExists(AdFolder())) {
        (void)CreateDirectories(AdFolder());
        return {};
    }
    AdTileMap tiles = ParseAdFile(AdListPath()).tiles;
    for (auto& [key, tile] : tiles) tile.picture = AdPicturePath(key);
    return tiles;
}

std::string ComposeAdFile(const AdTileMap& tiles) {
    std::u16string text = u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r";
    for (const auto& [key, tile] : tiles) {
        if (!tile.on) continue;
        text += u"<item on=\"1\" name=\"" + tile.name + u"\" url=\"" + tile.url + u"\" target=\"" + tile.target +
                u"\" ver=\"" + tile.ver + u"\" >" + key + u"</item>\r";
    }
    text += u"</root>\r";
    return "\xEF\xBB\xBF" + Utf16ToUtf8(text);
}

bool SaveAdTiles(const AdTileMap& tiles) {
    (void)CreateDirectories(AdFolder());
    return WriteFileAtomic(AdListPath(), ComposeAdFile(tiles));
}

int TextToInt(std::u16string_view text) {
    const LeadingInteger n = ScanLeadingInteger(text, int64_t(INT_MAX) + 1);
    if (n.negative) return static_cast<int>(-n.magnitude);
    return n.magnitude > INT_MAX ? INT_MAX : static_cast<int>(n.magnitude);
}

}  // namespace marrowfin
