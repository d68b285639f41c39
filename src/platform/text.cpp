#include "platform/text.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace marrowfin {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// Length of the sequence a lead byte starts, 0 when it cannot lead.
inline int SequenceLength(unsigned char b) {
    if (b < 0x80) return 1;
    if (b < 0xC0) return 0;  // a continuation byte cannot lead
    if (b < 0xE0) return 2;
    if (b < 0xF0) return 3;
    if (b < 0xF8) return 4;
    return 0;  // 0xF8 and above are never valid
}

struct IconvHandle {
    iconv_t cd;
    explicit IconvHandle(iconv_t c) : cd(c) {}
    ~IconvHandle() {
        if (cd != reinterpret_cast<iconv_t>(-1)) iconv_close(cd);
    }
    bool ok() const { return cd != reinterpret_cast<iconv_t>(-1); }
};

}  // namespace

bool IsValidUtf8(std::string_view bytes) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const size_t n = bytes.size();
    size_t i = 0;
    while (i < n) {
        const unsigned char b = p[i];
        if (b < 0x80) {
            ++i;
            continue;
        }
        const int len = SequenceLength(b);
        if (len == 0 || i + len > n) return false;
        for (int k = 1; k < len; ++k)
            if ((p[i + k] & 0xC0) != 0x80) return false;
        i += len;
    }
    return true;
}

std::u16string Utf8ToUtf16(std::string_view bytes, bool* lossy) {
    // Replies run to tens of megabytes: write into a sized buffer, and copy
    // ASCII runs eight bytes at a time.
    std::u16string out(bytes.size(), u'\0');
    char16_t* o = out.data();
    bool bad = false;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const size_t n = bytes.size();
    size_t i = 0;
    while (i < n) {
        if (i + 8 <= n) {
            uint64_t word;
            std::memcpy(&word, p + i, 8);
            if ((word & 0x8080808080808080ull) == 0) {
                for (int k = 0; k < 8; ++k) o[k] = p[i + k];
                o += 8;
                i += 8;
                continue;
            }
        }
        const unsigned char b = p[i];
        if (b < 0x80) {
            *o++ = b;
            ++i;
            continue;
        }
        uint32_t cp = 0;
        const int len = DecodeUtf8Sequence(p + i, n - i, cp);
        const bool ok = len != 0;
        if (!ok) {
            *o++ = kReplacement;
            bad = true;
            ++i;
            continue;
        }
        if (cp < 0x10000) {
            *o++ = static_cast<char16_t>(cp);
        } else {
            cp -= 0x10000;
            *o++ = static_cast<char16_t>(0xD800 + (cp >> 10));
            *o++ = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        }
        i += len;
    }
    out.resize(static_cast<size_t>(o - out.data()));
    if (lossy) *lossy = bad;
    return out;
}

std::string Utf16ToUtf8(std::u16string_view text, bool* lossy) {
    std::string out(text.size() * 3, '\0');
    char* o = out.data();
    bool bad = false;
    const size_t n = text.size();
    for (size_t i = 0; i < n; ++i) {
        uint32_t cp = text[i];
        if (cp < 0x80) {
            *o++ = static_cast<char>(cp);
            continue;
        }
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = kReplacement;
            bad = true;
        }
        if (cp < 0x800) {
            *o++ = static_cast<char>(0xC0 | (cp >> 6));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            *o++ = static_cast<char>(0xE0 | (cp >> 12));
            *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else {  // a pair of two units becomes four bytes: within the 3 per unit reserved
            *o++ = static_cast<char>(0xF0 | (cp >> 18));
            *o++ = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    out.resize(static_cast<size_t>(o - out.data()));
    if (lossy) *lossy = bad;
    return out;
}

const char* IconvNameOfCodePage(uint32_t codePage) {
    switch (codePage) {
        case CpDefault:
        case CpUtf8: return "UTF-8";
        case CpUtf16Le: return "UTF-16LE";
        case CpUtf16Be: return "UTF-16BE";
        case CpUtf32: return "UTF-32LE";
        case 65006: return "UTF-32BE";
        case 936: return "GBK";
        case 54936: return "GB18030";
        case 20936: return "GB2312";
        case 950: return "BIG5";
        case 932: return "SHIFT_JIS";
        case 20932: return "EUC-JP";
        case 51932: return "EUC-JP";
        case 949: return "CP949";
        case 51949: return "EUC-KR";
        case 50220: return "ISO-2022-JP";
        case 20866: return "KOI8-R";
        case 21866: return "KOI8-U";
        case 874: return "CP874";
        case 1361: return "JOHAB";
        case 20127: return "ASCII";
        case 437: return "CP437";
        case 850: return "CP850";
        case 852: return "CP852";
        case 855: return "CP855";
        case 857: return "CP857";
        case 860: return "CP860";
        case 861: return "CP861";
        case 862: return "CP862";
        case 863: return "CP863";
        case 864: return "CP864";
        case 865: return "CP865";
        case 866: return "CP866";
        case 869: return "CP869";
        case 10000: return "MACINTOSH";
        case 65000: return "UTF-7";
        // Windows numbers that glibc knows by other names.
        case 51936: return "EUC-CN";
        case 50225: return "ISO-2022-KR";
        case 38598: return "ISO-8859-8";
        case 737: return "CP737";
        case 775: return "CP775";
        case 858: return "CP858";
        case 10007: return "CP10007";
        case 10017: return "MACUKRAINIAN";
        case 10029: return "MAC-CENTRALEUROPE";
        case 21025: return "IBM1025";
        default: break;
    }
    // Windows code pages 1250 to 1258 and the ISO 8859 family from 28591.
    static thread_local char name[24];
    if (codePage >= 1250 && codePage <= 1258) {
        std::snprintf(name, sizeof name, "CP%u", codePage);
        return name;
    }
    if (codePage >= 28591 && codePage <= 28606 && codePage != 28600 && codePage != 28602) {
        std::snprintf(name, sizeof name, "ISO-8859-%u", codePage - 28590);
        return name;
    }
    // The EBCDIC pages: IBM037 and the like, and 20273 for IBM273.
    if (codePage == 37 || codePage == 500 || codePage == 870 || codePage == 875 || codePage == 1026 ||
        codePage == 1047 || (codePage >= 1140 && codePage <= 1149)) {
        std::snprintf(name, sizeof name, "IBM%03u", codePage);
        return name;
    }
    if (codePage >= 20273 && codePage <= 20905) {
        std::snprintf(name, sizeof name, "IBM%u", codePage - 20000);
        return name;
    }
    return nullptr;
}

bool IsCodePageSupported(uint32_t codePage) {
    const char* name = IconvNameOfCodePage(codePage);
    if (!name) return false;
    IconvHandle h(iconv_open("UTF-16LE", name));
    return h.ok();
}

bool CodePageToUtf16(std::string_view bytes, uint32_t codePage, std::u16string& out, bool* lossy) {
    out.clear();
    if (lossy) *lossy = false;
    if (codePage == CpDefault || codePage == CpUtf8) {
        out = Utf8ToUtf16(bytes, lossy);
        return true;
    }
    const char* name = IconvNameOfCodePage(codePage);
    if (!name) return false;
    IconvHandle h(iconv_open("UTF-16LE", name));
    if (!h.ok()) return false;
    std::vector<char> buffer(bytes.size() * 4 + 16);
    char* in = const_cast<char*>(bytes.data());
    size_t inLeft = bytes.size();
    bool bad = false;
    std::string result;
    while (inLeft > 0) {
        char* o = buffer.data();
        size_t oLeft = buffer.size();
        const size_t r = iconv(h.cd, &in, &inLeft, &o, &oLeft);
        result.append(buffer.data(), buffer.size() - oLeft);
        if (r == static_cast<size_t>(-1)) {
            if (errno == E2BIG) continue;
            // An invalid or cut sequence: one replacement, then go on past the byte.
            bad = true;
            const char16_t rep = kReplacement;
            result.append(reinterpret_cast<const char*>(&rep), 2);
            ++in;
            --inLeft;
            iconv(h.cd, nullptr, nullptr, nullptr, nullptr);
        }
    }
    // Stateful code pages keep the last characters until told that the input ended.
    {
        char* o = buffer.data();
        size_t oLeft = buffer.size();
        if (iconv(h.cd, nullptr, nullptr, &o, &oLeft) != static_cast<size_t>(-1))
            result.append(buffer.data(), buffer.size() - oLeft);
    }
    out.resize(result.size() / 2);
    std::memcpy(out.data(), result.data(), out.size() * 2);
    if (lossy) *lossy = bad;
    return true;
}

bool Utf16ToCodePage(std::u16string_view text, uint32_t codePage, std::string& out, bool* lossy) {
    out.clear();
    if (lossy) *lossy = false;
    if (codePage == CpDefault || codePage == CpUtf8) {
        out = Utf16ToUtf8(text, lossy);
        return true;
    }
    const char* name = IconvNameOfCodePage(codePage);
    if (!name) return false;
    IconvHandle h(iconv_open(name, "UTF-16LE"));
    if (!h.ok()) return false;
    std::vector<char> buffer(text.size() * 4 + 16);
    char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text.data()));
    size_t inLeft = text.size() * 2;
    bool bad = false;
    while (inLeft > 0) {
        char* o = buffer.data();
        size_t oLeft = buffer.size();
        const size_t r = iconv(h.cd, &in, &inLeft, &o, &oLeft);
        out.append(buffer.data(), buffer.size() - oLeft);
        if (r == static_cast<size_t>(-1)) {
            if (errno == E2BIG) continue;
            // A character the code page lacks: '?' as the Windows default character.
            bad = true;
            out.push_back('?');
            const char16_t c = *reinterpret_cast<const char16_t*>(in);
            const size_t skip = (c >= 0xD800 && c <= 0xDBFF && inLeft >= 4) ? 4 : 2;
            in += skip < inLeft ? skip : inLeft;
            inLeft -= skip < inLeft ? skip : inLeft;
            iconv(h.cd, nullptr, nullptr, nullptr, nullptr);
        }
    }
    // Stateful code pages (UTF-7, the ISO 2022 family) close their last shift here.
    {
        char* o = buffer.data();
        size_t oLeft = buffer.size();
        if (iconv(h.cd, nullptr, nullptr, &o, &oLeft) != static_cast<size_t>(-1))
            out.append(buffer.data(), buffer.size() - oLeft);
    }
    if (lossy) *lossy = bad;
    return true;
}

char16_t FoldCase(char16_t c) {
    if (c < 0x80) return (c >= 'A' && c <= 'Z') ? static_cast<char16_t>(c + 32) : c;
    if (c < 0xC0) return c;
    // Latin-1 capitals, except the multiplication sign.
    if (c <= 0xDE) return c == 0xD7 ? c : static_cast<char16_t>(c + 32);
    // Latin Extended-A: capitals at even code points, with the odd runs.
    if (c >= 0x100 && c <= 0x137) return (c & 1) ? c : static_cast<char16_t>(c + 1);
    if (c >= 0x139 && c <= 0x148) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    if (c >= 0x14A && c <= 0x177) return (c & 1) ? c : static_cast<char16_t>(c + 1);
    if (c == 0x178) return 0xFF;
    if (c >= 0x179 && c <= 0x17E) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    // Greek and Cyrillic capitals.
    if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return static_cast<char16_t>(c + 32);
    if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 32);
    if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
    // Fullwidth Latin capitals, as typed with a Chinese input method.
    if (c >= 0xFF21 && c <= 0xFF3A) return static_cast<char16_t>(c + 32);
    return c;
}

std::u16string ToLowerFold(std::u16string_view text) {
    std::u16string out(text);
    for (auto& c : out) c = FoldCase(c);
    return out;
}

bool ContainsFolded(std::u16string_view haystack, std::u16string_view needle) {
    if (needle.empty()) return true;
    if (needle.size() > haystack.size()) return false;
    const size_t last = haystack.size() - needle.size();
    const char16_t first = FoldCase(needle[0]);
    for (size_t i = 0; i <= last; ++i) {
        if (FoldCase(haystack[i]) != first) continue;
        size_t k = 1;
        while (k < needle.size() && FoldCase(haystack[i + k]) == FoldCase(needle[k])) ++k;
        if (k == needle.size()) return true;
    }
    return false;
}

LeadingInteger ScanLeadingInteger(std::u16string_view text, int64_t cap) {
    LeadingInteger out;
    size_t i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t')) ++i;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) out.negative = text[i++] == u'-';
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i)
        out.magnitude = std::min(cap, out.magnitude * 10 + (text[i] - u'0'));
    return out;
}

}  // namespace marrowfin
