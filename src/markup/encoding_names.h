#pragma once
// Encoding names (as declared in documents) to code pages.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace marrowfin {

// 0 for an empty, unknown or overlong name (the default code page); 65005
// for a name beginning with "UTF-32".
uint32_t CodePageOfEncodingName(std::u16string_view name);
size_t EncodingNameCount();
size_t EncodingCodePageCount();
// A canonical name for records: "UTF-8", "UTF-16LE", ..., or null.
const char16_t* CanonicalEncodingName(uint32_t codePage);

}  // namespace marrowfin
