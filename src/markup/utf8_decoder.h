#pragma once
// UTF-8 to UTF-16 straight into a caller's buffer, dropping NUL bytes: the
// hot first step of loading a document. Ill-formed bytes become U+FFFD each,
// as the platform codec does.

#include <cstddef>

namespace marrowfin {

// `out` needs room for `length` units. Returns the units written; `nulls`
// receives the number of NUL bytes dropped.
size_t DecodeUtf8Into(const unsigned char* bytes, size_t length, char16_t* out, size_t& nulls);

}  // namespace marrowfin
