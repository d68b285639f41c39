#pragma once
// Strings handed to an export are copied at once; the host keeps its buffer.
// Paths and routes from the host may use '\': the library uses '/'.

#include <string>

namespace marrowfin {

std::u16string TakeHostText(const char16_t* text);
std::u16string TakeHostPath(const char16_t* text);

}  // namespace marrowfin
