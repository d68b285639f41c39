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
    size_t spanBegin = 0;   // the value with its quotes, empty when there is no '='
    size_t spanEnd = 0;
    bool hasEquals = false;
};

// Blanks, '/', '=', '>' and '?' all lie at or below '?': letters and CJK are
// decided by the first compare.
inline bool IsAttributeWordEnd(char16_t c) {
    return c <= u'?' && (IsMarkupSpace(c) || c == u'/' || c == u'=' || c == u'>' || c == u'?');
}

// The position behind the tag name that starts at `begin` (behind the '<').
inline size_t SkipTagName(const char16_t* t, size_t begin, size_t end) {
    size_t p = begin;
    while (p < end && !IsAttributeWordEnd(t[p])) ++p;
    return p;
}

// Reads the attribute that follows position `p` of the tag text ending at
// `end`; false when the attributes are over. `p` moves behind the attribute,
// so a scan can stop after any attribute and go on later from there.
inline bool NextAttribute(const char16_t* t, size_t& p, size_t end, AttributeSpan& a) {
    for (;;) {
        while (p < end && IsMarkupSpace(t[p])) ++p;
        if (p >= end) return false;
        const char16_t c = t[p];
        if (c == u'>' || c == u'/' || c == u'?') return false;
        if (c != u'=') break;
        ++p;  // a '=' without a name before it
    }
    a.nameBegin = p;
    while (p < end && !IsAttributeWordEnd(t[p])) ++p;
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
            q = FindUnitBefore(t, q, end, quote);
            a.valueEnd = q;
            if (q < end) ++q;
        } else {
            a.valueBegin = q;
            while (q < end && !IsMarkupSpace(t[q]) && t[q] != u'>') ++q;
            a.valueEnd = q;
        }
        a.spanEnd = q;
        p = q;
    } else {
        // A name without '=' is its own value.
        a.hasEquals = false;
        a.valueBegin = a.nameBegin;
        a.valueEnd = a.nameEnd;
        a.spanBegin = a.spanEnd = a.nameEnd;
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
