#pragma once
// Where the store lies and small path helpers ('/' is the separator).

#include <string>
#include <string_view>

namespace marrowfin {

// The user's documents folder: XDG_DOCUMENTS_DIR from user-dirs.dirs, else ~/Documents.
std::u16string DocumentsFolder();
// The document folder of the store, computed once per process: the option
// `docDir` when set and present, else the documents folder; when that is
// missing too, `docDir` is written empty and the path is used all the same.
std::u16string DocumentRoot();
// The folder of the running program (where BrindleSkin/ lies), computed once.
std::u16string HostFolder();
// The text behind the last '/', up to its last '.' unless `keepExtension`;
// a path without '/' comes back whole.
std::u16string FileStem(std::u16string_view path, bool keepExtension);
// The text behind the last '/', or empty when there is none or it stands first.
std::u16string FileNameOf(std::u16string_view path);
// The text behind the last '/' (or '\'), or the whole path without one.
std::u16string_view LastComponent(std::u16string_view path);
// The text before the last '/' (or '\'), or empty without one.
std::u16string_view ParentOf(std::u16string_view path);
// Texts from the host may carry '\': the library uses '/' everywhere.
std::u16string ToLibrarySeparators(std::u16string_view path);

// a + "/" + b in one allocation: a reply or a catalogue makes hundreds of
// thousands of node paths.
inline std::u16string JoinPath(std::u16string_view a, std::u16string_view b) {
    std::u16string out;
    out.reserve(a.size() + 1 + b.size());
    out.append(a).append(1, u'/').append(b);
    return out;
}

// Tests change the environment: forget the cached folders.
void ResetPathCachesForTest();

}  // namespace marrowfin
