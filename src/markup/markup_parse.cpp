// From a text to the index: taking the text, one pass of the tokeniser that
// opens and closes element records, and the repair of unended elements.

#include <algorithm>
#include <cstring>
#include <vector>

#include <emmintrin.h>

#include "markup/element_record_fields.h"
#include "markup/markup_document.h"
#include "markup/markup_records.h"
#include "markup/markup_tokenizer.h"
#include "markup/utf8_decoder.h"

namespace marrowfin {

using namespace record_fields;

namespace {

// Offset of the first NUL unit, or the length when there is none; eight
// units at a time, since a reply is megabytes of text with no NUL at all.
size_t FirstNul(std::u16string_view text) {
    const char16_t* s = text.data();
    const size_t n = text.size();
    size_t i = 0;
    const __m128i zero = _mm_setzero_si128();
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        const int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(v, zero));
        if (mask != 0) return i + static_cast<size_t>(__builtin_ctz(static_cast<unsigned>(mask))) / 2;
    }
    for (; i < n; ++i)
        if (s[i] == 0) return i;
    return n;
}

}  // namespace

// One entry of the stack of open tags: the element and the length of its name,
// the name itself being read from the text.
struct MarkupDocument::OpenTag {
    uint32_t element;
    uint32_t nameLength;
    uint32_t nameOffset;  // kept here so that matching an end tag needs no record
};

namespace {

// The depth in `stack` of the open tag an end tag closes, plus one; 0 when
// no open tag has its name.
template <class Stack>
size_t MatchingOpenTag(const Stack& stack, const char16_t* t, const MarkupNode& node) {
    const size_t nameLength = node.nameEnd - node.nameOffset;
    const char16_t* endName = t + node.nameOffset;
    size_t k = stack.size();
    while (k > 0) {
        const auto& open = stack[k - 1];
        if (open.nameLength == nameLength) {
            // Names are short: a plain loop beats a call to memcmp.
            const char16_t* openName = t + open.nameOffset;
            size_t i = 0;
            while (i < nameLength && openName[i] == endName[i]) ++i;
            if (i == nameLength) break;
        }
        --k;
    }
    return k;
}

}  // namespace

bool MarkupDocument::SetText(std::nullptr_t) { return SetText(std::u16string_view{}); }

bool MarkupDocument::SetText(std::u16string_view text) {
    // The text ends at its first NUL, as a C string would.
    text = text.substr(0, FirstNul(text));
    Clear();
    m_result.clear();
    if (text.size() > kMaxTextLength) text = {};
    m_text = AllocateText(text.size() + 1);
    if (!text.empty()) std::memcpy(m_text.get(), text.data(), sizeof(char16_t) * text.size());
    m_text[text.size()] = 0;
    m_length = text.size();
    m_capacity = text.size() + 1;
    return Parse();
}

bool MarkupDocument::SetUtf8Text(std::string_view bytes) {
    Clear();
    m_result.clear();
    if (bytes.size() > kMaxTextLength) bytes = {};
    // Decoded straight into the document's own buffer: a reply of tens of
    // megabytes is not held a second time as a wide string.
    m_text = AllocateText(bytes.size() + 1);
    const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
    size_t nulls = 0;
    m_length = DecodeUtf8Into(s, bytes.size(), m_text.get(), nulls);
    // The text ends at its first NUL byte, as SetText's does at its first NUL
    // unit. The decoder counts them, so that the bytes are searched for one
    // only when there is one.
    if (nulls != 0) {
        const auto* nul = static_cast<const unsigned char*>(std::memchr(s, 0, bytes.size()));
        m_length = DecodeUtf8Into(s, static_cast<size_t>(nul - s), m_text.get(), nulls);
    }
    m_text[m_length] = 0;
    m_capacity = bytes.size() + 1;
    return Parse();
}

// A new record for the start tag, linked as the last child of `parent`.
inline uint32_t MarkupDocument::OpenRecord(const MarkupNode& node, uint32_t parent, size_t depth) {
    const uint32_t index = NewRecord();
    ElementRecord& r = Rec(index);
    r.start = static_cast<uint32_t>(node.offset);
    r.length = static_cast<uint32_t>(std::min<size_t>(node.length, kStartTagMask));
    r.tagLengths = TagLengths(node.length, 0);
    r.levelMarks = static_cast<uint32_t>(std::min<size_t>(depth, kLevelMask));
    r.parent = parent;
    r.firstChild = 0;
    LinkAsLastChild(index, parent);
    return index;
}

// One pass over the text: each node from the tokeniser either opens, closes
// or leaves the index alone. Only element records are written. The stack and
// the current element stay locals of this loop, so that they live in
// registers rather than being read back after every record written.
bool MarkupDocument::Parse() {
    m_attributes.element = 0;
    m_parent = m_main = m_child = 0;
    m_mainKind = 0;
    // An element per 32 units: replies and class tables run to one per 30 to
    // 40, and a first page that has to grow is copied on each growth.
    ReserveRecords(static_cast<uint32_t>(std::min<size_t>(m_length / 32 + 8, PageSize)));
    m_nextFree = 1;
    Rec(0) = ElementRecord{0, static_cast<uint32_t>(m_length), 0, 0, 0, 0, 0, 0};

    const char16_t* t = m_text.get();
    MarkupTokenizer tokenizer(t, m_length, &m_result);
    std::vector<OpenTag> stack;
    stack.reserve(7);
    uint32_t current = 0;
    bool levelsMoved = false;
    MarkupNode node;
    size_t pos = 0;
    for (;;) {
        // Text and white space leave the index alone: skip to the next '<'
        // here rather than reading them as nodes.
        if (t[pos] != u'<' && t[pos] != 0) pos = FindUnitBefore(t, pos + 1, m_length, u'<');
        // Most end tags close the innermost open element and are written
        // "</name>": closed here without the tokeniser and the search of the
        // stack, to the same record the general road below would write.
        if (t[pos] == u'<' && t[pos + 1] == u'/' && !stack.empty()) {
            const OpenTag& open = stack.back();
            const char16_t* name = t + pos + 2;
            const char16_t* openName = t + open.nameOffset;
            uint32_t i = 0;
            while (i < open.nameLength && name[i] == openName[i]) ++i;  // the NUL stops it at the end
            if (i == open.nameLength && name[i] == u'>') {
                ElementRecord& r = Rec(open.element);
                const size_t length = open.nameLength + 3;
                r.length = static_cast<uint32_t>(pos + length - r.start);
                r.tagLengths = TagLengths(StartTagLength(r), length);
                current = r.parent;
                stack.pop_back();
                pos += length;
                continue;
            }
        }
        tokenizer.Read(pos, node);
        if (node.kind == NodeStartTag) {
            const uint32_t index = OpenRecord(node, current, stack.size());
            if (!node.empty) {
                stack.push_back({index, static_cast<uint32_t>(node.nameEnd - node.nameOffset),
                                 static_cast<uint32_t>(node.nameOffset)});
                current = index;
            }
        } else if (node.kind == NodeEndTag) {
            const size_t k = MatchingOpenTag(stack, t, node);
            if (k == 0) {
                RecordLoneEndTag(node, current);
            } else {
                const uint32_t index = stack[k - 1].element;
                if (k < stack.size()) levelsMoved = UnendOpenTags(stack, k, node.offset + 1);
                ElementRecord& r = Rec(index);
                r.length = static_cast<uint32_t>(node.offset + node.length - r.start);
                r.tagLengths = TagLengths(StartTagLength(r), node.length);
                stack.resize(k - 1);
                current = r.parent;
            }
        } else if (node.kind == NodeSyntaxError) {
            Rec(0).levelMarks |= MarkIllFormed;
            Rec(current).levelMarks |= MarkErrorInside;
        } else if (node.kind == NodeEndOfText) {
            break;
        }
        pos += node.length;
    }
    if (!stack.empty()) levelsMoved = UnendOpenTags(stack, 0, m_length);
    if (levelsMoved) FixLevels();
    return FinishParse();
}

// The document's own record and the records of a missing or second root.
bool MarkupDocument::FinishParse() {
    ElementRecord& doc = Rec(0);
    doc.length = static_cast<uint32_t>(m_length);
    if (doc.firstChild == 0) {
        if (m_length > 0) AppendResultRecord(m_result, u"no_root_element");
    } else if (Record(doc.firstChild).nextSibling != 0) {
        AppendResultRecord(m_result, u"root_has_sibling");
    }
    return WellFormedResult();
}

void MarkupDocument::RecordLoneEndTag(const MarkupNode& node, uint32_t current) {
    AppendResultRecord(
        m_result, u"lone_end_tag",
        {{u"tagname", std::u16string_view(m_text.get() + node.nameOffset, node.nameEnd - node.nameOffset)},
         {u"offset", DecimalText(node.offset)}});
    Rec(0).levelMarks |= MarkIllFormed;
    Rec(current).levelMarks |= MarkErrorInside;
}

// Closes stack[from..] without end tags: each keeps its start tag as its
// extent and its children move up behind it, so they all become following
// siblings under the parent of stack[from]. Each element is relinked once.
// True, as the depths then need fixing.
bool MarkupDocument::UnendOpenTags(const std::vector<OpenTag>& stack, size_t from, size_t offset2) {
    const char16_t* t = m_text.get();
    const uint32_t outer = Rec(stack[from].element).parent;
    for (size_t k = stack.size(); k-- > from;) {
        ElementRecord& r = Rec(stack[k].element);
        r.length = StartTagLength(r);
        r.tagLengths = TagLengths(StartTagLength(r), 0);
        r.levelMarks |= MarkUnended;
        Rec(r.parent).levelMarks |= MarkErrorInside;
        AppendResultRecord(m_result, u"unended_start_tag",
                           {{u"tagname", std::u16string_view(t + r.start + 1, stack[k].nameLength)},
                            {u"offset", DecimalText(r.start)},
                            {u"offset2", DecimalText(offset2)}});
    }
    uint32_t last = 0;
    for (size_t k = from; k < stack.size(); ++k) {
        const uint32_t u = stack[k].element;
        ElementRecord& r = Rec(u);
        const uint32_t first = r.firstChild;
        if (first == 0) {
            last = u;
            continue;
        }
        last = Rec(first).prevSibling;
        r.nextSibling = first;
        r.firstChild = 0;
        Rec(first).prevSibling = u;
        Rec(first).levelMarks &= ~MarkFirst;
        for (uint32_t c = first; c != 0; c = Rec(c).nextSibling) Rec(c).parent = outer;
    }
    Rec(Rec(outer).firstChild).prevSibling = last;
    Rec(0).levelMarks |= MarkIllFormed;
    return true;
}

// Depths after unended elements moved their children up: one walk in order.
void MarkupDocument::FixLevels() {
    uint32_t e = Record(0).firstChild;
    uint32_t depth = 0;
    while (e != 0) {
        ElementRecord& r = Rec(e);
        r.levelMarks = (r.levelMarks & ~kLevelMask) | std::min(depth, kLevelMask);
        if (r.firstChild != 0) {
            e = r.firstChild;
            ++depth;
            continue;
        }
        while (e != 0 && Record(e).nextSibling == 0) {
            e = Record(e).parent;
            --depth;
        }
        if (e != 0) e = Record(e).nextSibling;
    }
}

}  // namespace marrowfin
