#include "store/node_text.h"

#include <cstring>
#include <new>

namespace marrowfin {

void* NodeText::Make(std::u16string_view text) {
    if (text.empty()) return nullptr;
    const auto length = static_cast<uint32_t>(text.size());
    void* block = ::operator new(4 + text.size() * sizeof(char16_t));
    std::memcpy(block, &length, 4);
    std::memcpy(Units(block), text.data(), text.size() * sizeof(char16_t));
    return block;
}

void NodeText::Free(void* block) {
    if (block) ::operator delete(block);
}

std::u16string NodeText::Join(std::u16string_view a, std::u16string_view b) {
    std::u16string out;
    out.reserve(a.size() + b.size());
    out.append(a).append(b);
    return out;
}

}  // namespace marrowfin
