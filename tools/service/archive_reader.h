#pragma once
// Reads the collection archive that a client uploads to lfupload: a zip whose
// entry names join their parts with "//", the user number first.

#include <string>
#include <vector>

namespace marrowfin::service {

struct ArchiveEntry {
    std::vector<std::string> parts;  // name split at '/', empty parts dropped
    bool directory = false;
    std::string data;
};

// False (with a reason) when the file is not a readable zip.
bool ReadArchive(const std::string& path, std::vector<ArchiveEntry>& entries, std::string& error);

}  // namespace marrowfin::service
