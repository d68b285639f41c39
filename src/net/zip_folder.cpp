#include "net/zip_folder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <minizip/zip.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

constexpr size_t kReadPiece = 102400;

struct FileCloser { void operator()(FILE* f) const { std::fclose(f); } };
struct DirCloser { void operator()(DIR* d) const { closedir(d); } };

bool AddEntry(zipFile zip, const std::string& name, const std::string* sourceFile) {
    zip_fileinfo info{};  // time and attributes stay zero
    if (zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            Z_DEFAULT_COMPRESSION) != ZIP_OK)
        return false;
    bool ok = true;
    if (sourceFile) {
        std::unique_ptr<FILE, FileCloser> in(std::fopen(sourceFile->c_str(), "rb"));
        if (in) {
            std::vector<char> piece(kReadPiece);
            size_t n;
            // A read error ends the entry with what was read, as a short file would.
            while ((n = std::fread(piece.data(), 1, piece.size(), in.get())) > 0)
                if (zipWriteInFileInZip(zip, piece.data(), static_cast<unsigned>(n)) != ZIP_OK) { ok = false; break; }
        }
    }
    return zipCloseFileInZip(zip) == ZIP_OK && ok;
}

bool AddFolderEntries(zipFile zip, const std::string& folder, const std::string& prefix) {
    std::unique_ptr<DIR, DirCloser> dir(opendir(folder.c_str()));
    if (!dir) return true;
    bool ok = true;
    while (dirent* entry = readdir(dir.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        const std::string path = folder + "/" + name;
        const std::string inZip = prefix + "//" + name;
        struct stat st;
        if (stat(path.c_str(), &st) != 0) continue;
        if (S_ISDIR(st.st_mode)) {
            ok = AddEntry(zip, inZip + "/", nullptr) && ok;
            ok = AddFolderEntries(zip, path, inZip) && ok;
        } else {
            ok = AddEntry(zip, inZip, &path) && ok;
        }
    }
    return ok;
}

}  // namespace

bool ZipFolder(std::u16string_view folder, std::u16string_view zipPath) {
    std::u16string base = FileNameOf(folder);
    if (base.empty()) base = FileStem(folder, true);
    zipFile zip = zipOpen(NativePath(zipPath).c_str(), APPEND_STATUS_CREATE);
    if (!zip) return false;
    const bool entries = AddFolderEntries(zip, NativePath(folder), Utf16ToUtf8(base));
    return zipClose(zip, nullptr) == ZIP_OK && entries;
}

}  // namespace marrowfin
