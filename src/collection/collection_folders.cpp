#include "collection/collection_folders.h"

#include "platform/product_texts.h"
#include "platform/paths.h"

namespace marrowfin {

namespace {

std::u16string Decimal(int value) {
    std::u16string text;
    for (char c : std::to_string(value)) text.push_back(static_cast<char16_t>(c));
    return text;
}

}  // namespace

std::u16string MirrorName(int32_t userId) { return Decimal(userId) + kMirrorSuffix; }

std::u16string MirrorDir(std::u16string_view root, int32_t userId) {
    return std::u16string(root) + u"/" + MirrorName(userId);
}

std::u16string FolderIdByName(const CollectionFolderMap& folders, std::u16string_view name) {
    for (const auto& [id, folder] : folders)
        if (folder.name == name) return id;
    return {};
}

std::u16string BlockIdByNames(const CollectionFolderMap& folders, std::u16string_view folderName,
                              std::u16string_view blockName) {
    for (const auto& [id, folder] : folders) {
        if (folder.name != folderName) continue;
        for (const CollectedBlock& block : folder.blocks)
            if (block.filename == blockName) return block.id;
    }
    return {};
}

std::u16string BlockUrlByPath(const CollectionFolderMap& folders, std::u16string_view blockPath) {
    const std::u16string_view fileName = LastComponent(blockPath);
    const std::u16string_view folderName = LastComponent(ParentOf(blockPath));
    for (const auto& [id, folder] : folders) {
        if (folder.name != folderName) continue;
        for (const CollectedBlock& block : folder.blocks)
            if (block.filename == fileName) return block.url;
        return {};
    }
    return {};
}

const CollectionFolder* FolderByPath(const CollectionFolderMap& folders, std::u16string_view directory) {
    for (const auto& [id, folder] : folders)
        if (folder.path == directory) return &folder;
    return nullptr;
}

std::u16string DefaultFolderName(const CollectionFolderMap& folders) {
    for (int n = 1;; ++n) {
        const std::u16string name = u"收藏夹" + Decimal(n);
        bool taken = false;
        for (const auto& [id, folder] : folders) taken = taken || folder.name == name;
        if (!taken) return name;
    }
}

}  // namespace marrowfin
