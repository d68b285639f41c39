// The kept inputs of a fuzz target, run through the target's own entry in the
// normal build (no clang, no fuzzer), so that a fixed crash stays fixed.
// Each program names its corpus folder through MarrowfinFuzzCorpus().

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/test_paths.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" const char* MarrowfinFuzzCorpus();

TEST(FuzzCorpus, EveryKeptInputRunsClean) {
    const std::string folder = MarrowfinFuzzCorpus();
    ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder;
    std::vector<std::filesystem::path> inputs;
    for (const auto& e : std::filesystem::directory_iterator(folder))
        if (e.is_regular_file()) inputs.push_back(e.path());
    ASSERT_FALSE(inputs.empty()) << "no kept inputs in " << folder;
    std::sort(inputs.begin(), inputs.end());
    int argc = 0;
    char** argv = nullptr;
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    for (const auto& path : inputs) {
        SCOPED_TRACE(path.string());
        const std::string bytes = marrowfin::test::ReadBytes(path.string());
        // A fault in the target aborts the program, which fails the test.
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()), 0);
    }
    RecordProperty("inputs", static_cast<int>(inputs.size()));
}
