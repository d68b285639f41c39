#pragma once
// Character classes of the tokeniser's scans, shared by its plain and wide
// start-tag readers.

#include <cstdint>

namespace marrowfin::markup_chars {

// Classes of the ASCII range in one table; every unit from 0x80 up is an
// ordinary name and text character.
enum : uint8_t {
    CSpace = 1,  // tab, LF, CR, blank
    CNameEnd = 2,  // ends a start tag name: space, '/', '>', NUL
    CNameStart = 4,  // opens a start tag behind '<'
    CValueEnd = 8,  // ends an unquoted value: space, '>', NUL
};

inline constexpr auto kClasses = [] {
    struct Table {
        uint8_t c[128]{};
    } t;
    for (int c : {'\t', '\n', '\r', ' '}) t.c[c] |= CSpace | CNameEnd | CValueEnd;
    t.c[int{'/'}] |= CNameEnd;
    t.c[int{'>'}] |= CNameEnd | CValueEnd;
    t.c[0] |= CNameEnd | CValueEnd;
    for (int c = 'A'; c <= 'Z'; ++c) t.c[c] |= CNameStart;
    for (int c = 'a'; c < 128; ++c) t.c[c] |= CNameStart;
    t.c[int{'_'}] |= CNameStart;
    t.c[int{':'}] |= CNameStart;
    return t;
}();

inline bool Is(char16_t c, uint8_t cls) { return c < 128 ? (kClasses.c[c] & cls) != 0 : cls == CNameStart; }

}  // namespace marrowfin::markup_chars
