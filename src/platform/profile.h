#pragma once
// The per-user profile: Tarvex/Marrowfin.ini under $XDG_CONFIG_HOME (default
// ~/.config), standing in for the registry key Software\Tarvex\Marrowfin.
// Every read and write goes to the file, so another process sees it at once.

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowfin {

inline constexpr char16_t kOptionsSection[] = u"options";

std::u16string ProfilePath();
int32_t GetProfileInt(std::u16string_view section, std::u16string_view key, int32_t defaultValue);
std::u16string GetProfileString(std::u16string_view section, std::u16string_view key, std::u16string_view defaultValue);
bool WriteProfileInt(std::u16string_view section, std::u16string_view key, int32_t value);
bool WriteProfileString(std::u16string_view section, std::u16string_view key, std::u16string_view value);

// The section every setting of the system lives in.
inline int32_t GetOptionInt(std::u16string_view key, int32_t defaultValue) {
    return GetProfileInt(kOptionsSection, key, defaultValue);
}
inline std::u16string GetOptionString(std::u16string_view key, std::u16string_view defaultValue) {
    return GetProfileString(kOptionsSection, key, defaultValue);
}
inline bool WriteOptionInt(std::u16string_view key, int32_t value) {
    return WriteProfileInt(kOptionsSection, key, value);
}
inline bool WriteOptionString(std::u16string_view key, std::u16string_view value) {
    return WriteProfileString(kOptionsSection, key, value);
}

}  // namespace marrowfin
