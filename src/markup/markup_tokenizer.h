#pragma once
// Reads one node of markup at a time from a NUL-terminated UTF-16 text.

#include <cstddef>
#include <cstdint>
#include <string>

namespace marrowfin {

enum MarkupNodeKind : int {
    NodeEndTag = 0,
    NodeStartTag = 1,
    NodeText = 2,
    NodeWhiteSpace = 4,
    NodeCData = 8,
    NodeProcessingInstruction = 16,
    NodeComment = 32,
    NodeDoctype = 64,
    NodeSyntaxError = -1,
    NodeEndOfText = -2,
};

struct MarkupNode {
    int kind = NodeEndOfText;
    size_t offset = 0;
    size_t length = 0;
    size_t nameOffset = 0;  // tags: the tag name
    size_t nameEnd = 0;
    bool empty = false;     // start tag closed by "/>"
};

inline bool IsMarkupSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; }

class MarkupTokenizer {
public:
    // `text[length]` must be 0 and no earlier unit may be 0: the NUL is the
    // sentinel that ends every scan. Syntax error records go to `records`
    // when it is not null.
    MarkupTokenizer(const char16_t* text, size_t length, std::u16string* records)
        : m_text(text), m_length(length), m_records(records) {}

    void Read(size_t offset, MarkupNode& node);

private:
    void ReadStartTag(size_t offset, MarkupNode& node);
    void ReadEndTag(size_t offset, MarkupNode& node);
    void ReadTerminated(size_t offset, size_t minEnd, const char16_t* terminator, int kind,
                        const char16_t* unterminatedType, MarkupNode& node);
    void ReadDoctype(size_t offset, MarkupNode& node);
    void SyntaxError(size_t offset, size_t resumeAt, const char16_t* record, MarkupNode& node);
    void Unterminated(size_t offset, const char16_t* type, MarkupNode& node);
    size_t FindUnit(size_t from, char16_t c) const;

    const char16_t* m_text;
    size_t m_length;
    std::u16string* m_records;
};

}  // namespace marrowfin
