#pragma once
// Files and folders. Paths are UTF-16 with '/' separators; they become UTF-8
// for the system calls. Failures answer false or an empty result, never throw.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

std::string NativePath(std::u16string_view path);  // UTF-8 for the system

// A name the service gives that may stand as one folder or file name of a
// path: not empty, not "." or "..", no separator.
bool IsSafePathSegment(std::u16string_view name);

bool PathExists(std::u16string_view path);  // file or folder
bool FileExists(std::u16string_view path);  // a regular file
bool DirectoryExists(std::u16string_view path);
// Size in bytes, or -1 when the file does not exist or cannot be read.
int64_t FileSize(std::u16string_view path);
// Last write time of a file or folder in nanoseconds since the epoch, or -1
// when there is none.
int64_t PathWriteTime(std::u16string_view path);

// Creates the folder with all missing parents; true when it exists afterwards.
bool CreateDirectories(std::u16string_view path);
// Removes a folder tree, clearing read-only attributes first. An empty path
// only tries to remove an (empty) folder of that name. Failures are silent.
void RemoveDirectoryTree(std::u16string_view path);
bool RemoveFile(std::u16string_view path);
// Copies a file; refuses (false) when the target exists.
bool CopyFileNoOverwrite(std::u16string_view from, std::u16string_view to);
// Renames, replacing an existing target file.
bool RenameFile(std::u16string_view from, std::u16string_view to);

// One entry of a folder listing. A link counts as what it points at, except
// that a link to a folder is Other, so that no walk follows it round in a loop.
struct FolderEntry {
    enum Kind { Directory, File, Other };
    std::u16string name;
    Kind kind = Other;
};
// The entries of a folder in the order the system lists them, without "." and
// "..". Empty when the folder cannot be listed; `listed` tells that apart from
// an empty folder.
std::vector<FolderEntry> ListFolder(std::u16string_view path, bool* listed = nullptr);

// Reads a whole file; false when it cannot be opened or read.
bool ReadWholeFile(std::u16string_view path, std::string& bytes);
// As ReadWholeFile, telling a file that is not there from one that is there
// but cannot be read (a folder, no permission, an I/O error).
enum class FileRead { Read, Missing, Failed };
FileRead ReadFileIfPresent(std::u16string_view path, std::string& bytes);
// Test seam: the next `count` reads of files that exist fail as unreadable
// ones do (tests run as root, where permission bits do not stop a read).
void FailFileReadsForTests(int count);
// A folder in which files can be made now: it exists and is writable.
bool DirectoryWritable(std::u16string_view path);
// Writes a whole file through a temporary file in the same folder and a
// rename, so that a crash or a failed write never leaves a half-written file:
// on failure the old file is untouched and no temporary is left behind.
bool WriteFileAtomic(std::u16string_view path, std::string_view bytes);

}  // namespace marrowfin
