#pragma once
// What the pickers keep for the length of the run.

#include <string>

namespace marrowfin {

// The kind last opened in each section: the next opening starts there.
extern std::u16string g_curBoutiqueKind;
extern std::u16string g_curGeneralKind;

}  // namespace marrowfin
