#pragma once
// The children of a tree node, of one kind: a vector of pointers squeezed into
// one pointer (the count and capacity live in the heap block, in front of the
// slots), null when there are none. Most nodes are blocks without children,
// so this saves 16 bytes per node and per kind over a std::vector.

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace marrowfin {

struct GalleryNode;

class ChildArray {
public:
    using value_type = GalleryNode*;
    using iterator = GalleryNode**;
    using const_iterator = GalleryNode* const*;

    ChildArray() = default;
    ChildArray(std::initializer_list<GalleryNode*> nodes) { Append(nodes.begin(), nodes.size()); }
    ChildArray(const std::vector<GalleryNode*>& nodes) { Append(nodes.data(), nodes.size()); }
    ChildArray(const ChildArray& other) { Append(other.begin(), other.size()); }
    ChildArray(ChildArray&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    ~ChildArray() { Release(); }
    ChildArray& operator=(const ChildArray& other) {
        if (this != &other) {
            clear();
            Append(other.begin(), other.size());
        }
        return *this;
    }
    ChildArray& operator=(ChildArray&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }

    size_t size() const { return m_block ? m_block->size : 0; }
    bool empty() const { return size() == 0; }
    iterator begin() { return m_block ? Slots() : nullptr; }
    iterator end() { return begin() + size(); }
    const_iterator begin() const { return m_block ? Slots() : nullptr; }
    const_iterator end() const { return begin() + size(); }
    GalleryNode** data() { return begin(); }
    GalleryNode* const* data() const { return begin(); }
    GalleryNode*& operator[](size_t i) { return Slots()[i]; }
    GalleryNode* operator[](size_t i) const { return Slots()[i]; }
    GalleryNode*& at(size_t i);
    GalleryNode* at(size_t i) const { return const_cast<ChildArray*>(this)->at(i); }
    GalleryNode*& front() { return Slots()[0]; }
    GalleryNode* front() const { return Slots()[0]; }
    GalleryNode*& back() { return Slots()[m_block->size - 1]; }
    GalleryNode* back() const { return Slots()[m_block->size - 1]; }

    void push_back(GalleryNode* node) {
        if (!m_block || m_block->size == m_block->capacity) Grow(size() + 1);
        Slots()[m_block->size++] = node;
    }
    void pop_back() { --m_block->size; }
    iterator insert(const_iterator at, GalleryNode* node);
    iterator erase(const_iterator at);
    iterator erase(const_iterator first, const_iterator last);
    void reserve(size_t count) {
        if (count > (m_block ? m_block->capacity : 0)) Grow(count);
    }
    // Frees the slots too: a cleared node costs nothing.
    void clear() { Release(); }
    void shrink_to_fit() {
        if (empty()) Release();
    }
    void swap(ChildArray& other) noexcept { std::swap(m_block, other.m_block); }

    operator std::vector<GalleryNode*>() const { return std::vector<GalleryNode*>(begin(), end()); }
    friend bool operator==(const ChildArray& a, const std::vector<GalleryNode*>& b) {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
    }
    friend bool operator==(const ChildArray& a, const ChildArray& b) {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
    }

private:
    struct Block {
        uint32_t size;
        uint32_t capacity;
    };
    // The slots follow the block's head.
    GalleryNode** Slots() const { return reinterpret_cast<GalleryNode**>(m_block + 1); }
    void Grow(size_t atLeast);
    void Append(GalleryNode* const* nodes, size_t count) {
        if (count == 0) return;
        reserve(size() + count);
        for (size_t i = 0; i < count; ++i) Slots()[m_block->size++] = nodes[i];
    }
    void Release();

    Block* m_block = nullptr;
};

}  // namespace marrowfin
