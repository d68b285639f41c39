#include "markup/markup_document.h"

namespace marrowfin {

MarkupDocument::MarkupDocument() { Clear(); }
MarkupDocument::~MarkupDocument() = default;
MarkupDocument::MarkupDocument(MarkupDocument&&) noexcept = default;
MarkupDocument& MarkupDocument::operator=(MarkupDocument&&) noexcept = default;

void MarkupDocument::Clear() {
    m_text.reset(new char16_t[1]{0});
    m_length = 0;
    m_capacity = 0;
    m_result.clear();
    m_parent = m_main = m_child = 0;
    m_nextFree = 1;
    m_pages.clear();
    m_pages.emplace_back(new ElementRecord[8]{});
    m_firstPageCapacity = 8;
}

bool MarkupDocument::SetText(std::u16string_view) { Clear(); return false; }
bool MarkupDocument::SetText(std::nullptr_t) { Clear(); return false; }
bool MarkupDocument::LoadFile(std::u16string_view) { Clear(); return false; }
bool MarkupDocument::LoadBytes(std::string_view) { Clear(); return false; }
bool MarkupDocument::SaveFile(std::u16string_view) { return false; }
bool MarkupDocument::FindElement(std::u16string_view) { return false; }
bool MarkupDocument::FindChildElement(std::u16string_view) { return false; }
bool MarkupDocument::EnterElement() { return false; }
bool MarkupDocument::LeaveElement() { return false; }
void MarkupDocument::RewindMain() { m_main = m_child = 0; }
std::u16string MarkupDocument::GetElementText() const { return {}; }
std::u16string MarkupDocument::GetChildText() const { return {}; }
std::u16string MarkupDocument::GetAttribute(std::u16string_view) const { return {}; }
std::u16string MarkupDocument::GetChildAttribute(std::u16string_view) const { return {}; }
std::u16string MarkupDocument::GetTagName() const { return {}; }
std::u16string MarkupDocument::GetChildTagName() const { return {}; }
bool MarkupDocument::AddElement(std::u16string_view, std::u16string_view) { return false; }
bool MarkupDocument::SetAttribute(std::u16string_view, std::u16string_view) { return false; }
bool MarkupDocument::IsIllFormed() const { return false; }
uint32_t MarkupDocument::CodePageOfEncodingName(std::u16string_view) { return 0; }
void MarkupDocument::EncodeText(std::u16string_view, std::u16string&, bool) {}
void MarkupDocument::DecodeText(std::u16string_view, std::u16string&) {}

}  // namespace marrowfin
