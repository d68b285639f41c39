#pragma once
// Nodes looked up for a page (the blocks in view, the local hits), kept across
// events. The owner raises the store's epoch whenever it frees nodes, and a
// list from an older epoch answers null, so a queued command never reads a
// freed node; the holder looks its nodes up again.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/gallery_store.h"

namespace marrowfin {

struct GalleryNode;

class NodeList {
public:
    void Reset(const GalleryStore& store) {
        m_nodes.clear();
        m_epoch = store.treeEpoch;
    }
    void Add(GalleryNode* node) { m_nodes.push_back(node); }
    size_t size() const { return m_nodes.size(); }
    bool empty() const { return m_nodes.empty(); }
    void clear() { m_nodes.clear(); }
    bool Valid(const GalleryStore& store) const { return m_epoch == store.treeEpoch; }
    // Null out of range or when the tree has freed nodes since the list was made.
    GalleryNode* At(const GalleryStore& store, size_t index) const {
        return index < m_nodes.size() && Valid(store) ? m_nodes[index] : nullptr;
    }

private:
    std::vector<GalleryNode*> m_nodes;
    uint64_t m_epoch = 0;
};

}  // namespace marrowfin
