#pragma once
// Text conversions at the edges of the library: UTF-8 and UTF-16 by hand,
// legacy code pages through iconv, and the case folding of the name filters.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marrowfin {

// Code page numbers as Windows names them.
enum CodePage : uint32_t {
    CpDefault = 0,  // the process's default: UTF-8 on this platform
    CpUtf16Le = 1200,
    CpUtf16Be = 1201,
    CpUtf32 = 65005,
    CpUtf8 = 65001,
};

// True when the bytes are well-formed UTF-8 by the markup document's rule:
// a lead byte 0xF8 or higher is invalid, continuation bytes need the high bit,
// a sequence cut short at the end is invalid.
bool IsValidUtf8(std::string_view bytes);

// Decodes one multi-byte UTF-8 sequence at `p` (lead byte 0x80 or above) with
// `avail` bytes left: its length and code point, or 0 when it is ill-formed
// (bad lead, cut short, bad continuation, overlong, surrogate, past U+10FFFF).
inline int DecodeUtf8Sequence(const unsigned char* p, size_t avail, uint32_t& cp) {
    const unsigned char b = p[0];
    const int len = b < 0xC0 ? 0 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : 0;
    if (len == 0 || static_cast<size_t>(len) > avail) return 0;
    cp = b & (0xFF >> (len + 1));
    for (int k = 1; k < len; ++k) {
        if ((p[k] & 0xC0) != 0x80) return 0;
        cp = (cp << 6) | (p[k] & 0x3F);
    }
    static constexpr uint32_t kMin[5] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kMin[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
    return len;
}

// Decodes UTF-8; ill-formed bytes become U+FFFD each. `lossy` reports that.
std::u16string Utf8ToUtf16(std::string_view bytes, bool* lossy = nullptr);
// Encodes UTF-16; a lone surrogate becomes U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text, bool* lossy = nullptr);

// Whether a code page can be converted here (known and supported by iconv).
bool IsCodePageSupported(uint32_t codePage);
// Bytes in a code page to UTF-16. 0 and 65001 are UTF-8. False when the code
// page is unknown; undecodable bytes become U+FFFD and set `lossy`.
bool CodePageToUtf16(std::string_view bytes, uint32_t codePage, std::u16string& out, bool* lossy = nullptr);
// UTF-16 to bytes in a code page; characters that do not fit become '?' and set `lossy`.
bool Utf16ToCodePage(std::u16string_view text, uint32_t codePage, std::string& out, bool* lossy = nullptr);
// The iconv name of a code page, or null when none is known.
const char* IconvNameOfCodePage(uint32_t codePage);

// Lower-cases ASCII and the Latin, Greek and Cyrillic letters; CJK is unchanged.
char16_t FoldCase(char16_t c);
std::u16string ToLowerFold(std::u16string_view text);
// Whether `haystack` contains `needle`, both case folded.
bool ContainsFolded(std::u16string_view haystack, std::u16string_view needle);

// The leading integer of a text: blanks and tabs, a sign, then digits; what
// follows is ignored and no digits give 0. The magnitude stops growing at
// `cap`, so that each reader applies its own overflow rule.
struct LeadingInteger {
    bool negative = false;
    int64_t magnitude = 0;
};
LeadingInteger ScanLeadingInteger(std::u16string_view text, int64_t cap);

}  // namespace marrowfin
