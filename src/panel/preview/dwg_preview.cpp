#include "panel/preview/dwg_preview.h"

#include <QPainter>
#include <cstring>

namespace marrowfin {

QImage PreviewToImage(const DwgPreview& preview) {
  if (preview.kind == DwgPreviewKind::Bmp) {
    if (preview.width <= 0 || preview.height <= 0 ||
        preview.pixels.size() != size_t(preview.width) * size_t(preview.height)) {
      return {};
    }
    // The picture is white first, then the pixels ANDed onto it; on white
    // that AND leaves each pixel as it is, so the pixels are copied directly.
    QImage picture(preview.width, preview.height, QImage::Format_RGB32);
    if (picture.isNull()) return {};
    for (int y = 0; y < preview.height; ++y) {
      std::memcpy(picture.scanLine(y), preview.pixels.data() + size_t(y) * preview.width,
                  size_t(preview.width) * 4);
    }
    return picture;
  }
  if (preview.kind == DwgPreviewKind::Png) {
    QImage decoded;
    if (!decoded.loadFromData(reinterpret_cast<const uchar*>(preview.png.data()),
                              int(preview.png.size()), "PNG")) {
      return {};
    }
    if (!decoded.hasAlphaChannel()) return decoded.convertToFormat(QImage::Format_RGB32);
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
