#pragma once
// Private-profile files: a small INI reader and writer with the Windows rules.
// Section and key names compare without case, a missing file, section or key
// gives the default, and a caller's buffer length cuts the value as
// GetPrivateProfileString would (at most length - 1 characters). UTF-8 on disk.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

// `bufferLength` 0 means no cut.
std::u16string IniGetString(std::u16string_view file, std::u16string_view section, std::u16string_view key,
                            std::u16string_view defaultValue, size_t bufferLength = 0);
// Leading decimal digits with an optional sign; no digits gives 0, as the framework does.
int32_t IniGetInt(std::u16string_view file, std::u16string_view section, std::u16string_view key, int32_t defaultValue);
// Sets a key, adding the section and the file as needed; the write is atomic
// and serialised with the other writes of the file in this process. False,
// and the file untouched, when the file is there but cannot be read.
bool IniWriteString(std::u16string_view file, std::u16string_view section, std::u16string_view key,
                    std::u16string_view value);

// One section read once, for a caller that looks up many of its keys in a
// row: each Get answers as IniGetString would have when the file was read.
class IniSection {
public:
    IniSection(std::u16string_view file, std::u16string_view section);
    std::u16string Get(std::u16string_view key, std::u16string_view defaultValue, size_t bufferLength = 0) const;

private:
    struct Entry {
        size_t keyBytes;  // keys of other UTF-8 lengths never match, as in IniGetString
        std::u16string foldedKey;
        std::u16string value;
    };
    std::vector<Entry> m_entries;  // in file order: the first of a key answers
};

// The parse rule of integer values shared with the profile.
int32_t ParseProfileInt(std::u16string_view text);

}  // namespace marrowfin
