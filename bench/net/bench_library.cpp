#include "bench_library.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "platform/paths.h"

namespace fs = std::filesystem;

namespace marrowfin::bench {

namespace {

struct TempFolders {
    std::vector<std::string> dirs;
    ~TempFolders() {
        std::error_code ec;
        for (const std::string& d : dirs) fs::remove_all(d, ec);
    }
};

}  // namespace

std::string KeepUntilExit(std::string dir) {
    static TempFolders folders;
    folders.dirs.push_back(dir);
    return dir;
}

void UseFreshHome() {
    std::string dir = (fs::temp_directory_path() / "marrowfin-bench-home-XXXXXX").string();
    if (!mkdtemp(dir.data())) std::abort();
    KeepUntilExit(dir);
    fs::create_directories(dir + "/Documents");
    setenv("HOME", dir.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (dir + "/config").c_str(), 1);
    ResetPathCachesForTest();
}

std::string GalleryName(int index) { return "图库" + std::to_string(index); }

std::string WriteLinkedLibrary(int galleries, int classes, int blocks, size_t blockBytes) {
    std::string dir = (fs::temp_directory_path() / "marrowfin-bench-XXXXXX").string();
    if (!mkdtemp(dir.data())) throw std::runtime_error("mkdtemp failed");
    const fs::path root(dir);
    const fs::path source = root / "one-block.dwg";
    {
        std::string bytes(blockBytes, '\0');
        bytes.replace(0, 6, "AC1015");
        for (size_t i = 6; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 % 251);
        std::ofstream(source, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    std::ofstream tsv(root / "library.tsv", std::ios::binary);
    tsv << "dv\t0\n";
    for (int g = 0; g < galleries; ++g) {
        const std::string gallery = GalleryName(g);
        tsv << "gallery\t" << gallery << "\t" << (g % 5 == 0 ? 1 : 0) << "\n";
        for (int c = 0; c < classes; ++c) {
            const std::string cls = "类别" + std::to_string(c);
            tsv << "class\t" << gallery << "\t" << cls << "\t" << (c % 7 + 1) << "\n";
            const fs::path folder = root / "blocks" / gallery / cls;
            fs::create_directories(folder);
            for (int b = 0; b < blocks; ++b) {
                const std::string fn =
                    "块-" + std::to_string(g) + "-" + std::to_string(c) + "-" + std::to_string(b) + ".dwg";
                tsv << "block\t" << gallery << "\t" << cls << "\t" << fn << "\t" << (b % 17 == 0 ? 1 : 0) << "\n";
                fs::create_symlink(source, folder / fn);
            }
        }
    }
    return dir;
}

}  // namespace marrowfin::bench
