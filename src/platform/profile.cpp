#include "platform/profile.h"

#include <cstdlib>

#include "platform/ini_file.h"
#include "platform/text.h"

namespace marrowfin {

std::u16string ProfilePath() {
    // Read the environment each time: tests point it at a fresh folder.
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/') {
        base = xdg;
    } else {
        const char* home = std::getenv("HOME");
        base = std::string(home ? home : "") + "/.config";
    }
    return Utf8ToUtf16(base + "/Tarvex/Marrowfin.ini");
}

int32_t GetProfileInt(std::u16string_view section, std::u16string_view key, int32_t defaultValue) {
    return IniGetInt(ProfilePath(), section, key, defaultValue);
}

std::u16string GetProfileString(std::u16string_view section, std::u16string_view key,
                                std::u16string_view defaultValue) {
    return IniGetString(ProfilePath(), section, key, defaultValue);
}

bool WriteProfileInt(std::u16string_view section, std::u16string_view key, int32_t value) {
    return WriteProfileString(section, key, Utf8ToUtf16(std::to_string(value)));
}

bool WriteProfileString(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
    return IniWriteString(ProfilePath(), section, key, value);
}

}  // namespace marrowfin
