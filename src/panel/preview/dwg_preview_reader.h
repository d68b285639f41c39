#pragma once
// Byte-level reader of the preview section that drawing files carry. No Qt:
// it hands back the picture's pixels (or PNG stream) as plain values, and
// every malformed input ends as an error value, never as a read outside the
// file or outside the chosen entry.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

enum class DwgPreviewKind { None, Bmp, Png };

enum class DwgPreviewError {
    None,
    ShortFile,  // too short for the section address
    SectionOutOfFile,  // the address or the section head lies past the end
    BadSentinel,  // no start sentinel at the address
    NoEntries,  // an entry count of 0
    TableTruncated,  // the entry table runs past the end, nothing usable before
    NoPicture,  // entries, but neither a BMP (2) nor a PNG (6) one
    EntryOutOfFile,  // the picture entry's start or size points past the end
    BadBitmapHeader,  // header size, sizes or planes that no bitmap has
    UnsupportedBitmap,  // compressed or of a bit depth that is not read
    TooLarge,  // width or height above kMaxPreviewSide, or entry above kMaxPreviewEntry
    PixelsTruncated,  // the entry is shorter than its colour table and rows
    BadPng,  // no PNG signature or header chunk
    ReadFailed,  // the file could not be read
};

// Entry codes of the preview section's table.
constexpr uint8_t kDwgEntryHeader = 1;
constexpr uint8_t kDwgEntryBmp = 2;
constexpr uint8_t kDwgEntryPng = 6;

// Previews are small pictures; anything wider or taller is taken as garbage
// rather than as a reason to allocate gigabytes.
constexpr int kMaxPreviewSide = 4096;
// No entry of a picture that size needs more bytes than this; a larger one is
// refused before it is read.
constexpr uint64_t kMaxPreviewEntry = 80ull << 20;

struct DwgPreview {
    DwgPreviewKind kind = DwgPreviewKind::None;
    DwgPreviewError error = DwgPreviewError::None;
    int width = 0;
    int height = 0;
    int bitCount = 0;  // of a BMP entry; 0 for PNG
    std::vector<uint32_t> palette;  // 0xAARRGGBB, alpha 0xff; BMP of 8 bits or less
    std::vector<uint32_t> pixels;  // BMP: width*height 0xffRRGGBB, top row first
    std::string png;  // PNG: the entry's bytes

    bool HasPicture() const { return kind != DwgPreviewKind::None; }
};

// Random access to a file's bytes: fills `out` with `length` bytes from
// `offset`, false when they are not all there.
using DwgByteSource = std::function<bool(uint64_t offset, size_t length, std::string& out)>;

// Reads the preview from a source of `fileSize` bytes.
DwgPreview ReadDwgPreview(uint64_t fileSize, const DwgByteSource& source);

// Reads the preview from a whole file held in memory.
DwgPreview ReadDwgPreview(std::string_view bytes);

// Reads the preview of the file at `path`, reading only the parts it needs.
DwgPreview ReadDwgPreviewFile(std::u16string_view path);

// Decodes a headerless device-independent bitmap (BITMAPINFOHEADER, colour
// table, rows): 1, 4, 8, 24 and 32 bits, uncompressed. Exposed for the tests.
DwgPreview DecodePreviewBitmap(std::string_view dib);

}  // namespace marrowfin
