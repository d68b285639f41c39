#pragma once
// One node of the gallery tree: the root, a recent entry, a gallery, a
// common-use entry, a class or a block. A plain structure; children are
// allocated with new and belong to their parent (see DestroySubtree).

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace marrowfin {

// Name of the root node and of its folder under the document folder.
inline constexpr char16_t kRootName[] = u"Orsolen";
// ownerName of a common-use entry; lookups by path and filters skip it.
inline constexpr char16_t kCommonUseTag[] = u"DWGCommonUseClass";
inline constexpr char16_t kKindDir[] = u"dir";
inline constexpr char16_t kKindFile[] = u"file";

struct GalleryNode {
    GalleryNode() = default;
    GalleryNode(std::u16string ownerName, std::u16string path, std::u16string name, std::u16string kind, bool hidden,
                bool boutique, int32_t size);

    std::u16string ownerName;
    std::u16string name;
    std::u16string path;
    std::u16string kind;
    std::u16string remoteBase;
    int32_t version = 0;
    int32_t size = 0;
    uint32_t refreshTick = 0;
    bool hidden = false;
    bool boutique = false;
    GalleryNode* parent = nullptr;
    std::vector<GalleryNode*> dirChildren;
    std::vector<GalleryNode*> fileChildren;
};

// Frees a whole subtree, node included: for nodes that tests and callers own
// outright (a detached node, a candidate that was not attached).
struct SubtreeDeleter {
    void operator()(GalleryNode* node) const;
};
using OwnedNode = std::unique_ptr<GalleryNode, SubtreeDeleter>;

}  // namespace marrowfin
