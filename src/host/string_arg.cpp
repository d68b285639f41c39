#include "host/string_arg.h"

#include "platform/paths.h"

namespace marrowfin {

std::u16string TakeHostText(const char16_t* text) { return text ? std::u16string(text) : std::u16string(); }

std::u16string TakeHostPath(const char16_t* text) { return ToLibrarySeparators(TakeHostText(text)); }

}  // namespace marrowfin
