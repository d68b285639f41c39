#pragma once
// Start tags read with AVX-512 bit masks, where the plain reader looks at
// every unit between the values. Most tags are name="value" lists, whose end
// is found 64 units at a time from the pairs of double quotes; the others go
// by the plain reader's rules through windows of 32 units.

#include <cstddef>

#include "markup/markup_tokenizer.h"

namespace marrowfin {

// The start tag at `offset` of the NUL-terminated text, with the node the
// plain reader gives; false, nothing written, when the tag may reach within
// 32 units of the text's end or is broken there, which the plain reader then
// reads and reports. Only where WideTagScanAvailable().
bool ReadStartTagWide(const char16_t* t, size_t length, size_t offset, MarkupNode& node);

// The position of the '>' that ends a usual start tag, read 64 units at a
// time from `p` behind its name: every '=' outside values straight before a
// '"' and every value's opening '"' straight behind one, so that values are
// pairs of double quotes. 0 where the tag is not of this kind before its end
// or the search would reach within 64 units of the text's end. The unit
// before `p` must not be a '=' (it would keep the first '=' from opening a
// value).
size_t UsualStartTagEnd(const char16_t* t, size_t length, size_t p);

}  // namespace marrowfin
