#include "markup/markup_text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace marrowfin {
namespace {

struct NamedReference {
    const char* name;
    uint32_t value;
};

// The named character references of HTML 4, with apos added.
constexpr NamedReference kReferences[] = {
    {"quot", 34},      {"amp", 38},      {"apos", 39},      {"lt", 60},       {"gt", 62},       {"nbsp", 160},
    {"iexcl", 161},    {"cent", 162},    {"pound", 163},    {"curren", 164},  {"yen", 165},     {"brvbar", 166},
    {"sect", 167},     {"uml", 168},     {"copy", 169},     {"ordf", 170},    {"laquo", 171},   {"not", 172},
    {"shy", 173},      {"reg", 174},     {"macr", 175},     {"deg", 176},     {"plusmn", 177},  {"sup2", 178},
    {"sup3", 179},     {"acute", 180},   {"micro", 181},    {"para", 182},    {"middot", 183},  {"cedil", 184},
    {"sup1", 185},     {"ordm", 186},    {"raquo", 187},    {"frac14", 188},  {"frac12", 189},  {"frac34", 190},
    {"iquest", 191},   {"Agrave", 192},  {"Aacute", 193},   {"Acirc", 194},   {"Atilde", 195},  {"Auml", 196},
    {"Aring", 197},    {"AElig", 198},   {"Ccedil", 199},   {"Egrave", 200},  {"Eacute", 201},  {"Ecirc", 202},
    {"Euml", 203},     {"Igrave", 204},  {"Iacute", 205},   {"Icirc", 206},   {"Iuml", 207},    {"ETH", 208},
    {"Ntilde", 209},   {"Ograve", 210},  {"Oacute", 211},   {"Ocirc", 212},   {"Otilde", 213},  {"Ouml", 214},
    {"times", 215},    {"Oslash", 216},  {"Ugrave", 217},   {"Uacute", 218},  {"Ucirc", 219},   {"Uuml", 220},
    {"Yacute", 221},   {"THORN", 222},   {"szlig", 223},    {"agrave", 224},  {"aacute", 225},  {"acirc", 226},
    {"atilde", 227},   {"auml", 228},    {"aring", 229},    {"aelig", 230},   {"ccedil", 231},  {"egrave", 232},
    {"eacute", 233},   {"ecirc", 234},   {"euml", 235},     {"igrave", 236},  {"iacute", 237},  {"icirc", 238},
    {"iuml", 239},     {"eth", 240},     {"ntilde", 241},   {"ograve", 242},  {"oacute", 243},  {"ocirc", 244},
    {"otilde", 245},   {"ouml", 246},    {"divide", 247},   {"oslash", 248},  {"ugrave", 249},  {"uacute", 250},
    {"ucirc", 251},    {"uuml", 252},    {"yacute", 253},   {"thorn", 254},   {"yuml", 255},    {"OElig", 338},
    {"oelig", 339},    {"Scaron", 352},  {"scaron", 353},   {"Yuml", 376},    {"fnof", 402},    {"circ", 710},
    {"tilde", 732},    {"Alpha", 913},   {"Beta", 914},     {"Gamma", 915},   {"Delta", 916},   {"Epsilon", 917},
    {"Zeta", 918},     {"Eta", 919},     {"Theta", 920},    {"Iota", 921},    {"Kappa", 922},   {"Lambda", 923},
    {"Mu", 924},       {"Nu", 925},      {"Xi", 926},       {"Omicron", 927}, {"Pi", 928},      {"Rho", 929},
    {"Sigma", 931},    {"Tau", 932},     {"Upsilon", 933},  {"Phi", 934},     {"Chi", 935},     {"Psi", 936},
    {"Omega", 937},    {"alpha", 945},   {"beta", 946},     {"gamma", 947},   {"delta", 948},   {"epsilon", 949},
    {"zeta", 950},     {"eta", 951},     {"theta", 952},    {"iota", 953},    {"kappa", 954},   {"lambda", 955},
    {"mu", 956},       {"nu", 957},      {"xi", 958},       {"omicron", 959}, {"pi", 960},      {"rho", 961},
    {"sigmaf", 962},   {"sigma", 963},   {"tau", 964},      {"upsilon", 965}, {"phi", 966},     {"chi", 967},
    {"psi", 968},      {"omega", 969},   {"thetasym", 977}, {"upsih", 978},   {"piv", 982},     {"ensp", 8194},
    {"emsp", 8195},    {"thinsp", 8201}, {"zwnj", 8204},    {"zwj", 8205},    {"lrm", 8206},    {"rlm", 8207},
    {"ndash", 8211},   {"mdash", 8212},  {"lsquo", 8216},   {"rsquo", 8217},  {"sbquo", 8218},  {"ldquo", 8220},
    {"rdquo", 8221},   {"bdquo", 8222},  {"dagger", 8224},  {"Dagger", 8225}, {"bull", 8226},   {"hellip", 8230},
    {"permil", 8240},  {"prime", 8242},  {"Prime", 8243},   {"lsaquo", 8249}, {"rsaquo", 8250}, {"oline", 8254},
    {"frasl", 8260},   {"euro", 8364},   {"image", 8465},   {"weierp", 8472}, {"real", 8476},   {"trade", 8482},
    {"alefsym", 8501}, {"larr", 8592},   {"uarr", 8593},    {"rarr", 8594},   {"darr", 8595},   {"harr", 8596},
    {"crarr", 8629},   {"lArr", 8656},   {"uArr", 8657},    {"rArr", 8658},   {"dArr", 8659},   {"hArr", 8660},
    {"forall", 8704},  {"part", 8706},   {"exist", 8707},   {"empty", 8709},  {"nabla", 8711},  {"isin", 8712},
    {"notin", 8713},   {"ni", 8715},     {"prod", 8719},    {"sum", 8721},    {"minus", 8722},  {"lowast", 8727},
    {"radic", 8730},   {"prop", 8733},   {"infin", 8734},   {"ang", 8736},    {"and", 8743},    {"or", 8744},
    {"cap", 8745},     {"cup", 8746},    {"int", 8747},     {"there4", 8756}, {"sim", 8764},    {"cong", 8773},
    {"asymp", 8776},   {"ne", 8800},     {"equiv", 8801},   {"le", 8804},     {"ge", 8805},     {"sub", 8834},
    {"sup", 8835},     {"nsub", 8836},   {"sube", 8838},    {"supe", 8839},   {"oplus", 8853},  {"otimes", 8855},
    {"perp", 8869},    {"sdot", 8901},   {"lceil", 8968},   {"rceil", 8969},  {"lfloor", 8970}, {"rfloor", 8971},
    {"lang", 9001},    {"rang", 9002},   {"loz", 9674},     {"spades", 9824}, {"clubs", 9827},  {"hearts", 9829},
    {"diams", 9830},
};
static_assert(std::size(kReferences) == 253);

inline char16_t FoldAscii(char16_t c) { return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c; }

// The table bucketed by a hash of the folded name, built once: a lookup
// compares a handful of names instead of the whole table.
constexpr size_t kReferenceBuckets = 128;

size_t FoldedHash(std::u16string_view name) {
    size_t h = 0;
    for (const char16_t c : name) h = h * 31 + FoldAscii(c);
    return h;
}
size_t FoldedHash(std::string_view name) {
    size_t h = 0;
    for (const char c : name) h = h * 31 + FoldAscii(static_cast<unsigned char>(c));
    return h;
}

struct ReferenceBuckets {
    uint16_t begin[kReferenceBuckets + 1];
    uint8_t entries[std::size(kReferences)];
};

const ReferenceBuckets& Buckets() {
    static const ReferenceBuckets buckets = [] {
        ReferenceBuckets b{};
        size_t bucketOf[std::size(kReferences)];
        uint16_t counts[kReferenceBuckets] = {};
        for (size_t i = 0; i < std::size(kReferences); ++i) {
            bucketOf[i] = FoldedHash(std::string_view(kReferences[i].name)) % kReferenceBuckets;
            ++counts[bucketOf[i]];
        }
        b.begin[0] = 0;
        for (size_t k = 0; k < kReferenceBuckets; ++k) b.begin[k + 1] = static_cast<uint16_t>(b.begin[k] + counts[k]);
        uint16_t fill[kReferenceBuckets];
        std::copy(std::begin(b.begin), std::end(b.begin) - 1, fill);
        for (size_t i = 0; i < std::size(kReferences); ++i) b.entries[fill[bucketOf[i]]++] = static_cast<uint8_t>(i);
        return b;
    }();
    return buckets;
}

// Compares a name from the text with a table name; folded compares ignore the case of A to Z.
bool NameEquals(std::u16string_view name, const char* entry, bool folded) {
    size_t i = 0;
    for (; i < name.size(); ++i) {
        const char16_t e = static_cast<unsigned char>(entry[i]);
        if (e == 0) return false;
        if (folded ? FoldAscii(name[i]) != FoldAscii(e) : name[i] != e) return false;
    }
    return entry[i] == 0;
}

// Value of the reference between & and ;, or 0 when there is none.
uint32_t ReferenceValue(std::u16string_view name) {
    if (name.size() >= 2 && name[0] == u'#') {
        const bool hex = name[1] == u'x' || name[1] == u'X';
        const size_t first = hex ? 2 : 1;
        if (first >= name.size()) return 0;
        uint32_t value = 0;
        for (size_t i = first; i < name.size(); ++i) {
            const char16_t c = name[i];
            uint32_t digit;
            if (c >= u'0' && c <= u'9') digit = c - u'0';
            else if (hex && FoldAscii(c) >= u'a' && FoldAscii(c) <= u'f') digit = FoldAscii(c) - u'a' + 10;
            else return 0;
            value = value * (hex ? 16 : 10) + digit;
            if (value > 0x10FFFF) return 0;
        }
        return value;
    }
    return NamedReferenceValue(name);
}

// "lt;", "gt;", "amp;", "quot;" or "apos;" at the start of s[0, n): the
// character it stands for, else 0.
inline char16_t QuickReference(const char16_t* s, size_t n) {
    if (n >= 3 && s[1] == u't' && s[2] == u';' && (s[0] == u'l' || s[0] == u'g')) return s[0] == u'l' ? u'<' : u'>';
    if (n >= 4 && s[0] == u'a' && s[1] == u'm' && s[2] == u'p' && s[3] == u';') return u'&';
    if (n >= 5 && s[4] == u';') {
        if (s[0] == u'q' && s[1] == u'u' && s[2] == u'o' && s[3] == u't') return u'"';
        if (s[0] == u'a' && s[1] == u'p' && s[2] == u'o' && s[3] == u's') return u'\'';
    }
    return 0;
}

}  // namespace

uint32_t NamedReferenceValue(std::u16string_view name) {
    // Nearly every reference in real text is one of markup's own five: they
    // are answered before the table, with the values it holds for them.
    switch (name.size()) {
        case 2:
            if (name[1] == u't' && (name[0] == u'l' || name[0] == u'g')) return name[0] == u'l' ? 60 : 62;
            break;
        case 3:
            if (name == u"amp") return 38;
            break;
        case 4:
            if (name == u"quot") return 34;
            if (name == u"apos") return 39;
            break;
        default: break;
    }
    // Candidates share the bucket of their folded name, in table order:
    // exact case first, so that Oslash and oslash keep their own characters;
    // then any case, so that &AMP; is still an ampersand.
    const ReferenceBuckets& buckets = Buckets();
    const size_t bucket = FoldedHash(name) % kReferenceBuckets;
    const uint8_t* first = buckets.entries + buckets.begin[bucket];
    const uint8_t* last = buckets.entries + buckets.begin[bucket + 1];
    for (const uint8_t* e = first; e != last; ++e)
        if (NameEquals(name, kReferences[*e].name, false)) return kReferences[*e].value;
    for (const uint8_t* e = first; e != last; ++e)
        if (NameEquals(name, kReferences[*e].name, true)) return kReferences[*e].value;
    return 0;
}

size_t NamedReferenceCount() { return std::size(kReferences); }

void DecodeMarkupText(std::u16string_view text, std::u16string& out) {
    const size_t first = text.find(u'&');
    if (first == std::u16string_view::npos) {
        out.append(text);  // most values hold no reference: one copy
        return;
    }
    // A reference never decodes longer than it stands (a surrogate pair takes
    // at least "&#65536;"), so the text's length is room enough: write into
    // it directly and cut it to size at the end.
    const size_t base = out.size();
    out.resize(base + text.size());
    char16_t* o = out.data() + base;
    const char16_t* s = text.data();
    const size_t n = text.size();
    std::char_traits<char16_t>::copy(o, s, first);
    o += first;
    size_t i = first;
    while (i < n) {
        const char16_t c = s[i];
        if (c != u'&') {
            *o++ = c;
            ++i;
            continue;
        }
        // Markup's own five first, compared in place: they are nearly all the
        // references of real text.
        if (const char16_t q = QuickReference(s + i + 1, n - i - 1); q != 0) {
            *o++ = q;
            i += q == u'<' || q == u'>' ? 4 : q == u'&' ? 5 : 6;
            continue;
        }
        // Up to nine characters behind &, stopping at ;.
        size_t end = i + 1;
        bool reference = false;
        while (end < n && end - i <= 9) {
            const char16_t r = s[end];
            if (r == u';') {
                reference = end > i + 1;
                break;
            }
            if (r >= 0x80) break;
            ++end;
        }
        const uint32_t value = reference ? ReferenceValue(std::u16string_view(s + i + 1, end - i - 1)) : 0;
        if (value == 0) {
            *o++ = u'&';
            ++i;
            continue;
        }
        if (value > 0xFFFF) {
            const uint32_t v = value - 0x10000;
            *o++ = static_cast<char16_t>(0xD800 + (v >> 10));
            *o++ = static_cast<char16_t>(0xDC00 + (v & 0x3FF));
        } else {
            *o++ = static_cast<char16_t>(value);
        }
        i = end + 1;
    }
    out.resize(static_cast<size_t>(o - out.data()));
}

void EncodeMarkupText(std::u16string_view text, std::u16string& out, bool attribute) {
    out.reserve(out.size() + text.size());
    for (const char16_t c : text) {
        switch (c) {
            case u'<': out += u"&lt;"; break;
            case u'&': out += u"&amp;"; break;
            case u'>': out += u"&gt;"; break;
            case u'"':
                if (attribute) out += u"&quot;";
                else out += c;
                break;
            case u'\'':
                if (attribute) out += u"&apos;";
                else out += c;
                break;
            default: out += c;
        }
    }
}

}  // namespace marrowfin
