#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>

#include "platform/text.h"

namespace fs = std::filesystem;

namespace marrowfin {

namespace {

// Closes a descriptor on every road out.
struct FdOwner {
    int fd = -1;
    ~FdOwner() {
        if (fd >= 0) ::close(fd);
    }
    int release() {
        int f = fd;
        fd = -1;
        return f;
    }
};

bool StatPath(std::u16string_view path, struct stat& st) {
    if (path.empty()) return false;
    return ::stat(NativePath(path).c_str(), &st) == 0;
}

void RemoveTreeNative(const fs::path& dir) {
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path entry = it->path();
        // Clear a read-only mark first, as FILE_ATTRIBUTE_NORMAL did on Windows.
        std::error_code pec;
        const bool isDir = it->is_directory(pec) && !it->is_symlink(pec);
        fs::permissions(entry, isDir ? fs::perms::owner_all : (fs::perms::owner_read | fs::perms::owner_write),
                        fs::perm_options::add, pec);
        if (isDir) {
            RemoveTreeNative(entry);
        } else {
            (void)::unlink(entry.c_str());  // failures are not reported
        }
    }
    (void)::rmdir(dir.c_str());
}

}  // namespace

std::string NativePath(std::u16string_view path) { return Utf16ToUtf8(path); }

bool PathExists(std::u16string_view path) {
    struct stat st;
    return StatPath(path, st);
}

bool FileExists(std::u16string_view path) {
    struct stat st;
    return StatPath(path, st) && S_ISREG(st.st_mode);
}

bool IsSafePathSegment(std::u16string_view name) {
    return !name.empty() && name != u"." && name != u".." && name.find_first_of(u"/\\") == std::u16string_view::npos;
}

bool DirectoryExists(std::u16string_view path) {
    struct stat st;
    return StatPath(path, st) && S_ISDIR(st.st_mode);
}

int64_t FileSize(std::u16string_view path) {
    struct stat st;
    if (!StatPath(path, st) || !S_ISREG(st.st_mode)) return -1;
    return static_cast<int64_t>(st.st_size);
}

int64_t PathWriteTime(std::u16string_view path) {
    struct stat st;
    if (!StatPath(path, st)) return -1;
    return static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

bool CreateDirectories(std::u16string_view path) {
    if (path.empty()) return false;
    std::error_code ec;
    fs::create_directories(fs::path(NativePath(path)), ec);
    return DirectoryExists(path);
}

void RemoveDirectoryTree(std::u16string_view path) {
    if (path.empty()) {
        (void)::rmdir("");  // the lone RemoveDirectory on an empty name, kept as it was
        return;
    }
    const std::string native = NativePath(path);
    struct stat st;
    if (::lstat(native.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return;
    RemoveTreeNative(fs::path(native));
}

bool RemoveFile(std::u16string_view path) { return !path.empty() && ::unlink(NativePath(path).c_str()) == 0; }

bool CopyFileNoOverwrite(std::u16string_view from, std::u16string_view to) {
    if (from.empty() || to.empty()) return false;
    std::error_code ec;
    return fs::copy_file(fs::path(NativePath(from)), fs::path(NativePath(to)), fs::copy_options::none, ec) && !ec;
}

bool RenameFile(std::u16string_view from, std::u16string_view to) {
    if (from.empty() || to.empty()) return false;
    return ::rename(NativePath(from).c_str(), NativePath(to).c_str()) == 0;
}

std::vector<FolderEntry> ListFolder(std::u16string_view path, bool* listed) {
    std::vector<FolderEntry> entries;
    if (listed) *listed = false;
    if (path.empty()) return entries;
    const std::string folder = NativePath(path);
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return entries;
    while (const dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        FolderEntry entry{Utf8ToUtf16(name), FolderEntry::Other};
        // The listing's own type spares a call per entry; links and file
        // systems that leave it unknown are asked.
        if (e->d_type == DT_REG || e->d_type == DT_DIR) {
            entry.kind = e->d_type == DT_REG ? FolderEntry::File : FolderEntry::Directory;
            entries.push_back(std::move(entry));
            continue;
        }
        const std::string full = folder + "/" + name;
        struct stat st;
        if (::lstat(full.c_str(), &st) == 0) {
            if (S_ISDIR(st.st_mode)) entry.kind = FolderEntry::Directory;
            else if (S_ISREG(st.st_mode)) entry.kind = FolderEntry::File;
            else if (S_ISLNK(st.st_mode) && ::stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode))
                entry.kind = FolderEntry::File;
        }
        entries.push_back(std::move(entry));
    }
    ::closedir(dir);
    if (listed) *listed = true;
    return entries;
}

namespace {

std::atomic<int> g_failedReadsLeft{0};

bool TakeReadFailure() {
    int left = g_failedReadsLeft.load();
    while (left > 0 && !g_failedReadsLeft.compare_exchange_weak(left, left - 1)) {}
    return left > 0;
}

}  // namespace

void FailFileReadsForTests(int count) { g_failedReadsLeft.store(count); }

FileRead ReadFileIfPresent(std::u16string_view path, std::string& bytes) {
    bytes.clear();
    if (path.empty()) return FileRead::Missing;
    FdOwner f{::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC)};
    if (f.fd < 0) return errno == ENOENT ? FileRead::Missing : FileRead::Failed;
    if (TakeReadFailure()) return FileRead::Failed;
    struct stat st;
    if (::fstat(f.fd, &st) != 0 || !S_ISREG(st.st_mode)) return FileRead::Failed;
    bytes.resize(static_cast<size_t>(st.st_size));
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t r = ::read(f.fd, bytes.data() + done, bytes.size() - done);
        if (r < 0 && errno == EINTR) continue;
        if (r < 0) {
            bytes.clear();
            return FileRead::Failed;
        }
        if (r == 0) break;  // the file shrank under us: keep what was there
        done += static_cast<size_t>(r);
    }
    bytes.resize(done);
    return FileRead::Read;
}

bool ReadWholeFile(std::u16string_view path, std::string& bytes) {
    return ReadFileIfPresent(path, bytes) == FileRead::Read;
}

bool DirectoryWritable(std::u16string_view path) {
    return DirectoryExists(path) && ::access(NativePath(path).c_str(), W_OK | X_OK) == 0;
}

bool WriteFileAtomic(std::u16string_view path, std::string_view bytes) {
    if (path.empty()) return false;
    const std::string target = NativePath(path);
    std::string temp = target + ".tmp-XXXXXX";
    FdOwner f{::mkstemp(temp.data())};
    if (f.fd < 0) return false;
    bool ok = true;
    size_t done = 0;
    while (ok && done < bytes.size()) {
        const ssize_t w = ::write(f.fd, bytes.data() + done, bytes.size() - done);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) ok = false;
        else done += static_cast<size_t>(w);
    }
    // A store file is read by other users of the profile too: ordinary permissions.
    // No fsync: the rename alone keeps a crashed process from leaving half a
    // file, and the store writes many small files on hot roads.
    if (ok) ok = ::fchmod(f.fd, 0644) == 0;
    if (::close(f.release()) != 0) ok = false;
    if (ok) ok = ::rename(temp.c_str(), target.c_str()) == 0;
    if (!ok) (void)::unlink(temp.c_str());  // the old file stays whole
    return ok;
}

}  // namespace marrowfin
