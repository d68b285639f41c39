#include "markup/encoding_names.h"

#include <algorithm>
#include <array>
#include <vector>

namespace marrowfin {
namespace {

struct EncodingName {
    const char16_t* name;  // lower case
    uint32_t codePage;
};

// Names as documents declare them, lower case. Names of code pages that the
// platform cannot convert still map, and fall back to the default there.
constexpr EncodingName kNames[] = {
    {u"utf-8", 65001}, {u"utf8", 65001}, {u"unicode-1-1-utf-8", 65001}, {u"unicode-2-0-utf-8", 65001},
    {u"x-unicode20utf8", 65001}, {u"unicode11utf8", 65001}, {u"unicode20utf8", 65001}, {u"cp65001", 65001},
    {u"utf-16", 1200}, {u"utf-16le", 1200}, {u"utf16", 1200}, {u"utf16le", 1200}, {u"unicode", 1200},
    {u"ucs-2", 1200}, {u"ucs2", 1200}, {u"iso-10646-ucs-2", 1200}, {u"csunicode", 1200}, {u"unicodefeff", 1200},
    {u"x-unicode20utf16", 1200}, {u"utf-16be", 1201}, {u"utf16be", 1201}, {u"unicodefffe", 1201},
    {u"ucs-2be", 1201}, {u"utf-7", 65000}, {u"utf7", 65000}, {u"unicode-1-1-utf-7", 65000},
    {u"unicode-2-0-utf-7", 65000}, {u"csunicode11utf7", 65000}, {u"x-unicode2-0-utf-7", 65000},
    {u"utf-32be", 65006}, {u"utf32be", 65006}, {u"utf-32", 65005}, {u"utf-32le", 65005}, {u"utf32", 65005},
    {u"utf32le", 65005}, {u"ucs-4", 65005}, {u"ucs4", 65005}, {u"gbk", 936}, {u"gb2312", 936},
    {u"cp936", 936}, {u"ms936", 936}, {u"windows-936", 936}, {u"x-gbk", 936}, {u"csgb2312", 936},
    {u"chinese", 936}, {u"gb_2312-80", 936}, {u"gb_2312", 936}, {u"iso-ir-58", 936}, {u"csiso58gb231280", 936},
    {u"gb2312-80", 936}, {u"x-euc-cn", 936}, {u"euc-cn", 936}, {u"euccn", 936}, {u"gb231280", 936},
    {u"cn-gb", 936}, {u"csgb231280", 936}, {u"hz-gb-2312", 936}, {u"gb18030", 54936}, {u"gb-18030", 54936},
    {u"windows-54936", 54936}, {u"cp54936", 54936}, {u"x-cp20936", 20936}, {u"cp20936", 20936},
    {u"big5", 950}, {u"big-5", 950}, {u"big5-hkscs", 950}, {u"cn-big5", 950}, {u"csbig5", 950},
    {u"x-x-big5", 950}, {u"cp950", 950}, {u"ms950", 950}, {u"windows-950", 950}, {u"big5hkscs", 950},
    {u"x-big5", 950}, {u"shift_jis", 932}, {u"shift-jis", 932}, {u"sjis", 932}, {u"ms_kanji", 932},
    {u"x-sjis", 932}, {u"csshiftjis", 932}, {u"windows-31j", 932}, {u"cp932", 932}, {u"ms932", 932},
    {u"windows-932", 932}, {u"x-ms-cp932", 932}, {u"csmskanji", 932}, {u"s-jis", 932}, {u"euc-jp", 20932},
    {u"x-euc-jp", 20932}, {u"cseucpkdfmtjapanese", 20932}, {u"extended_unix_code_packed_format_for_japanese", 20932},
    {u"eucjp", 20932}, {u"x-euc", 20932}, {u"cp20932", 20932}, {u"iso-2022-jp", 50220}, {u"csiso2022jp", 50220},
    {u"jis", 50220}, {u"cp50220", 50220}, {u"iso2022jp", 50220}, {u"ks_c_5601-1987", 949}, {u"korean", 949},
    {u"cp949", 949}, {u"ms949", 949}, {u"windows-949", 949}, {u"ks_c_5601", 949}, {u"ks_c_5601-1989", 949},
    {u"ksc5601", 949}, {u"ksc_5601", 949}, {u"csksc56011987", 949}, {u"iso-ir-149", 949}, {u"uhc", 949},
    {u"x-windows-949", 949}, {u"euc-kr", 51949}, {u"cseuckr", 51949}, {u"x-euc-kr", 51949},
    {u"euckr", 51949}, {u"cp51949", 51949}, {u"johab", 1361}, {u"cp1361", 1361}, {u"koi8-r", 20866},
    {u"koi8r", 20866}, {u"koi8", 20866}, {u"cskoi8r", 20866}, {u"koi", 20866}, {u"cp20866", 20866},
    {u"koi8-u", 21866}, {u"koi8u", 21866}, {u"koi8-ru", 21866}, {u"cp21866", 21866}, {u"windows-874", 874},
    {u"cp874", 874}, {u"tis-620", 874}, {u"tis620", 874}, {u"dos-874", 874}, {u"iso-8859-11", 874},
    {u"iso8859-11", 874}, {u"ms874", 874}, {u"x-ibm874", 874}, {u"us-ascii", 20127}, {u"ascii", 20127},
    {u"ansi_x3.4-1968", 20127}, {u"ansi_x3.4-1986", 20127}, {u"iso646-us", 20127}, {u"iso_646.irv:1991", 20127},
    {u"us", 20127}, {u"ibm367", 20127}, {u"cp367", 20127}, {u"csascii", 20127}, {u"iso-ir-6", 20127},
    {u"cp20127", 20127}, {u"ibm437", 437}, {u"cp437", 437}, {u"437", 437}, {u"cspc8codepage437", 437},
    {u"dos-437", 437}, {u"ibm850", 850}, {u"cp850", 850}, {u"850", 850}, {u"cspc850multilingual", 850},
    {u"dos-850", 850}, {u"ibm852", 852}, {u"cp852", 852}, {u"852", 852}, {u"cspcp852", 852},
    {u"dos-852", 852}, {u"ibm855", 855}, {u"cp855", 855}, {u"855", 855}, {u"csibm855", 855},
    {u"ibm857", 857}, {u"cp857", 857}, {u"857", 857}, {u"csibm857", 857}, {u"ibm860", 860},
    {u"cp860", 860}, {u"860", 860}, {u"csibm860", 860}, {u"ibm861", 861}, {u"cp861", 861}, {u"861", 861},
    {u"cp-is", 861}, {u"csibm861", 861}, {u"ibm862", 862}, {u"cp862", 862}, {u"862", 862}, {u"dos-862", 862},
    {u"cspc862latinhebrew", 862}, {u"ibm863", 863}, {u"cp863", 863}, {u"863", 863}, {u"csibm863", 863},
    {u"ibm864", 864}, {u"cp864", 864}, {u"csibm864", 864}, {u"ibm865", 865}, {u"cp865", 865},
    {u"865", 865}, {u"csibm865", 865}, {u"ibm866", 866}, {u"cp866", 866}, {u"866", 866}, {u"csibm866", 866},
    {u"dos-866", 866}, {u"ibm869", 869}, {u"cp869", 869}, {u"869", 869}, {u"cp-gr", 869}, {u"csibm869", 869},
    {u"macintosh", 10000}, {u"mac", 10000}, {u"x-mac-roman", 10000}, {u"macroman", 10000}, {u"csmacintosh", 10000},
    {u"cp10000", 10000}, {u"windows-1250", 1250}, {u"cp1250", 1250}, {u"x-cp1250", 1250}, {u"win1250", 1250},
    {u"windows-1251", 1251}, {u"cp1251", 1251}, {u"x-cp1251", 1251}, {u"win1251", 1251}, {u"windows-1252", 1252},
    {u"cp1252", 1252}, {u"x-cp1252", 1252}, {u"win1252", 1252}, {u"windows-1253", 1253}, {u"cp1253", 1253},
    {u"x-cp1253", 1253}, {u"win1253", 1253}, {u"windows-1254", 1254}, {u"cp1254", 1254}, {u"x-cp1254", 1254},
    {u"win1254", 1254}, {u"windows-1255", 1255}, {u"cp1255", 1255}, {u"x-cp1255", 1255}, {u"win1255", 1255},
    {u"windows-1256", 1256}, {u"cp1256", 1256}, {u"x-cp1256", 1256}, {u"win1256", 1256}, {u"windows-1257", 1257},
    {u"cp1257", 1257}, {u"x-cp1257", 1257}, {u"win1257", 1257}, {u"windows-1258", 1258}, {u"cp1258", 1258},
    {u"x-cp1258", 1258}, {u"win1258", 1258}, {u"ms-ansi", 1252}, {u"ms-ee", 1250}, {u"ms-cyrl", 1251},
    {u"ms-greek", 1253}, {u"ms-turk", 1254}, {u"ms-hebr", 1255}, {u"ms-arab", 1256}, {u"iso-8859-1", 28591},
    {u"iso8859-1", 28591}, {u"iso_8859-1", 28591}, {u"iso8859_1", 28591}, {u"cp28591", 28591},
    {u"latin1", 28591}, {u"l1", 28591}, {u"csisolatin1", 28591}, {u"iso-ir-100", 28591}, {u"ibm819", 28591},
    {u"cp819", 28591}, {u"iso-8859-2", 28592}, {u"iso8859-2", 28592}, {u"iso_8859-2", 28592},
    {u"iso8859_2", 28592}, {u"cp28592", 28592}, {u"latin2", 28592}, {u"l2", 28592}, {u"csisolatin2", 28592},
    {u"iso-ir-101", 28592}, {u"iso-8859-3", 28593}, {u"iso8859-3", 28593}, {u"iso_8859-3", 28593},
    {u"iso8859_3", 28593}, {u"cp28593", 28593}, {u"latin3", 28593}, {u"l3", 28593}, {u"csisolatin3", 28593},
    {u"iso-ir-109", 28593}, {u"iso-8859-4", 28594}, {u"iso8859-4", 28594}, {u"iso_8859-4", 28594},
    {u"iso8859_4", 28594}, {u"cp28594", 28594}, {u"latin4", 28594}, {u"l4", 28594}, {u"csisolatin4", 28594},
    {u"iso-ir-110", 28594}, {u"iso-8859-5", 28595}, {u"iso8859-5", 28595}, {u"iso_8859-5", 28595},
    {u"iso8859_5", 28595}, {u"cp28595", 28595}, {u"cyrillic", 28595}, {u"csisolatincyrillic", 28595},
    {u"iso-ir-144", 28595}, {u"iso-8859-6", 28596}, {u"iso8859-6", 28596}, {u"iso_8859-6", 28596},
    {u"iso8859_6", 28596}, {u"cp28596", 28596}, {u"arabic", 28596}, {u"csisolatinarabic", 28596},
    {u"iso-ir-127", 28596}, {u"ecma-114", 28596}, {u"asmo-708", 28596}, {u"iso-8859-7", 28597},
    {u"iso8859-7", 28597}, {u"iso_8859-7", 28597}, {u"iso8859_7", 28597}, {u"cp28597", 28597},
    {u"greek", 28597}, {u"greek8", 28597}, {u"csisolatingreek", 28597}, {u"iso-ir-126", 28597},
    {u"ecma-118", 28597}, {u"elot_928", 28597}, {u"iso-8859-8", 28598}, {u"iso8859-8", 28598},
    {u"iso_8859-8", 28598}, {u"iso8859_8", 28598}, {u"cp28598", 28598}, {u"hebrew", 28598},
    {u"csisolatinhebrew", 28598}, {u"iso-ir-138", 28598}, {u"visual", 28598}, {u"iso-8859-8-i", 28598},
    {u"iso-8859-8-e", 28598}, {u"logical", 28598}, {u"iso-8859-9", 28599}, {u"iso8859-9", 28599},
    {u"iso_8859-9", 28599}, {u"iso8859_9", 28599}, {u"cp28599", 28599}, {u"latin5", 28599},
    {u"l5", 28599}, {u"csisolatin5", 28599}, {u"iso-ir-148", 28599}, {u"iso-8859-10", 28600},
    {u"iso8859-10", 28600}, {u"iso_8859-10", 28600}, {u"iso8859_10", 28600}, {u"cp28600", 28600},
    {u"latin6", 28600}, {u"l6", 28600}, {u"csisolatin6", 28600}, {u"iso-ir-157", 28600}, {u"iso-8859-13", 28603},
    {u"iso8859-13", 28603}, {u"iso_8859-13", 28603}, {u"iso8859_13", 28603}, {u"cp28603", 28603},
    {u"latin7", 28603}, {u"l7", 28603}, {u"iso-8859-14", 28604}, {u"iso8859-14", 28604}, {u"iso_8859-14", 28604},
    {u"iso8859_14", 28604}, {u"cp28604", 28604}, {u"latin8", 28604}, {u"l8", 28604}, {u"iso-celtic", 28604},
    {u"iso-8859-15", 28605}, {u"iso8859-15", 28605}, {u"iso_8859-15", 28605}, {u"iso8859_15", 28605},
    {u"cp28605", 28605}, {u"latin-9", 28605}, {u"latin9", 28605}, {u"l9", 28605}, {u"csisolatin9", 28605},
    {u"iso-8859-16", 28606}, {u"iso8859-16", 28606}, {u"iso_8859-16", 28606}, {u"iso8859_16", 28606},
    {u"cp28606", 28606}, {u"latin10", 28606}, {u"l10", 28606},
};

constexpr size_t kBuckets = 155;
constexpr size_t kMaxNameLength = 100;

size_t BucketOf(std::u16string_view folded) {
    size_t sum = 0;
    for (const char16_t c : folded) sum += c;
    return sum % kBuckets;
}

// The table bucketed by the sum of the code units of the name modulo 155.
const std::array<std::vector<const EncodingName*>, kBuckets>& Buckets() {
    static const auto buckets = [] {
        std::array<std::vector<const EncodingName*>, kBuckets> b;
        for (const EncodingName& e : kNames) b[BucketOf(e.name)].push_back(&e);
        return b;
    }();
    return buckets;
}

}  // namespace

uint32_t CodePageOfEncodingName(std::u16string_view name) {
    if (name.empty() || name.size() >= kMaxNameLength) return 0;
    if (name.starts_with(u"UTF-32")) return 65005;
    char16_t folded[kMaxNameLength];
    for (size_t i = 0; i < name.size(); ++i) {
        const char16_t c = name[i];
        folded[i] = (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
    }
    const std::u16string_view key(folded, name.size());
    for (const EncodingName* e : Buckets()[BucketOf(key)])
        if (key == e->name) return e->codePage;
    return 0;
}

size_t EncodingNameCount() { return std::size(kNames); }

size_t EncodingCodePageCount() {
    std::vector<uint32_t> pages;
    for (const EncodingName& e : kNames)
        if (std::find(pages.begin(), pages.end(), e.codePage) == pages.end()) pages.push_back(e.codePage);
    return pages.size();
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
