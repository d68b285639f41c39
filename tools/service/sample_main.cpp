// marrowfin-sample --out DIR [--galleries N] [--classes M] [--blocks K] [--seed S]

#include "sample_generator.h"

#include <chrono>
#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    std::string out;
    marrowfin::service::SampleOptions options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string arg = argv[i];
        const std::string value = argv[i + 1];
        if (arg == "--out") out = value;
        else if (arg == "--galleries") options.galleries = std::atoi(value.c_str());
        else if (arg == "--classes") options.classes = std::atoi(value.c_str());
        else if (arg == "--blocks") options.blocks = std::atoi(value.c_str());
        else if (arg == "--seed") options.seed = std::strtoull(value.c_str(), nullptr, 10);
        else out.clear(), i = argc;
    }
    if (out.empty() || argc % 2 == 0) {
        std::fprintf(stderr,
                     "usage: marrowfin-sample --out DIR [--galleries N] [--classes M] [--blocks K] [--seed S]\n");
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    const marrowfin::service::SampleResult r = marrowfin::service::GenerateSample(out, options);
    if (!r.ok) {
        std::fprintf(stderr, "marrowfin-sample: %s\n", r.error.c_str());
        return 1;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%d galleries, %d classes, %d blocks, %lld bytes in %.2f s\n", r.galleries, r.classes, r.blocks,
                static_cast<long long>(r.bytes), seconds);
    return 0;
}
