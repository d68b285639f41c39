#pragma once
// One node of the gallery tree: the root, a recent entry, a gallery, a
// common-use entry, a class or a block. Children are allocated with new and
// belong to their parent (see DestroySubtree).
//
// A library holds up to some 300,000 blocks, so a block read in bulk (NewBlock)
// stores only its name: its path, owner and download URL follow from its
// class. Every other node stores its path and owner as given.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "store/child_array.h"
#include "store/node_storage.h"
#include "store/node_text.h"

namespace marrowfin {

// Name of the root node and of its folder under the document folder.
inline constexpr char16_t kRootName[] = u"Orsolen";
// ownerName of a common-use entry; lookups by path and filters skip it.
inline constexpr char16_t kCommonUseTag[] = u"DWGCommonUseClass";
inline constexpr char16_t kKindDir[] = u"dir";
inline constexpr char16_t kKindFile[] = u"file";

enum class NodeKind : uint8_t { Dir, File };

struct GalleryNode {
    GalleryNode() = default;
    // A node whose path and owner are stored as given; `kind` is kKindFile
    // for a file, anything else is a dir.
    GalleryNode(std::u16string_view ownerName, std::u16string_view path, std::u16string_view name,
                std::u16string_view kind, bool hidden, bool boutique, int32_t size);

    // The stored path, or else the parent's path + "/" + name.
    // Nodes are made and freed by the hundred thousand: they live in the
    // tree's own storage.
    static void* operator new(size_t bytes) { return node_storage::Allocate(bytes); }
    static void operator delete(void* node, size_t bytes) { node_storage::Free(node, bytes); }

    std::u16string Path() const;
    // Compares Path() with `path` without building it.
    bool PathIs(std::u16string_view path) const;
    // Stores a path of its own; a block read in bulk first keeps its owner
    // and URL, which would otherwise follow the new path.
    void SetPath(std::u16string_view path);
    bool HasOwnPath() const { return m_ownPath; }
    // The path as stored; empty for a node whose path follows from its parent.
    std::u16string_view StoredPath() const { return m_path; }
    // The stored owner, or else the parent's name.
    std::u16string_view OwnerName() const;
    void SetOwnerName(std::u16string_view owner);
    // Frees the node's texts (DestroySubtree).
    void ReleaseTexts();

    NodeText name;
    // A class's download base. A block read in bulk leaves it empty: see DownloadUrl.
    NodeText remoteBase;
    GalleryNode* parent = nullptr;
    ChildArray dirChildren;
    ChildArray fileChildren;

private:
    NodeText m_path;
    NodeText m_owner;

public:
    int32_t version = 0;
    int32_t size = 0;
    uint32_t refreshTick = 0;
    bool hidden = false;
    bool boutique = false;
    NodeKind kind = NodeKind::Dir;

private:
    friend GalleryNode* NewBlock(std::u16string_view name, bool hidden, bool boutique, int32_t size);
    bool m_ownPath : 1 = true;
    bool m_ownOwner : 1 = true;
};

// A block read in bulk from a reply or a catalogue: only the name is stored;
// path, owner and URL come from the class it is attached to.
GalleryNode* NewBlock(std::u16string_view name, bool hidden, bool boutique, int32_t size);
// Where a block is downloaded from: its own remoteBase when it has one, else,
// for a block read in bulk, the class's remoteBase + "/" + name.
std::u16string DownloadUrl(const GalleryNode& block);

// Frees a whole subtree, node included: for nodes that tests and callers own
// outright (a detached node, a candidate that was not attached).
struct SubtreeDeleter {
    void operator()(GalleryNode* node) const;
};
using OwnedNode = std::unique_ptr<GalleryNode, SubtreeDeleter>;

}  // namespace marrowfin
