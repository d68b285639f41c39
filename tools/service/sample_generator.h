#pragma once
// Writes a deterministic sample library into a data folder of the stand-in
// service: galleries, classes with versions and boutique flags, block files
// with real preview sections, the class table in its three sorts, hot words
// and advertising tiles.

#include <cstdint>
#include <string>

namespace marrowfin::service {

struct SampleOptions {
    int galleries = 4;
    int classes = 5;  // per gallery
    int blocks = 20;  // per class
    uint64_t seed = 1;
};

struct SampleResult {
    bool ok = false;
    std::string error;
    int galleries = 0;
    int classes = 0;
    int blocks = 0;
    int64_t bytes = 0;  // bytes of all block files
};

// Creates `outDir` when needed and writes the library into it, replacing the
// library files of an earlier run (per-user state is left alone). The same
// options always give the same bytes.
SampleResult GenerateSample(const std::string& outDir, const SampleOptions& options);

}  // namespace marrowfin::service
