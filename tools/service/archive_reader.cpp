#include "archive_reader.h"

#include <minizip/unzip.h>

namespace marrowfin::service {

namespace {

class ZipReader {
public:
    explicit ZipReader(const std::string& path) : m_zip(unzOpen(path.c_str())) {}
    ~ZipReader() {
        if (m_zip) unzClose(m_zip);
    }
    ZipReader(const ZipReader&) = delete;
    ZipReader& operator=(const ZipReader&) = delete;
    unzFile get() const { return m_zip; }

private:
    unzFile m_zip;
};

std::vector<std::string> SplitName(const std::string& name) {
    std::vector<std::string> parts;
    size_t at = 0;
    while (at <= name.size()) {
        size_t slash = name.find('/', at);
        if (slash == std::string::npos) slash = name.size();
        if (slash > at) parts.push_back(name.substr(at, slash - at));
        at = slash + 1;
    }
    return parts;
}

}  // namespace

bool ReadArchive(const std::string& path, std::vector<ArchiveEntry>& entries, std::string& error) {
    entries.clear();
    ZipReader zip(path);
    if (!zip.get()) {
        error = "not a zip archive";
        return false;
    }
    int rc = unzGoToFirstFile(zip.get());
    while (rc == UNZ_OK) {
        unz_file_info info;
        char name[1024];
        if (unzGetCurrentFileInfo(zip.get(), &info, name, sizeof name, nullptr, 0, nullptr, 0) != UNZ_OK) {
            error = "unreadable entry";
            return false;
        }
        ArchiveEntry entry;
        const std::string text(name);
        entry.parts = SplitName(text);
        entry.directory = !text.empty() && text.back() == '/';
        if (!entry.directory) {
            if (unzOpenCurrentFile(zip.get()) != UNZ_OK) {
                error = "cannot open entry " + text;
                return false;
            }
            char buffer[65536];
            int n = 0;
            while ((n = unzReadCurrentFile(zip.get(), buffer, sizeof buffer)) > 0) entry.data.append(buffer, n);
            const int closed = unzCloseCurrentFile(zip.get());
            if (n < 0 || closed != UNZ_OK) {
                error = "damaged entry " + text;
                return false;
            }
        }
        entries.push_back(std::move(entry));
        rc = unzGoToNextFile(zip.get());
    }
    if (rc != UNZ_END_OF_LIST_OF_FILE) {
        error = "damaged archive";
        return false;
    }
    return true;
}

}  // namespace marrowfin::service
