#pragma once
// Helpers shared by the markup tests.

#include <string>

#include "markup/markup_document.h"
#include "platform/text.h"

namespace marrowfin::test {

// The result records as UTF-8, for readable failure messages.
inline std::string ResultOf(const MarkupDocument& doc) { return U8(doc.GetResult()); }
inline bool HasRecord(const MarkupDocument& doc, const char* record) {
    return ResultOf(doc).find(record) != std::string::npos;
}

// Checks the structural invariants of the index: links agree in both
// directions, every element lies inside its parent, siblings are in text
// order and do not overlap, and each start lies on a '<'.
inline std::string CheckIndex(const MarkupDocument& doc) {
    const auto text = doc.Text();
    if (doc.Record(0).length != text.size()) return "document length";
    for (uint32_t i = 1; i < doc.RecordCount(); ++i) {
        const auto& r = doc.Record(i);
        if (r.start >= text.size() || text[r.start] != u'<') return "start of " + std::to_string(i);
        if (static_cast<size_t>(r.start) + r.length > text.size()) return "length of " + std::to_string(i);
        const auto& p = doc.Record(r.parent);
        if (r.parent != 0 && (r.start < p.start || r.start + r.length > p.start + p.length))
            return "outside parent " + std::to_string(i);
        if (r.nextSibling != 0) {
            const auto& n = doc.Record(r.nextSibling);
            if (n.prevSibling != i) return "prev link of " + std::to_string(r.nextSibling);
            if (n.parent != r.parent) return "sibling parent " + std::to_string(i);
            if (n.start < r.start + r.length) return "sibling order " + std::to_string(i);
        }
        const bool first = p.firstChild == i;
        if (first != ((r.levelMarks & MarkupDocument::MarkFirst) != 0)) return "first mark " + std::to_string(i);
        const uint32_t level = r.parent == 0 ? 0 : (p.levelMarks & 0xFFFF) + 1;
        if ((r.levelMarks & 0xFFFF) != level) return "level of " + std::to_string(i);
    }
    return {};
}

}  // namespace marrowfin::test
