#include "store/gallery_node.h"

#include "store/gallery_tree.h"

namespace marrowfin {

GalleryNode::GalleryNode(std::u16string_view ownerName, std::u16string_view path, std::u16string_view name_,
                         std::u16string_view kind_, bool hidden_, bool boutique_, int32_t size_)
    : name(name_), m_path(path), m_owner(ownerName), size(size_), hidden(hidden_), boutique(boutique_),
      kind(kind_ == kKindFile ? NodeKind::File : NodeKind::Dir) {}

std::u16string GalleryNode::Path() const {
    if (m_ownPath || !parent) return m_ownPath ? m_path.str() : name.str();
    std::u16string out;
    const std::u16string parentPath = parent->Path();
    out.reserve(parentPath.size() + 1 + name.size());
    out.append(parentPath).append(1, u'/').append(name.view());
    return out;
}

bool GalleryNode::PathIs(std::u16string_view path) const {
    if (m_ownPath) return m_path == path;
    if (!parent) return name == path;
    const size_t n = name.size();
    if (path.size() < n + 1 || path.substr(path.size() - n) != name.view() || path[path.size() - n - 1] != u'/')
        return false;
    return parent->PathIs(path.substr(0, path.size() - n - 1));
}

void GalleryNode::SetPath(std::u16string_view path) {
    if (!m_ownPath) {
        if (remoteBase.empty()) remoteBase = DownloadUrl(*this);
        if (!m_ownOwner) SetOwnerName(OwnerName());
    }
    m_path = path;
    m_ownPath = true;
}

std::u16string_view GalleryNode::OwnerName() const {
    if (m_ownOwner || !parent) return m_owner;
    return parent->name;
}

void GalleryNode::SetOwnerName(std::u16string_view owner) {
    m_owner = owner;
    m_ownOwner = true;
}

void GalleryNode::ReleaseTexts() {
    name.clear();
    remoteBase.clear();
    m_path.clear();
    m_owner.clear();
}

GalleryNode* NewBlock(std::u16string_view name, bool hidden, bool boutique, int32_t size) {
    auto* block = new GalleryNode;
    block->name = name;
    block->hidden = hidden;
    block->boutique = boutique;
    block->size = size;
    block->kind = NodeKind::File;
    block->m_ownPath = false;
    block->m_ownOwner = false;
    return block;
}

std::u16string DownloadUrl(const GalleryNode& block) {
    if (!block.remoteBase.empty() || block.HasOwnPath() || !block.parent) return block.remoteBase.str();
    return block.parent->remoteBase + u"/" + block.name;
}

void SubtreeDeleter::operator()(GalleryNode* node) const {
    if (!node) return;
    DestroySubtree(node);
    delete node;
}

}  // namespace marrowfin
