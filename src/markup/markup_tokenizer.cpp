#include "markup/markup_tokenizer.h"

#include <cstring>

#include "markup/markup_records.h"
#include "markup/start_tag_wide.h"

namespace marrowfin {
namespace {

// Character classes of the ASCII range in one table; every unit from 0x80 up
// is an ordinary name and text character.
enum : uint8_t {
    CSpace = 1,  // tab, LF, CR, blank
    CNameEnd = 2,  // ends a start tag name: space, '/', '>', NUL
    CNameStart = 4,  // opens a start tag behind '<'
    CValueEnd = 8,  // ends an unquoted value: space, '>', NUL
};

constexpr auto kClasses = [] {
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

}  // namespace

// The NUL lies at m_length only, so "up to c or the NUL" is "up to c before
// m_length"; `from` may lie at m_length but not beyond.
size_t MarkupTokenizer::FindUnit(size_t from, char16_t c) const { return FindUnitBefore(m_text, from, m_length, c); }

void MarkupTokenizer::ReadOther(size_t offset, MarkupNode& node) {
    node.offset = offset;
    node.empty = false;
    const char16_t* t = m_text;
    const char16_t c = t[offset];
    if (c == 0) {
        node.kind = NodeEndOfText;
        node.length = 0;
        return;
    }
    if (c != u'<') {
        const char16_t* p = t + offset;
        int kind = NodeWhiteSpace;
        if (IsMarkupSpace(c)) {
            while (IsMarkupSpace(*p)) ++p;
            if (*p == u'<' || *p == 0) {
                node.kind = NodeWhiteSpace;
                node.length = static_cast<size_t>(p - (t + offset));
                return;
            }
        }
        kind = NodeText;
        // Most text is letters and CJK, all above '>': one compare per unit.
        for (;;) {
            const char16_t u = *p;
            if (u > u'>') {
                ++p;
                continue;
            }
            if (u == u'<' || u == 0) break;
            if (u == u'>') {
                ++p;
                break;
            }
            ++p;
        }
        node.kind = kind;
        node.length = static_cast<size_t>(p - (t + offset));
        return;
    }
    const char16_t c1 = t[offset + 1];
    if (Is(c1, CNameStart)) return ReadStartTag(offset, node);
    switch (c1) {
        case u'/': return ReadEndTag(offset, node);
        case u'?':
            return ReadTerminated(offset, offset + 4, u"?>", NodeProcessingInstruction, u"processing_instruction",
                                  node);
        case u'!': {
            const char16_t c2 = t[offset + 2];
            if (c2 == u'-') {
                if (t[offset + 3] != u'-') return SyntaxError(offset, offset + 3, u"comment_tag_syntax", node);
                return ReadTerminated(offset, offset + 7, u"-->", NodeComment, u"comment", node);
            }
            if (c2 == u'[') {
                if (t[offset + 3] != u'C') return SyntaxError(offset, offset + 3, u"cdata_section_syntax", node);
                return ReadTerminated(offset, offset + 7, u"]]>", NodeCData, u"cdata_section", node);
            }
            if (c2 == u'D') return ReadDoctype(offset, node);
            return SyntaxError(offset, offset + 2, u"exclamation_tag_syntax", node);
        }
        default: return SyntaxError(offset, offset + 1, u"first_tag_syntax", node);
    }
}

void MarkupTokenizer::ReadStartTag(size_t offset, MarkupNode& node) {
    const char16_t* t = m_text;
    const char16_t* p = t + offset + 1;
    while (!Is(*p, CNameEnd)) ++p;
    node.nameOffset = offset + 1;
    node.nameEnd = static_cast<size_t>(p - t);
    if (*p != u'>' && TakeUsualTag(offset, static_cast<size_t>(p - t), node)) return;
    for (;;) {
        // Only '>', '=' and the NUL matter outside values; letters and CJK
        // are all above '>', so most units cost one compare.
        char16_t u = *p;
        while (u > u'>' || (u != u'>' && u != u'=' && u != 0)) u = *++p;
        if (u == u'>') {
            node.empty = p[-1] == u'/';
            ++p;
            break;
        }
        if (u == 0) return Unterminated(offset, u"start_tag", node);
        // A '=' opens a value unless it follows another '=' (blanks between).
        const char16_t* b = p - 1;
        while (IsMarkupSpace(*b)) --b;  // stops on the tag name at the latest
        ++p;
        if (*b == u'=') continue;
        while (IsMarkupSpace(*p)) ++p;
        const char16_t v = *p;
        if (v == u'"' || v == u'\'') {
            p = t + FindUnit(static_cast<size_t>(p + 1 - t), v);
            if (*p == 0) return Unterminated(offset, u"start_tag", node);
            ++p;
        } else if (v != u'>' && v != u'=' && v != 0) {
            // An unquoted value runs to white space or to the tag's '>'.
            while (!Is(*p, CValueEnd)) ++p;
            if (*p == u'>') {
                // "/>" ends an empty element only when the '/' doesn't belong to the value.
                node.empty = p[-1] == u'/' && (IsMarkupSpace(p[-2]) || p[-2] == u'"' || p[-2] == u'\'');
                ++p;
                break;
            }
        }
    }
    node.kind = NodeStartTag;
    node.length = static_cast<size_t>(p - (t + offset));
}

// The usual road, where the processor has it and it has been paying off:
// after a run of tags it could not read, it rests for a while, so that a
// document of other tags (single quotes, blanks around '=') is read at the
// plain reader's speed.
bool MarkupTokenizer::TakeUsualTag(size_t offset, size_t nameEnd, MarkupNode& node) {
    if (m_wide == WideTags::None) return false;
    if (m_usualRest != 0) {
        --m_usualRest;
        return false;
    }
    const size_t end = UsualStartTagEnd(m_text, m_length, nameEnd, m_wide);
    if (end == 0) {
        if (++m_usualMisses == kUsualMissesBeforeRest) {
            m_usualMisses = 0;
            m_usualRest = kUsualRest;
        }
        return false;
    }
    m_usualMisses = 0;
    node.empty = m_text[end - 1] == u'/';
    node.kind = NodeStartTag;
    node.length = end + 1 - offset;
    return true;
}

void MarkupTokenizer::ReadEndTag(size_t offset, MarkupNode& node) {
    const char16_t* t = m_text;
    const char16_t* p = t + offset + 2;
    while (!Is(*p, CValueEnd)) ++p;  // the name ends at white space or '>'
    node.nameOffset = offset + 2;
    node.nameEnd = static_cast<size_t>(p - t);
    while (*p != u'>' && *p != 0) ++p;
    if (*p == 0) return Unterminated(offset, u"end_tag", node);
    node.kind = NodeEndTag;
    node.length = static_cast<size_t>(p + 1 - (t + offset));
}

// Comments, CDATA sections and processing instructions: the terminator is
// recognised at each '>' by comparing backwards; `minEnd` keeps it from
// overlapping the opening (so "<!-->" is no comment).
void MarkupTokenizer::ReadTerminated(size_t offset, size_t minEnd, const char16_t* terminator, int kind,
                                     const char16_t* unterminatedType, MarkupNode& node) {
    const size_t termLength = std::char_traits<char16_t>::length(terminator);
    // The scan starts inside the opener, whose first two units are known
    // not to be the NUL; `minEnd` may lie beyond the end of the text.
    size_t q = offset + 2;
    for (;;) {
        q = FindUnit(q, u'>');
        if (m_text[q] == 0) return Unterminated(offset, unterminatedType, node);
        if (q + 1 >= minEnd &&
            std::char_traits<char16_t>::compare(m_text + q + 1 - termLength, terminator, termLength) == 0)
            break;
        ++q;
    }
    node.kind = kind;
    node.length = q + 1 - offset;
}

void MarkupTokenizer::ReadDoctype(size_t offset, MarkupNode& node) {
    const char16_t* t = m_text;
    size_t q = offset + 3;
    for (;;) {
        const char16_t u = t[q];
        if (u == 0) return Unterminated(offset, u"document_type", node);
        if (u == u'>') break;
        if (u == u'"' || u == u'\'') {
            q = FindUnit(q + 1, u);
            if (t[q] == 0) return Unterminated(offset, u"document_type", node);
            ++q;
            continue;
        }
        if (u == u'<' && t[q + 1] == u'!') {
            const char16_t d = t[q + 2];
            if (d == u'-') {
                // A comment inside the declarations.
                size_t e = q + 3;  // t[q + 2] is '-', so q + 3 is within the text
                for (;;) {
                    e = FindUnit(e, u'>');
                    if (t[e] == 0) return Unterminated(offset, u"document_type", node);
                    if (e >= q + 6 && t[e - 1] == u'-' && t[e - 2] == u'-') break;
                    ++e;
                }
                q = e + 1;
                continue;
            }
            if (d == u'A' || d == u'E' || d == u'N') {
                // A declaration to its '>', quotes skipped.
                size_t e = q + 3;
                while (t[e] != u'>' && t[e] != 0) {
                    if (t[e] == u'"' || t[e] == u'\'') {
                        e = FindUnit(e + 1, t[e]);
                        if (t[e] == 0) break;
                    }
                    ++e;
                }
                if (t[e] == 0) return Unterminated(offset, u"document_type", node);
                q = e + 1;
                continue;
            }
            return SyntaxError(offset, q + 2, u"doctype_tag_syntax", node);
        }
        ++q;
    }
    node.kind = NodeDoctype;
    node.length = q + 1 - offset;
}

void MarkupTokenizer::SyntaxError(size_t offset, size_t resumeAt, const char16_t* record, MarkupNode& node) {
    if (m_records) AppendResultRecord(*m_records, record, {{u"offset", DecimalText(offset)}});
    // The stretch runs to the next '>' (taken) or '<' (left for the next node).
    const char16_t* p = m_text + resumeAt;
    while (*p != u'>' && *p != u'<' && *p != 0) ++p;
    if (*p == 0) return Unterminated(offset, u"tag", node);
    if (*p == u'>') ++p;
    node.kind = NodeSyntaxError;
    node.length = static_cast<size_t>(p - (m_text + offset));
}

void MarkupTokenizer::Unterminated(size_t offset, const char16_t* type, MarkupNode& node) {
    if (m_records)
        AppendResultRecord(*m_records, u"unterminated_tag_syntax", {{u"type", type}, {u"offset", DecimalText(offset)}});
    node.kind = NodeSyntaxError;
    node.length = m_length - offset;
}

}  // namespace marrowfin
