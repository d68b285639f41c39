#include <gtest/gtest.h>

#include "platform/ini_file.h"
#include "platform/text.h"

using namespace marrowfin;

TEST(Utf8Validity, FollowsTheMarkupDocumentsRule) {
    const std::pair<std::string_view, bool> cases[] = {
        {"", true}, {"plain ascii", true}, {"\xE5\x9B\xBE\xE5\xBA\x93", true}, {"\xF0\x9F\x98\x80", true},
        {"\xF8\x88\x80\x80", false},  // lead byte 0xF8 is never valid
        {"\xFF", false}, {"ok\xE5\x9B", false} /* cut at the end */, {"\xE5\x1B\xBE", false}, {"\x80", false},
    };
    for (const auto& [bytes, valid] : cases) EXPECT_EQ(IsValidUtf8(bytes), valid) << bytes;
}

TEST(Utf8Codec, RoundTripsAndMarksLoss) {
    const std::u16string text = u"门窗 Door-1 \U0001F600 é";
    bool lossy = true;
    const std::string bytes = Utf16ToUtf8(text, &lossy);
    EXPECT_FALSE(lossy);
    EXPECT_EQ(Utf8ToUtf16(bytes, &lossy), text);
    EXPECT_FALSE(lossy);

    // Ill-formed input becomes one replacement per bad byte and is reported.
    EXPECT_EQ(Utf8ToUtf16("a\xFF" "b", &lossy), u"a\uFFFDb");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(Utf8ToUtf16("\xE5\x9B", &lossy), u"\uFFFD\uFFFD");
    EXPECT_EQ(Utf8ToUtf16("\xC0\x80", &lossy), u"\uFFFD\uFFFD");  // overlong NUL
    EXPECT_EQ(Utf8ToUtf16("\xED\xA0\x80", &lossy), u"\uFFFD\uFFFD\uFFFD");  // an encoded surrogate

    // A lone surrogate cannot be encoded.
    const std::u16string lone{u'a', static_cast<char16_t>(0xD800), u'b'};
    EXPECT_EQ(Utf16ToUtf8(lone, &lossy), "a\xEF\xBF\xBD" "b");
    EXPECT_TRUE(lossy);
}

TEST(CodePages, LegacyPagesRoundTripThroughIconv) {
    struct Case { uint32_t cp; std::u16string text; };
    const Case cases[] = {
        {936, u"图库门窗"}, {950, u"圖庫門窗"}, {932, u"ドア窓"}, {1252, u"café €"},
        {28591, u"Ærø"}, {28595, u"Москва"}, {1200, u"图库 x"}, {1201, u"图库 x"},
        // Stateful or holding back: the last character comes only when the input is closed.
        {65000, u"café é"}, {50220, u"ドア窓"}, {1258, u"Việt ê"}, {37, u"EBCDIC"}, {51936, u"门窗"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cp);
        std::string bytes;
        bool lossy = true;
        ASSERT_TRUE(Utf16ToCodePage(c.text, c.cp, bytes, &lossy));
        EXPECT_FALSE(lossy);
        std::u16string back;
        ASSERT_TRUE(CodePageToUtf16(bytes, c.cp, back, &lossy));
        EXPECT_FALSE(lossy);
        EXPECT_EQ(back, c.text);
    }
    std::string gbk;
    ASSERT_TRUE(Utf16ToCodePage(u"图", 936, gbk));
    EXPECT_EQ(gbk, "\xCD\xBC");
}

TEST(CodePages, FailuresAreReportedNotThrown) {
    std::u16string out = u"stale";
    EXPECT_FALSE(CodePageToUtf16("abc", 12345, out));
    EXPECT_TRUE(out.empty());
    EXPECT_FALSE(IsCodePageSupported(12345));
    EXPECT_TRUE(IsCodePageSupported(936));

    bool lossy = false;
    std::string bytes;
    ASSERT_TRUE(Utf16ToCodePage(u"a图b", 1252, bytes, &lossy));  // 图 has no place in 1252
    EXPECT_EQ(bytes, "a?b");
    EXPECT_TRUE(lossy);

    ASSERT_TRUE(CodePageToUtf16("ok\x81", 936, out, &lossy));  // a cut double-byte character
    EXPECT_TRUE(lossy);
    EXPECT_EQ(out.substr(0, 2), u"ok");
}

TEST(CaseFolding, LatinFoldsAndCjkStays) {
    EXPECT_EQ(ToLowerFold(u"DOOR Ærø ŁÓDŹ ΑΒΓ МОСКВА ＡＢ"), u"door ærø łódź αβγ москва ａｂ");
    EXPECT_EQ(ToLowerFold(u"门窗×"), u"门窗×");
    EXPECT_TRUE(ContainsFolded(u"Double-DOOR 门", u"door"));
    EXPECT_TRUE(ContainsFolded(u"anything", u""));
    EXPECT_FALSE(ContainsFolded(u"do", u"door"));
    EXPECT_TRUE(ContainsFolded(u"沙发Sofa", u"发s"));
}

TEST(LeadingInteger, BlanksSignDigitsAndEachReadersOverflow) {
    struct Case {
        const char16_t* text;
        bool negative;
        int64_t magnitude;
    };
    const Case cases[] = {{u"", false, 0},        {u" \t-12x", true, 12}, {u"+7", false, 7},
                          {u"- 3", true, 0},      {u"x5", false, 0},      {u"1000", false, 999},
                          {u"99", false, 99}};
    for (const Case& c : cases) {
        SCOPED_TRACE(U8(c.text));
        const LeadingInteger n = ScanLeadingInteger(c.text, 999);
        EXPECT_EQ(n.negative, c.negative);
        EXPECT_EQ(n.magnitude, c.magnitude);
    }
    // The profile's reader wraps as a 32-bit number would.
    EXPECT_EQ(ParseProfileInt(u"4294967295"), -1);
    EXPECT_EQ(ParseProfileInt(u"99999999999"), -1);
    EXPECT_EQ(ParseProfileInt(u"2147483648"), INT32_MIN);
    EXPECT_EQ(ParseProfileInt(u" -42 "), -42);
}
