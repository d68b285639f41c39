#pragma once
// Builders of preview pictures and drawing files for the preview tests, and
// the shared sample drawings.

#include <QImage>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowfin::test {

// A headerless DIB of `bits` (1, 4, 8, 24 or 32) bits per pixel, rows
// bottom-up (or top-down); low depths take each pixel's nearest `palette` entry.
std::string MakeDib(const QImage& image, int bits, const std::vector<QRgb>& palette = {},
                    bool topDown = false);

// A standalone .bmp file (14-byte file header in front) of a headerless DIB.
std::string MakeBmpFile(const std::string& dib);

// A preview section at `address` with the given entries (code, data) placed behind the table.
struct TestEntry {
  uint8_t code;
  std::string data;
};
std::string MakeDrawing(const std::vector<TestEntry>& entries, uint32_t address = 0x100);

// Offset of the table entry `index` in a file made by MakeDrawing.
inline size_t EntryOffset(uint32_t address, int index) { return address + 21 + 9 * size_t(index); }

void PutLe32(std::string& bytes, size_t offset, uint32_t value);
// Copies of `bytes` with a little-endian word, or one byte, replaced.
std::string Patched(std::string bytes, size_t offset, uint32_t value);
std::string WithByte(std::string bytes, size_t offset, char value);

// The shared sample drawings (a test failure when missing).
std::string RealFile(const char* name);
QString RealPath(const char* name);

}  // namespace marrowfin::test
