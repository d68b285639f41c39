#include "collection/name_rule.h"

namespace marrowfin {

namespace {

// Single characters that no name may hold, the full-width marks included.
constexpr std::u16string_view kRefused = u"?、\\/*\"<>|%:；;&.。";
// Marks refused only when doubled: one "…" or "—" is an ordinary character.
constexpr std::u16string_view kRefusedPairs[] = {u"……", u"——"};

}  // namespace

bool NamePassesRule(std::u16string_view name, NameUse use) {
    if (name.find_first_of(kRefused) != std::u16string_view::npos) return false;
    for (std::u16string_view pair : kRefusedPairs)
        if (name.find(pair) != std::u16string_view::npos) return false;
    return use != NameUse::TypedName || name.find(u'+') == std::u16string_view::npos;
}

}  // namespace marrowfin
