#include "platform/paths.h"

#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <optional>

#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

// Computed once per process, as designed; the lock only keeps a first call
// from two threads (synchronisation thread and panel) from racing.
std::mutex g_cacheLock;
std::optional<std::u16string> g_documentRoot;
std::optional<std::u16string> g_hostFolder;

std::string HomeDir() {
    const char* home = std::getenv("HOME");
    return home ? home : "";
}

std::string ConfigDir() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    if (xdg && *xdg == '/') return xdg;
    return HomeDir() + "/.config";
}

}  // namespace

std::u16string DocumentsFolder() {
    // user-dirs.dirs holds lines like XDG_DOCUMENTS_DIR="$HOME/Documents".
    // The file has no sections, so it is read as plain lines.
    std::u16string value;
    {
        std::string bytes;
        if (ReadWholeFile(Utf8ToUtf16(ConfigDir() + "/user-dirs.dirs"), bytes)) {
            const std::string key = "XDG_DOCUMENTS_DIR=";
            size_t pos = 0;
            while ((pos = bytes.find(key, pos)) != std::string::npos) {
                if (pos == 0 || bytes[pos - 1] == '\n') {
                    size_t end = bytes.find('\n', pos);
                    std::string v = bytes.substr(pos + key.size(),
                                                 end == std::string::npos ? std::string::npos : end - pos - key.size());
                    if (v.size() >= 2 && v.front() == '"' && v.back() == '"') v = v.substr(1, v.size() - 2);
                    if (v.rfind("$HOME", 0) == 0) v = HomeDir() + v.substr(5);
                    if (!v.empty() && v.front() == '/') value = Utf8ToUtf16(v);
                    break;
                }
                pos += key.size();
            }
        }
    }
    if (value.empty()) value = Utf8ToUtf16(HomeDir() + "/Documents");
    while (value.size() > 1 && value.back() == u'/') value.pop_back();
    return value;
}

std::u16string DocumentRoot() {
    std::lock_guard<std::mutex> lock(g_cacheLock);
    if (g_documentRoot) return *g_documentRoot;
    std::u16string dir = GetOptionString(u"docDir", u"");
    if (dir.empty() || !DirectoryExists(dir)) {
        dir = DocumentsFolder();
        if (!DirectoryExists(dir)) (void)WriteOptionString(u"docDir", u"");
    }
    g_documentRoot = dir;
    return dir;
}

std::u16string HostFolder() {
    std::lock_guard<std::mutex> lock(g_cacheLock);
    if (g_hostFolder) return *g_hostFolder;
    std::string exe(4096, '\0');
    const ssize_t n = ::readlink("/proc/self/exe", exe.data(), exe.size() - 1);
    exe.resize(n > 0 ? static_cast<size_t>(n) : 0);
    const size_t slash = exe.find_last_of('/');
    g_hostFolder = Utf8ToUtf16(slash == std::string::npos ? std::string() : exe.substr(0, slash));
    return *g_hostFolder;
}

std::u16string FileStem(std::u16string_view path, bool keepExtension) {
    const size_t slash = path.find_last_of(u'/');
    if (slash == std::u16string_view::npos) return std::u16string(path);
    std::u16string_view name = path.substr(slash + 1);
    if (!keepExtension) {
        const size_t dot = path.find_last_of(u'.');
        if (dot != std::u16string_view::npos && dot > slash) name = path.substr(slash + 1, dot - slash - 1);
    }
    return std::u16string(name);
}

std::u16string FileNameOf(std::u16string_view path) {
    const size_t slash = path.find_last_of(u'/');
    if (slash == std::u16string_view::npos || slash == 0) return {};
    return std::u16string(path.substr(slash + 1));
}

std::u16string_view LastComponent(std::u16string_view path) {
    const size_t slash = path.find_last_of(u"/\\");
    return slash == std::u16string_view::npos ? path : path.substr(slash + 1);
}

std::u16string_view ParentOf(std::u16string_view path) {
    const size_t slash = path.find_last_of(u"/\\");
    return slash == std::u16string_view::npos ? std::u16string_view() : path.substr(0, slash);
}

std::u16string ToLibrarySeparators(std::u16string_view path) {
    std::u16string out(path);
    for (auto& c : out)
        if (c == u'\\') c = u'/';
    return out;
}

void ResetPathCachesForTest() {
    std::lock_guard<std::mutex> lock(g_cacheLock);
    g_documentRoot.reset();
    g_hostFolder.reset();
}

}  // namespace marrowfin
