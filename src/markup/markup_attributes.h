#pragma once
// Scans the attributes of one tag in place, without copying anything.

#include <cstddef>
#include <string_view>

#include "markup/markup_tokenizer.h"

namespace marrowfin {

struct AttributeSpan {
    size_t nameBegin = 0;
    size_t nameEnd = 0;
    size_t valueBegin = 0;  // the value without its quotes
    size_t valueEnd = 0;
    size_t spanBegin = 0;  // the value with its quotes, empty when there is no '='
    size_t spanEnd = 0;
    bool hasEquals = false;
    bool reference = false;  // the value holds a '&': it needs decoding
};

// Blanks, '/', '=', '>' and '?' all lie at or below '?': letters and CJK are
// decided by the first compare.
inline bool IsAttributeWordEnd(char16_t c) {
    return c <= u'?' && (IsMarkupSpace(c) || c == u'/' || c == u'=' || c == u'>' || c == u'?');
}

// The first word end in t[p, end), or `end`: eight units at a time where
// SSE2 is there, each unit at or below '?' then looked at on its own, so
// that names of any length cost a branch or two rather than one per unit.
inline size_t FindAttributeWordEnd(const char16_t* t, size_t p, size_t end) {
#if defined(__SSE2__)
    const __m128i top = _mm_set1_epi16(u'?');
    for (; p + 8 <= end; p += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t + p));
        // Units at or below '?' saturate to zero.
        unsigned low =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_subs_epu16(v, top), _mm_setzero_si128())));
        while (low != 0) {
            const size_t at = p + static_cast<size_t>(__builtin_ctz(low)) / 2;
            if (IsAttributeWordEnd(t[at])) return at;
            low &= ~(3u << (2 * (at - p)));  // both bytes of the unit
        }
    }
#endif
    while (p < end && !IsAttributeWordEnd(t[p])) ++p;
    return p;
}

// The position behind the tag name that starts at `begin` (behind the '<').
inline size_t SkipTagName(const char16_t* t, size_t begin, size_t end) { return FindAttributeWordEnd(t, begin, end); }

// Reads the attribute that follows position `p` of the tag text ending at
// `end`; false when the attributes are over. `p` moves behind the attribute,
// so a scan can stop after any attribute and go on later from there.
inline bool NextAttribute(const char16_t* t, size_t& at, size_t end, AttributeSpan& a) {
    size_t p = at;
    for (;;) {
        while (p < end && IsMarkupSpace(t[p])) ++p;
        at = p;
        if (p >= end) return false;
        const char16_t c = t[p];
        if (c == u'>' || c == u'/' || c == u'?') return false;
        if (c != u'=') break;
        ++p;  // a '=' without a name before it
    }
    a.nameBegin = p;
    p = FindAttributeWordEnd(t, p, end);
    a.nameEnd = p;
    size_t q = p;
    while (q < end && IsMarkupSpace(t[q])) ++q;
    if (q < end && t[q] == u'=') {
        ++q;
        while (q < end && IsMarkupSpace(t[q])) ++q;
        a.hasEquals = true;
        a.spanBegin = q;
        if (q < end && (t[q] == u'"' || t[q] == u'\'')) {
            const char16_t quote = t[q];
            a.valueBegin = ++q;
            // Each quote as a constant: a quote read from the text went
            // through the stack into the vector register, a store the load
            // could not take over, stalling every value read. The '&' is
            // looked for in the same pass, so that a reader can take the
            // value as it stands without a second look.
            q = quote == u'"' ? FindEitherBefore(t, q, end, u'"', u'&') : FindEitherBefore(t, q, end, u'\'', u'&');
            a.reference = q < end && t[q] == u'&';
            if (a.reference) q = quote == u'"' ? FindUnitBefore(t, q, end, u'"') : FindUnitBefore(t, q, end, u'\'');
            a.valueEnd = q;
            if (q < end) ++q;
        } else {
            a.valueBegin = q;
            bool reference = false;
            while (q < end && !IsMarkupSpace(t[q]) && t[q] != u'>') reference |= t[q++] == u'&';
            a.reference = reference;
            a.valueEnd = q;
        }
        a.spanEnd = q;
        at = q;
    } else {
        // A name without '=' is its own value.
        a.hasEquals = false;
        a.valueBegin = a.nameBegin;
        a.valueEnd = a.nameEnd;
        a.reference = FindUnitBefore(t, a.nameBegin, a.nameEnd, u'&') != a.nameEnd;
        a.spanBegin = a.spanEnd = a.nameEnd;
        at = p;
    }
    return true;
}

// Calls `visit(span)` for each attribute of the tag text t[begin, end), where
// `begin` is behind the '<' (or "<?"); stops when `visit` returns true.
// Returns the position behind the tag name or the last attribute.
template <class Visit>
size_t ScanAttributes(const char16_t* t, size_t begin, size_t end, Visit&& visit) {
    size_t p = SkipTagName(t, begin, end);
    size_t lastTokenEnd = p;
    AttributeSpan a;
    while (NextAttribute(t, p, end, a)) {
        lastTokenEnd = p;
        if (visit(a)) break;
    }
    return lastTokenEnd;
}

}  // namespace marrowfin
