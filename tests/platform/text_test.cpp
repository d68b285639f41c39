#include <gtest/gtest.h>

#include "platform/ini_file.h"
#include "platform/text.h"

using namespace marrowfin;

TEST(Utf8Codec, ValidityRoundTripsAndLoss) {
    const std::pair<std::string_view, bool> valid[] = {
        {"", true}, {"\xE5\x9B\xBE\xE5\xBA\x93", true}, {"\xF0\x9F\x98\x80", true}, {"\xF8\x88\x80\x80", false},
        {"\xFF", false}, {"ok\xE5\x9B", false}, {"\xE5\x1B\xBE", false}, {"\x80", false}};
    for (const auto& [bytes, ok] : valid) EXPECT_EQ(IsValidUtf8(bytes), ok) << bytes;
    const std::u16string text = u"门窗 Door-1 \U0001F600 é";
    bool lossy = true;
    EXPECT_EQ(Utf8ToUtf16(Utf16ToUtf8(text, &lossy), &lossy), text);
    EXPECT_FALSE(lossy);
    // Ill-formed input becomes one replacement per bad byte (overlong NUL, encoded surrogate) and is reported.
    EXPECT_EQ(Utf8ToUtf16("a\xFF" "b|\xE5\x9B|\xC0\x80|\xED\xA0\x80", &lossy), u"a\uFFFDb|\uFFFD\uFFFD|\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(Utf16ToUtf8(std::u16string{u'a', char16_t(0xD800), u'b'}, &lossy), "a\xEF\xBF\xBD" "b");  // a lone surrogate
    EXPECT_TRUE(lossy);
}

TEST(CodePages, LegacyPagesRoundTripThroughIconvAndFailuresAreReported) {
    const std::pair<uint32_t, std::u16string> cases[] = {
        {936, u"图库门窗"}, {950, u"圖庫門窗"}, {932, u"ドア窓"}, {1252, u"café €"}, {28591, u"Ærø"}, {28595, u"Москва"},
        {1200, u"图库 x"}, {1201, u"图库 x"},
        // Stateful or holding back: the last character comes only when the input is closed.
        {65000, u"café é"}, {50220, u"ドア窓"}, {1258, u"Việt ê"}, {37, u"EBCDIC"}, {51936, u"门窗"},
    };
    for (const auto& [cp, text] : cases) {
        std::string bytes;
        std::u16string back;
        bool lossy = true, lossyBack = true;
        ASSERT_TRUE(Utf16ToCodePage(text, cp, bytes, &lossy) && CodePageToUtf16(bytes, cp, back, &lossyBack)) << cp;
        EXPECT_EQ(back, text) << cp;
        EXPECT_FALSE(lossy || lossyBack) << cp;
    }
    std::string bytes;
    bool lossy = false;
    ASSERT_TRUE(Utf16ToCodePage(u"图", 936, bytes));
    EXPECT_EQ(bytes, "\xCD\xBC");
    ASSERT_TRUE(Utf16ToCodePage(u"a图b", 1252, bytes, &lossy));  // 图 has no place in 1252
    EXPECT_EQ(bytes, "a?b");
    EXPECT_TRUE(lossy);
    std::u16string out = u"stale";
    EXPECT_FALSE(CodePageToUtf16("abc", 12345, out) || IsCodePageSupported(12345));
    EXPECT_TRUE(out.empty());
    lossy = false;
    ASSERT_TRUE(CodePageToUtf16("ok\x81", 936, out, &lossy));  // a cut double-byte character
    EXPECT_TRUE(lossy);
    EXPECT_EQ(out.substr(0, 2), u"ok");
}

TEST(CaseFoldingAndIntegers, LatinFoldsCjkStaysAndEachReaderOverflows) {
    EXPECT_EQ(ToLowerFold(u"DOOR Ærø ŁÓDŹ ΑΒΓ МОСКВА ＡＢ 门窗×"), u"door ærø łódź αβγ москва ａｂ 门窗×");
    EXPECT_TRUE(ContainsFolded(u"Double-DOOR 门", u"door") && ContainsFolded(u"anything", u"") && ContainsFolded(u"沙发Sofa", u"发s"));
    EXPECT_FALSE(ContainsFolded(u"do", u"door"));
    const std::tuple<const char16_t*, bool, int64_t> cases[] = {
        {u"", false, 0}, {u" \t-12x", true, 12}, {u"+7", false, 7}, {u"- 3", true, 0}, {u"x5", false, 0},
        {u"1000", false, 999}, {u"99", false, 99}};
    for (const auto& [text, negative, magnitude] : cases) {
        const LeadingInteger n = ScanLeadingInteger(text, 999);
        EXPECT_EQ(std::make_pair(n.negative, n.magnitude), std::make_pair(negative, magnitude)) << U8(text);
    }
    // The profile's reader wraps as a 32-bit number would.
    EXPECT_EQ(ParseProfileInt(u"4294967295") + ParseProfileInt(u"99999999999"), -2);
    EXPECT_EQ(ParseProfileInt(u"2147483648"), INT32_MIN);
    EXPECT_EQ(ParseProfileInt(u" -42 "), -42);
}
