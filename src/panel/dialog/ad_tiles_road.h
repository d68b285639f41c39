#pragma once
// The panel's side of the advertising tiles: the cached list taken at start,
// its refresh on a worker and the new map adopted on the panel's thread, the
// tile in the first cell of a class's grid, the click that opens its target,
// and ad.xml written when the panel closes.

#include <QImage>
#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "collection/ad_tiles.h"
#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"

namespace marrowfin {

class CBrindleDlg;

// The refresh's result, posted to the panel: the new map with the pictures of
// its shown tiles decoded on the worker. `answered` is false when the service
// could not be reached; the panel then keeps the tiles it has.
struct AdTilesArrival {
    bool answered = false;
    AdTileMap tiles;
    std::map<std::u16string, QImage> pictures;
};
using AdTilesPayload = OwnedValue<AdTilesArrival>;

// Start-up: the cached tiles (a small file) read on the panel's thread, then
// the refresh started on a worker with the host's channel text.
void StartAdTiles(CBrindleDlg& panel);
// MsgAdTiles: the refreshed map replaces the panel's; a shown tile cell is redrawn.
void AdoptAdTiles(CBrindleDlg& panel, std::unique_ptr<MessagePayload> payload);
// Closing: ad.xml with the tiles that are on.
void SaveAdTileList(const CBrindleDlg& panel);

// Whether the class of the shown class row has a tile that is on: its grid
// then starts with the tile cell.
bool ClassShowsAdTile(CBrindleDlg& panel);
// True when the first cell of the grid belongs to a tile (the list holds at
// least one block behind it); `out` takes the tile of the shown class row,
// or a tile with start values when the map has none, and `picture` its picture.
bool GetAdTile(CBrindleDlg& panel, AdTile* out, QImage* picture = nullptr);
// Commands 22 and 3 on item 0: opens the tile's target. False when the item
// is no tile cell, so that the caller goes on.
bool OpenAdTileAt(CBrindleDlg& panel, std::intptr_t item);

// Opens an address in the user's browser. Tests replace it to record the
// addresses; an empty function puts the desktop's own opener back.
using AddressOpener = std::function<void(const QString& address)>;
void SetAddressOpener(AddressOpener opener);

}  // namespace marrowfin
