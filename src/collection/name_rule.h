#pragma once
// Which names a user may give a collected block or a collection folder. The
// service stores them as file and directory names, so characters that a path
// or the service's query can't carry are refused before any request.

#include <string_view>

namespace marrowfin {

enum class NameUse {
    CollectedBlock,  // the collect dialog's verdict (shown, not enforced)
    TypedName,  // a folder or block name typed in a name dialog: "+" is refused too
};

// True when `name` holds none of the refused characters or marks.
bool NamePassesRule(std::u16string_view name, NameUse use);

// The line the collect dialog shows under a name that fails.
inline constexpr std::u16string_view kNameRuleLine = u"不可包含字符 \\ /:*?\"<>| %";

}  // namespace marrowfin
