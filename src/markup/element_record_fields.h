#pragma once
// The packed fields of an element record and the limits of a document,
// shared by the parse, read and edit sides of MarkupDocument.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "markup/markup_document.h"
#include "markup/markup_tokenizer.h"

namespace marrowfin::record_fields {

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

}  // namespace marrowfin::record_fields
