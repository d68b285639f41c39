// Text codecs, code pages, case folding, INI files and the profile.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

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
        {936, u"图库门窗"}, {932, u"ドア窓"}, {1252, u"café €"}, {28595, u"Москва"}, {1200, u"图库 x"}, {1201, u"图库 x"},
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

TEST(IniFile, NamesWithoutCaseBufferCutAndWritesThatKeepTheRest) {
    TempHome home;
    const std::u16string ini = W(home.file("sub/version.ini"));
    ASSERT_TRUE(IniWriteString(ini, u"OldCollect", u"TIP", u"1"));  // file and folder created
    test::WriteBytes(home.file("sub/version.ini"),
                     "\xEF\xBB\xBF[Version]\r\n 门窗 = 12 \r\nLong=abcdefghijklmnopqrstuvwxyz0123456789\r\n"
                     "[BrindleMoved]\nFLAG=\"1\"\n;comment=9\n");
    EXPECT_EQ(IniGetString(ini, u"version", u"门窗", u"0", 25), u"12");
    EXPECT_EQ(IniGetString(ini, u"VERSION", u"long", u"0", 25), u"abcdefghijklmnopqrstuvwx");  // 24 characters
    EXPECT_EQ(IniGetString(ini, u"brindlemoved", u"flag", u"0", 8), u"1");
    EXPECT_EQ(IniGetString(ini, u"missing", u"flag", u"0", 8) + IniGetString(ini, u"version", u"x", u"default", 4), u"0def");
    EXPECT_EQ(IniGetInt(ini, u"version", u"门窗", -1) + IniGetInt(ini, u"version", u"long", -1), 12);  // no digits: 0
    test::WriteBytes(home.file("sub/version.ini"), "[A]\nx=1\n\n[B]\ny=2\n");
    ASSERT_TRUE(IniWriteString(ini, u"a", u"X", u"10"));  // replaced in place, odd case
    ASSERT_TRUE(IniWriteString(ini, u"a", u"z", u"3"));   // added at the end of its section
    ASSERT_TRUE(IniWriteString(ini, u"C", u"w", u"4"));   // a new section at the end
    EXPECT_EQ(test::ReadBytes(home.file("sub/version.ini")), "[A]\nX=10\nz=3\n\n[B]\ny=2\n[C]\nw=4\n");
    EXPECT_FALSE(IniWriteString(u"", u"A", u"x", u"1"));

    // The profile: under Tarvex, defaults and nothing made until written; another writer seen at once.
    EXPECT_EQ(GetOptionInt(u"FNetUseInet", -2), -2);
    EXPECT_FALSE(FileExists(ProfilePath()));
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 2));
    ASSERT_TRUE(WriteOptionString(u"ServiceBase", u"http://127.0.0.1:8080"));
    EXPECT_EQ(test::ReadBytes(home.configDir() + "/Tarvex/Marrowfin.ini"),
              "[options]\nGalDefSort=2\nServiceBase=http://127.0.0.1:8080\n");
    test::WriteBytes(home.configDir() + "/Tarvex/Marrowfin.ini", "[options]\nGalDefSort=x7\n");
    EXPECT_EQ(GetOptionInt(u"galdefsort", 5), 0);
}

TEST(IniFile, WritersOfOneFileNeverLoseEachOthersKeysAndAReadErrorLeavesTheFile) {
    TempHome home;
    const std::u16string ini = W(home.file("shared.ini"));
    // Three threads each rewrite their own key; a write that read the file
    // before another's rename would put the other's key back to an old value.
    constexpr int kThreads = 3, kRounds = 1000;
    std::atomic<int> failedWrites{0}, staleReads{0};
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&, t] {
            const std::u16string key = u"key" + Utf8ToUtf16(std::to_string(t));
            for (int round = 0; round < kRounds; ++round) {
                const std::u16string value = Utf8ToUtf16(std::to_string(round));
                if (!IniWriteString(ini, u"options", key, value)) ++failedWrites;
                if (IniGetString(ini, u"options", key, u"") != value) ++staleReads;
            }
        });
    }
    for (std::thread& w : writers) w.join();
    EXPECT_EQ(failedWrites.load(), 0);
    EXPECT_EQ(staleReads.load(), 0) << "a key went back to an older value";
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(IniGetString(ini, u"options", u"key" + Utf8ToUtf16(std::to_string(t)), u""), u"999");

    // A file that is there but cannot be read, or a folder, is not replaced by one key.
    const std::string before = "[options]\nkeep=1\n", locked = home.file("locked.ini"), folder = home.file("folder.ini");
    test::WriteBytes(locked, before);
    ASSERT_TRUE(CreateDirectories(W(folder)));
    test::WriteBytes(folder + "/inside", before);
    FailFileReadsForTests(1);
    EXPECT_FALSE(IniWriteString(W(locked), u"options", u"new", u"2"));
    FailFileReadsForTests(0);
    EXPECT_FALSE(IniWriteString(W(folder), u"options", u"new", u"2"));
    EXPECT_EQ(test::ReadBytes(locked) + test::ReadBytes(folder + "/inside"), before + before);
    for (const auto& entry : std::filesystem::directory_iterator(home.dir()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos) << entry.path();
}
