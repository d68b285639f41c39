#include "markup/start_tag_wide.h"

#include <cstdint>

#include "markup/markup_char_classes.h"
#include "markup/wide_masks.h"

namespace marrowfin {

using namespace markup_chars;

#if defined(__x86_64__)

bool WideTagScanAvailable() {
    static const bool has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                            __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("bmi2");
    return has;
}

namespace {

// The '>' and '=' signs and the quotes of 32 units from `base`. A window
// never reaches the NUL at the text's end.
struct TagWindow {
    size_t base = 0;
    uint32_t stops = 0;
    uint32_t doubleQuotes = 0;
    uint32_t singleQuotes = 0;
};

enum Marks { Stops, DoubleQuotes, SingleQuotes };

MARROWFIN_WIDE inline void LoadWindow(const char16_t* t, size_t at, TagWindow& w) {
    const __m512i v = _mm512_loadu_si512(t + at);
    w.base = at;
    w.stops = _mm512_cmpeq_epi16_mask(v, _mm512_set1_epi16(u'>')) | _mm512_cmpeq_epi16_mask(v, _mm512_set1_epi16(u'='));
    w.doubleQuotes = _mm512_cmpeq_epi16_mask(v, _mm512_set1_epi16(u'"'));
    w.singleQuotes = _mm512_cmpeq_epi16_mask(v, _mm512_set1_epi16(u'\''));
}

// Moves `p` to the first marked unit at or behind it, loading windows as
// the search goes on; false where a window would reach the text's end.
MARROWFIN_WIDE inline bool NextMarked(const char16_t* t, size_t length, size_t& p, TagWindow& w, Marks which) {
    for (;;) {
        const size_t rel = p - w.base;
        if (rel < 32) {
            const uint32_t marks = which == Stops ? w.stops : which == DoubleQuotes ? w.doubleQuotes : w.singleQuotes;
            const uint32_t ahead = marks >> rel;
            if (ahead != 0) {
                p += static_cast<size_t>(__builtin_ctz(ahead));
                return true;
            }
            p = w.base + 32;
        }
        if (p + 32 > length) return false;
        LoadWindow(t, p, w);
    }
}

// Every '=' outside values straight before a '"' and every opening '"'
// straight behind one: the values are then the pairs of double quotes and
// the tag ends at the first '>' outside them.
MARROWFIN_WIDE size_t UsualTagEnd(const char16_t* t, size_t length, size_t p) {
    uint64_t inside = 0;  // all ones when a value runs on from the last block
    uint64_t equalsBefore = 0;  // 1 when the last block ended on a '=' outside values
    for (size_t base = p; base + 64 <= length; base += 64) {
        const wide::Block block = wide::LoadBlock(t + base);
        const uint64_t quotes = wide::Marks(block, u'"');
        const uint64_t values = wide::PrefixXor(quotes) ^ inside;  // opening quote in, closing quote out
        const uint64_t equals = wide::Marks(block, u'=') & ~values;
        const uint64_t strays = (quotes & values) ^ (equals << 1 | equalsBefore);
        const uint64_t ends = wide::Marks(block, u'>') & ~values;
        if (ends != 0) {
            const unsigned end = static_cast<unsigned>(__builtin_ctzll(ends));
            if ((strays & ((uint64_t{1} << end) - 1)) != 0) return 0;
            return base + end;
        }
        if (strays != 0) return 0;
        inside = 0 - (values >> 63);
        equalsBefore = equals >> 63;
    }
    return 0;
}

}  // namespace

size_t UsualStartTagEnd(const char16_t* t, size_t length, size_t p) {
    return WideTagScanAvailable() ? UsualTagEnd(t, length, p) : 0;
}

// The plain reader's rules, step for step: outside values only '>' and '='
// matter; a '=' opens a value unless a '=' stands before it (blanks between);
// a quoted value runs to its own quote, an unquoted one to white space or '>'.
MARROWFIN_WIDE bool ReadStartTagWide(const char16_t* t, size_t length, size_t offset, MarkupNode& node) {
    size_t p = offset + 1;
    while (!Is(t[p], CNameEnd)) ++p;
    const size_t nameEnd = p;
    bool empty = false;
    if (t[p] == u'>') {
        // "<title>": no window needed.
        ++p;
    } else if (const size_t end = t[p - 1] == u'=' ? 0 : UsualTagEnd(t, length, p); end != 0) {
        // (A name ending in '=' would keep the first '=' behind it from
        // opening a value, which the usual road doesn't look for.)
        empty = t[end - 1] == u'/';
        p = end + 1;
    } else {
        TagWindow w;
        w.base = p + 32;  // no window loaded yet
        for (;;) {
            if (!NextMarked(t, length, p, w, Stops)) return false;
            if (t[p] == u'>') {
                empty = t[p - 1] == u'/';
                ++p;
                break;
            }
            size_t b = p - 1;
            while (IsMarkupSpace(t[b])) --b;  // stops on the tag name at the latest
            ++p;
            if (t[b] == u'=') continue;
            while (IsMarkupSpace(t[p])) ++p;
            const char16_t v = t[p];
            if (v == u'"' || v == u'\'') {
                ++p;
                if (!NextMarked(t, length, p, w, v == u'"' ? DoubleQuotes : SingleQuotes)) return false;
                ++p;
            } else if (v == 0) {
                return false;
            } else if (v != u'>' && v != u'=') {
                while (!Is(t[p], CValueEnd)) ++p;
                if (t[p] == 0) return false;
                if (t[p] == u'>') {
                    empty = t[p - 1] == u'/' && (IsMarkupSpace(t[p - 2]) || t[p - 2] == u'"' || t[p - 2] == u'\'');
                    ++p;
                    break;
                }
            }
        }
    }
    node.nameOffset = offset + 1;
    node.nameEnd = nameEnd;
    node.empty = empty;
    node.kind = NodeStartTag;
    node.length = p - offset;
    return true;
}

#else

bool WideTagScanAvailable() { return false; }
size_t UsualStartTagEnd(const char16_t*, size_t, size_t) { return 0; }
bool ReadStartTagWide(const char16_t*, size_t, size_t, MarkupNode&) { return false; }

#endif

}  // namespace marrowfin
