#include "panel/preview/dwg_preview.h"

#include <png.h>

#include <QPainter>
#include <csetjmp>
#include <cstring>
#include <utility>
#include <vector>

namespace marrowfin {
namespace {

struct PngSource {
    const std::string& bytes;
    size_t at = 0;
};

struct PngRead {
    png_structp png = nullptr;
    png_infop info = nullptr;
    QImage image;
    std::vector<png_bytep> rows;
    ~PngRead() { png_destroy_read_struct(&png, &info, nullptr); }
};

void ReadPngBytes(png_structp png, png_bytep out, size_t length) {
    auto* source = static_cast<PngSource*>(png_get_io_ptr(png));
    if (length > source->bytes.size() - source->at) png_error(png, "short");
    std::memcpy(out, source->bytes.data() + source->at, length);
    source->at += length;
}

void QuietPngError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void QuietPngWarning(png_structp, png_const_charp) {}

// Reads a PNG of an opaque colour table into `read.image` as Indexed8, the
// picture Qt's reader makes of it, without that reader's per-row overhead.
// Everything `read` holds lives outside this frame, so it is sound after a
// jump back from libpng; false for other kinds of PNG and on any error.
bool ReadPalettePng(PngRead& read, PngSource& source) {
    read.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, QuietPngError, QuietPngWarning);
    if (!read.png) return false;
    read.info = png_create_info_struct(read.png);
    if (!read.info) return false;
    if (setjmp(png_jmpbuf(read.png))) return false;
    png_set_read_fn(read.png, &source, ReadPngBytes);
    png_read_info(read.png, read.info);
    png_uint_32 width = 0, height = 0;
    int depth = 0, type = 0;
    png_get_IHDR(read.png, read.info, &width, &height, &depth, &type, nullptr, nullptr, nullptr);
    png_colorp palette = nullptr;
    int count = 0;
    // Transparency and one-bit pictures of a short table take Qt's road, which
    // composes and converts them its own way.
    if (type != PNG_COLOR_TYPE_PALETTE || png_get_valid(read.png, read.info, PNG_INFO_tRNS) ||
        !png_get_PLTE(read.png, read.info, &palette, &count) || count <= 0 || count > 256 ||
        (depth == 1 && count != 2) || width > png_uint_32(kMaxPreviewSide) || height > png_uint_32(kMaxPreviewSide)) {
        return false;
    }
    if (depth < 8) png_set_packing(read.png);
    png_set_interlace_handling(read.png);
    png_read_update_info(read.png, read.info);
    read.image = QImage(int(width), int(height), QImage::Format_Indexed8);
    if (read.image.isNull()) return false;
    {
        // Gone before libpng is called again: a jump back must not skip a destructor.
        QList<QRgb> table(count);
        for (int i = 0; i < count; ++i) table[i] = qRgb(palette[i].red, palette[i].green, palette[i].blue);
        read.image.setColorTable(table);
    }
    read.rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) read.rows[y] = read.image.scanLine(int(y));
    png_read_image(read.png, read.rows.data());
    png_read_end(read.png, nullptr);
    return true;
}

// The picture of a PNG entry as its reader makes it: Indexed8 for an opaque
// colour table, otherwise whatever Qt's reader gives.
QImage DecodePng(const std::string& bytes) {
    {
        PngSource source{bytes};
        PngRead read;
        if (ReadPalettePng(read, source)) return std::move(read.image);
    }
    QImage decoded;
    decoded.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), int(bytes.size()), "PNG");
    return decoded;
}

// A decoded PNG as RGB32: transparent parts stand on white, like the BMP
// previews.
QImage OnWhite(const QImage& decoded) {
    if (decoded.isNull()) return {};
    if (!decoded.hasAlphaChannel()) return decoded.convertToFormat(QImage::Format_RGB32);
    QImage picture(decoded.size(), QImage::Format_RGB32);
    if (picture.isNull()) return {};
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.drawImage(0, 0, decoded);
    painter.end();
    return picture;
}

}  // namespace

QImage PreviewToImage(DwgPreview&& preview) {
    if (preview.kind != DwgPreviewKind::Bmp || preview.width <= 0 || preview.height <= 0 ||
        preview.pixels.size() != size_t(preview.width) * size_t(preview.height)) {
        return PreviewToImage(std::as_const(preview));
    }
    // The rows are already RGB32 one after another: the picture takes them over
    // instead of copying them, and frees them with itself.
    auto* rows = new std::vector<uint32_t>(std::move(preview.pixels));
    QImage picture(
        reinterpret_cast<uchar*>(rows->data()), preview.width, preview.height, preview.width * 4, QImage::Format_RGB32,
        [](void* owned) { delete static_cast<std::vector<uint32_t>*>(owned); }, rows);
    if (picture.isNull()) delete rows;
    return picture;
}

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
    if (preview.kind == DwgPreviewKind::Png) return OnWhite(DecodePng(preview.png));
    return {};
}

QImage PreviewToFittable(DwgPreview&& preview) {
    if (preview.kind == DwgPreviewKind::Png) {
        QImage decoded = DecodePng(preview.png);
        if (decoded.format() == QImage::Format_Indexed8 && !decoded.hasAlphaChannel()) return decoded;
        return OnWhite(decoded);
    }
    return PreviewToImage(std::move(preview));
}

QImage LoadDwgPreview(const QString& path) { return PreviewToImage(ReadDwgPreviewFile(path.toStdU16String())); }

}  // namespace marrowfin
