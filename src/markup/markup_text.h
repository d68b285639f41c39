#pragma once
// Character references and escaping of element text and attribute values.

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowfin {

// Appends the decoded text: named references of HTML 4 plus apos, decimal and
// hexadecimal references; anything that is no reference stays as it stands.
void DecodeMarkupText(std::u16string_view text, std::u16string& out);
// Appends the escaped text: < & > always, " and ' too for attribute values.
void EncodeMarkupText(std::u16string_view text, std::u16string& out, bool attribute);
// The code point of a named reference (without & and ;), 0 when unknown.
uint32_t NamedReferenceValue(std::u16string_view name);
// Number of entries in the named reference table.
size_t NamedReferenceCount();

}  // namespace marrowfin
