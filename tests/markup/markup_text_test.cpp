// References, escaping, the UTF-8 decoder and encoding names to code pages:
// the table, its buckets, and the conversions of the platform behind each
// code page.

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "markup/encoding_names.h"
#include "markup/markup_document.h"
#include "markup/markup_text.h"
#include "markup/utf8_decoder.h"
#include "platform/text.h"

namespace marrowfin {
namespace {

std::u16string Decode(std::u16string_view s) {
    std::u16string out;
    MarkupDocument::DecodeText(s, out);
    return out;
}

TEST(MarkupText, DecodesReferences) {
    EXPECT_EQ(Decode(u"&#65;&#x41;&#X42;&apos;&quot;&lt;&gt;&amp;"), u"AAB'\"<>&");
    EXPECT_EQ(Decode(u"&unknown; & &verylongnamexx; &; &#; &#x; &#0; &#12a;"),
              u"&unknown; & &verylongnamexx; &; &#; &#x; &#0; &#12a;");
    EXPECT_EQ(Decode(u"&#x1F600;"), u"\U0001F600");
    EXPECT_EQ(Decode(u"&#1114111;"), u"\U0010FFFF");
    EXPECT_EQ(Decode(u"&#1114112;"), u"&#1114112;");
    EXPECT_EQ(Decode(u"&thetasym;|&Oslash;&oslash;&OSLASH;&AMP;&Nbsp;"), u"\u03D1|\u00D8\u00F8\u00D8&\u00A0");
    EXPECT_EQ(Decode(u"&euro;&hellip;&中;"), u"\u20AC\u2026&中;");
    // Case pairs keep their own characters; a name in neither case takes the
    // first of the table in any case.
    EXPECT_EQ(Decode(u"&Alpha;&alpha;&ALPHA;&Scaron;&scaron;&Dagger;&dagger;&lArr;&larr;&LARR;&Prime;&prime;"),
              u"\u0391\u03B1\u0391\u0160\u0161\u2021\u2020\u21D0\u2190\u2190\u2033\u2032");
    EXPECT_EQ(Decode(u"&sup1;&sup;&supe;&sub;&nsub;&zwj;&zwnj;&diams;&lt&gt;x&#60;&#x3C;"),
              u"\u00B9\u2283\u2287\u2282\u2284\u200D\u200C\u2666&lt>x<<");
    EXPECT_EQ(Decode(u"a&"), u"a&");
    EXPECT_EQ(Decode(u"&amp"), u"&amp");
    EXPECT_EQ(NamedReferenceCount(), 253u);
}

TEST(MarkupText, EncodesTextAndAttributes) {
    std::u16string t, a;
    MarkupDocument::EncodeText(u"<a & 'b' \"c\"> 中", t, false);
    MarkupDocument::EncodeText(u"<a & 'b' \"c\"> 中", a, true);
    EXPECT_EQ(t, u"&lt;a &amp; 'b' \"c\"&gt; 中");
    EXPECT_EQ(a, u"&lt;a &amp; &apos;b&apos; &quot;c&quot;&gt; 中");
    EXPECT_EQ(Decode(a), u"<a & 'b' \"c\"> 中");
}

TEST(MarkupText, FastDecoderAgreesWithThePlatformCodec) {
    // Edge sequences: overlong forms, surrogates, the top of the range, cut
    // sequences at the end, and ASCII runs around the 16-byte blocks.
    std::vector<std::string> inputs = {
        "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
        "abc\xE4\xB8", "\xE4\xB8\xAD", "\xC2\xA9\xC2", std::string(15, 'a') + "\xE4\xB8\xAD" + std::string(17, 'b'),
        std::string(40, 'x') + "\x80" + std::string(16, 'y'), "\xF0\x9F\x98\x80 smile",
    };
    // Runs of three-byte forms, long enough for the four-at-a-time path, with
    // one fault at every place: a stray byte, a surrogate, an overlong form,
    // a four-byte form, a cut at the end.
    const std::string cjk = "\xE4\xB8\xAD";  // 中
    for (size_t prefix = 0; prefix < 3; ++prefix) {
        for (size_t run = 1; run <= 14; ++run) {
            std::string base = std::string(prefix, 'a');
            for (size_t k = 0; k < run; ++k) base += cjk;
            base += "z";
            inputs.push_back(base);
            for (size_t at = prefix; at < base.size() - 1; ++at) {
                for (const char stray : {'\x80', '\xC3', 'A', '\xE4', '\0'}) {
                    std::string faulty = base;
                    faulty[at] = stray;
                    inputs.push_back(faulty);
                }
                inputs.push_back(base.substr(0, at));
            }
            for (size_t k = 0; k < run; ++k) {
                for (const char* other : {"\xED\xA0\x80", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xEF\xBF\xBF", "\xED\x9F\xBF",
                                          "\xEE\x80\x80", "\xE0\xA0\x80", "\xF0\x9F\x98\x80"}) {
                    std::string mixed = base;
                    mixed.replace(prefix + 3 * k, 3, other);
                    inputs.push_back(mixed);
                }
            }
        }
    }
    std::mt19937 rng(7);
    const char alphabet[] = {'a', '<', ' ', '\xE4', '\xB8', '\xAD', '\xC2', '\xA9', '\xF0', '\x9F', '\x80', '\xFF', '\xED', '\xA0'};
    for (int k = 0; k < 2000; ++k) {
        std::string s;
        const size_t n = rng() % 64;
        for (size_t i = 0; i < n; ++i) s += alphabet[rng() % sizeof alphabet];
        inputs.push_back(s);
    }
    for (const std::string& in : inputs) {
        std::vector<char16_t> out(in.size() + 1);
        size_t nulls = 1;
        const size_t units = DecodeUtf8Into(reinterpret_cast<const unsigned char*>(in.data()), in.size(), out.data(), nulls);
        std::string withoutNul = in;
        std::erase(withoutNul, '\0');
        ASSERT_EQ(std::u16string(out.data(), units), Utf8ToUtf16(withoutNul)) << in;
        EXPECT_EQ(nulls, in.size() - withoutNul.size());
    }
    const std::string withNul("a\0b\0\0c", 6);
    std::vector<char16_t> out(7);
    size_t nulls = 0;
    EXPECT_EQ(std::u16string(out.data(), DecodeUtf8Into(reinterpret_cast<const unsigned char*>(withNul.data()), 6, out.data(), nulls)), u"abc");
    EXPECT_EQ(nulls, 3u);
}

// Upper case at every letter, or at every other one ("uTf-8").
std::u16string Upper(std::u16string_view s, bool everyOther = false) {
    std::u16string out(s);
    bool up = !everyOther;
    for (char16_t& c : out) {
        if (c >= u'a' && c <= u'z') {
            if (up) c = static_cast<char16_t>(c - 32);
            up = up != everyOther;
        }
    }
    return out;
}

TEST(EncodingNames, EveryNameFindsItsCodePageInAnyCase) {
    const auto names = EncodingNames();
    ASSERT_EQ(names.size(), 365u);
    EXPECT_EQ(EncodingNameCount(), 365u);
    EXPECT_EQ(EncodingCodePageCount(), 110u);
    std::set<std::u16string> distinct;
    std::set<uint32_t> pages;
    for (const EncodingName& e : names) {
        const std::u16string name = e.name;
        SCOPED_TRACE(U8(name));
        EXPECT_TRUE(distinct.insert(name).second) << "listed twice";
        EXPECT_EQ(name, ToLowerFold(name)) << "table names are lower case";
        EXPECT_NE(e.codePage, 0u);
        pages.insert(e.codePage);
        EXPECT_EQ(CodePageOfEncodingName(name), e.codePage);
        EXPECT_EQ(CodePageOfEncodingName(Upper(name)), e.codePage);
        EXPECT_EQ(CodePageOfEncodingName(Upper(name, true)), e.codePage);
        EXPECT_EQ(MarkupDocument::CodePageOfEncodingName(name), e.codePage);
        // One unit more or less is another name, unknown unless the table has it.
        for (const std::u16string& other : {name + u"x", name.substr(0, name.size() - 1)}) {
            bool listed = false;
            for (const EncodingName& o : names) listed = listed || other == o.name;
            if (!listed) {
                EXPECT_EQ(CodePageOfEncodingName(other), 0u) << U8(other);
            }
        }
    }
    EXPECT_EQ(pages.size(), 110u);
    EXPECT_EQ(pages.count(0u), 0u);
    EXPECT_EQ(pages.count(65005u), 0u) << "UTF-32 is decided before the table";

    // The names that documents of this system declare most.
    const std::pair<const char16_t*, uint32_t> known[] = {
        {u"UTF-8", 65001}, {u"utf8", 65001}, {u"utf-16", 1200}, {u"UTF-16LE", 1200}, {u"unicode", 1200},
        {u"UTF-16BE", 1201}, {u"unicodeFFFE", 1201}, {u"GBK", 936}, {u"gb2312", 936}, {u"GB_2312-80", 936},
        {u"x-gbk", 936}, {u"cp936", 936}, {u"GB18030", 54936}, {u"Big5", 950}, {u"cn-big5", 950},
        {u"Shift_JIS", 932}, {u"windows-31j", 932}, {u"EUC-KR", 51949}, {u"ks_c_5601-1987", 949},
        {u"ISO-8859-1", 28591}, {u"latin1", 28591}, {u"ISO-8859-2", 28592}, {u"iso-8859-15", 28605},
        {u"iso-8859-13", 28603}, {u"cp1252", 1252}, {u"Windows-1251", 1251}, {u"windows-874", 874},
        {u"us-ascii", 20127}, {u"KOI8-R", 20866}, {u"koi8-u", 21866}, {u"IBM437", 437}, {u"cp850", 850},
        {u"macintosh", 10000}, {u"IBM037", 37}, {u"euc-jp", 51932}, {u"iso-2022-jp", 50220},
    };
    for (const auto& [name, page] : known) EXPECT_EQ(CodePageOfEncodingName(name), page) << U8(name);
}

TEST(EncodingNames, BucketsAndUnknownNames) {
    // The sum of the code units of the folded name, modulo 155.
    EXPECT_EQ(EncodingBucketCount, 155u);
    EXPECT_EQ(EncodingNameBucket(u"utf-8"), (117u + 116 + 102 + 45 + 56) % 155);
    EXPECT_EQ(EncodingNameBucket(u"UTF-8"), EncodingNameBucket(u"utf-8"));
    EXPECT_EQ(EncodingNameBucket(u""), 0u);
    EXPECT_EQ(EncodingNameBucket(u"中"), 0x4E2Du % 155);
    EXPECT_TRUE(EncodingNamesInBucket(155).empty());

    // The buckets divide the table: each name lies in its own bucket only.
    size_t total = 0;
    for (size_t b = 0; b < EncodingBucketCount; ++b) {
        for (const EncodingName& e : EncodingNamesInBucket(b)) {
            EXPECT_EQ(EncodingNameBucket(e.name), b) << U8(e.name);
            ++total;
        }
    }
    EXPECT_EQ(total, EncodingNames().size());

    // Unknown names count as none: the default code page.
    for (const char16_t* name : {u"", u"no-such", u"8-ftu", u"utf-8 ", u" utf-8", u"utf_8", u"gb 2312", u"ＵＴＦ-8",
                                 u"utf-32", u"Utf-32", u"utf-32be", u"cp", u"iso-8859-", u"windows"}) {
        EXPECT_EQ(CodePageOfEncodingName(name), 0u) << U8(name);
    }
    // "8-ftu" shares the bucket of "utf-8": the bucket alone decides nothing.
    EXPECT_EQ(EncodingNameBucket(u"8-ftu"), EncodingNameBucket(u"utf-8"));
    EXPECT_EQ(CodePageOfEncodingName(std::u16string(u"utf-8\0", 6)), 0u);
    // Only "UTF-32" exactly at the start is its own case.
    EXPECT_EQ(CodePageOfEncodingName(u"UTF-32"), 65005u);
    EXPECT_EQ(CodePageOfEncodingName(u"UTF-32BE"), 65005u);
    EXPECT_EQ(CodePageOfEncodingName(u"UTF-32LE"), 65005u);
    // Length: 99 units may still be looked up, 100 may not.
    const std::u16string longName = u"utf-8" + std::u16string(94, u' ');
    ASSERT_EQ(longName.size(), 99u);
    EXPECT_EQ(CodePageOfEncodingName(longName), 0u);
    EXPECT_EQ(CodePageOfEncodingName(u"UTF-32" + std::u16string(93, u'x')), 65005u);
    EXPECT_EQ(CodePageOfEncodingName(u"UTF-32" + std::u16string(94, u'x')), 0u);
}

// Every code page of the table that the platform can convert takes a sample
// to bytes and back unchanged, and a document that declares the code page's
// name is read through it.
TEST(EncodingNames, SupportedCodePagesRoundTrip) {
    const std::u16string ascii = u"BLOCK 12 OK";  // capitals: the Katakana EBCDIC page has no small letters
    const std::u16string candidates = u"éßØ€©°±½√ЖΩαאعﻋก中文图块圖塊あア한글ğšő";
    std::set<uint32_t> done;
    size_t supported = 0;
    std::vector<uint32_t> unsupported;
    for (const EncodingName& e : EncodingNames()) {
        if (!done.insert(e.codePage).second) continue;
        if (!IsCodePageSupported(e.codePage)) {
            unsupported.push_back(e.codePage);
            continue;
        }
        ++supported;
        SCOPED_TRACE(std::to_string(e.codePage) + " " + U8(e.name));
        // The characters of the candidates that this code page holds.
        std::u16string held;
        for (const char16_t c : candidates) {
            std::string bytes;
            bool lossy = true;
            if (Utf16ToCodePage(std::u16string(1, c), e.codePage, bytes, &lossy) && !lossy) {
                std::u16string back;
                bool lossyBack = true;
                if (CodePageToUtf16(bytes, e.codePage, back, &lossyBack) && !lossyBack && back.size() == 1 &&
                    back[0] == c)
                    held += c;
            }
        }
        // Every code page here but ASCII holds something beyond ASCII.
        if (e.codePage != 20127) {
            EXPECT_FALSE(held.empty());
        }
        // Text ends in ASCII, as a document does (stateful forms such as
        // UTF-7 and ISO-2022-JP shift back there).
        const std::u16string sample = ascii + u" " + held + u" END";
        std::string bytes;
        bool lossy = true;
        ASSERT_TRUE(Utf16ToCodePage(sample, e.codePage, bytes, &lossy));
        EXPECT_FALSE(lossy);
        std::u16string back;
        ASSERT_TRUE(CodePageToUtf16(bytes, e.codePage, back, &lossy));
        EXPECT_FALSE(lossy);
        EXPECT_EQ(back, sample);
        if (e.codePage != 65001 && !held.empty()) {
            EXPECT_NE(bytes, U8(sample)) << "really converted";
        }

        // A document declaring the name, in code pages where the declaration
        // reads as ASCII.
        const std::u16string text = u"<?xml version=\"1.0\" encoding=\"" + std::u16string(e.name) + u"\"?><r a=\"" +
                                    held + u"\">" + sample + u"</r>";
        std::string docBytes;
        ASSERT_TRUE(Utf16ToCodePage(text, e.codePage, docBytes, &lossy));
        const std::string head = "<?xml version=\"1.0\" encoding=\"" + U8(e.name) + "\"?><r a=\"";
        if (docBytes.compare(0, head.size(), head) != 0) continue;
        MarkupDocument doc;
        EXPECT_TRUE(doc.LoadBytes(docBytes)) << U8(doc.GetResult());
        EXPECT_EQ(doc.Text(), text);
        ASSERT_TRUE(doc.FindElement(u"r"));
        EXPECT_EQ(doc.GetElementText(), sample);
        EXPECT_EQ(doc.GetAttribute(u"a"), held);
    }
    // The Unicode forms, the CJK code pages, the Windows and ISO 8859 families
    // at least.
    EXPECT_GE(supported, 40u);
    for (const uint32_t page : {65001u, 1200u, 1201u, 936u, 950u, 932u, 949u, 1252u, 28591u, 28605u})
        EXPECT_TRUE(done.count(page) && IsCodePageSupported(page)) << page;
    RecordProperty("unsupported_code_pages", static_cast<int>(unsupported.size()));
}

}  // namespace
}  // namespace marrowfin
