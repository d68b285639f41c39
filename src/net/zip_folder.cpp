#include "net/zip_folder.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <string>
#include <vector>

#include <minizip/zip.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

constexpr size_t kReadPiece = 102400;

struct FdCloser {
    int fd = -1;
    ~FdCloser() {
        if (fd >= 0) ::close(fd);
    }
};

// Copies the file's bytes into the open entry; false when it cannot be read whole.
bool WriteFileData(zipFile zip, const std::string& path) {
    FdCloser in{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (in.fd < 0) return false;
    std::vector<char> piece(kReadPiece);
    for (;;) {
        const ssize_t n = ::read(in.fd, piece.data(), piece.size());
        if (n == 0) return true;
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (zipWriteInFileInZip(zip, piece.data(), static_cast<unsigned>(n)) != ZIP_OK) return false;
    }
}

// One entry; `source` names the file whose bytes it carries, or is null for none.
bool AddEntry(zipFile zip, const std::string& name, const std::string* source) {
    zip_fileinfo info{};  // time and attributes stay zero
    if (zipOpenNewFileInZip(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            Z_DEFAULT_COMPRESSION) != ZIP_OK)
        return false;
    const bool written = !source || WriteFileData(zip, *source);
    return zipCloseFileInZip(zip) == ZIP_OK && written;
}

// Goes on after a failure, so that the archive holds all it can; the result tells.
bool AddFolderEntries(zipFile zip, const std::u16string& folder, const std::string& prefix, bool isTop) {
    bool listed = false;
    const std::vector<FolderEntry> entries = ListFolder(folder, &listed);
    bool ok = listed || (isTop && !DirectoryExists(folder));  // a missing top gives an empty archive
    for (const FolderEntry& entry : entries) {
        const std::u16string path = folder + u"/" + entry.name;
        const std::string inZip = prefix + "//" + Utf16ToUtf8(entry.name);
        if (entry.kind == FolderEntry::Directory) {
            ok = AddEntry(zip, inZip + "/", nullptr) && ok;
            ok = AddFolderEntries(zip, path, inZip, false) && ok;
        } else {
            const std::string native = NativePath(path);
            ok = AddEntry(zip, inZip, entry.kind == FolderEntry::File ? &native : nullptr) && ok;
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
    const bool entries = AddFolderEntries(zip, std::u16string(folder), Utf16ToUtf8(base), true);
    return zipClose(zip, nullptr) == ZIP_OK && entries;
}

}  // namespace marrowfin
