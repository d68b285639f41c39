#include "panel/preview/dwg_preview_reader.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <cstring>
#include <memory>

#include "platform/files.h"

namespace marrowfin {
namespace {

constexpr uint64_t kSectionAddressOffset = 0x0D;
constexpr unsigned char kStartSentinel[16] = {0x1F, 0x25, 0x6D, 0x07, 0xD4, 0x36, 0x28, 0x28,
                                              0x9D, 0x57, 0xCA, 0x3F, 0x9D, 0x44, 0x10, 0x2B};
// Sentinel, overall size, entry count.
constexpr size_t kSectionHeadSize = 16 + 4 + 1;
constexpr size_t kEntrySize = 9;
constexpr size_t kInfoHeaderSize = 40;
constexpr unsigned char kPngSignature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};

uint32_t Le32(const char* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
}
uint16_t Le16(const char* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return uint16_t(b[0] | b[1] << 8);
}
uint32_t Be32(const char* p) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return uint32_t(b[0]) << 24 | uint32_t(b[1]) << 16 | uint32_t(b[2]) << 8 | uint32_t(b[3]);
}

DwgPreview Failure(DwgPreviewError error) {
    DwgPreview preview;
    preview.error = error;
    return preview;
}

DwgPreview DecodePng(std::string bytes) {
    // Signature, then the IHDR chunk: length, type, width, height.
    if (bytes.size() < 24 || std::memcmp(bytes.data(), kPngSignature, 8) != 0 ||
        std::memcmp(bytes.data() + 12, "IHDR", 4) != 0) {
        return Failure(DwgPreviewError::BadPng);
    }
    uint32_t width = Be32(bytes.data() + 16);
    uint32_t height = Be32(bytes.data() + 20);
    if (width == 0 || height == 0) return Failure(DwgPreviewError::BadPng);
    if (width > uint32_t(kMaxPreviewSide) || height > uint32_t(kMaxPreviewSide)) {
        return Failure(DwgPreviewError::TooLarge);
    }
    DwgPreview preview;
    preview.kind = DwgPreviewKind::Png;
    preview.width = int(width);
    preview.height = int(height);
    preview.png = std::move(bytes);
    return preview;
}

uint32_t PaletteColour(const char* quad) {
    const auto* b = reinterpret_cast<const unsigned char*>(quad);
    return 0xff000000u | uint32_t(b[2]) << 16 | uint32_t(b[1]) << 8 | uint32_t(b[0]);
}

}  // namespace

DwgPreview DecodePreviewBitmap(std::string_view dib) {
    if (dib.size() < kInfoHeaderSize) return Failure(DwgPreviewError::BadBitmapHeader);
    const uint32_t headerSize = Le32(dib.data());
    const int32_t width = int32_t(Le32(dib.data() + 4));
    const int32_t rawHeight = int32_t(Le32(dib.data() + 8));
    const uint16_t planes = Le16(dib.data() + 12);
    const uint16_t bitCount = Le16(dib.data() + 14);
    const uint32_t compression = Le32(dib.data() + 16);
    const uint32_t coloursUsed = Le32(dib.data() + 32);
    if (headerSize < kInfoHeaderSize || headerSize > dib.size() || planes != 1 || width <= 0 || rawHeight == 0 ||
        rawHeight == INT32_MIN) {
        return Failure(DwgPreviewError::BadBitmapHeader);
    }
    // A negative height stores the top row first.
    const bool topDown = rawHeight < 0;
    const int64_t height = topDown ? -int64_t(rawHeight) : int64_t(rawHeight);
    if (width > kMaxPreviewSide || height > kMaxPreviewSide) { return Failure(DwgPreviewError::TooLarge); }
    if (compression != 0 || (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 24 && bitCount != 32)) {
        return Failure(DwgPreviewError::UnsupportedBitmap);
    }

    uint64_t tableCount = 0;
    if (bitCount <= 8) {
        const uint32_t full = 1u << bitCount;
        tableCount = (coloursUsed == 0 || coloursUsed > full) ? full : coloursUsed;
    }
    const uint64_t tableEnd = uint64_t(headerSize) + tableCount * 4;
    const uint64_t stride = ((uint64_t(width) * bitCount + 31) / 32) * 4;
    // The last row needs only its used bytes; writers differ on the padding.
    const uint64_t lastRow = (uint64_t(width) * bitCount + 7) / 8;
    if (tableEnd + stride * uint64_t(height - 1) + lastRow > dib.size()) {
        return Failure(DwgPreviewError::PixelsTruncated);
    }

    DwgPreview preview;
    preview.kind = DwgPreviewKind::Bmp;
    preview.width = width;
    preview.height = int(height);
    preview.bitCount = bitCount;
    preview.palette.reserve(tableCount);
    for (uint64_t i = 0; i < tableCount; ++i) {
        preview.palette.push_back(PaletteColour(dib.data() + headerSize + i * 4));
    }
    preview.pixels.resize(size_t(width) * size_t(height));
    const auto* bits = reinterpret_cast<const unsigned char*>(dib.data() + tableEnd);
    // Every index a row can hold has a colour: one past a short colour table
    // is black, as the system draws it.
    uint32_t colours[256];
    std::fill(std::begin(colours), std::end(colours), 0xff000000u);
    std::copy(preview.palette.begin(), preview.palette.end(), colours);
    for (int64_t row = 0; row < height; ++row) {
        const unsigned char* src = bits + (topDown ? row : height - 1 - row) * stride;
        uint32_t* dst = preview.pixels.data() + row * width;
        // One loop per depth, so the pixel loop itself does not branch.
        switch (bitCount) {
            case 1:
                for (int32_t x = 0; x < width; ++x) dst[x] = colours[(src[x >> 3] >> (7 - (x & 7))) & 1];
                break;
            case 4:
                for (int32_t x = 0; x < width; ++x) dst[x] = colours[(src[x >> 1] >> ((x & 1) ? 0 : 4)) & 0x0f];
                break;
            case 8:
                for (int32_t x = 0; x < width; ++x) dst[x] = colours[src[x]];
                break;
            case 24:
                for (int32_t x = 0; x < width; ++x)
                    dst[x] = 0xff000000u | uint32_t(src[x * 3 + 2]) << 16 | uint32_t(src[x * 3 + 1]) << 8 | src[x * 3];
                break;
            default:
                for (int32_t x = 0; x < width; ++x)
                    dst[x] = 0xff000000u | uint32_t(src[x * 4 + 2]) << 16 | uint32_t(src[x * 4 + 1]) << 8 | src[x * 4];
                break;
        }
    }
    return preview;
}

DwgPreview ReadDwgPreview(uint64_t fileSize, const DwgByteSource& source) {
    std::string chunk;
    if (fileSize < kSectionAddressOffset + 4) return Failure(DwgPreviewError::ShortFile);
    if (!source(kSectionAddressOffset, 4, chunk)) return Failure(DwgPreviewError::ReadFailed);
    const uint64_t address = Le32(chunk.data());
    if (address + kSectionHeadSize > fileSize) return Failure(DwgPreviewError::SectionOutOfFile);
    if (!source(address, kSectionHeadSize, chunk)) return Failure(DwgPreviewError::ReadFailed);
    if (std::memcmp(chunk.data(), kStartSentinel, 16) != 0) { return Failure(DwgPreviewError::BadSentinel); }
    // The overall size at +16 is not needed: every entry carries its own place.
    const unsigned count = static_cast<unsigned char>(chunk[20]);
    if (count == 0) return Failure(DwgPreviewError::NoEntries);

    const uint64_t tableStart = address + kSectionHeadSize;
    const uint64_t fitting = (fileSize - tableStart) / kEntrySize;
    const unsigned readable = unsigned(fitting < count ? fitting : count);
    std::string table;
    if (readable > 0 && !source(tableStart, readable * kEntrySize, table)) {
        return Failure(DwgPreviewError::ReadFailed);
    }
    // The BMP entry is the one the list was made for; a PNG one stands in for
    // it in drawings that carry no BMP.
    int bmp = -1, png = -1;
    for (unsigned i = 0; i < readable && bmp < 0; ++i) {
        const uint8_t code = static_cast<uint8_t>(table[i * kEntrySize]);
        if (code == kDwgEntryBmp) bmp = int(i);
        if (code == kDwgEntryPng && png < 0) png = int(i);
    }
    const int chosen = bmp >= 0 ? bmp : png;
    if (chosen < 0) { return Failure(readable < count ? DwgPreviewError::TableTruncated : DwgPreviewError::NoPicture); }
    const char* entry = table.data() + size_t(chosen) * kEntrySize;
    const uint64_t start = Le32(entry + 1);
    const uint64_t size = Le32(entry + 5);
    if (start > fileSize || size > fileSize - start) return Failure(DwgPreviewError::EntryOutOfFile);
    if (size > kMaxPreviewEntry) return Failure(DwgPreviewError::TooLarge);
    std::string data;
    if (!source(start, size_t(size), data)) return Failure(DwgPreviewError::ReadFailed);
    return bmp >= 0 ? DecodePreviewBitmap(data) : DecodePng(std::move(data));
}

DwgPreview ReadDwgPreview(std::string_view bytes) {
    return ReadDwgPreview(bytes.size(), [bytes](uint64_t offset, size_t length, std::string& out) {
        if (offset > bytes.size() || length > bytes.size() - offset) return false;
        out.assign(bytes.data() + offset, length);
        return true;
    });
}

DwgPreview ReadDwgPreviewFile(std::u16string_view path) {
    struct Closer {
        void operator()(std::FILE* f) const { std::fclose(f); }
    };
    std::unique_ptr<std::FILE, Closer> file(std::fopen(NativePath(path).c_str(), "rb"));
    if (!file) return Failure(DwgPreviewError::ReadFailed);
    if (std::fseek(file.get(), 0, SEEK_END) != 0) return Failure(DwgPreviewError::ReadFailed);
    const long end = std::ftell(file.get());
    if (end < 0) return Failure(DwgPreviewError::ReadFailed);
    return ReadDwgPreview(uint64_t(end), [&file](uint64_t offset, size_t length, std::string& out) {
        out.resize(length);
        if (std::fseek(file.get(), long(offset), SEEK_SET) != 0) return false;
        return std::fread(out.data(), 1, length, file.get()) == length;
    });
}

}  // namespace marrowfin
