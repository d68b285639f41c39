#include "collection/old_collection.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "platform/product_texts.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marrowfin {

namespace {
std::atomic<int> g_handoversRunning{0};
}  // namespace

std::u16string OldCollectionDir(std::u16string_view root) { return std::u16string(root) + kCollectionRoute; }

std::u16string PackingDir(std::u16string_view root, int32_t userId) {
    return std::u16string(root) + u"/" + Utf8ToUtf16(std::to_string(userId));
}

bool HoldsOldFiles(std::u16string_view folder) {
    for (const FolderEntry& entry : ListFolder(folder)) {
        if (entry.kind != FolderEntry::Directory) return true;
        if (HoldsOldFiles(std::u16string(folder) + u"/" + entry.name)) return true;
    }
    return false;
}

std::vector<OldCollectionFolder> ReadOldCollectionFolders(std::u16string_view folder) {
    std::vector<OldCollectionFolder> folders;
    for (const FolderEntry& entry : ListFolder(folder)) {
        if (entry.kind != FolderEntry::Directory) continue;
        const std::u16string dir = std::u16string(folder) + u"/" + entry.name;
        std::vector<std::pair<int64_t, std::u16string>> stamped;
        for (const FolderEntry& file : ListFolder(dir)) {
            const std::u16string_view name = file.name;
            if (file.kind != FolderEntry::File || name.size() < 4 || name.substr(name.size() - 4) != u".dwg") continue;
            stamped.emplace_back(PathWriteTime(dir + u"/" + file.name), file.name);
        }
        std::stable_sort(stamped.begin(), stamped.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        OldCollectionFolder read{entry.name, {}};
        for (auto& [stamp, name] : stamped) read.drawings.push_back(std::move(name));
        folders.push_back(std::move(read));
    }
    return folders;
}

std::u16string OldFolderNames(std::u16string_view folder) {
    std::u16string names;
    for (const FolderEntry& entry : ListFolder(folder)) {
        if (entry.kind != FolderEntry::Directory) continue;
        if (!names.empty()) names += u'*';
        names += entry.name;
    }
    return names;
}

void RestoreOldCollectionName(std::u16string_view root, int32_t userId) {
    if (g_handoversRunning.load() > 0 || userId < 1) return;
    const std::u16string old = OldCollectionDir(root), packing = PackingDir(root, userId);
    if (!PathExists(old) && DirectoryExists(packing)) (void)RenameFile(packing, old);
}

HandoverRunning::HandoverRunning() { ++g_handoversRunning; }
HandoverRunning::~HandoverRunning() { --g_handoversRunning; }

}  // namespace marrowfin
