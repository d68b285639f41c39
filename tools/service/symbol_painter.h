#pragma once
// Draws the simple plan symbols of the sample library (doors, windows,
// furniture, fittings, title blocks) and encodes them as preview pictures.
// Only QtGui raster drawing is used: no display and no fonts are needed.

#include <cstdint>
#include <string>

class QImage;

namespace marrowfin::service {

enum class SymbolKind { Door, Window, Sofa, Bed, Table, Toilet, Basin, Lamp, Socket, TitleBlock, Count };

// Draws symbol `kind` with a variant number that shifts sizes and details,
// black lines and one accent colour on white; `smooth` anti-aliases, as the
// PNG previews of newer drawing versions are.
QImage DrawSymbol(SymbolKind kind, uint32_t variant, int width, int height, bool smooth = false);

// A headerless 8-bit DIB as drawings carry it: BITMAPINFOHEADER (40 bytes),
// a 256-entry BGRA colour table (a 6x6x6 colour cube, then 40 greys) and the
// pixel rows bottom-up, each padded to 4 bytes.
std::string EncodeDib8(const QImage& image);
// A PNG stream of the image.
std::string EncodePng(const QImage& image);

// An advertising tile picture: a coloured banner with a drawn symbol.
QImage DrawAdTile(uint32_t variant, int width, int height);

}  // namespace marrowfin::service
