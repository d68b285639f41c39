// The platform layer: text codecs, code pages, case folding, INI files and the profile;
// files, folders, the documents folder, threads, ticks and window messages.
// (Path stems and names are read through the usage lists, the zip and the upload.)

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "platform/window_messages.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

TEST(TextCodecs, Utf8ValidityRoundTripsAndLossLegacyCodePagesFoldingAndIntegers) {
    const std::pair<std::string_view, bool> valid[] = {{"", true},
                                                       {"\xE5\x9B\xBE\xE5\xBA\x93", true},
                                                       {"\xF0\x9F\x98\x80", true},
                                                       {"\xF8\x88\x80\x80", false},
                                                       {"\xFF", false},
                                                       {"ok\xE5\x9B", false},
                                                       {"\xE5\x1B\xBE", false},
                                                       {"\x80", false}};
    for (const auto& [bytes, ok] : valid) EXPECT_EQ(IsValidUtf8(bytes), ok) << bytes;
    const std::u16string text = u"门窗 Door-1 \U0001F600 é";
    bool lossy = true;
    EXPECT_TRUE(Utf8ToUtf16(Utf16ToUtf8(text, &lossy), &lossy) == text && !lossy);
    // Ill-formed input becomes one replacement per bad byte (overlong NUL, encoded surrogate) and is reported.
    EXPECT_TRUE(Utf8ToUtf16("a\xFF\x62|\xE5\x9B|\xC0\x80|\xED\xA0\x80", &lossy) ==
                    u"a\uFFFDb|\uFFFD\uFFFD|\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD" &&
                lossy);
    lossy = false;  // a lone surrogate:
    EXPECT_TRUE(Utf16ToUtf8(std::u16string{u'a', char16_t(0xD800), u'b'}, &lossy) == "a\xEF\xBF\xBD\x62" && lossy);

    // Legacy code pages round-trip through iconv; failures are reported.
    // Stateful or holding back (65000 on): the last character comes only when the input is closed.
    const std::pair<uint32_t, std::u16string> cases[] = {{936, u"图库门窗"}, {932, u"ドア窓"},  {1252, u"café €"},  {28595, u"Москва"},
                                                         {1200, u"图库 x"},  {1201, u"图库 x"}, {65000, u"café é"}, {50220, u"ドア窓"},
                                                         {1258, u"Việt ê"},  {37, u"EBCDIC"},   {51936, u"门窗"}};
    for (const auto& [cp, text] : cases) {
        std::string bytes;
        std::u16string back;
        bool lossy = true, lossyBack = true;
        ASSERT_TRUE(Utf16ToCodePage(text, cp, bytes, &lossy) && CodePageToUtf16(bytes, cp, back, &lossyBack)) << cp;
        EXPECT_TRUE(back == text && !lossy && !lossyBack) << cp;
    }
    std::string bytes;
    lossy = false;
    EXPECT_TRUE(Utf16ToCodePage(u"图", 936, bytes) && bytes == "\xCD\xBC" && Utf16ToCodePage(u"a图b", 1252, bytes, &lossy) &&
                bytes == "a?b" && lossy);  // 图 has no place in 1252
    std::u16string out = u"stale";
    EXPECT_FALSE(CodePageToUtf16("abc", 12345, out) || IsCodePageSupported(12345) || !out.empty());
    lossy = false;
    EXPECT_TRUE(CodePageToUtf16("ok\x81", 936, out, &lossy) && lossy && out.substr(0, 2) == u"ok");  // a cut double-byte character

    // Latin folds, CJK stays, and each integer reader overflows in its own way.
    EXPECT_EQ(ToLowerFold(u"DOOR Ærø ŁÓDŹ ΑΒΓ МОСКВА ＡＢ 门窗×"), u"door ærø łódź αβγ москва ａｂ 门窗×");
    EXPECT_TRUE(ContainsFolded(u"Double-DOOR 门", u"door") && ContainsFolded(u"anything", u"") && ContainsFolded(u"沙发Sofa", u"发s") &&
                !ContainsFolded(u"do", u"door"));
    const std::tuple<const char16_t*, bool, int64_t> integers[] = {{u"", false, 0},   {u" \t-12x", true, 12}, {u"+7", false, 7},
                                                                   {u"- 3", true, 0}, {u"x5", false, 0},      {u"1000", false, 999},
                                                                   {u"99", false, 99}};
    for (const auto& [text, negative, magnitude] : integers) {
        const LeadingInteger n = ScanLeadingInteger(text, 999);
        EXPECT_EQ(std::make_pair(n.negative, n.magnitude), std::make_pair(negative, magnitude)) << Utf16ToUtf8(text);
    }
    // The profile's reader wraps as a 32-bit number would.
    EXPECT_EQ(std::make_tuple(ParseProfileInt(u"4294967295") + ParseProfileInt(u"99999999999"), ParseProfileInt(u"2147483648"),
                              ParseProfileInt(u" -42 ")),
              std::make_tuple(-2, INT32_MIN, -42));
}

TEST(IniFile, NamesWithoutCaseBufferCutWritesThatKeepTheRestAndConcurrentWriters) {
    TempHome home;
    const std::u16string ini = Utf8ToUtf16(home.file("sub/version.ini"));
    ASSERT_TRUE(IniWriteString(ini, u"OldCollect", u"TIP", u"1"));  // file and folder created
    test::WriteBytes(home.file("sub/version.ini"),
                     "\xEF\xBB\xBF[Version]\r\n 门窗 = 12 \r\nLong=abcdefghijklmnopqrstuvwxyz0123456789\r\n"
                     "[BrindleMoved]\nFLAG=\"1\"\n;comment=9\n");
    // A buffer of 25 reads 24 characters.
    EXPECT_EQ(IniGetString(ini, u"version", u"门窗", u"0", 25) + u"|" + IniGetString(ini, u"VERSION", u"long", u"0", 25),
              u"12|abcdefghijklmnopqrstuvwx");
    EXPECT_EQ(IniGetString(ini, u"brindlemoved", u"flag", u"0", 8) + IniGetString(ini, u"missing", u"flag", u"0", 8) +
                  IniGetString(ini, u"version", u"x", u"default", 4),
              u"10def");
    EXPECT_EQ(IniGetInt(ini, u"version", u"门窗", -1) + IniGetInt(ini, u"version", u"long", -1), 12);  // no digits: 0
    test::WriteBytes(home.file("sub/version.ini"), "[A]\nx=1\n\n[B]\ny=2\n");
    // Replaced in place (odd case), added at the end of its section, a new section at the end.
    ASSERT_TRUE(IniWriteString(ini, u"a", u"X", u"10") && IniWriteString(ini, u"a", u"z", u"3") && IniWriteString(ini, u"C", u"w", u"4"));
    EXPECT_EQ(test::ReadBytes(home.file("sub/version.ini")), "[A]\nX=10\nz=3\n\n[B]\ny=2\n[C]\nw=4\n");
    EXPECT_FALSE(IniWriteString(u"", u"A", u"x", u"1"));

    // The profile: under Tarvex, defaults and nothing made until written; another writer seen at once.
    EXPECT_TRUE(GetOptionInt(u"FNetUseInet", -2) == -2 && !FileExists(ProfilePath()));
    ASSERT_TRUE(WriteOptionInt(u"GalDefSort", 2) && WriteOptionString(u"ServiceBase", u"http://127.0.0.1:8080"));
    EXPECT_EQ(test::ReadBytes(home.configDir() + "/Tarvex/Marrowfin.ini"), "[options]\nGalDefSort=2\nServiceBase=http://127.0.0.1:8080\n");
    test::WriteBytes(home.configDir() + "/Tarvex/Marrowfin.ini", "[options]\nGalDefSort=x7\n");
    EXPECT_EQ(GetOptionInt(u"galdefsort", 5), 0);

    // Three threads each rewrite their own key of one file; a write that read the file
    // before another's rename would put the other's key back to an old value.
    const std::u16string shared = Utf8ToUtf16(home.file("shared.ini"));
    constexpr int kThreads = 3, kRounds = 1000;
    std::atomic<int> failedWrites{0}, staleReads{0};
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&, t] {
            const std::u16string key = u"key" + Utf8ToUtf16(std::to_string(t));
            for (int round = 0; round < kRounds; ++round) {
                const std::u16string value = Utf8ToUtf16(std::to_string(round));
                if (!IniWriteString(shared, u"options", key, value)) ++failedWrites;
                if (IniGetString(shared, u"options", key, u"") != value) ++staleReads;
            }
        });
    }
    for (std::thread& w : writers) w.join();
    EXPECT_EQ(std::make_pair(failedWrites.load(), staleReads.load()), std::make_pair(0, 0)) << "a key went back to an older value";
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(IniGetString(shared, u"options", u"key" + Utf8ToUtf16(std::to_string(t)), u""), u"999");

    // A file that is there but cannot be read, or a folder, is not replaced by one key.
    const std::string before = "[options]\nkeep=1\n", locked = home.file("locked.ini"), folder = home.file("folder.ini");
    test::WriteBytes(locked, before);
    ASSERT_TRUE(CreateDirectories(Utf8ToUtf16(folder)));
    test::WriteBytes(folder + "/inside", before);
    FailFileReadsForTests(1);
    EXPECT_FALSE(IniWriteString(Utf8ToUtf16(locked), u"options", u"new", u"2"));
    FailFileReadsForTests(0);
    EXPECT_FALSE(IniWriteString(Utf8ToUtf16(folder), u"options", u"new", u"2"));
    EXPECT_EQ(test::ReadBytes(locked) + test::ReadBytes(folder + "/inside"), before + before);
    for (const auto& entry : std::filesystem::directory_iterator(home.dir()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos) << entry.path();
}

TEST(Files, AtomicWritesRemovalsAndCopies) {
    TempHome home;
    const std::u16string path = Utf8ToUtf16(home.file("图库/Show.xml"));
    ASSERT_TRUE(CreateDirectories(Utf8ToUtf16(home.file("图库"))) && WriteFileAtomic(path, "first version"));
    // A write that fails half-way (the file-size limit stops it) leaves the old file whole, and no temporary.
    struct rlimit old {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 8;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool wrote = WriteFileAtomic(path, std::string(64, 'x'));
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldHandler);
    std::string bytes = "stale";
    EXPECT_TRUE(!wrote && ReadWholeFile(path, bytes) && bytes == "first version" &&
                std::distance(std::filesystem::directory_iterator(home.file("图库")), {}) == 1);
    EXPECT_FALSE(WriteFileAtomic(Utf8ToUtf16(home.file("missing/dir/x.xml")), "x"));
    // Missing files and folders read as nothing.
    for (const std::u16string& p : {Utf8ToUtf16(home.file("nope")), Utf8ToUtf16(home.dir())})
        EXPECT_TRUE(!ReadWholeFile(p, bytes) && bytes.empty() && FileSize(p) == -1) << Utf16ToUtf8(p);

    // Trees go with their read-only entries; copies never overwrite.
    const std::string top = home.file("tree");
    std::filesystem::create_directories(top + "/a/b/c");
    test::WriteBytes(top + "/a/file.dwg", "x");
    chmod((top + "/a/file.dwg").c_str(), 0444);
    chmod((top + "/a/b/c").c_str(), 0555);
    RemoveDirectoryTree(Utf8ToUtf16(top));
    EXPECT_FALSE(PathExists(Utf8ToUtf16(top)));
    const std::u16string a = Utf8ToUtf16(home.file("a.xml")), b = Utf8ToUtf16(home.file("b.xml"));
    ASSERT_TRUE(WriteFileAtomic(a, "A"));
    RemoveDirectoryTree(a);  // only folders are removed
    EXPECT_TRUE(CopyFileNoOverwrite(a, b) && WriteFileAtomic(a, "A2"));
    EXPECT_TRUE(!CopyFileNoOverwrite(a, b) && test::ReadBytes(Utf16ToUtf8(b)) == "A");
}

TEST(DocumentRoot, HonoursDocDirAndFallsBack) {
    {
        TempHome home;
        const std::string custom = home.file("custom");
        std::filesystem::create_directories(custom);
        WriteOptionString(u"docDir", Utf8ToUtf16(custom));
        EXPECT_EQ(DocumentRoot(), Utf8ToUtf16(custom));
        WriteOptionString(u"docDir", u"");
        EXPECT_EQ(DocumentRoot(), Utf8ToUtf16(custom));  // computed once per process
    }
    // docDir names a folder that is gone: the documents folder is used, and docDir is
    // written empty only when that is missing too.
    for (bool documents : {true, false}) {
        TempHome home;
        if (!documents) std::filesystem::remove_all(home.documentsDir());
        WriteOptionString(u"docDir", Utf8ToUtf16(home.file("gone")));
        EXPECT_EQ(DocumentRoot(), Utf8ToUtf16(home.documentsDir()));
        EXPECT_EQ(GetOptionString(u"docDir", u"?"), documents ? Utf8ToUtf16(home.file("gone")) : u"");
    }
    TempHome home;
    test::WriteBytes(home.configDir() + "/user-dirs.dirs", "# c\nXDG_DESKTOP_DIR=\"$HOME/D\"\nXDG_DOCUMENTS_DIR=\"$HOME/文档\"\n");
    EXPECT_EQ(DocumentsFolder(), Utf8ToUtf16(home.dir() + "/文档"));
}

TEST(ThreadsAndTicks, AFailedStartRunsNothingAndTickDifferencesSurviveTheWrap) {
    auto token = std::make_shared<int>(0);  // tells whether the work was let go
    std::atomic<int> runs{0};
    FailThreadStartsForTests(2);
    std::thread t;
    EXPECT_FALSE(StartThread(t, [&runs, token] { ++runs; }) || StartDetachedThread([&runs, token] { ++runs; }) || t.joinable());
    EXPECT_EQ(token.use_count(), 1) << "the work of a failed start is destroyed";
    // A throwing body ends its worker, not the process.
    ASSERT_TRUE(StartThread(t, [&runs] {
        ++runs;
        throw std::runtime_error("worker");
    }));
    t.join();
    EXPECT_EQ(runs.load(), 1);

    // Tick differences survive the 32-bit wrap.
    const uint32_t now = GetTickCount();
    // Move the clock to 100 ms before the 32-bit wrap.
    ShiftTicksForTest(static_cast<int64_t>(0xFFFFFFFFu - 100u) - now);
    const uint32_t before = GetTickCount();
    ShiftTicksForTest(250);
    const uint32_t after = GetTickCount();
    EXPECT_TRUE(after < 1000u && TicksSince(before) >= 250u && after - before < 5000u)
        << before << " " << after;  // wrapped, yet the difference is right
    ShiftTicksForTest(-static_cast<int64_t>(0xFFFFFFFFu - 100u) + now - 250);
}

// Posting before any window system frees the payload; the rest of posting (order, dead
// windows, payloads) is the Qt layer's test.
TEST(WindowMessages, WithoutAWindowSystemNothingIsPostedAndThePayloadIsFreed) {
    static std::atomic<int> freed{0};
    struct CountedPayload : MessagePayload {
        ~CountedPayload() override { ++freed; }
    };
    InstallWindowSystem(nullptr);
    EXPECT_FALSE(PostWindowMessage(1, 2526, 0, 0, std::make_unique<CountedPayload>()));
    EXPECT_EQ(freed, 1);
}
