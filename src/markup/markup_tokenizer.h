#pragma once
// Reads one node of markup at a time from a NUL-terminated UTF-16 text.

#include <cstddef>
#include <cstdint>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace marrowfin {

// How start tags can be read 64 units at a time on this processor: with
// AVX-512, with AVX2, or not at all (the plain reader only).
enum class WideTags { None, Avx2, Avx512 };
WideTags WideTagLevel();

enum MarkupNodeKind : int {
    NodeEndTag = 0,
    NodeStartTag = 1,
    NodeText = 2,
    NodeWhiteSpace = 4,
    NodeCData = 8,
    NodeProcessingInstruction = 16,
    NodeComment = 32,
    NodeDoctype = 64,
    NodeSyntaxError = -1,
    NodeEndOfText = -2,
};

struct MarkupNode {
    int kind = NodeEndOfText;
    size_t offset = 0;
    size_t length = 0;
    size_t nameOffset = 0;  // tags: the tag name
    size_t nameEnd = 0;
    bool empty = false;  // start tag closed by "/>"
};

inline bool IsMarkupSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; }

// The first `c` in t[pos, end), or `end` when there is none: eight units at a
// time where SSE2 is there, never reading at or past `end`.
inline size_t FindUnitBefore(const char16_t* t, size_t pos, size_t end, char16_t c) {
#if defined(__SSE2__)
    const __m128i needle = _mm_set1_epi16(static_cast<short>(c));
    for (; pos + 8 <= end; pos += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t + pos));
        const int hits = _mm_movemask_epi8(_mm_cmpeq_epi16(v, needle));
        if (hits != 0) return pos + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(hits))) / 2;
    }
#endif
    while (pos < end && t[pos] != c) ++pos;
    return pos;
}

// The first `a` or `b` in t[pos, end), or `end`; as FindUnitBefore.
inline size_t FindEitherBefore(const char16_t* t, size_t pos, size_t end, char16_t a, char16_t b) {
#if defined(__SSE2__)
    const __m128i first = _mm_set1_epi16(static_cast<short>(a));
    const __m128i second = _mm_set1_epi16(static_cast<short>(b));
    for (; pos + 8 <= end; pos += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t + pos));
        const int hits = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(v, first), _mm_cmpeq_epi16(v, second)));
        if (hits != 0) return pos + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(hits))) / 2;
    }
#endif
    while (pos < end && t[pos] != a && t[pos] != b) ++pos;
    return pos;
}

class MarkupTokenizer {
public:
    // `text[length]` must be 0 and no earlier unit may be 0: the NUL is the
    // sentinel that ends every scan. Syntax error records go to `records`
    // when it is not null. `wide` lets start tags be read 64 units at a time
    // where the processor can; both roads give the same nodes.
    MarkupTokenizer(const char16_t* text, size_t length, std::u16string* records, bool wide = true)
        : MarkupTokenizer(text, length, records, wide ? WideTagLevel() : WideTags::None) {}
    MarkupTokenizer(const char16_t* text, size_t length, std::u16string* records, WideTags wide)
        : m_text(text), m_length(length), m_records(records), m_wide(wide) {}

    void Read(size_t offset, MarkupNode& node) {
        // Tags, most nodes of a document, go straight to their readers.
        if (m_text[offset] == u'<') {
            const char16_t c1 = m_text[offset + 1];
            if (c1 == u'/' || IsStartTagNameStart(c1)) {
                node.offset = offset;
                node.empty = false;
                return c1 == u'/' ? ReadEndTag(offset, node) : ReadStartTag(offset, node);
            }
        }
        ReadOther(offset, node);
    }

private:
    // Letters, '_', ':' and every unit from 'a' up open a start tag behind '<'.
    static bool IsStartTagNameStart(char16_t c) {
        return c >= u'a' || (c >= u'A' && c <= u'Z') || c == u'_' || c == u':';
    }
    void ReadOther(size_t offset, MarkupNode& node);
    void ReadStartTag(size_t offset, MarkupNode& node);
    bool TakeUsualTag(size_t offset, size_t nameEnd, MarkupNode& node);
    void ReadEndTag(size_t offset, MarkupNode& node);
    void ReadTerminated(size_t offset, size_t minEnd, const char16_t* terminator, int kind,
                        const char16_t* unterminatedType, MarkupNode& node);
    void ReadDoctype(size_t offset, MarkupNode& node);
    void SyntaxError(size_t offset, size_t resumeAt, const char16_t* record, MarkupNode& node);
    void Unterminated(size_t offset, const char16_t* type, MarkupNode& node);
    size_t FindUnit(size_t from, char16_t c) const;

    const char16_t* m_text;
    size_t m_length;
    std::u16string* m_records;
    WideTags m_wide;
    static constexpr int kUsualMissesBeforeRest = 8;
    static constexpr int kUsualRest = 256;  // start tags
    int m_usualMisses = 0;
    int m_usualRest = 0;
};

}  // namespace marrowfin
