// The document's storage: lifetime, the text buffer and the paged index.
// Parsing, reading and editing live in markup_parse.cpp, markup_read.cpp and
// markup_edit.cpp.

#include "markup/markup_document.h"

#include <algorithm>
#include <cstring>

namespace marrowfin {

MarkupDocument::MarkupDocument() { Clear(); }
MarkupDocument::~MarkupDocument() = default;
MarkupDocument::MarkupDocument(MarkupDocument&&) noexcept = default;
MarkupDocument& MarkupDocument::operator=(MarkupDocument&&) noexcept = default;

void MarkupDocument::Clear() {
    m_attributes.element = 0;
    m_text = AllocateText(1);
    m_text[0] = 0;
    m_length = 0;
    m_capacity = 1;
    m_parent = m_main = m_child = 0;
    m_mainKind = 0;
    m_flags = 0;
    m_pages.clear();
    ReserveRecords(8);
    m_nextFree = 1;
    Rec(0) = ElementRecord{};
}

void MarkupDocument::ReserveRecords(uint32_t count) {
    count = std::clamp<uint32_t>(count, 8, PageSize);
    m_pages.clear();
    m_pages.push_back(std::make_unique_for_overwrite<ElementRecord[]>(count));
    m_firstPageCapacity = count;
}

uint32_t MarkupDocument::NewRecordGrowing() {
    const uint32_t index = m_nextFree;
    if (index < PageSize) {
        if (index >= m_firstPageCapacity) {
            // The first page grows by half, up to a whole page.
            const uint32_t capacity = std::min<uint32_t>(PageSize, std::max<uint32_t>(index + index / 2, index + 8));
            auto page = std::make_unique_for_overwrite<ElementRecord[]>(capacity);
            std::memcpy(page.get(), m_pages[0].get(), sizeof(ElementRecord) * index);
            m_pages[0] = std::move(page);
            m_firstPageCapacity = capacity;
        }
    } else {
        const size_t page = index >> PageBits;
        if (page >= m_pages.size()) {
            if (m_pages.capacity() <= page) m_pages.reserve(page * 2 + 4);
            m_pages.push_back(std::make_unique_for_overwrite<ElementRecord[]>(PageSize));
        }
    }
    ++m_nextFree;
    return index;
}

void MarkupDocument::ReserveText(size_t length) {
    if (length + 1 <= m_capacity) return;
    // Room for a run of insertions, so that each one doesn't reallocate.
    const size_t capacity = length + length / 2 + 128;
    auto text = AllocateText(capacity);
    std::memcpy(text.get(), m_text.get(), sizeof(char16_t) * (m_length + 1));
    m_text = std::move(text);
    m_capacity = capacity;
}

bool MarkupDocument::IsIllFormed() const { return (Record(0).levelMarks & MarkIllFormed) != 0; }

bool MarkupDocument::WellFormedResult() const {
    const ElementRecord& doc = Record(0);
    return (doc.levelMarks & MarkIllFormed) == 0 && doc.firstChild != 0 && Record(doc.firstChild).nextSibling == 0;
}

}  // namespace marrowfin
