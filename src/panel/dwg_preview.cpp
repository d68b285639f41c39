#include "panel/dwg_preview.h"

#include <QPainter>

namespace marrowfin {

QImage PreviewToImage(const DwgPreview& preview) {
  if (preview.kind == DwgPreviewKind::Bmp) {
    if (preview.width <= 0 || preview.height <= 0 ||
        preview.pixels.size() != size_t(preview.width) * size_t(preview.height)) {
      return {};
    }
    const QImage pixels(reinterpret_cast<const uchar*>(preview.pixels.data()), preview.width,
                        preview.height, preview.width * 4, QImage::Format_RGB32);
    // White first, then the pixels with an AND of the colours: on white that
    // multiply leaves the drawing's own colours, as the host's views show them.
    QImage picture(preview.width, preview.height, QImage::Format_RGB32);
    if (picture.isNull()) return {};
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::RasterOp_SourceAndDestination);
    painter.drawImage(0, 0, pixels);
    painter.end();
    return picture;
  }
  if (preview.kind == DwgPreviewKind::Png) {
    QImage decoded;
    if (!decoded.loadFromData(reinterpret_cast<const uchar*>(preview.png.data()),
                              int(preview.png.size()), "PNG")) {
      return {};
    }
    // Transparent parts stand on white, like the BMP previews.
    QImage picture(decoded.size(), QImage::Format_RGB32);
    if (picture.isNull()) return {};
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.drawImage(0, 0, decoded);
    painter.end();
    return picture;
  }
  return {};
}

QImage LoadDwgPreview(const QString& path) {
  return PreviewToImage(ReadDwgPreviewFile(path.toStdU16String()));
}

}  // namespace marrowfin
