// References, escaping and encoding names.

#include <gtest/gtest.h>

#include <random>

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
        ASSERT_EQ(std::u16string(out.data(), units), Utf8ToUtf16(in)) << in;
        EXPECT_EQ(nulls, 0u);
    }
    const std::string withNul("a\0b\0\0c", 6);
    std::vector<char16_t> out(7);
    size_t nulls = 0;
    EXPECT_EQ(std::u16string(out.data(), DecodeUtf8Into(reinterpret_cast<const unsigned char*>(withNul.data()), 6, out.data(), nulls)), u"abc");
    EXPECT_EQ(nulls, 3u);
}

}  // namespace
}  // namespace marrowfin
