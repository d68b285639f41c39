#pragma once
// The one XML facility: the whole document as one UTF-16 text, beside it an
// index of element records holding offsets into that text, and three cursors
// (parent, main, child) to walk it. Editing inserts into the text and moves
// the offsets behind the insertion. Parsing never gives up; failures are
// bool results plus a readable list of records (GetResult).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "markup/text_buffer.h"

namespace marrowfin {

struct MarkupNode;

class MarkupDocument {
public:
    // Document flags: how a loaded file was encoded, kept for SaveFile.
    static constexpr uint32_t FlagUtf16LeBom = 0x1;
    static constexpr uint32_t FlagUtf8Bom = 0x4;
    static constexpr uint32_t FlagUtf16BeBom = 0x80;

    // Marks in word 3 of an element record.
    static constexpr uint32_t MarkFirst = 0x80000;
    static constexpr uint32_t MarkUnended = 0x100000;
    static constexpr uint32_t MarkErrorInside = 0x200000;
    static constexpr uint32_t MarkIllFormed = 0x800000;

    MarkupDocument();
    ~MarkupDocument();
    MarkupDocument(const MarkupDocument&) = delete;
    MarkupDocument& operator=(const MarkupDocument&) = delete;
    MarkupDocument(MarkupDocument&&) noexcept;
    MarkupDocument& operator=(MarkupDocument&&) noexcept;

    // Takes the text as the whole document and parses it. Null or empty gives
    // an empty document. True when the text is well-formed with one root.
    bool SetText(std::u16string_view text);
    bool SetText(std::nullptr_t);
    // SetText of the bytes read as UTF-8, without a wide copy of them: up to
    // the first NUL byte, each ill-formed byte becoming U+FFFD.
    bool SetUtf8Text(std::string_view bytes);
    // Reads and decodes a file (marks, declared encodings, UTF-8 detection).
    bool LoadFile(std::u16string_view path);
    // The decoding of LoadFile on bytes already in memory (service replies).
    bool LoadBytes(std::string_view bytes);
    // Encodes the text in the loaded form and writes the file atomically.
    // The object itself is not changed apart from its result records.
    bool SaveFile(std::u16string_view path);

    // Empty name means any element.
    bool FindElement(std::u16string_view name = {});
    bool FindChildElement(std::u16string_view name = {});
    bool EnterElement();
    bool LeaveElement();
    void RewindMain();

    std::u16string GetElementText() const;
    std::u16string GetChildText() const;
    std::u16string GetAttribute(std::u16string_view name) const;
    std::u16string GetChildAttribute(std::u16string_view name) const;
    // The main element's attribute decoded into `out` (replacing what it
    // held, keeping its storage): a walk over many elements reuses one
    // buffer. False, with `out` empty, when there is no such attribute.
    bool GetAttribute(std::u16string_view name, std::u16string& out) const;
    // The main element's attribute without a copy: a view into the text when
    // it holds no reference to decode, else decoded into `scratch` and viewed
    // there. Empty when there is no such attribute. The view lasts until the
    // document or `scratch` changes.
    std::u16string_view AttributeView(std::u16string_view name, std::u16string& scratch) const;
    // Several attributes of the main element in one pass over its start tag:
    // values[i] as AttributeView(names[i], scratch[i]) gives it, empty when
    // absent. A walk that reads the same few attributes of many elements
    // pays for one scan each rather than one call and lookup per attribute.
    template <size_t N>
    void AttributeViews(const std::u16string_view (&names)[N], std::u16string_view (&values)[N],
                        std::u16string (&scratch)[N]) const {
        static_assert(N <= 64);
        ReadAttributeViews(names, values, scratch, N);
    }
    // Tag names of the main and the child element; empty when there is none.
    std::u16string GetTagName() const;
    std::u16string GetChildTagName() const;

    // Empty text gives <name/>.
    bool AddElement(std::u16string_view name, std::u16string_view text = {});
    bool SetAttribute(std::u16string_view name, std::u16string_view value);

    // The document text, NUL-terminated in storage.
    std::u16string_view Text() const { return {m_text.get(), m_length}; }
    // The result records gathered by the last SetText, LoadFile or SaveFile.
    const std::u16string& GetResult() const { return m_result; }
    uint32_t Flags() const { return m_flags; }
    // True when record 0 carries the ill-formed mark.
    bool IsIllFormed() const;

    // One element record: eight 32-bit words.
    struct ElementRecord {
        uint32_t start;  // offset of the '<' of the start tag
        uint32_t length;  // through the '>' of the end tag
        uint32_t tagLengths;  // low 22 bits start tag, high 10 bits end tag
        uint32_t levelMarks;  // low 16 bits depth, plus the marks
        uint32_t parent;
        uint32_t firstChild;
        uint32_t nextSibling;
        uint32_t prevSibling;  // on a first child: the last child
    };
    static_assert(sizeof(ElementRecord) == 32);
    static constexpr uint32_t PageBits = 16;
    static constexpr uint32_t PageSize = 1u << PageBits;

    // Read access to the index and cursors, for tests and diagnostics.
    const ElementRecord& Record(uint32_t index) const { return m_pages[index >> PageBits][index & (PageSize - 1)]; }
    uint32_t RecordCount() const { return m_nextFree; }
    uint32_t MainCursor() const { return m_main; }
    uint32_t ParentCursor() const { return m_parent; }
    uint32_t ChildCursor() const { return m_child; }

    // Encoding name to code page: 0 for empty, unknown or too long names;
    // 65005 for names beginning with "UTF-32".
    static uint32_t CodePageOfEncodingName(std::u16string_view name);
    static void EncodeText(std::u16string_view text, std::u16string& out, bool attribute);
    static void DecodeText(std::u16string_view text, std::u16string& out);

private:
    struct OpenTag;
    struct Placement;

    ElementRecord& Rec(uint32_t index) { return m_pages[index >> PageBits][index & (PageSize - 1)]; }
    void Clear();
    bool Parse();
    bool FinishParse();
    uint32_t OpenRecord(const MarkupNode& node, uint32_t parent, size_t depth);
    void RecordLoneEndTag(const MarkupNode& node, uint32_t current);
    bool UnendOpenTags(const std::vector<OpenTag>& stack, size_t from, size_t offset2);
    bool Decode(std::string_view bytes);
    void ReserveText(size_t length);
    void ReserveRecords(uint32_t count);
    // A record from the room at hand, inline for the parse loop; the rest
    // grows the index first.
    uint32_t NewRecord() {
        const uint32_t index = m_nextFree;
        if (index < m_firstPageCapacity || (index >= PageSize && (index >> PageBits) < m_pages.size())) {
            ++m_nextFree;
            return index;
        }
        return NewRecordGrowing();
    }
    uint32_t NewRecordGrowing();
    // Links record `index` as the last child of `parent`: the first child's
    // prevSibling names the last one, so appending costs no walk.
    void LinkAsLastChild(uint32_t index, uint32_t parent) {
        ElementRecord& r = Rec(index);
        r.nextSibling = 0;
        ElementRecord& p = Rec(parent);
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
    }
    void AddRecord(std::u16string_view record);
    bool WellFormedResult() const;
    std::u16string ElementTextOf(uint32_t index) const;
    std::u16string AttributeOf(uint32_t index, std::u16string_view name) const;
    bool AttributeInto(uint32_t index, std::u16string_view name, std::u16string& out) const;
    // Where the raw value of the attribute stands in the text; false when
    // the element has no such attribute. `reference` tells whether the value
    // holds a '&' and so needs decoding.
    bool FindAttributeValue(uint32_t index, std::u16string_view name, uint32_t& begin, uint32_t& length,
                            bool& reference) const;
    void ReadAttributeViews(const std::u16string_view* names, std::u16string_view* values, std::u16string* scratch,
                            size_t count) const;
    std::u16string TagNameOf(uint32_t index) const;
    size_t TagContentEnd(uint32_t index) const;
    void Insert(size_t offset, size_t removeLength, std::u16string_view with);
    Placement PlaceElement(std::u16string element) const;
    void LinkNewRecord(uint32_t index, uint32_t parent);
    void MoveOffsetsBehind(uint32_t element, int64_t delta);
    void ShiftSubtree(uint32_t top, int64_t delta);
    void FixLevels();
    bool NameMatches(uint32_t index, std::u16string_view name) const;

    TextBuffer m_text;
    size_t m_length = 0;
    size_t m_capacity = 0;
    std::u16string m_result;
    uint32_t m_parent = 0;
    uint32_t m_main = 0;
    uint32_t m_child = 0;
    uint32_t m_nextFree = 1;
    uint32_t m_mainKind = 0;
    uint32_t m_flags = 0;
    // Two-level index: page i >> 16, slot i & 0xFFFF.
    std::vector<std::unique_ptr<ElementRecord[]>> m_pages;
    uint32_t m_firstPageCapacity = 0;

    // The attributes of the element last asked about, as far as they have
    // been scanned: a walk that reads several attributes of each element
    // scans each start tag once. Emptied whenever the text changes; a plain
    // array, so reading allocates nothing but the result.
    struct AttributeCache {
        static constexpr uint32_t Capacity = 16;
        struct Span {
            uint32_t nameBegin;
            uint32_t nameLength;
            uint32_t valueBegin;
            uint32_t valueLength;
            bool reference;
        };
        uint32_t element = 0;  // 0: nothing cached
        uint32_t count = 0;
        uint32_t resume = 0;  // where the scan goes on
        uint32_t end = 0;  // end of the attributes of the tag
        bool done = false;  // every attribute of the tag is in `spans`
        Span spans[Capacity];
    };
    mutable AttributeCache m_attributes;
};

}  // namespace marrowfin
