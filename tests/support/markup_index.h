#pragma once
// The markup document's index as the tests and the fuzz target judge it:
// its invariants, and its shape in document order, independent of record
// numbers, so that an edited document can be compared with a fresh parse.

#include <string>
#include <tuple>
#include <vector>

#include "markup/markup_document.h"
#include "platform/text.h"

namespace marrowfin::test {

inline std::string ResultOf(const MarkupDocument& doc) { return Utf16ToUtf8(doc.GetResult()); }
inline bool HasRecord(const MarkupDocument& doc, const char* record) { return ResultOf(doc).find(record) != std::string::npos; }

// Empty when links agree both ways, every element lies inside its parent and on a '<',
// siblings are in text order without overlap, and depths and first marks fit.
inline std::string CheckIndex(const MarkupDocument& doc) {
    const auto text = doc.Text();
    if (doc.Record(0).length != text.size()) return "document length";
    for (uint32_t i = 1; i < doc.RecordCount(); ++i) {
        const auto& r = doc.Record(i);
        if (r.parent >= doc.RecordCount() || r.nextSibling >= doc.RecordCount()) return "links out of range";
        const auto& p = doc.Record(r.parent);
        const auto& n = doc.Record(r.nextSibling);
        const uint32_t level = r.parent == 0 ? 0 : (p.levelMarks & 0xFFFF) + 1;
        if (r.start >= text.size() || text[r.start] != u'<' || size_t{r.start} + r.length > text.size() ||
            (r.tagLengths & 0x3FFFFF) > r.length || (r.parent != 0 && (r.start < p.start || r.start + r.length > p.start + p.length)) ||
            (r.nextSibling != 0 && (n.prevSibling != i || n.parent != r.parent || n.start < r.start + r.length)) ||
            (p.firstChild == i) != ((r.levelMarks & MarkupDocument::MarkFirst) != 0) || (r.levelMarks & 0xFFFF) != level)
            return "record " + std::to_string(i) + " of " + Utf16ToUtf8(text);
    }
    return {};
}

using Shape = std::vector<std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>>;
inline Shape ShapeOf(const MarkupDocument& doc) {
    Shape shape;
    for (uint32_t e = doc.Record(0).firstChild; e != 0;) {
        const auto& r = doc.Record(e);
        shape.emplace_back(r.start, r.length, r.tagLengths, r.levelMarks & (0xFFFF | MarkupDocument::MarkFirst));
        if (r.firstChild != 0) {
            e = r.firstChild;
            continue;
        }
        while (e != 0 && doc.Record(e).nextSibling == 0) e = doc.Record(e).parent;
        if (e != 0) e = doc.Record(e).nextSibling;
    }
    return shape;
}

// What a fresh parse of the document's text indexes.
inline Shape ReparsedShape(const MarkupDocument& doc) {
    MarkupDocument again;
    again.SetText(doc.Text());
    return ShapeOf(again);
}

}  // namespace marrowfin::test
