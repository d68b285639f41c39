#include "platform/product_texts.h"
#include "search/local_search.h"

#include "platform/files.h"
#include "search/folder_files.h"
#include "store/gallery_node.h"
#include "store/gallery_tree.h"
#include "store/store_paths.h"

namespace marrowfin {

namespace {

// Hits of one class from which its folder is listed rather than each file asked for.
constexpr size_t kListedHits = 8;

SearchHit LocalHit(const GalleryNode& node, std::u16string path, int state) {
    SearchHit hit;
    hit.name = node.name.str();
    hit.klass = node.parent->parent->name.str();
    hit.subclass = node.parent->name.str();
    hit.path = std::move(path);
    hit.size = node.size;
    hit.boutique = node.parent->parent->boutique;
    hit.state = state;
    return hit;
}

bool HasGrandparent(const GalleryNode& node) { return node.parent && node.parent->parent; }

}  // namespace

std::vector<SearchHit> LocalBlockSearch(GalleryNode* root, std::u16string_view text,
                                        const std::map<std::u16string, int>& collected,
                                        std::vector<GalleryNode*>* nodes) {
    std::vector<SearchHit> rows;
    if (!root || text.empty()) return rows;
    std::vector<GalleryNode*> found;
    FilterBlocksFromTop(root, text, found);
    rows.reserve(found.size());
    // Hits come class by class. A class with many of them has its folder
    // listed (once per change of the folder) instead of a check per file.
    const GalleryNode* listedClass = nullptr;
    std::u16string classPath;
    std::shared_ptr<const FileNames> listed;
    for (size_t i = 0; i < found.size(); ++i) {
        GalleryNode* node = found[i];
        if (!HasGrandparent(*node)) continue;
        if (node->parent != listedClass && !node->HasOwnPath() && i + kListedHits <= found.size() &&
            found[i + kListedHits - 1]->parent == node->parent) {
            listedClass = node->parent;
            classPath = listedClass->Path();
            listed = SharedFolderFiles().FilesOf(classPath);
        }
        std::u16string path;
        if (node->parent == listedClass && !node->HasOwnPath()) {
            // The path follows from the class: composed in one piece.
            const std::u16string_view name = node->name.view();
            path.reserve(classPath.size() + 1 + name.size());
            path.append(classPath).append(1, u'/').append(name);
        } else {
            path = node->Path();
        }
        const bool present = node->parent == listedClass && !node->HasOwnPath() ? listed->count(node->name.view()) != 0
                                                                                : FileExists(path);
        if (!present) continue;
        const bool isCollected = node->parent->parent->name == kCollectionText || collected.count(path);
        rows.push_back(LocalHit(*node, std::move(path), isCollected ? RowCollected : RowFresh));
        if (nodes) nodes->push_back(node);
    }
    return rows;
}

std::vector<SearchHit> OldCollectionHits(GalleryNode* root, std::u16string_view text) {
    std::vector<SearchHit> rows;
    if (!root || text.empty()) return rows;
    GalleryNode* collection = FindNodeByPath(root, root->Path() + u"/" + kCollectionText);
    if (!collection) return rows;
    std::vector<GalleryNode*> found;
    FilterBlocks(collection, text, found);
    for (GalleryNode* node : found)
        if (HasGrandparent(*node)) rows.push_back(LocalHit(*node, node->Path(), RowCollected));
    return rows;
}

}  // namespace marrowfin
