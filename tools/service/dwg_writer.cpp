#include "dwg_writer.h"

#include <cstring>

namespace marrowfin::service {

const unsigned char kPreviewStartSentinel[16] = {0x1F, 0x25, 0x6D, 0x07, 0xD4, 0x36, 0x28, 0x28,
                                                 0x9D, 0x57, 0xCA, 0x3F, 0x9D, 0x44, 0x10, 0x2B};
const unsigned char kPreviewEndSentinel[16] = {0xE0, 0xDA, 0x92, 0xF8, 0x2B, 0xC9, 0xD7, 0xD7,
                                               0x62, 0xA8, 0x35, 0xC0, 0x62, 0xBB, 0xEF, 0xD4};

namespace {

void PutU32(std::string& out, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) out[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

void AppendU32(std::string& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

}  // namespace

std::string BuildDwgContainer(PreviewKind kind, std::string_view picture) {
    const bool png = kind == PreviewKind::Png;
    std::string out(kPreviewOffset, '\0');
    std::memcpy(out.data(), png ? "AC1027" : "AC1015", 6);
    // Maintenance version, the constant 1, then the preview address.
    out[0x0B] = 0;
    out[0x0C] = 1;
    PutU32(out, 0x0D, kPreviewOffset);
    // Drawing and application version bytes as the real programs write them,
    // then code page 30 (ANSI 1252).
    out[0x11] = static_cast<char>(png ? 0x1F : 0x19);
    out[0x12] = static_cast<char>(png ? 0x08 : 0x00);
    out[0x13] = 0x1E;
    out[0x14] = 0x00;

    // Section: sentinel, overall size, entry count, entries (code, start, size),
    // the 80-byte header entry, the picture, end sentinel. Starts are absolute
    // file offsets; the size counts from behind the size field to the end of
    // the last entry's data.
    out.append(reinterpret_cast<const char*>(kPreviewStartSentinel), 16);
    const size_t sizeAt = out.size();
    AppendU32(out, 0);
    const uint8_t count = 2;
    out.push_back(static_cast<char>(count));
    const uint32_t headerStart = static_cast<uint32_t>(out.size() + 9 * count);
    const uint32_t headerSize = 80;
    const uint32_t pictureStart = headerStart + headerSize;
    out.push_back(static_cast<char>(kEntryHeader));
    AppendU32(out, headerStart);
    AppendU32(out, headerSize);
    out.push_back(static_cast<char>(png ? kEntryPng : kEntryBmp));
    AppendU32(out, pictureStart);
    AppendU32(out, static_cast<uint32_t>(picture.size()));
    out.append(headerSize, '\0');
    out.append(picture);
    PutU32(out, sizeAt, static_cast<uint32_t>(out.size() - (sizeAt + 4)));
    out.append(reinterpret_cast<const char*>(kPreviewEndSentinel), 16);
    // A tiny PNG could leave the file under the client's failed-download bound;
    // zeros behind the section keep every sample block clearly above it.
    if (out.size() < kMinimumBlockSize) out.append(kMinimumBlockSize - out.size(), '\0');
    return out;
}

}  // namespace marrowfin::service
