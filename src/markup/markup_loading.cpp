// Reading and writing files: byte order marks, declared encodings, UTF-8
// detection and the conversions at the edge.

#include <cerrno>
#include <cstring>

#include "markup/encoding_names.h"
#include "markup/markup_attributes.h"
#include "markup/markup_document.h"
#include "markup/markup_records.h"
#include "markup/markup_text.h"
#include "markup/markup_tokenizer.h"
#include "markup/utf8_decoder.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marrowfin {
namespace {

constexpr size_t kDeclarationBlock = 1024;

bool EqualsFolded(std::u16string_view a, std::u16string_view lowerB) {
    if (a.size() != lowerB.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        const char16_t c = (a[i] >= u'A' && a[i] <= u'Z') ? static_cast<char16_t>(a[i] + 32) : a[i];
        if (c != lowerB[i]) return false;
    }
    return true;
}

std::u16string AttributeValue(const char16_t* t, size_t begin, size_t end, std::u16string_view name, bool folded) {
    std::u16string out;
    ScanAttributes(t, begin, end, [&](const AttributeSpan& a) {
        const std::u16string_view n(t + a.nameBegin, a.nameEnd - a.nameBegin);
        if (folded ? !EqualsFolded(n, name) : n != name) return false;
        DecodeMarkupText(std::u16string_view(t + a.valueBegin, a.valueEnd - a.valueBegin), out);
        return true;
    });
    return out;
}

// The charset of a Content-Type value such as "text/html; charset=gbk".
std::u16string CharsetOf(std::u16string_view content) {
    for (size_t i = 0; i + 8 <= content.size(); ++i) {
        if (!EqualsFolded(content.substr(i, 8), u"charset=")) continue;
        size_t b = i + 8;
        size_t e = b;
        while (e < content.size() && content[e] != u';' && !IsMarkupSpace(content[e]) && content[e] != u'"' &&
               content[e] != u'\'')
            ++e;
        return std::u16string(content.substr(b, e - b));
    }
    return {};
}

// The encoding a text declares at its start: the encoding of a leading
// "<?xml ...?>", or in an html document the charset of its Content-Type meta,
// looked for up to </head>. Any other first element ends the search.
std::u16string DeclaredEncoding(std::u16string block) {
    std::erase(block, u'\0');  // the tokeniser's sentinel must be the only NUL
    const char16_t* t = block.c_str();
    MarkupTokenizer tokenizer(t, block.size(), nullptr);
    MarkupNode node;
    bool html = false;
    bool first = true;
    for (size_t pos = 0;; pos += node.length) {
        tokenizer.Read(pos, node);
        if (node.kind == NodeEndOfText || node.length == 0) break;
        const std::u16string_view name(t + node.nameOffset, node.nameEnd - node.nameOffset);
        if (node.kind == NodeProcessingInstruction && first) {
            const std::u16string_view pi(t + node.offset, node.length);
            if (pi.starts_with(u"<?xml") && pi.size() > 5 && (IsMarkupSpace(pi[5]) || pi[5] == u'?'))
                return AttributeValue(t, node.offset + 2, node.offset + node.length, u"encoding", false);
        } else if (node.kind == NodeStartTag) {
            if (!html) {
                if (!EqualsFolded(name, u"html")) break;
                html = true;
            } else if (EqualsFolded(name, u"meta")) {
                const size_t end = node.offset + node.length;
                if (EqualsFolded(AttributeValue(t, node.offset + 1, end, u"http-equiv", true), u"content-type")) {
                    std::u16string charset = CharsetOf(AttributeValue(t, node.offset + 1, end, u"content", true));
                    if (!charset.empty()) return charset;
                }
            }
        } else if (node.kind == NodeEndTag && html && EqualsFolded(name, u"head")) {
            break;
        }
        if (node.kind != NodeWhiteSpace) first = false;
    }
    return {};
}

std::u16string EncodingLabel(uint32_t codePage, const std::u16string& declared) {
    if (const char16_t* name = CanonicalEncodingName(codePage); name && *name) return name;
    return declared;
}

void AppendFileError(std::u16string& result, int error) {
    std::string message = std::strerror(error);
    message = message.substr(0, message.find_first_of("\r\n"));
    AppendResultRecord(result, u"file_error",
                       {{u"msg", Utf8ToUtf16(message)}, {u"n", DecimalText(static_cast<uint64_t>(error))}});
}

}  // namespace

uint32_t MarkupDocument::CodePageOfEncodingName(std::u16string_view name) {
    return marrowfin::CodePageOfEncodingName(name);
}
void MarkupDocument::EncodeText(std::u16string_view text, std::u16string& out, bool attribute) {
    EncodeMarkupText(text, out, attribute);
}
void MarkupDocument::DecodeText(std::u16string_view text, std::u16string& out) { DecodeMarkupText(text, out); }

bool MarkupDocument::LoadFile(std::u16string_view path) {
    Clear();
    m_result.clear();
    std::string bytes;
    errno = 0;
    if (!ReadWholeFile(path, bytes)) {
        AppendFileError(m_result, errno != 0 ? errno : EIO);
        return false;
    }
    return Decode(bytes);
}

bool MarkupDocument::LoadBytes(std::string_view bytes) {
    Clear();
    m_result.clear();
    return Decode(bytes);
}

// Long on purpose: the byte-order mark, the declared encoding and each
// decoding road share the locals that say where the text starts and how wide
// its units are; split up, they would travel in a struct for no gain.
bool MarkupDocument::Decode(std::string_view bytes) {
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
    size_t pos = 0;
    uint32_t codePage = 0;
    bool known = false;
    size_t unit = 1;
    std::u16string declared;
    if (bytes.size() >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF) {
        codePage = CpUtf8, m_flags |= FlagUtf8Bom, pos = 3;
    } else if (bytes.size() >= 2 && b[0] == 0xFF && b[1] == 0xFE) {
        codePage = CpUtf16Le, m_flags |= FlagUtf16LeBom, pos = 2;
    } else if (bytes.size() >= 2 && b[0] == 0xFE && b[1] == 0xFF) {
        codePage = CpUtf16Be, m_flags |= FlagUtf16BeBom, pos = 2;
    }
    if (pos != 0) {
        known = true;
        AppendResultRecord(m_result, u"bom");
    } else if (!bytes.empty()) {
        declared = DeclaredEncoding(Utf8ToUtf16(bytes.substr(0, kDeclarationBlock)));
        codePage = marrowfin::CodePageOfEncodingName(declared);
        known = codePage != 0;
        if (!known && b[0] == '<') codePage = CpUtf8, known = true;
    }
    if (codePage == CpUtf16Le || codePage == CpUtf16Be) unit = 2;
    else if (codePage == CpUtf32) unit = 4;
    const std::string_view rest = bytes.substr(pos);

    size_t nulls = 0;
    std::u16string converted;  // only for conversions through the platform
    bool viaPlatform = false;
    bool swapped = false;
    bool detected = false;
    if (unit == 2) {
        // UTF-16 goes straight into the text, NUL units dropped.
        const size_t units = rest.size() / 2;
        const auto* r = reinterpret_cast<const unsigned char*>(rest.data());
        auto buffer = AllocateText(units + 1);
        const bool big = codePage == CpUtf16Be;
        size_t o = 0;
        for (size_t i = 0; i < units; ++i) {
            const char16_t u = big ? static_cast<char16_t>((r[2 * i] << 8) | r[2 * i + 1])
                                   : static_cast<char16_t>(r[2 * i] | (r[2 * i + 1] << 8));
            if (u == 0) ++nulls;
            else buffer[o++] = u;
        }
        buffer[o] = 0;
        swapped = big;
        m_text = std::move(buffer);
        m_length = o;
        m_capacity = units + 1;
    } else if (unit == 4) {
        std::string kept;
        kept.reserve(rest.size());
        for (size_t i = 0; i + 4 <= rest.size(); i += 4) {
            if (std::memcmp(rest.data() + i, "\0\0\0\0", 4) == 0) ++nulls;
            else kept.append(rest.data() + i, 4);
        }
        CodePageToUtf16(kept, CpUtf32, converted);
        viaPlatform = true;
    } else {
        if (!known) {
            // No mark, no declaration, no leading '<': valid UTF-8 is taken
            // as such, anything else is read in the default code page.
            if (IsValidUtf8(rest)) codePage = CpUtf8, detected = true;
        }
        const bool utf8 = codePage == CpUtf8 || codePage == CpDefault || !IsCodePageSupported(codePage);
        if (utf8) {
            auto buffer = AllocateText(rest.size() + 1);
            const size_t o =
                DecodeUtf8Into(reinterpret_cast<const unsigned char*>(rest.data()), rest.size(), buffer.get(), nulls);
            buffer[o] = 0;
            m_text = std::move(buffer);
            m_length = o;
            m_capacity = rest.size() + 1;
        } else {
            std::string kept(rest);
            nulls = std::erase(kept, '\0');
            CodePageToUtf16(kept, codePage, converted);
            viaPlatform = true;
        }
    }
    if (viaPlatform) {
        std::erase(converted, u'\0');
        m_text = AllocateText(converted.size() + 1);
        std::memcpy(m_text.get(), converted.data(), sizeof(char16_t) * converted.size());
        m_text[converted.size()] = 0;
        m_length = converted.size();
        m_capacity = converted.size() + 1;
    }
    if (m_length > 0xFFFFFFF0u) {
        // Offsets are 32-bit: such a text cannot be indexed.
        m_text = AllocateText(1);
        m_text[0] = 0;
        m_length = 0;
        m_capacity = 1;
    }
    AppendResultRecord(
        m_result, u"read",
        {{u"encoding", EncodingLabel(codePage, declared)}, {u"length", DecimalText(rest.size() / unit)}});
    if (nulls != 0) AppendResultRecord(m_result, u"nulls_removed", {{u"count", DecimalText(nulls)}});
    if (detected) AppendResultRecord(m_result, u"utf8_detection");
    if (swapped) AppendResultRecord(m_result, u"endian_swap");
    if (unit != 2)
        AppendResultRecord(m_result, u"converted_to", {{u"encoding", u"UTF-16"}, {u"length", DecimalText(m_length)}});
    return Parse();
}

bool MarkupDocument::SaveFile(std::u16string_view path) {
    std::string bytes;
    uint32_t codePage;
    if (m_flags & FlagUtf8Bom) {
        bytes = "\xEF\xBB\xBF";
        codePage = CpUtf8;
    } else if (m_flags & FlagUtf16LeBom) {
        bytes = "\xFF\xFE";
        codePage = CpUtf16Le;
    } else if (m_flags & FlagUtf16BeBom) {
        bytes = "\xFE\xFF";
        codePage = CpUtf16Be;
    } else {
        codePage = CpUtf8;
        if (m_length > 0) {
            const std::u16string declared =
                DeclaredEncoding(std::u16string(m_text.get(), std::min(m_length, kDeclarationBlock)));
            if (!declared.empty()) codePage = marrowfin::CodePageOfEncodingName(declared);
            if (codePage == CpDefault) codePage = CpUtf8;
        }
    }
    const std::u16string_view text = Text();
    if (!text.empty()) {
        bool lossy = false;
        if (codePage == CpUtf16Le || codePage == CpUtf16Be) {
            const size_t at = bytes.size();
            bytes.resize(at + text.size() * 2);
            const bool big = codePage == CpUtf16Be;
            for (size_t i = 0; i < text.size(); ++i) {
                const char16_t u = text[i];
                bytes[at + 2 * i + (big ? 1 : 0)] = static_cast<char>(u & 0xFF);
                bytes[at + 2 * i + (big ? 0 : 1)] = static_cast<char>(u >> 8);
            }
        } else {
            std::string encoded;
            if (!IsCodePageSupported(codePage) || !Utf16ToCodePage(text, codePage, encoded, &lossy))
                encoded = Utf16ToUtf8(text, &lossy);
            bytes += encoded;
            AppendResultRecord(m_result, u"converted_from",
                               {{u"encoding", u"UTF-16"}, {u"length", DecimalText(text.size())}});
        }
        if (lossy) AppendResultRecord(m_result, u"conversion_loss");
    }
    errno = 0;
    if (!WriteFileAtomic(path, bytes)) {
        AppendFileError(m_result, errno != 0 ? errno : EIO);
        return false;
    }
    const char* iconvName = IconvNameOfCodePage(codePage);
    AppendResultRecord(m_result, u"write",
                       {{u"encoding", EncodingLabel(codePage, iconvName ? Utf8ToUtf16(iconvName) : std::u16string())},
                        {u"length", DecimalText(bytes.size())}});
    return true;
}

}  // namespace marrowfin
