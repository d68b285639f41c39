#include "markup/markup_document.h"

#include <algorithm>
#include <cstring>

#include <emmintrin.h>

#include "markup/markup_attributes.h"
#include "markup/markup_records.h"
#include "markup/markup_text.h"
#include "markup/markup_tokenizer.h"
#include "markup/utf8_decoder.h"

namespace marrowfin {
namespace {

constexpr uint32_t kLevelMask = 0xFFFF;
constexpr uint32_t kStartTagMask = 0x3FFFFF;
constexpr uint32_t kEndTagMax = 0x3FF;
// Offsets are 32-bit words; longer texts are refused.
constexpr size_t kMaxTextLength = 0xFFFFFFF0u;

using Record = MarkupDocument::ElementRecord;

inline uint32_t StartTagLength(const Record& r) { return r.tagLengths & kStartTagMask; }
inline uint32_t EndTagLength(const Record& r) { return r.tagLengths >> 22; }
inline uint32_t TagLengths(size_t startTag, size_t endTag) {
    return static_cast<uint32_t>(std::min<size_t>(startTag, kStartTagMask)) |
           (static_cast<uint32_t>(std::min<size_t>(endTag, kEndTagMax)) << 22);
}

inline bool IsNameEnd(char16_t c) { return IsMarkupSpace(c) || c == u'/' || c == u'>' || c == 0; }

// A name a caller may give to AddElement or SetAttribute: one that reads back
// as the same single name.
bool IsPlainName(std::u16string_view name, bool element) {
    if (name.empty()) return false;
    const char16_t first = name[0];
    if (element && !((first >= u'A' && first <= u'Z') || first == u'_' || first == u':' || first >= u'a'))
        return false;
    for (const char16_t c : name) {
        if (c == 0 || IsMarkupSpace(c)) return false;
        switch (c) {
        case u'<': case u'>': case u'/': case u'=': case u'"': case u'\'': case u'&': case u'?': case u'!':
            return false;
        default: break;
        }
    }
    return true;
}

std::u16string WithoutNul(std::u16string_view text) {
    std::u16string out(text);
    out.erase(std::remove(out.begin(), out.end(), u'\0'), out.end());
    return out;
}

// One entry of the stack of open tags: the element and the length of its name,
// the name itself being read from the text.
struct OpenTag {
    uint32_t element;
    uint32_t nameLength;
    uint32_t nameOffset;  // kept here so that matching an end tag needs no record
};

}  // namespace

MarkupDocument::MarkupDocument() { Clear(); }
MarkupDocument::~MarkupDocument() = default;
MarkupDocument::MarkupDocument(MarkupDocument&&) noexcept = default;
MarkupDocument& MarkupDocument::operator=(MarkupDocument&&) noexcept = default;

void MarkupDocument::Clear() {
    m_attributes.element = 0;
    m_text = AllocateText(1);
    m_text[0] = 0;
    m_length = 0;
    m_capacity = 1;
    m_parent = m_main = m_child = 0;
    m_mainKind = 0;
    m_flags = 0;
    m_pages.clear();
    ReserveRecords(8);
    m_nextFree = 1;
    Rec(0) = ElementRecord{};
}

void MarkupDocument::ReserveRecords(uint32_t count) {
    count = std::clamp<uint32_t>(count, 8, PageSize);
    m_pages.clear();
    m_pages.push_back(std::make_unique_for_overwrite<ElementRecord[]>(count));
    m_firstPageCapacity = count;
}

uint32_t MarkupDocument::NewRecord() {
    const uint32_t index = m_nextFree;
    if (index < PageSize) {
        if (index >= m_firstPageCapacity) {
            // The first page grows by half, up to a whole page.
            const uint32_t capacity = std::min<uint32_t>(PageSize, std::max<uint32_t>(index + index / 2, index + 8));
            auto page = std::make_unique_for_overwrite<ElementRecord[]>(capacity);
            std::memcpy(page.get(), m_pages[0].get(), sizeof(ElementRecord) * index);
            m_pages[0] = std::move(page);
            m_firstPageCapacity = capacity;
        }
    } else {
        const size_t page = index >> PageBits;
        if (page >= m_pages.size()) {
            if (m_pages.capacity() <= page) m_pages.reserve(page * 2 + 4);
            m_pages.push_back(std::make_unique_for_overwrite<ElementRecord[]>(PageSize));
        }
    }
    ++m_nextFree;
    return index;
}

void MarkupDocument::ReserveText(size_t length) {
    if (length + 1 <= m_capacity) return;
    // Room for a run of insertions, so that each one doesn't reallocate.
    const size_t capacity = length + length / 2 + 128;
    auto text = AllocateText(capacity);
    std::memcpy(text.get(), m_text.get(), sizeof(char16_t) * (m_length + 1));
    m_text = std::move(text);
    m_capacity = capacity;
}

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

bool MarkupDocument::IsIllFormed() const { return (Record(0).levelMarks & MarkIllFormed) != 0; }

bool MarkupDocument::WellFormedResult() const {
    const ElementRecord& doc = Record(0);
    return (doc.levelMarks & MarkIllFormed) == 0 && doc.firstChild != 0 && Record(doc.firstChild).nextSibling == 0;
}

// One pass over the text: each node from the tokeniser either opens, closes
// or leaves the index alone. Only element records are written.
bool MarkupDocument::Parse() {
    m_attributes.element = 0;
    m_parent = m_main = m_child = 0;
    m_mainKind = 0;
    ReserveRecords(static_cast<uint32_t>(std::min<size_t>(m_length / 64 + 8, PageSize)));
    m_nextFree = 1;
    Rec(0) = ElementRecord{0, static_cast<uint32_t>(m_length), 0, 0, 0, 0, 0, 0};

    const char16_t* t = m_text.get();
    MarkupTokenizer tokenizer(t, m_length, &m_result);
    std::vector<OpenTag> stack;
    stack.reserve(7);
    uint32_t current = 0;
    bool levelsMoved = false;

    // Closes stack[from..] without end tags: each keeps its start tag as its
    // extent and its children move up behind it, so they all become following
    // siblings under the parent of stack[from]. Each element is relinked once.
    auto unend = [&](size_t from, size_t offset2) {
        const uint32_t outer = Rec(stack[from].element).parent;
        for (size_t k = stack.size(); k-- > from;) {
            const uint32_t u = stack[k].element;
            ElementRecord& r = Rec(u);
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
        levelsMoved = true;
    };

    MarkupNode node;
    size_t pos = 0;
    for (;;) {
        // Text and white space leave the index alone: skip to the next '<'
        // here rather than reading them as nodes.
        if (t[pos] != u'<' && t[pos] != 0) pos = FindUnitBefore(t, pos + 1, m_length, u'<');
        tokenizer.Read(pos, node);
        if (node.kind == NodeStartTag) {
            const uint32_t index = NewRecord();
            ElementRecord& r = Rec(index);
            r.start = static_cast<uint32_t>(node.offset);
            r.length = static_cast<uint32_t>(std::min<size_t>(node.length, kStartTagMask));
            r.tagLengths = TagLengths(node.length, 0);
            r.levelMarks = static_cast<uint32_t>(std::min<size_t>(stack.size(), kLevelMask));
            r.parent = current;
            r.firstChild = 0;
            r.nextSibling = 0;
            ElementRecord& p = Rec(current);
            if (p.firstChild == 0) {
                p.firstChild = index;
                r.prevSibling = index;
                r.levelMarks |= MarkFirst;
            } else {
                ElementRecord& first = Rec(p.firstChild);
                const uint32_t last = first.prevSibling;
                Rec(last).nextSibling = index;
                r.prevSibling = last;
                first.prevSibling = index;
            }
            if (!node.empty) {
                stack.push_back({index, static_cast<uint32_t>(node.nameEnd - node.nameOffset),
                                 static_cast<uint32_t>(node.nameOffset)});
                current = index;
            }
        } else if (node.kind == NodeEndTag) {
            const size_t nameLength = node.nameEnd - node.nameOffset;
            size_t k = stack.size();
            const char16_t* endName = t + node.nameOffset;
            while (k > 0) {
                const OpenTag& open = stack[k - 1];
                if (open.nameLength == nameLength) {
                    // Names are short: a plain loop beats a call to memcmp.
                    const char16_t* openName = t + open.nameOffset;
                    size_t i = 0;
                    while (i < nameLength && openName[i] == endName[i]) ++i;
                    if (i == nameLength) break;
                }
                --k;
            }
            if (k == 0) {
                AppendResultRecord(m_result, u"lone_end_tag",
                                   {{u"tagname", std::u16string_view(t + node.nameOffset, nameLength)},
                                    {u"offset", DecimalText(node.offset)}});
                Rec(0).levelMarks |= MarkIllFormed;
                Rec(current).levelMarks |= MarkErrorInside;
            } else {
                const uint32_t index = stack[k - 1].element;
                if (k < stack.size()) unend(k, node.offset + 1);
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
    if (!stack.empty()) unend(0, m_length);
    if (levelsMoved) FixLevels();

    ElementRecord& doc = Rec(0);
    doc.length = static_cast<uint32_t>(m_length);
    if (doc.firstChild == 0) {
        if (m_length > 0) AppendResultRecord(m_result, u"no_root_element");
    } else if (Record(doc.firstChild).nextSibling != 0) {
        AppendResultRecord(m_result, u"root_has_sibling");
    }
    return WellFormedResult();
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

bool MarkupDocument::NameMatches(uint32_t index, std::u16string_view name) const {
    if (name.empty()) return true;
    const ElementRecord& r = Record(index);
    if (static_cast<size_t>(r.start) + 1 + name.size() > m_length) return false;
    const char16_t* n = m_text.get() + r.start + 1;
    // Names are short: a plain loop beats a call to memcmp.
    for (size_t i = 0; i < name.size(); ++i)
        if (n[i] != name[i]) return false;
    return IsNameEnd(n[name.size()]);
}

bool MarkupDocument::FindElement(std::u16string_view name) {
    uint32_t e = m_main != 0 ? Record(m_main).nextSibling : Record(m_parent).firstChild;
    for (; e != 0; e = Record(e).nextSibling) {
        if (NameMatches(e, name)) {
            m_main = e;
            m_parent = Record(e).parent;
            m_child = 0;
            m_mainKind = 1;
            return true;
        }
    }
    return false;
}

bool MarkupDocument::FindChildElement(std::u16string_view name) {
    if (m_main == 0 && !FindElement()) return false;
    uint32_t e = m_child != 0 ? Record(m_child).nextSibling : Record(m_main).firstChild;
    for (; e != 0; e = Record(e).nextSibling) {
        if (NameMatches(e, name)) {
            m_child = e;
            return true;
        }
    }
    return false;
}

bool MarkupDocument::EnterElement() {
    if (m_main == 0) return false;
    m_parent = m_main;
    m_main = m_child;
    m_child = 0;
    m_mainKind = m_main != 0 ? 1 : 0;
    return true;
}

bool MarkupDocument::LeaveElement() {
    if (m_parent == 0) return false;
    m_child = m_main;
    m_main = m_parent;
    m_parent = Record(m_parent).parent;
    m_mainKind = 1;
    return true;
}

void MarkupDocument::RewindMain() {
    m_main = 0;
    m_child = 0;
    m_mainKind = 0;
}

std::u16string MarkupDocument::TagNameOf(uint32_t index) const {
    if (index == 0) return {};
    const char16_t* t = m_text.get();
    const size_t begin = Record(index).start + 1;
    size_t end = begin;
    while (!IsNameEnd(t[end])) ++end;
    return std::u16string(t + begin, end - begin);
}

std::u16string MarkupDocument::ElementTextOf(uint32_t index) const {
    if (index == 0) return {};
    const ElementRecord& r = Record(index);
    const size_t startTag = StartTagLength(r);
    if (startTag >= r.length || r.firstChild != 0) return {};
    const size_t begin = r.start + startTag;
    const size_t end = static_cast<size_t>(r.start) + r.length - EndTagLength(r);
    if (end <= begin) return {};
    const char16_t* t = m_text.get();
    std::u16string out;
    const std::u16string_view content(t + begin, end - begin);
    if (content.find(u'<') == std::u16string_view::npos) {
        DecodeMarkupText(content, out);
        return out;
    }
    // Mixed content: text nodes decoded and CDATA taken raw, in order.
    MarkupTokenizer tokenizer(t, m_length, nullptr);
    MarkupNode node;
    for (size_t pos = begin; pos < end; pos += node.length) {
        tokenizer.Read(pos, node);
        if (node.kind == NodeEndOfText || node.length == 0) break;
        const size_t nodeEnd = std::min(end, node.offset + node.length);
        if (node.kind == NodeText) {
            DecodeMarkupText(std::u16string_view(t + pos, nodeEnd - pos), out);
        } else if (node.kind == NodeCData) {
            static constexpr std::u16string_view kOpen = u"<![CDATA[";
            size_t from = std::u16string_view(t + pos, nodeEnd - pos).starts_with(kOpen) ? pos + kOpen.size() : pos + 4;
            const size_t to = nodeEnd >= pos + 3 ? nodeEnd - 3 : pos;
            if (from < to) out.append(t + from, to - from);
        }
    }
    return out;
}

// Where the attributes of a start tag end: at its '>', or at the '/' of "/>"
// when the element is empty. Scans stop there even where quotes are unbalanced,
// so that an edit never reaches past the tag.
size_t MarkupDocument::TagContentEnd(uint32_t index) const {
    const ElementRecord& r = Record(index);
    size_t end = static_cast<size_t>(r.start) + StartTagLength(r) - 1;
    const bool empty = EndTagLength(r) == 0 && (r.levelMarks & MarkUnended) == 0 && StartTagLength(r) == r.length;
    if (empty && m_text[end - 1] == u'/') --end;
    return end;
}

bool MarkupDocument::FindAttributeValue(uint32_t index, std::u16string_view name, uint32_t& begin,
                                       uint32_t& length) const {
    if (index == 0 || name.empty()) return false;
    const char16_t* t = m_text.get();
    AttributeCache& c = m_attributes;
    if (c.element != index) {
        const size_t end = TagContentEnd(index);
        c.element = index;
        c.count = 0;
        c.end = static_cast<uint32_t>(end);
        c.resume = static_cast<uint32_t>(SkipTagName(t, Record(index).start + 1, end));
        c.done = false;
    }
    // Names are short: a plain loop beats a call to memcmp.
    auto sameName = [&](size_t at, size_t n) {
        if (n != name.size()) return false;
        for (size_t i = 0; i < n; ++i)
            if (t[at + i] != name[i]) return false;
        return true;
    };
    auto value = [&](size_t valueBegin, size_t valueLength) {
        begin = static_cast<uint32_t>(valueBegin);
        length = static_cast<uint32_t>(valueLength);
        return true;
    };
    for (uint32_t i = 0; i < c.count; ++i) {
        const AttributeCache::Span& s = c.spans[i];
        if (sameName(s.nameBegin, s.nameLength)) return value(s.valueBegin, s.valueLength);
    }
    if (c.done) return false;
    // Go on from the last cached attribute. Past the cache's capacity the
    // scan still runs, but later calls start again behind the cached part.
    size_t p = c.resume;
    AttributeSpan a;
    while (NextAttribute(t, p, c.end, a)) {
        if (c.count < AttributeCache::Capacity) {
            c.spans[c.count++] = {static_cast<uint32_t>(a.nameBegin), static_cast<uint32_t>(a.nameEnd - a.nameBegin),
                                  static_cast<uint32_t>(a.valueBegin), static_cast<uint32_t>(a.valueEnd - a.valueBegin)};
            c.resume = static_cast<uint32_t>(p);
        }
        if (sameName(a.nameBegin, a.nameEnd - a.nameBegin)) return value(a.valueBegin, a.valueEnd - a.valueBegin);
    }
    if (c.resume == p) c.done = true;
    return false;
}

std::u16string MarkupDocument::AttributeOf(uint32_t index, std::u16string_view name) const {
    std::u16string out;
    uint32_t begin = 0;
    uint32_t length = 0;
    if (FindAttributeValue(index, name, begin, length))
        DecodeMarkupText(std::u16string_view(m_text.get() + begin, length), out);
    return out;
}

bool MarkupDocument::GetAttribute(std::u16string_view name, std::u16string& out) const {
    out.clear();
    uint32_t begin = 0;
    uint32_t length = 0;
    if (!FindAttributeValue(m_main, name, begin, length)) return false;
    DecodeMarkupText(std::u16string_view(m_text.get() + begin, length), out);
    return true;
}

std::u16string_view MarkupDocument::AttributeView(std::u16string_view name, std::u16string& scratch) const {
    uint32_t begin = 0;
    uint32_t length = 0;
    if (!FindAttributeValue(m_main, name, begin, length)) return {};
    const std::u16string_view raw(m_text.get() + begin, length);
    if (FindUnitBefore(m_text.get(), begin, static_cast<size_t>(begin) + length, u'&') == begin + length) return raw;
    scratch.clear();
    DecodeMarkupText(raw, scratch);
    return scratch;
}

std::u16string MarkupDocument::GetElementText() const { return ElementTextOf(m_main); }
std::u16string MarkupDocument::GetChildText() const { return ElementTextOf(m_child); }
std::u16string MarkupDocument::GetAttribute(std::u16string_view name) const { return AttributeOf(m_main, name); }
std::u16string MarkupDocument::GetChildAttribute(std::u16string_view name) const {
    return AttributeOf(m_child, name);
}
std::u16string MarkupDocument::GetTagName() const { return TagNameOf(m_main); }
std::u16string MarkupDocument::GetChildTagName() const { return TagNameOf(m_child); }

void MarkupDocument::Insert(size_t offset, size_t removeLength, std::u16string_view with) {
    m_attributes.element = 0;
    const size_t newLength = m_length - removeLength + with.size();
    const size_t tail = m_length - offset - removeLength;
    ReserveText(newLength);
    char16_t* t = m_text.get();
    std::memmove(t + offset + with.size(), t + offset + removeLength, sizeof(char16_t) * tail);
    std::memcpy(t + offset, with.data(), sizeof(char16_t) * with.size());
    m_length = newLength;
    t[m_length] = 0;
}

void MarkupDocument::ShiftSubtree(uint32_t top, int64_t delta) {
    uint32_t e = top;
    for (;;) {
        ElementRecord& r = Rec(e);
        r.start = static_cast<uint32_t>(r.start + delta);
        if (r.firstChild != 0) {
            e = r.firstChild;
            continue;
        }
        while (e != top && Record(e).nextSibling == 0) e = Record(e).parent;
        if (e == top) return;
        e = Record(e).nextSibling;
    }
}

// Everything behind `element` moves by `delta`: its following siblings and
// those of each ancestor, with their descendants; the ancestors and the
// document grow by `delta`.
void MarkupDocument::MoveOffsetsBehind(uint32_t element, int64_t delta) {
    uint32_t e = element;
    for (;;) {
        for (uint32_t s = Record(e).nextSibling; s != 0; s = Record(s).nextSibling) ShiftSubtree(s, delta);
        const uint32_t parent = Record(e).parent;
        Rec(parent).length = static_cast<uint32_t>(Record(parent).length + delta);
        if (parent == 0) return;
        e = parent;
    }
}

bool MarkupDocument::AddElement(std::u16string_view name, std::u16string_view text) {
    if (!IsPlainName(name, true)) return false;
    std::u16string element;
    element.reserve(name.size() * 2 + text.size() + 8);
    element += u'<';
    element += name;
    size_t startTag;
    size_t endTag = 0;
    const std::u16string clean = WithoutNul(text);
    if (clean.empty()) {
        element += u"/>";
        startTag = element.size();
    } else {
        element += u'>';
        startTag = element.size();
        EncodeMarkupText(clean, element, false);
        element += u"</";
        element += name;
        element += u'>';
        endTag = name.size() + 3;
    }
    const size_t elementLength = element.size();
    element += u"\r\n";
    if (m_length + element.size() + name.size() + 8 > kMaxTextLength) return false;

    const uint32_t parent = m_parent;
    const char16_t* t = m_text.get();
    size_t at;
    size_t removeLength = 0;
    size_t elementOffset;
    std::u16string insertion;
    std::u16string parentName;
    bool reshapeParent = false;
    if (m_main != 0 || parent == 0) {
        at = m_main != 0 ? static_cast<size_t>(Record(m_main).start) + Record(m_main).length : m_length;
        size_t q = at;
        while (IsMarkupSpace(t[q])) ++q;
        if (t[q] == u'<' || t[q] == 0) at = q;
        elementOffset = at;
        insertion = std::move(element);
    } else {
        const ElementRecord& p = Record(parent);
        const size_t startTagP = StartTagLength(p);
        const size_t endTagP = EndTagLength(p);
        parentName = TagNameOf(parent);
        if ((p.levelMarks & MarkUnended) != 0 || endTagP == 0) {
            // <parent/> or an unended parent is opened around the new element.
            reshapeParent = true;
            const bool empty = (p.levelMarks & MarkUnended) == 0;
            at = p.start + startTagP;
            if (empty) {
                // The '/' before '>' goes; so does any run of them, as "<a//>"
                // would otherwise still read as empty.
                at -= 1;
                while (at > p.start + 1 && t[at - 1] == u'/') {
                    --at;
                    ++removeLength;
                }
                insertion = u">";
            }
            insertion += u"\r\n";
            elementOffset = at + insertion.size();
            insertion += element;
            insertion += u"</";
            insertion += parentName;
            if (!empty) insertion += u'>';
        } else {
            at = static_cast<size_t>(p.start) + p.length - endTagP;
            if (p.length == startTagP + endTagP) insertion = u"\r\n";
            elementOffset = at + insertion.size();
            insertion += element;
        }
    }
    const int64_t delta = static_cast<int64_t>(insertion.size()) - static_cast<int64_t>(removeLength);
    Insert(at, removeLength, insertion);

    if (reshapeParent) {
        ElementRecord& p = Rec(parent);
        const size_t startTagP = StartTagLength(p) - removeLength;
        p.tagLengths = TagLengths(startTagP, parentName.size() + 3);
        p.levelMarks &= ~MarkUnended;
    }
    const uint32_t index = NewRecord();
    ElementRecord& r = Rec(index);
    r.start = static_cast<uint32_t>(elementOffset);
    r.length = static_cast<uint32_t>(elementLength);
    r.tagLengths = TagLengths(startTag, endTag);
    r.levelMarks = parent == 0 ? 0 : std::min((Record(parent).levelMarks & kLevelMask) + 1, kLevelMask);
    r.parent = parent;
    r.firstChild = 0;
    if (m_main != 0) {
        ElementRecord& m = Rec(m_main);
        r.prevSibling = m_main;
        r.nextSibling = m.nextSibling;
        if (m.nextSibling != 0) Rec(m.nextSibling).prevSibling = index;
        else Rec(Record(parent).firstChild).prevSibling = index;
        m.nextSibling = index;
    } else {
        r.nextSibling = 0;
        ElementRecord& p = Rec(parent);
        if (p.firstChild == 0) {
            p.firstChild = index;
            r.prevSibling = index;
            r.levelMarks |= MarkFirst;
        } else {
            const uint32_t last = Record(p.firstChild).prevSibling;
            Rec(last).nextSibling = index;
            r.prevSibling = last;
            Rec(p.firstChild).prevSibling = index;
        }
    }
    MoveOffsetsBehind(index, delta);
    m_main = index;
    m_child = 0;
    m_mainKind = 1;
    return true;
}

bool MarkupDocument::SetAttribute(std::u16string_view name, std::u16string_view value) {
    if (m_main == 0 || !IsPlainName(name, false)) return false;
    std::u16string escaped;
    EncodeMarkupText(WithoutNul(value), escaped, true);
    if (m_length + escaped.size() + name.size() + 8 > kMaxTextLength) return false;

    const ElementRecord& r = Record(m_main);
    const char16_t* t = m_text.get();
    bool found = false;
    AttributeSpan span;
    const size_t contentEnd = TagContentEnd(m_main);
    ScanAttributes(t, r.start + 1, contentEnd, [&](const AttributeSpan& a) {
        if (a.nameEnd - a.nameBegin != name.size() || !std::equal(name.begin(), name.end(), t + a.nameBegin))
            return false;
        span = a;
        found = true;
        return true;
    });
    std::u16string insertion;
    size_t at;
    size_t removeLength = 0;
    if (found && span.hasEquals) {
        at = span.spanBegin;
        removeLength = span.spanEnd - span.spanBegin;
        insertion = u"\"" + escaped + u"\"";
    } else if (found) {
        at = span.nameEnd;
        insertion = u"=\"" + escaped + u"\"";
    } else {
        // Behind the last attribute, before the blanks that precede '>' or "/>":
        // there the tag is outside any value, whatever its quoting.
        at = contentEnd;
        while (IsMarkupSpace(t[at - 1])) --at;
        // A tag that ends in a '=' without its value would take the new
        // attribute as that value and read back otherwise: leave it alone.
        if (t[at - 1] == u'=') return false;
        insertion = u" ";
        insertion += name;
        insertion += u"=\"" + escaped + u"\"";
    }
    const int64_t delta = static_cast<int64_t>(insertion.size()) - static_cast<int64_t>(removeLength);
    Insert(at, removeLength, insertion);

    ElementRecord& m = Rec(m_main);
    m.tagLengths = TagLengths(StartTagLength(m) + delta, EndTagLength(m));
    m.length = static_cast<uint32_t>(m.length + delta);
    for (uint32_t c = m.firstChild; c != 0; c = Record(c).nextSibling) ShiftSubtree(c, delta);
    MoveOffsetsBehind(m_main, delta);
    return true;
}

}  // namespace marrowfin
