#pragma once
// Archives as the library packs them: parts joined by "//", the user number
// first, directories as entries of no data ending in '/'.

#include "support/test_paths.h"

#include <minizip/zip.h>

#include <string>
#include <utility>
#include <vector>

namespace marrowfin::test {

// Writes the archive to `path` and answers its bytes, or "" when it can't be made.
inline std::string MakeZip(const std::string& path, const std::vector<std::pair<std::string, std::string>>& entries) {
    zipFile zip = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
    if (!zip) return "";
    for (const auto& [name, data] : entries) {
        zip_fileinfo info{};
        if (zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                Z_DEFAULT_COMPRESSION) != ZIP_OK) {
            zipClose(zip, nullptr);
            return "";
        }
        if (!data.empty()) zipWriteInFileInZip(zip, data.data(), static_cast<unsigned>(data.size()));
        zipCloseFileInZip(zip);
    }
    zipClose(zip, nullptr);
    return ReadBytes(path);
}

}  // namespace marrowfin::test
