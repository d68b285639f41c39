#include "test_paths.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace marrowfin::test {

std::string SourceDir() {
    const char* v = std::getenv("MARROWFIN_SOURCE_DIR");
    return v ? v : MARROWFIN_BUILT_FROM;
}
std::string SharedDir() {
    const char* v = std::getenv("MARROWFIN_SHARED_DIR");
    return v ? v : MARROWFIN_SHARED_FROM;
}

std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteBytes(const std::string& path, const std::string& bytes) {
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace marrowfin::test
