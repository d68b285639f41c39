#include "panel/model/collection_model.h"

#include <algorithm>

#include "collection/handover_calls.h"

namespace marrowfin {

std::uintptr_t CollectionModel::BeginReload() {
    ++m_reloads;
    m_quietReload = quietCollect;
    m_then = nullptr;
    loading = false;
    return m_reloads;
}

std::optional<int> CollectionModel::LoadStatus(LoadStep step) const {
    if (m_quietReload) return std::nullopt;
    switch (step) {
        case LoadStep::Reading: return 1;
        case LoadStep::Read: return -1;
        case LoadStep::Failed: return 3;
    }
    return std::nullopt;
}

void CollectionModel::HoldReload(std::uintptr_t generation, std::function<void(int)> then) {
    if (!IsNewestReload(generation)) return;
    m_then = std::move(then);
    loading = true;
}

std::function<void(int)> CollectionModel::EndReload() {
    loading = false;
    return std::exchange(m_then, nullptr);
}

std::vector<std::pair<std::u16string, std::u16string>> CollectionModel::KnownFolders() const {
    std::vector<std::pair<std::u16string, std::u16string>> known;
    for (const auto& [id, folder] : folderMap) known.emplace_back(id, folder.path);
    return known;
}

bool CollectionModel::AdoptFolders(std::vector<CollectionFolder> read) {
    CollectionFolderMap folders;
    for (CollectionFolder& folder : read) {
        if (auto kept = folderMap.find(folder.id); kept != folderMap.end() && kept->second.path == folder.path)
            folder.blocks = std::move(kept->second.blocks);
        folders.emplace(folder.id, std::move(folder));
    }
    folderMap = std::move(folders);
    return RoomForFolder();
}

std::uintptr_t CollectionModel::BeginFolderRead() { return ++m_folderReads; }

bool CollectionModel::EndFolderRead(std::uintptr_t generation, bool folderStillOpen) {
    if (generation != m_folderReads) return false;
    folderReading = false;
    return folderStillOpen;
}

bool CollectionModel::OpensMadeFolder(int reloaded, std::uintptr_t readsBefore, int classIndex) const {
    return reloaded == 1 && m_folderReads == readsBefore && classIndex == 1;
}

void CollectionModel::FolderBlocksRead(const std::u16string& path, std::vector<CollectedBlock> blocks) {
    for (auto& [id, folder] : folderMap)
        if (folder.path == path) folder.blocks = blocks;
}

void CollectionModel::BlockDeleted(const std::u16string& folderPath, const std::u16string& blockName) {
    for (auto& [id, folder] : folderMap) {
        if (folder.path != folderPath) continue;
        std::erase_if(folder.blocks, [&](const CollectedBlock& b) { return b.filename == blockName; });
    }
}

void CollectionModel::FolderRenamed(const std::u16string& oldPath, const std::u16string& newPath,
                                    const std::u16string& newName) {
    for (auto& [id, folder] : folderMap) {
        if (folder.path != oldPath) continue;
        folder.name = newName;
        folder.path = newPath;
        for (CollectedBlock& block : folder.blocks) block.path = newPath + u"/" + block.filename;
        return;
    }
}

bool CollectionModel::TargetNeedsReload(int32_t userId) {
    if (userId >= 2 && userId == user) return false;
    user = userId;
    return true;
}

HandoverEnd CollectionModel::CloudSyncEnded(bool landed) {
    if (landed) return {.settle = true};
    return {.settle = false, .syncStatus = 4};
}

bool CollectionModel::BeginSyncPoll() { return !std::exchange(syncPollPending, true); }

SyncPoll CollectionModel::SyncPolled(int status) {
    syncPollPending = false;
    if (status == SyncWorking) return SyncPoll::GoOn;
    return status == SyncIdle ? SyncPoll::Landed : SyncPoll::Failed;
}

}  // namespace marrowfin
