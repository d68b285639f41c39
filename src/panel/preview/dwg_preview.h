#pragma once
// The Qt step of the preview reader: turns what the byte reader found into a
// picture.

#include <QImage>
#include <QString>

#include "panel/preview/dwg_preview_reader.h"

namespace marrowfin {

// The picture of a preview, RGB32; null when there is none or it cannot be
// decoded.
QImage PreviewToImage(const DwgPreview& preview);
// The same, taking over a BMP preview's pixels instead of copying them.
QImage PreviewToImage(DwgPreview&& preview);

// The picture for FitThumbnail alone: as PreviewToImage gives it, except that
// a PNG of an opaque colour table stays Indexed8, which the fitting reads
// through its table without expanding the picture first.
QImage PreviewToFittable(DwgPreview&& preview);

// The preview picture of the drawing at `path`; null when the file cannot be
// read or carries no picture.
QImage LoadDwgPreview(const QString& path);

}  // namespace marrowfin
