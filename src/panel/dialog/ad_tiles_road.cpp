#include "panel/dialog/ad_tiles_road.h"

#include <QDesktopServices>
#include <QUrl>

#include "collection/ad_refresh.h"
#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/preview/fit_thumbnail.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

AddressOpener& Opener() {
    static AddressOpener opener;
    return opener;
}

void OpenInBrowser(const QString& address) { (void)QDesktopServices::openUrl(QUrl(address, QUrl::TolerantMode)); }

// The key of the shown class: the text of its row in the class column.
std::u16string ShownClassName(const CBrindleDlg& panel) {
    if (!panel.m_classList || panel.m_nav.classIndex < 0 || panel.m_nav.classIndex >= panel.m_classList->GetItemCount())
        return {};
    return panel.m_classList->GetItemText(panel.m_nav.classIndex).toStdU16String();
}

// The cell's picture size in pixels at the panel's rate.
QSize IconSize() { return {ScaleUnits(kThumbnailWidthUnits), ScaleUnits(kThumbnailHeightUnits)}; }

// A picture far larger than its cell is brought down once, here, rather than
// stretched at every paint.
QImage DecodePicture(const AdTile& tile, QSize icon) {
    QImage picture = tile.picture.empty() ? QImage() : QImage(QString::fromStdU16String(tile.picture));
    if (picture.width() > 2 * icon.width() || picture.height() > 2 * icon.height())
        picture = picture.scaled(icon, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return picture;
}

}  // namespace

void StartAdTiles(CBrindleDlg& panel) {
    panel.m_adTiles = LoadAdTiles();
    panel.m_adPictures.clear();
    const WindowHandle window = panel.Handle();
    // The worker gets its own copy: the panel's map changes only here and
    // when the result is adopted, so no reader of it ever waits.
    const bool started = StartPanelWorker([window, tiles = panel.m_adTiles, channel = panel.m_hostChannel,
                                           suffix = SkinSuffix().toStdU16String(), icon = IconSize()]() mutable {
        AdTilesArrival arrival;
        arrival.tiles = RefreshAdTiles(std::move(tiles), channel, suffix, &arrival.answered);
        for (const auto& [key, tile] : arrival.tiles)
            if (tile.on) arrival.pictures[key] = DecodePicture(tile, icon);
        // A panel that is gone frees the map with the message.
        (void)PostWindowMessage(window, MsgAdTiles, 0, 0, std::make_unique<AdTilesPayload>(std::move(arrival)));
    });
    (void)started;  // without a worker the cached tiles stand for this run
}

void AdoptAdTiles(CBrindleDlg& panel, std::unique_ptr<MessagePayload> payload) {
    auto* arrival = dynamic_cast<AdTilesPayload*>(payload.get());
    // A service out of reach says nothing about the tiles: the cached ones
    // stay shown and are written back at the close.
    if (!arrival || !arrival->value.answered) return;
    panel.m_adTiles = std::move(arrival->value.tiles);
    panel.m_adPictures = std::move(arrival->value.pictures);
    // A tile cell in view takes its new picture and caption now; a tile that
    // came or went takes or leaves its cell at the next listing.
    if (panel.m_pThumbList && GetAdTile(panel, nullptr)) panel.m_pThumbList->RedrawItem(0);
}

void SaveAdTileList(const CBrindleDlg& panel) { (void)SaveAdTiles(panel.m_adTiles); }

bool ClassShowsAdTile(CBrindleDlg& panel) {
    const std::u16string key = ShownClassName(panel);
    const auto it = panel.m_adTiles.find(key);
    if (key.empty() || it == panel.m_adTiles.end() || !it->second.on) return false;
    // A cached tile's picture is read once, when its class is first listed.
    if (!panel.m_adPictures.count(key)) panel.m_adPictures[key] = DecodePicture(it->second, IconSize());
    return true;
}

bool GetAdTile(CBrindleDlg& panel, AdTile* out, QImage* picture) {
    // The tile cell is the empty path in front of at least one block.
    if (panel.m_nav.listNodes.size() < 2 || !panel.m_pThumbList || panel.m_pThumbList->GetItemCount() < 2 ||
        !panel.m_pThumbList->GetPath(0).empty())
        return false;
    const std::u16string key = ShownClassName(panel);
    if (out) {
        const auto it = panel.m_adTiles.find(key);
        *out = it == panel.m_adTiles.end() ? AdTile{} : it->second;
    }
    if (picture) {
        const auto it = panel.m_adPictures.find(key);
        *picture = it == panel.m_adPictures.end() ? QImage() : it->second;
    }
    return true;
}

bool OpenAdTileAt(CBrindleDlg& panel, std::intptr_t item) {
    AdTile tile;
    if (item != 0 || !GetAdTile(panel, &tile)) return false;
    // Only a web address is opened: the list comes over plain HTTP, and a
    // path or another scheme would start a program on the user's machine.
    const QString target = QString::fromStdU16String(tile.target);
    const QString scheme = QUrl(target, QUrl::TolerantMode).scheme().toLower();
    if (scheme != QStringLiteral("http") && scheme != QStringLiteral("https")) return true;
    if (Opener()) Opener()(target);
    else OpenInBrowser(target);
    return true;
}

void SetAddressOpener(AddressOpener opener) { Opener() = std::move(opener); }

}  // namespace marrowfin
