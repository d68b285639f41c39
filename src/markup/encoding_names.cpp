#include "markup/encoding_names.h"

#include <algorithm>
#include <array>

namespace marrowfin {
namespace {

// The Windows code page identifiers with their standard names and the aliases
// documents use, lower case. UTF-32 isn't here: a name beginning with
// "UTF-32" is decided before the table. Code pages that the platform cannot
// convert still map, and are read as the default there.
constexpr EncodingName kNames[] = {
    // Unicode
    {u"utf-8", 65001},
    {u"utf8", 65001},
    {u"unicode-1-1-utf-8", 65001},
    {u"unicode-2-0-utf-8", 65001},
    {u"x-unicode1-1-utf-8", 65001},
    {u"x-unicode2-0-utf-8", 65001},
    {u"cp65001", 65001},
    {u"utf-7", 65000},
    {u"utf7", 65000},
    {u"unicode-1-1-utf-7", 65000},
    {u"unicode-2-0-utf-7", 65000},
    {u"x-unicode1-1-utf-7", 65000},
    {u"x-unicode2-0-utf-7", 65000},
    {u"csunicode11utf7", 65000},
    {u"utf-16", 1200},
    {u"utf-16le", 1200},
    {u"utf16", 1200},
    {u"utf16le", 1200},
    {u"unicode", 1200},
    {u"ucs-2", 1200},
    {u"iso-10646-ucs-2", 1200},
    {u"csunicode", 1200},
    {u"unicodefeff", 1200},
    {u"cp1200", 1200},
    {u"utf-16be", 1201},
    {u"utf16be", 1201},
    {u"unicodefffe", 1201},
    {u"ucs-2be", 1201},
    {u"cp1201", 1201},
    // Chinese, Japanese, Korean and Thai
    {u"gbk", 936},
    {u"gb2312", 936},
    {u"cp936", 936},
    {u"ms936", 936},
    {u"windows-936", 936},
    {u"x-gbk", 936},
    {u"chinese", 936},
    {u"csgb2312", 936},
    {u"csgb231280", 936},
    {u"csiso58gb231280", 936},
    {u"gb_2312-80", 936},
    {u"gb2312-80", 936},
    {u"gb_2312", 936},
    {u"iso-ir-58", 936},
    {u"gb231280", 936},
    {u"cn-gb", 936},
    {u"gb18030", 54936},
    {u"gb-18030", 54936},
    {u"windows-54936", 54936},
    {u"x-cp20936", 20936},
    {u"euc-cn", 51936},
    {u"x-euc-cn", 51936},
    {u"euccn", 51936},
    {u"hz-gb-2312", 52936},
    {u"hz", 52936},
    {u"big5", 950},
    {u"big-5", 950},
    {u"cp950", 950},
    {u"ms950", 950},
    {u"windows-950", 950},
    {u"csbig5", 950},
    {u"cn-big5", 950},
    {u"x-x-big5", 950},
    {u"x-big5", 950},
    {u"shift_jis", 932},
    {u"shift-jis", 932},
    {u"sjis", 932},
    {u"cp932", 932},
    {u"ms932", 932},
    {u"windows-932", 932},
    {u"windows-31j", 932},
    {u"ms_kanji", 932},
    {u"csshiftjis", 932},
    {u"csmskanji", 932},
    {u"x-sjis", 932},
    {u"x-ms-cp932", 932},
    {u"s-jis", 932},
    {u"x-cp20932", 20932},
    {u"euc-jp", 51932},
    {u"x-euc-jp", 51932},
    {u"eucjp", 51932},
    {u"x-euc", 51932},
    {u"cseucpkdfmtjapanese", 51932},
    {u"extended_unix_code_packed_format_for_japanese", 51932},
    {u"iso-2022-jp", 50220},
    {u"jis", 50220},
    {u"csiso2022jp", 50221},
    {u"_iso-2022-jp$esc", 50221},
    {u"_iso-2022-jp$sio", 50222},
    {u"ks_c_5601-1987", 949},
    {u"ks_c_5601", 949},
    {u"ks_c_5601-1989", 949},
    {u"ksc5601", 949},
    {u"ksc_5601", 949},
    {u"korean", 949},
    {u"cp949", 949},
    {u"ms949", 949},
    {u"windows-949", 949},
    {u"uhc", 949},
    {u"csksc56011987", 949},
    {u"iso-ir-149", 949},
    {u"euc-kr", 51949},
    {u"cseuckr", 51949},
    {u"x-euc-kr", 51949},
    {u"euckr", 51949},
    {u"iso-2022-kr", 50225},
    {u"csiso2022kr", 50225},
    {u"x-cp50227", 50227},
    {u"x-cp20949", 20949},
    {u"johab", 1361},
    {u"cp1361", 1361},
    {u"windows-874", 874},
    {u"cp874", 874},
    {u"dos-874", 874},
    {u"ms874", 874},
    {u"tis-620", 874},
    {u"tis620", 874},
    {u"iso-8859-11", 874},
    // Windows
    {u"windows-1250", 1250},
    {u"cp1250", 1250},
    {u"windows-1251", 1251},
    {u"cp1251", 1251},
    {u"windows-1252", 1252},
    {u"cp1252", 1252},
    {u"windows-1253", 1253},
    {u"cp1253", 1253},
    {u"windows-1254", 1254},
    {u"cp1254", 1254},
    {u"windows-1255", 1255},
    {u"cp1255", 1255},
    {u"windows-1256", 1256},
    {u"cp1256", 1256},
    {u"windows-1257", 1257},
    {u"cp1257", 1257},
    {u"windows-1258", 1258},
    {u"cp1258", 1258},
    // ISO 8859
    {u"iso-8859-1", 28591},
    {u"iso_8859-1", 28591},
    {u"iso_8859-1:1987", 28591},
    {u"iso-ir-100", 28591},
    {u"latin1", 28591},
    {u"l1", 28591},
    {u"csisolatin1", 28591},
    {u"ibm819", 28591},
    {u"cp819", 28591},
    {u"iso-8859-2", 28592},
    {u"iso_8859-2", 28592},
    {u"iso-ir-101", 28592},
    {u"latin2", 28592},
    {u"l2", 28592},
    {u"csisolatin2", 28592},
    {u"iso-8859-3", 28593},
    {u"iso_8859-3", 28593},
    {u"iso-ir-109", 28593},
    {u"latin3", 28593},
    {u"l3", 28593},
    {u"csisolatin3", 28593},
    {u"iso-8859-4", 28594},
    {u"iso_8859-4", 28594},
    {u"iso-ir-110", 28594},
    {u"latin4", 28594},
    {u"l4", 28594},
    {u"csisolatin4", 28594},
    {u"iso-8859-5", 28595},
    {u"iso_8859-5", 28595},
    {u"iso-ir-144", 28595},
    {u"cyrillic", 28595},
    {u"csisolatincyrillic", 28595},
    {u"iso-8859-6", 28596},
    {u"iso_8859-6", 28596},
    {u"iso-ir-127", 28596},
    {u"arabic", 28596},
    {u"csisolatinarabic", 28596},
    {u"ecma-114", 28596},
    {u"iso-8859-7", 28597},
    {u"iso_8859-7", 28597},
    {u"iso-ir-126", 28597},
    {u"greek", 28597},
    {u"greek8", 28597},
    {u"csisolatingreek", 28597},
    {u"ecma-118", 28597},
    {u"elot_928", 28597},
    {u"iso-8859-8", 28598},
    {u"iso_8859-8", 28598},
    {u"iso-ir-138", 28598},
    {u"hebrew", 28598},
    {u"csisolatinhebrew", 28598},
    {u"visual", 28598},
    {u"iso-8859-8-i", 38598},
    {u"logical", 38598},
    {u"iso-8859-9", 28599},
    {u"iso_8859-9", 28599},
    {u"iso-ir-148", 28599},
    {u"latin5", 28599},
    {u"l5", 28599},
    {u"csisolatin5", 28599},
    {u"iso-8859-13", 28603},
    {u"iso_8859-13", 28603},
    {u"latin7", 28603},
    {u"l7", 28603},
    {u"iso-8859-15", 28605},
    {u"iso_8859-15", 28605},
    {u"latin-9", 28605},
    {u"latin9", 28605},
    {u"l9", 28605},
    {u"csisolatin9", 28605},
    // ASCII, KOI8 and the DOS code pages
    {u"us-ascii", 20127},
    {u"ascii", 20127},
    {u"us", 20127},
    {u"ansi_x3.4-1968", 20127},
    {u"ansi_x3.4-1986", 20127},
    {u"iso646-us", 20127},
    {u"iso_646.irv:1991", 20127},
    {u"iso-ir-6", 20127},
    {u"ibm367", 20127},
    {u"cp367", 20127},
    {u"csascii", 20127},
    {u"koi8-r", 20866},
    {u"koi8r", 20866},
    {u"koi8", 20866},
    {u"koi", 20866},
    {u"cskoi8r", 20866},
    {u"koi8-u", 21866},
    {u"koi8u", 21866},
    {u"koi8-ru", 21866},
    {u"ibm437", 437},
    {u"cp437", 437},
    {u"cspc8codepage437", 437},
    {u"asmo-708", 708},
    {u"cp708", 708},
    {u"dos-720", 720},
    {u"cp720", 720},
    {u"ibm737", 737},
    {u"cp737", 737},
    {u"ibm775", 775},
    {u"cp775", 775},
    {u"cspc775baltic", 775},
    {u"ibm850", 850},
    {u"cp850", 850},
    {u"cspc850multilingual", 850},
    {u"ibm852", 852},
    {u"cp852", 852},
    {u"cspcp852", 852},
    {u"ibm855", 855},
    {u"cp855", 855},
    {u"ibm857", 857},
    {u"cp857", 857},
    {u"ibm00858", 858},
    {u"cp858", 858},
    {u"pc-multilingual-850+euro", 858},
    {u"ibm860", 860},
    {u"cp860", 860},
    {u"ibm861", 861},
    {u"cp861", 861},
    {u"cp-is", 861},
    {u"dos-862", 862},
    {u"ibm862", 862},
    {u"cp862", 862},
    {u"cspc862latinhebrew", 862},
    {u"ibm863", 863},
    {u"cp863", 863},
    {u"ibm864", 864},
    {u"cp864", 864},
    {u"ibm865", 865},
    {u"cp865", 865},
    {u"cp866", 866},
    {u"ibm866", 866},
    {u"ibm869", 869},
    {u"cp869", 869},
    {u"cp-gr", 869},
    // Macintosh
    {u"macintosh", 10000},
    {u"mac", 10000},
    {u"macroman", 10000},
    {u"x-mac-roman", 10000},
    {u"csmacintosh", 10000},
    {u"x-mac-arabic", 10004},
    {u"x-mac-hebrew", 10005},
    {u"x-mac-greek", 10006},
    {u"x-mac-cyrillic", 10007},
    {u"maccyrillic", 10007},
    {u"x-mac-romanian", 10010},
    {u"x-mac-ukrainian", 10017},
    {u"macukrainian", 10017},
    {u"x-mac-thai", 10021},
    {u"x-mac-ce", 10029},
    {u"maccentraleurope", 10029},
    {u"x-mac-icelandic", 10079},
    {u"x-mac-turkish", 10081},
    {u"x-mac-croatian", 10082},
    // EBCDIC
    {u"ibm037", 37},
    {u"ebcdic-cp-us", 37},
    {u"ebcdic-cp-ca", 37},
    {u"ebcdic-cp-wt", 37},
    {u"ebcdic-cp-nl", 37},
    {u"ibm500", 500},
    {u"cp500", 500},
    {u"ebcdic-cp-be", 500},
    {u"ebcdic-cp-ch", 500},
    {u"ibm870", 870},
    {u"cp870", 870},
    {u"ebcdic-cp-roece", 870},
    {u"ebcdic-cp-yu", 870},
    {u"cp875", 875},
    {u"x-ebcdic-greekmodern", 875},
    {u"ibm1026", 1026},
    {u"cp1026", 1026},
    {u"ibm01047", 1047},
    {u"cp1047", 1047},
    {u"ibm01140", 1140},
    {u"ibm01141", 1141},
    {u"ibm01142", 1142},
    {u"ibm01143", 1143},
    {u"ibm01144", 1144},
    {u"ibm01145", 1145},
    {u"ibm01146", 1146},
    {u"ibm01147", 1147},
    {u"ibm01148", 1148},
    {u"ibm01149", 1149},
    {u"ibm273", 20273},
    {u"cp273", 20273},
    {u"ibm277", 20277},
    {u"ebcdic-cp-dk", 20277},
    {u"ebcdic-cp-no", 20277},
    {u"ibm278", 20278},
    {u"cp278", 20278},
    {u"ebcdic-cp-fi", 20278},
    {u"ebcdic-cp-se", 20278},
    {u"ibm280", 20280},
    {u"cp280", 20280},
    {u"ebcdic-cp-it", 20280},
    {u"ibm284", 20284},
    {u"cp284", 20284},
    {u"ebcdic-cp-es", 20284},
    {u"ibm285", 20285},
    {u"cp285", 20285},
    {u"ebcdic-cp-gb", 20285},
    {u"ibm290", 20290},
    {u"cp290", 20290},
    {u"ebcdic-jp-kana", 20290},
    {u"ibm297", 20297},
    {u"cp297", 20297},
    {u"ebcdic-cp-fr", 20297},
    {u"ibm420", 20420},
    {u"cp420", 20420},
    {u"ebcdic-cp-ar1", 20420},
    {u"ibm423", 20423},
    {u"cp423", 20423},
    {u"ebcdic-cp-gr", 20423},
    {u"ibm424", 20424},
    {u"cp424", 20424},
    {u"ebcdic-cp-he", 20424},
    {u"ibm-thai", 20838},
    {u"csibmthai", 20838},
    {u"ibm871", 20871},
    {u"cp871", 20871},
    {u"ebcdic-cp-is", 20871},
    {u"ibm880", 20880},
    {u"cp880", 20880},
    {u"ebcdic-cyrillic", 20880},
    {u"ibm905", 20905},
    {u"cp905", 20905},
    {u"ebcdic-cp-tr", 20905},
    {u"ibm00924", 20924},
    {u"ebcdic-latin9--euro", 20924},
    {u"cp1025", 21025},
    {u"x-ebcdic-cyrillicserbianbulgarian", 21025},
};

constexpr size_t kMaxNameLength = 100;

constexpr char16_t FoldAscii(char16_t c) { return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c; }

constexpr size_t BucketOf(std::u16string_view name) {
    size_t sum = 0;
    for (const char16_t c : name) sum += FoldAscii(c);
    return sum % EncodingBucketCount;
}

// The table sorted by bucket, with where each bucket begins; made by the
// compiler, so a lookup compares only the few names of one bucket.
struct BucketedNames {
    std::array<uint16_t, EncodingBucketCount + 1> begin{};
    std::array<EncodingName, std::size(kNames)> names{};
};

constexpr BucketedNames kBucketed = [] {
    BucketedNames b;
    for (const EncodingName& e : kNames) ++b.begin[BucketOf(e.name) + 1];
    for (size_t k = 0; k < EncodingBucketCount; ++k) b.begin[k + 1] += b.begin[k];
    std::array<uint16_t, EncodingBucketCount> fill{};
    for (size_t k = 0; k < EncodingBucketCount; ++k) fill[k] = b.begin[k];
    for (const EncodingName& e : kNames) b.names[fill[BucketOf(e.name)]++] = e;
    return b;
}();

}  // namespace

size_t EncodingNameBucket(std::u16string_view name) { return BucketOf(name); }

std::span<const EncodingName> EncodingNames() { return kNames; }

std::span<const EncodingName> EncodingNamesInBucket(size_t bucket) {
    if (bucket >= EncodingBucketCount) return {};
    return std::span<const EncodingName>(kBucketed.names)
        .subspan(kBucketed.begin[bucket], kBucketed.begin[bucket + 1] - kBucketed.begin[bucket]);
}

uint32_t CodePageOfEncodingName(std::u16string_view name) {
    if (name.empty() || name.size() >= kMaxNameLength) return 0;
    if (name.starts_with(u"UTF-32")) return 65005;
    char16_t folded[kMaxNameLength];
    for (size_t i = 0; i < name.size(); ++i) folded[i] = FoldAscii(name[i]);
    const std::u16string_view key(folded, name.size());
    for (const EncodingName& e : EncodingNamesInBucket(BucketOf(key)))
        if (key == e.name) return e.codePage;
    return 0;
}

size_t EncodingNameCount() { return std::size(kNames); }

size_t EncodingCodePageCount() {
    std::array<uint32_t, std::size(kNames)> pages{};
    size_t count = 0;
    for (const EncodingName& e : kNames)
        if (std::find(pages.begin(), pages.begin() + count, e.codePage) == pages.begin() + count)
            pages[count++] = e.codePage;
    return count;
}

const char16_t* CanonicalEncodingName(uint32_t codePage) {
    switch (codePage) {
        case 65001: return u"UTF-8";
        case 1200: return u"UTF-16LE";
        case 1201: return u"UTF-16BE";
        case 65005: return u"UTF-32LE";
        case 0: return u"";
        default: return nullptr;
    }
}

}  // namespace marrowfin
