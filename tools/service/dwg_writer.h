#pragma once
// Writes a .dwg container that carries a real preview section and a minimal
// file header, nothing of a drawing's body. Readers of the preview find the
// section through the 32-bit address at byte 0x0D, as in files written by CAD
// programs.

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowfin::service {

enum class PreviewKind { Bmp8, Png };

// Start and end sentinels of the preview section, as CAD programs write them.
extern const unsigned char kPreviewStartSentinel[16];
extern const unsigned char kPreviewEndSentinel[16];

// Entry codes of the preview's entry table.
constexpr uint8_t kEntryHeader = 1;
constexpr uint8_t kEntryBmp = 2;
constexpr uint8_t kEntryPng = 6;

// Offset of the preview section in the files written here.
constexpr uint32_t kPreviewOffset = 0x100;
// A drawing of this size or less counts as a failed download on the client.
constexpr size_t kMinimumBlockSize = 1100;

// Builds the file. `picture` is a headerless 8-bit DIB (BITMAPINFOHEADER,
// 256-entry colour table, pixels) for Bmp8, or a PNG stream for Png. The
// version string is "AC1015" for BMP previews and "AC1027" for PNG ones,
// matching the drawing versions that wrote those kinds.
std::string BuildDwgContainer(PreviewKind kind, std::string_view picture);

}  // namespace marrowfin::service
