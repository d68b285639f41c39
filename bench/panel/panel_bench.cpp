// Reading one preview out of a drawing and fitting it into a cell, beside
// Qt reading the same picture as a standalone .bmp or .png from memory, and
// beside Qt's own smooth scaling to the same size.

#include <benchmark/benchmark.h>

#include <QImage>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "panel/preview/dwg_preview.h"
#include "panel/preview/dwg_preview_reader.h"
#include "panel/preview/fit_thumbnail.h"

namespace {

using namespace marrowfin;

std::string Slurp(const char* name) {
    std::ifstream in(std::string(MARROWFIN_DWG_TESTDATA) + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

uint32_t Le32(const std::string& b, size_t at) {
    uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

// The picture entry of a drawing (the last entry of these files).
std::string Entry(const std::string& drawing) {
    const uint32_t address = Le32(drawing, 13);
    const int count = uint8_t(drawing[address + 20]);
    const size_t entry = address + 21 + 9 * size_t(count - 1);
    return drawing.substr(Le32(drawing, entry + 1), Le32(drawing, entry + 5));
}

std::string BmpFile(const std::string& dib) {
    std::string head = "BM";
    auto put = [&head](uint32_t v) { head.append(reinterpret_cast<const char*>(&v), 4); };
    put(uint32_t(14 + dib.size()));
    put(0);
    put(14 + 40 + 1024);
    return head + dib;
}

const std::string& Drawing(bool png) {
    static const std::string bmp = Slurp("bmp8_ac1024.dwg");
    static const std::string pngFile = Slurp("png_ac1032.dwg");
    return png ? pngFile : bmp;
}

void ReadPreview(benchmark::State& state, bool png) {
    const std::string& drawing = Drawing(png);
    for (auto _ : state) {
        QImage image = PreviewToImage(ReadDwgPreview(drawing));
        benchmark::DoNotOptimize(image.constBits());
    }
}

void QtLoadStandalone(benchmark::State& state, bool png) {
    const std::string entry = Entry(Drawing(png));
    const std::string file = png ? entry : BmpFile(entry);
    for (auto _ : state) {
        QImage image;
        image.loadFromData(reinterpret_cast<const uchar*>(file.data()), int(file.size()), png ? "PNG" : "BMP");
        image = image.convertToFormat(QImage::Format_RGB32);
        benchmark::DoNotOptimize(image.constBits());
    }
}

// What a list's cell does: read for fitting, then fit into the default cell.
void ReadAndFit(benchmark::State& state, bool png) {
    const std::string& drawing = Drawing(png);
    for (auto _ : state) {
        QImage thumb = FitThumbnail(PreviewToFittable(ReadDwgPreview(drawing)), 0, 0, 1.0);
        benchmark::DoNotOptimize(thumb.constBits());
    }
}

// Peer of the cell's road: Qt decoding the standalone picture and scaling it
// smoothly into the cell's 106 x 64 area.
void QtDecodeAndScale(benchmark::State& state, bool png) {
    const std::string entry = Entry(Drawing(png));
    const std::string file = png ? entry : BmpFile(entry);
    for (auto _ : state) {
        QImage image;
        image.loadFromData(reinterpret_cast<const uchar*>(file.data()), int(file.size()), png ? "PNG" : "BMP");
        QImage thumb =
            image.convertToFormat(QImage::Format_RGB32).scaled(106, 64, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        benchmark::DoNotOptimize(thumb.constBits());
    }
}

void Fit(benchmark::State& state, bool png) {
    const QImage image = PreviewToImage(ReadDwgPreview(Drawing(png)));
    for (auto _ : state) {
        QImage thumb = FitThumbnail(image, 0, 0, 1.0);
        benchmark::DoNotOptimize(thumb.constBits());
    }
}

// Peer of the fitting: Qt's smooth scaling into the same 106 x 64 area.
void QtScaleSmooth(benchmark::State& state, bool png) {
    const QImage image = PreviewToImage(ReadDwgPreview(Drawing(png)));
    for (auto _ : state) {
        QImage thumb = image.scaled(106, 64, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        benchmark::DoNotOptimize(thumb.constBits());
    }
}

BENCHMARK_CAPTURE(ReadPreview, bmp, false);
BENCHMARK_CAPTURE(QtLoadStandalone, bmp, false);
BENCHMARK_CAPTURE(ReadPreview, png, true);
BENCHMARK_CAPTURE(QtLoadStandalone, png, true);
BENCHMARK_CAPTURE(Fit, bmp, false);
BENCHMARK_CAPTURE(QtScaleSmooth, bmp, false);
BENCHMARK_CAPTURE(Fit, png, true);
BENCHMARK_CAPTURE(QtScaleSmooth, png, true);
BENCHMARK_CAPTURE(ReadAndFit, bmp, false);
BENCHMARK_CAPTURE(QtDecodeAndScale, bmp, false);
BENCHMARK_CAPTURE(ReadAndFit, png, true);
BENCHMARK_CAPTURE(QtDecodeAndScale, png, true);

}  // namespace

BENCHMARK_MAIN();
