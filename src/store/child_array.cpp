#include "store/child_array.h"

#include <cstring>
#include <new>
#include <stdexcept>

namespace marrowfin {

GalleryNode*& ChildArray::at(size_t i) {
    if (i >= size()) throw std::out_of_range("ChildArray::at");
    return Slots()[i];
}

ChildArray::iterator ChildArray::insert(const_iterator at, GalleryNode* node) {
    const size_t index = static_cast<size_t>(at - begin());
    push_back(node);
    std::rotate(begin() + index, end() - 1, end());
    return begin() + index;
}

ChildArray::iterator ChildArray::erase(const_iterator at) {
    const size_t index = static_cast<size_t>(at - begin());
    std::move(begin() + index + 1, end(), begin() + index);
    --m_block->size;
    return begin() + index;
}

ChildArray::iterator ChildArray::erase(const_iterator first, const_iterator last) {
    const size_t index = static_cast<size_t>(first - begin());
    const size_t count = static_cast<size_t>(last - first);
    if (count == 0) return begin() + index;
    std::move(begin() + index + count, end(), begin() + index);
    m_block->size -= static_cast<uint32_t>(count);
    return begin() + index;
}

void ChildArray::Grow(size_t atLeast) {
    const size_t old = m_block ? m_block->capacity : 0;
    size_t capacity = old < 4 ? 4 : old * 2;
    if (capacity < atLeast) capacity = atLeast;
    auto* fresh = static_cast<Block*>(::operator new(sizeof(Block) + capacity * sizeof(GalleryNode*)));
    fresh->size = static_cast<uint32_t>(size());
    fresh->capacity = static_cast<uint32_t>(capacity);
    if (m_block) std::memcpy(static_cast<void*>(fresh + 1), Slots(), size() * sizeof(GalleryNode*));
    Release();
    m_block = fresh;
}

void ChildArray::Release() {
    if (m_block) ::operator delete(std::exchange(m_block, nullptr));
}

}  // namespace marrowfin
