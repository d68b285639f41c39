#pragma once
// A text held by a tree node: one pointer to a single heap block that holds
// the length and the UTF-16 units; null for the empty text. A library holds
// hundreds of thousands of nodes, so a name costs 8 bytes in the node and one
// small allocation, instead of a 32-byte string with its own buffer.

#include <compare>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace marrowfin {

class NodeText {
public:
    NodeText() = default;
    NodeText(std::u16string_view text) { m_block = Make(text); }
    NodeText(const std::u16string& text) : NodeText(std::u16string_view(text)) {}
    NodeText(const char16_t* text) : NodeText(std::u16string_view(text)) {}
    NodeText(const NodeText& other) : NodeText(other.view()) {}
    NodeText(NodeText&& other) noexcept : m_block(std::exchange(other.m_block, nullptr)) {}
    ~NodeText() { Free(m_block); }

    NodeText& operator=(const NodeText& other) {
        if (this != &other) Assign(other.view());
        return *this;
    }
    NodeText& operator=(NodeText&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }

    size_t size() const { return m_block ? *reinterpret_cast<const uint32_t*>(m_block) : 0; }
    bool empty() const { return m_block == nullptr; }
    const char16_t* data() const { return m_block ? Units(m_block) : u""; }
    const char16_t* begin() const { return data(); }
    const char16_t* end() const { return data() + size(); }
    std::u16string_view view() const { return {data(), size()}; }
    std::u16string str() const { return std::u16string(view()); }
    operator std::u16string_view() const { return view(); }
    // A copy, for the many places that keep a name as a std::u16string.
    operator std::u16string() const { return str(); }
    // Frees the block: the text becomes empty.
    void clear() { Free(std::exchange(m_block, nullptr)); }

    // The NodeText-with-NodeText forms are templates so that they take no
    // conversions and leave the text-with-anything forms unambiguous.
    template <std::same_as<NodeText> T>
    friend bool operator==(const NodeText& a, const T& b) {
        return a.view() == b.view();
    }
    friend bool operator==(const NodeText& a, std::u16string_view b) { return a.view() == b; }
    template <std::same_as<NodeText> T>
    friend std::strong_ordering operator<=>(const NodeText& a, const T& b) {
        return a.view() <=> b.view();
    }
    friend std::strong_ordering operator<=>(const NodeText& a, std::u16string_view b) { return a.view() <=> b; }

    template <std::same_as<NodeText> T>
    friend std::u16string operator+(const NodeText& a, const T& b) {
        return Join(a.view(), b.view());
    }
    friend std::u16string operator+(const NodeText& a, std::u16string_view b) { return Join(a.view(), b); }
    friend std::u16string operator+(std::u16string_view a, const NodeText& b) { return Join(a, b.view()); }

private:
    // The block: a 32-bit length, then the units (no terminator).
    static char16_t* Units(void* block) { return reinterpret_cast<char16_t*>(static_cast<char*>(block) + 4); }
    static const char16_t* Units(const void* block) {
        return reinterpret_cast<const char16_t*>(static_cast<const char*>(block) + 4);
    }
    static void* Make(std::u16string_view text);
    static void Free(void* block);
    static std::u16string Join(std::u16string_view a, std::u16string_view b);
    void Assign(std::u16string_view text) {
        void* fresh = Make(text);  // before freeing: `text` may be this text
        Free(std::exchange(m_block, fresh));
    }

    void* m_block = nullptr;
};

}  // namespace marrowfin
