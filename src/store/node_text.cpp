#include "store/node_text.h"

#include <cstring>
#include <new>

#include "store/node_storage.h"

namespace marrowfin {

void* NodeText::Make(std::u16string_view text) {
    if (text.empty()) return nullptr;
    const auto length = static_cast<uint32_t>(text.size());
    void* block = node_storage::Allocate(4 + text.size() * sizeof(char16_t));
    std::memcpy(block, &length, 4);
    std::memcpy(Units(block), text.data(), text.size() * sizeof(char16_t));
    return block;
}

void NodeText::Free(void* block) {
    if (!block) return;
    uint32_t length = 0;
    std::memcpy(&length, block, 4);
    node_storage::Free(block, 4 + length * sizeof(char16_t));
}

std::u16string NodeText::Join(std::u16string_view a, std::u16string_view b) {
    std::u16string out;
    out.reserve(a.size() + b.size());
    out.append(a).append(b);
    return out;
}

}  // namespace marrowfin
