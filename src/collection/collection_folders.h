#pragma once
// The signed-in user's collection as the panel last read it from the service:
// folders by id, each with the blocks read when it was last opened. The
// service is the master; the mirror on disk (<root>/<userId>_收藏) only
// follows it.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/product_texts.h"

namespace marrowfin {

// The collection's class row and the owner name of its folders in the tree.
inline constexpr std::u16string_view kCollectionClass = kCollectionText;
// A user has at most this many folders: one per subclass button.
inline constexpr int kMaxCollectionFolders = 18;

struct CollectedBlock {
    std::u16string id;  // dwg_id
    std::u16string filename;  // filename
    std::u16string url;  // dwg_url
    std::u16string info;  // dwg_info
    std::u16string path;  // <folder path>/<filename>
};

struct CollectionFolder {
    std::u16string id;  // favorites_id
    std::u16string name;  // favorites_name
    std::u16string path;  // <mirrorDir>/<name>
    std::vector<CollectedBlock> blocks;  // empty until the folder is opened
};

// By folder id, in the order of the ids as text; lookups walk it in that order.
using CollectionFolderMap = std::map<std::u16string, CollectionFolder>;

// "<userId>_收藏", the mirror's folder name, and <root>/<userId>_收藏.
std::u16string MirrorName(int32_t userId);
std::u16string MirrorDir(std::u16string_view root, int32_t userId);

// The id of the first folder of that name, or an empty string.
std::u16string FolderIdByName(const CollectionFolderMap& folders, std::u16string_view name);
// The id of the first block of that filename in the first folder of that name
// that holds one, or an empty string.
std::u16string BlockIdByNames(const CollectionFolderMap& folders, std::u16string_view folderName,
                              std::u16string_view blockName);
// From the folder named by the last directory of the path: the url of the
// block of that file name, or an empty string.
std::u16string BlockUrlByPath(const CollectionFolderMap& folders, std::u16string_view blockPath);
// The folder whose path is `directory`, or null.
const CollectionFolder* FolderByPath(const CollectionFolderMap& folders, std::u16string_view directory);

// The first "收藏夹%d", counting from 1, that no folder bears.
std::u16string DefaultFolderName(const CollectionFolderMap& folders);

}  // namespace marrowfin
