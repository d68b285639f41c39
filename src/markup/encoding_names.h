#pragma once
// Encoding names (as declared in documents) to code pages.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace marrowfin {

struct EncodingName {
    const char16_t* name;  // lower case
    uint32_t codePage;
};

// 0 for an empty, unknown or overlong name (the default code page); 65005
// for a name beginning with "UTF-32".
uint32_t CodePageOfEncodingName(std::u16string_view name);

// The table, in its own order, and the names of one bucket of it.
std::span<const EncodingName> EncodingNames();
std::span<const EncodingName> EncodingNamesInBucket(size_t bucket);
// The bucket of a name: the sum of the code units of the name folded to
// lower case, modulo EncodingBucketCount.
size_t EncodingNameBucket(std::u16string_view name);
inline constexpr size_t EncodingBucketCount = 155;
size_t EncodingNameCount();
size_t EncodingCodePageCount();

// A canonical name for records: "UTF-8", "UTF-16LE", ..., or null.
const char16_t* CanonicalEncodingName(uint32_t codePage);

}  // namespace marrowfin
