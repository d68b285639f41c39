// Walking the index with the three cursors and reading what an element
// holds: tag names, text and attribute values.

#include <algorithm>

#include "markup/element_record_fields.h"
#include "markup/markup_attributes.h"
#include "markup/markup_document.h"
#include "markup/markup_text.h"
#include "markup/markup_tokenizer.h"

namespace marrowfin {

using namespace record_fields;

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

bool MarkupDocument::FindAttributeValue(uint32_t index, std::u16string_view name, uint32_t& begin, uint32_t& length,
                                        bool& reference) const {
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
    for (uint32_t i = 0; i < c.count; ++i) {
        const AttributeCache::Span& s = c.spans[i];
        if (sameName(s.nameBegin, s.nameLength)) {
            begin = s.valueBegin;
            length = s.valueLength;
            reference = s.reference;
            return true;
        }
    }
    if (c.done) return false;
    // Go on from the last cached attribute. Past the cache's capacity the
    // scan still runs, but later calls start again behind the cached part.
    size_t p = c.resume;
    AttributeSpan a;
    while (NextAttribute(t, p, c.end, a)) {
        if (c.count < AttributeCache::Capacity) {
            c.spans[c.count++] = {static_cast<uint32_t>(a.nameBegin), static_cast<uint32_t>(a.nameEnd - a.nameBegin),
                                  static_cast<uint32_t>(a.valueBegin), static_cast<uint32_t>(a.valueEnd - a.valueBegin),
                                  a.reference};
            c.resume = static_cast<uint32_t>(p);
        }
        if (sameName(a.nameBegin, a.nameEnd - a.nameBegin)) {
            begin = static_cast<uint32_t>(a.valueBegin);
            length = static_cast<uint32_t>(a.valueEnd - a.valueBegin);
            reference = a.reference;
            return true;
        }
    }
    if (c.resume == p) c.done = true;
    return false;
}

// The decoded value into `out` (emptied first); false when there is none.
bool MarkupDocument::AttributeInto(uint32_t index, std::u16string_view name, std::u16string& out) const {
    out.clear();
    uint32_t begin = 0;
    uint32_t length = 0;
    bool reference = false;
    if (!FindAttributeValue(index, name, begin, length, reference)) return false;
    const std::u16string_view raw(m_text.get() + begin, length);
    if (reference) DecodeMarkupText(raw, out);
    else out.assign(raw);
    return true;
}

std::u16string MarkupDocument::AttributeOf(uint32_t index, std::u16string_view name) const {
    std::u16string out;
    (void)AttributeInto(index, name, out);
    return out;
}

bool MarkupDocument::GetAttribute(std::u16string_view name, std::u16string& out) const {
    return AttributeInto(m_main, name, out);
}

std::u16string_view MarkupDocument::AttributeView(std::u16string_view name, std::u16string& scratch) const {
    uint32_t begin = 0;
    uint32_t length = 0;
    bool reference = false;
    if (!FindAttributeValue(m_main, name, begin, length, reference)) return {};
    const std::u16string_view raw(m_text.get() + begin, length);
    if (!reference) return raw;
    scratch.clear();
    DecodeMarkupText(raw, scratch);
    return scratch;
}

// Flattened: left to itself the compiler called the attribute scanner here
// rather than inlining it, which cost the walk of a reply a third of its time.
[[gnu::flatten]] void MarkupDocument::ReadAttributeViews(const std::u16string_view* names, std::u16string_view* values,
                                                         std::u16string* scratch, size_t count) const {
    uint64_t found = 0;  // at most 64 names, which the template sees to
    size_t missing = 0;
    for (size_t i = 0; i < count; ++i) {
        values[i] = {};
        // As AttributeView: an empty name finds nothing.
        if (!names[i].empty()) ++missing;
    }
    if (m_main == 0) return;
    const char16_t* t = m_text.get();
    const size_t end = TagContentEnd(m_main);
    size_t p = SkipTagName(t, Record(m_main).start + 1, end);
    AttributeSpan a;
    while (missing != 0 && NextAttribute(t, p, end, a)) {
        const std::u16string_view name(t + a.nameBegin, a.nameEnd - a.nameBegin);
        // The first attribute of a name answers, for each time the name is asked.
        for (size_t i = 0; i < count; ++i) {
            if ((found >> i & 1) != 0 || name != names[i]) continue;
            found |= uint64_t{1} << i;
            --missing;
            const std::u16string_view raw(t + a.valueBegin, a.valueEnd - a.valueBegin);
            if (!a.reference) {
                values[i] = raw;
            } else {
                scratch[i].clear();
                DecodeMarkupText(raw, scratch[i]);
                values[i] = scratch[i];
            }
        }
    }
}

std::u16string MarkupDocument::GetElementText() const { return ElementTextOf(m_main); }
std::u16string MarkupDocument::GetChildText() const { return ElementTextOf(m_child); }
std::u16string MarkupDocument::GetAttribute(std::u16string_view name) const { return AttributeOf(m_main, name); }
std::u16string MarkupDocument::GetChildAttribute(std::u16string_view name) const { return AttributeOf(m_child, name); }
std::u16string MarkupDocument::GetTagName() const { return TagNameOf(m_main); }
std::u16string MarkupDocument::GetChildTagName() const { return TagNameOf(m_child); }

}  // namespace marrowfin
