#include "store/gallery_node.h"

#include <utility>

#include "store/gallery_tree.h"

namespace marrowfin {

GalleryNode::GalleryNode(std::u16string ownerName_, std::u16string path_, std::u16string name_, std::u16string kind_,
                         bool hidden_, bool boutique_, int32_t size_)
    : ownerName(std::move(ownerName_)),
      name(std::move(name_)),
      path(std::move(path_)),
      kind(std::move(kind_)),
      size(size_),
      hidden(hidden_),
      boutique(boutique_) {}

void SubtreeDeleter::operator()(GalleryNode* node) const {
    if (!node) return;
    DestroySubtree(node);
    delete node;
}

}  // namespace marrowfin
