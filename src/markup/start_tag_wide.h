#pragma once
// The end of a start tag found from bit masks of 64 units at a time
// (AVX-512 or AVX2), where the plain reader looks at every unit between the
// values. Most tags are name="value" lists, whose end follows from the pairs
// of double quotes alone; the others are left to the plain reader.

#include <cstddef>

#include "markup/markup_tokenizer.h"

namespace marrowfin {

// The position of the '>' that ends a usual start tag, read 64 units at a
// time from `p` behind its name: every '=' outside values straight before a
// '"' and every value's opening '"' straight behind one, so that values are
// pairs of double quotes. 0 where the tag is not of this kind before its end
// or the search would reach within 64 units of the text's end, and where
// the name ends in '='. `level` must not be above WideTagLevel().
size_t UsualStartTagEnd(const char16_t* t, size_t length, size_t p, WideTags level);

}  // namespace marrowfin
