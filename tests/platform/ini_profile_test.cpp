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

    // A file that is there but cannot be read is not replaced by one key.
    struct Case { const char* what; std::string path; bool folder; };
    const Case cases[] = {{"unreadable file", home.file("locked.ini"), false},
                          {"a folder", home.file("folder.ini"), true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string before = "[options]\nkeep=1\n";
        if (c.folder) {
            ASSERT_TRUE(CreateDirectories(W(c.path)));
            test::WriteBytes(c.path + "/inside", before);
        } else {
            test::WriteBytes(c.path, before);
            FailFileReadsForTests(1);
        }
        EXPECT_FALSE(IniWriteString(W(c.path), u"options", u"new", u"2"));
        FailFileReadsForTests(0);
        if (c.folder) {
            EXPECT_TRUE(DirectoryExists(W(c.path)));
            EXPECT_EQ(test::ReadBytes(c.path + "/inside"), before);
        } else {
            EXPECT_EQ(test::ReadBytes(c.path), before);
        }
    }
    for (const auto& entry : std::filesystem::directory_iterator(home.dir()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos) << entry.path();
}
