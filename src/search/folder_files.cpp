#include "search/folder_files.h"

#include <chrono>

#include "platform/files.h"

namespace marrowfin {

namespace {

// A long session visits many classes: past this the listings start over.
constexpr size_t kFolderBound = 4096;
constexpr int64_t kSettledNs = 2'000'000'000;

}  // namespace

std::shared_ptr<const FileNames> FolderFiles::FilesOf(const std::u16string& folder) {
    const int64_t stamp = PathWriteTime(folder);
    {
        std::lock_guard<std::mutex> lock(m_lock);
        auto it = m_folders.find(folder);
        if (it != m_folders.end() && it->second.settled && it->second.stamp == stamp && stamp >= 0)
            return it->second.files;
    }
    // A folder changed moments before its listing may change again within
    // the write time's resolution on some file systems: such a listing is
    // used once and read again next time.
    const auto now =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    const bool settled = stamp >= 0 && now - stamp > kSettledNs;
    auto files = std::make_shared<FileNames>();
    for (FolderEntry& entry : ListFolder(folder))
        if (entry.kind == FolderEntry::File) files->insert(std::move(entry.name));
    std::lock_guard<std::mutex> lock(m_lock);
    if (m_folders.size() >= kFolderBound) m_folders.clear();
    m_folders[folder] = Listing{stamp, settled, files};
    return files;
}

FolderFiles& SharedFolderFiles() {
    static FolderFiles files;
    return files;
}

}  // namespace marrowfin
