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

}  // namespace
}  // namespace marrowfin
