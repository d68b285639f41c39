#include "preview_test_files.h"

#include <gtest/gtest.h>

#include <QString>

#include "support/test_paths.h"

namespace marrowfin::test {

void PutLe32(std::string& bytes, size_t offset, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[offset + i] = char((value >> (8 * i)) & 0xff);
}

std::string Patched(std::string bytes, size_t offset, uint32_t value) {
  PutLe32(bytes, offset, value);
  return bytes;
}

std::string WithByte(std::string bytes, size_t offset, char value) {
  bytes[offset] = value;
  return bytes;
}

std::string RealFile(const char* name) {
  const std::string bytes = ReadBytes(SharedDir() + "/testdata/dwg/" + name);
  EXPECT_FALSE(bytes.empty()) << name;
  return bytes;
}

QString RealPath(const char* name) { return QString::fromStdString(SharedDir() + "/testdata/dwg/" + name); }

namespace {

void AppendLe32(std::string& bytes, uint32_t value) {
  bytes.append(4, '\0');
  PutLe32(bytes, bytes.size() - 4, value);
}

int Nearest(const std::vector<QRgb>& palette, QRgb colour) {
  int best = 0, bestDistance = 1 << 30;
  for (size_t i = 0; i < palette.size(); ++i) {
    int dr = qRed(palette[i]) - qRed(colour), dg = qGreen(palette[i]) - qGreen(colour),
        db = qBlue(palette[i]) - qBlue(colour);
    int d = dr * dr + dg * dg + db * db;
    if (d < bestDistance) bestDistance = d, best = int(i);
  }
  return best;
}

}  // namespace

std::string MakeDib(const QImage& source, int bits, const std::vector<QRgb>& palette, bool topDown) {
  const QImage image = source.convertToFormat(QImage::Format_RGB32);
  const int w = image.width(), h = image.height();
  std::string dib;
  AppendLe32(dib, 40);
  AppendLe32(dib, uint32_t(w));
  AppendLe32(dib, uint32_t(topDown ? -h : h));
  dib += char(1);
  dib += char(0);
  dib += char(bits);
  dib += char(0);
  AppendLe32(dib, 0);  // compression
  const size_t stride = ((size_t(w) * bits + 31) / 32) * 4;
  AppendLe32(dib, uint32_t(stride * h));
  AppendLe32(dib, 0);
  AppendLe32(dib, 0);
  AppendLe32(dib, bits <= 8 ? uint32_t(palette.size()) : 0);
  AppendLe32(dib, 0);
  if (bits <= 8) {
    for (QRgb c : palette) {
      dib += char(qBlue(c));
      dib += char(qGreen(c));
      dib += char(qRed(c));
      dib += char(0);
    }
  }
  for (int r = 0; r < h; ++r) {
    const int y = topDown ? r : h - 1 - r;
    std::string row(stride, '\0');
    for (int x = 0; x < w; ++x) {
      const QRgb c = image.pixel(x, y);
      switch (bits) {
        case 1: row[x >> 3] = char(row[x >> 3] | (Nearest(palette, c) << (7 - (x & 7)))); break;
        case 4: row[x >> 1] = char(row[x >> 1] | (Nearest(palette, c) << ((x & 1) ? 0 : 4))); break;
        case 8: row[x] = char(Nearest(palette, c)); break;
        default: {
          const int n = bits / 8;
          row[x * n] = char(qBlue(c));
          row[x * n + 1] = char(qGreen(c));
          row[x * n + 2] = char(qRed(c));
        }
      }
    }
    dib += row;
  }
  return dib;
}

std::string MakeBmpFile(const std::string& dib) {
  const uint32_t header = uint32_t(dib[0] & 0xff) | uint32_t(dib[1] & 0xff) << 8;
  const int bits = dib[14];
  uint32_t colours = uint32_t(dib[32] & 0xff) | uint32_t(dib[33] & 0xff) << 8;
  if (bits <= 8 && colours == 0) colours = 1u << bits;
  if (bits > 8) colours = 0;
  std::string file = "BM";
  AppendLe32(file, uint32_t(14 + dib.size()));
  AppendLe32(file, 0);
  AppendLe32(file, 14 + header + colours * 4);
  return file + dib;
}

std::string MakeDrawing(const std::vector<TestEntry>& entries, uint32_t address) {
  static const unsigned char sentinel[16] = {0x1F, 0x25, 0x6D, 0x07, 0xD4, 0x36, 0x28, 0x28,
                                             0x9D, 0x57, 0xCA, 0x3F, 0x9D, 0x44, 0x10, 0x2B};
  std::string file = "AC1015";
  file.resize(address, '\0');
  PutLe32(file, 0x0D, address);
  file.append(reinterpret_cast<const char*>(sentinel), 16);
  AppendLe32(file, 0);
  file += char(entries.size());
  uint32_t dataStart = address + 21 + 9 * uint32_t(entries.size());
  size_t total = 1 + 9 * entries.size();
  for (const auto& e : entries) {
    file += char(e.code);
    AppendLe32(file, dataStart);
    AppendLe32(file, uint32_t(e.data.size()));
    dataStart += uint32_t(e.data.size());
    total += e.data.size();
  }
  PutLe32(file, address + 16, uint32_t(total));
  for (const auto& e : entries) file += e.data;
  return file;
}

}  // namespace marrowfin::test
