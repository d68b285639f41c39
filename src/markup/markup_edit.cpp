// Editing in place: AddElement and SetAttribute insert into the text and
// move the offsets of everything behind the insertion, so that the index
// stays what a re-parse of the new text would give.

#include <algorithm>
#include <cstring>

#include "markup/element_record_fields.h"
#include "markup/markup_attributes.h"
#include "markup/markup_document.h"
#include "markup/markup_text.h"

namespace marrowfin {

using namespace record_fields;

namespace {

// A name a caller may give to AddElement or SetAttribute: one that reads back
// as the same single name.
bool IsPlainName(std::u16string_view name, bool element) {
    if (name.empty()) return false;
    const char16_t first = name[0];
    if (element && !((first >= u'A' && first <= u'Z') || first == u'_' || first == u':' || first >= u'a')) return false;
    for (const char16_t c : name) {
        if (c == 0 || IsMarkupSpace(c)) return false;
        switch (c) {
            case u'<':
            case u'>':
            case u'/':
            case u'=':
            case u'"':
            case u'\'':
            case u'&':
            case u'?':
            case u'!': return false;
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

// The markup of a new element, "<name/>" or "<name>text</name>", then a line end.
struct NewElement {
    std::u16string markup;
    size_t length = 0;  // without the line end
    size_t startTag = 0;
    size_t endTag = 0;
};

NewElement MakeElement(std::u16string_view name, std::u16string_view text) {
    NewElement e;
    std::u16string& m = e.markup;
    m.reserve(name.size() * 2 + text.size() + 8);
    m += u'<';
    m += name;
    const std::u16string clean = WithoutNul(text);
    if (clean.empty()) {
        m += u"/>";
        e.startTag = m.size();
    } else {
        m += u'>';
        e.startTag = m.size();
        EncodeMarkupText(clean, m, false);
        m += u"</";
        m += name;
        m += u'>';
        e.endTag = name.size() + 3;
    }
    e.length = m.size();
    m += u"\r\n";
    return e;
}

}  // namespace

// Where a new element goes: the text to insert at `at` in place of
// `removeLength` units, and where the element begins in the new text.
struct MarkupDocument::Placement {
    size_t at = 0;
    size_t removeLength = 0;
    size_t elementOffset = 0;
    std::u16string insertion;
    std::u16string parentName;
    bool reshapeParent = false;  // the parent gains an end tag around it
};

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

// Behind the main element, or at the end of the parent's content. A parent
// written "<p/>" or left unended is opened around the new element.
MarkupDocument::Placement MarkupDocument::PlaceElement(std::u16string element) const {
    Placement place;
    const uint32_t parent = m_parent;
    const char16_t* t = m_text.get();
    if (m_main != 0 || parent == 0) {
        size_t at = m_main != 0 ? static_cast<size_t>(Record(m_main).start) + Record(m_main).length : m_length;
        size_t q = at;
        while (IsMarkupSpace(t[q])) ++q;
        if (t[q] == u'<' || t[q] == 0) at = q;
        place.at = place.elementOffset = at;
        place.insertion = std::move(element);
        return place;
    }
    const ElementRecord& p = Record(parent);
    const size_t startTagP = StartTagLength(p);
    const size_t endTagP = EndTagLength(p);
    place.parentName = TagNameOf(parent);
    std::u16string& insertion = place.insertion;
    if ((p.levelMarks & MarkUnended) == 0 && endTagP != 0) {
        place.at = static_cast<size_t>(p.start) + p.length - endTagP;
        if (p.length == startTagP + endTagP) insertion = u"\r\n";
        place.elementOffset = place.at + insertion.size();
        insertion += element;
        return place;
    }
    place.reshapeParent = true;
    const bool empty = (p.levelMarks & MarkUnended) == 0;
    place.at = p.start + startTagP;
    if (empty) {
        // The '/' before '>' goes; so does any run of them, as "<a//>"
        // would otherwise still read as empty.
        place.at -= 1;
        while (place.at > p.start + 1 && t[place.at - 1] == u'/') {
            --place.at;
            ++place.removeLength;
        }
        insertion += u'>';
    }
    insertion += u"\r\n";
    place.elementOffset = place.at + insertion.size();
    insertion += element;
    insertion += u"</";
    insertion += place.parentName;
    if (!empty) insertion += u'>';
    return place;
}

// Links the new record behind the main element, or as the parent's last child.
void MarkupDocument::LinkNewRecord(uint32_t index, uint32_t parent) {
    ElementRecord& r = Rec(index);
    if (m_main != 0) {
        ElementRecord& m = Rec(m_main);
        r.prevSibling = m_main;
        r.nextSibling = m.nextSibling;
        if (m.nextSibling != 0) Rec(m.nextSibling).prevSibling = index;
        else Rec(Record(parent).firstChild).prevSibling = index;
        m.nextSibling = index;
        return;
    }
    LinkAsLastChild(index, parent);
}

bool MarkupDocument::AddElement(std::u16string_view name, std::u16string_view text) {
    if (!IsPlainName(name, true)) return false;
    NewElement element = MakeElement(name, text);
    if (m_length + element.markup.size() + name.size() + 8 > kMaxTextLength) return false;

    const uint32_t parent = m_parent;
    const Placement place = PlaceElement(std::move(element.markup));
    const int64_t delta = static_cast<int64_t>(place.insertion.size()) - static_cast<int64_t>(place.removeLength);
    Insert(place.at, place.removeLength, place.insertion);

    if (place.reshapeParent) {
        ElementRecord& p = Rec(parent);
        const size_t startTagP = StartTagLength(p) - place.removeLength;
        p.tagLengths = TagLengths(startTagP, place.parentName.size() + 3);
        p.levelMarks &= ~MarkUnended;
    }
    const uint32_t index = NewRecord();
    ElementRecord& r = Rec(index);
    r.start = static_cast<uint32_t>(place.elementOffset);
    r.length = static_cast<uint32_t>(element.length);
    r.tagLengths = TagLengths(element.startTag, element.endTag);
    r.levelMarks = parent == 0 ? 0 : std::min((Record(parent).levelMarks & kLevelMask) + 1, kLevelMask);
    r.parent = parent;
    r.firstChild = 0;
    LinkNewRecord(index, parent);
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
