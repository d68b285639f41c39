// Feeds arbitrary bytes to the preview reader as a whole drawing file. Seeds:
// the real drawings in the shared test data (pass their folder as a second,
// read-only corpus directory).

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "panel/preview/dwg_preview_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace marrowfin;
    const DwgPreview preview = ReadDwgPreview(std::string_view(reinterpret_cast<const char*>(data), size));
    if (preview.kind == DwgPreviewKind::Bmp &&
        preview.pixels.size() != size_t(preview.width) * size_t(preview.height)) {
        __builtin_trap();
    }
    if (preview.kind != DwgPreviewKind::None && (preview.width <= 0 || preview.width > kMaxPreviewSide ||
                                                 preview.height <= 0 || preview.height > kMaxPreviewSide)) {
        __builtin_trap();
    }
    if (preview.kind == DwgPreviewKind::Png && preview.png.size() > size) __builtin_trap();
    // The entry alone as a bitmap, so that the decoder is reached without the
    // fuzzer first having to find the section layout.
    DecodePreviewBitmap(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
