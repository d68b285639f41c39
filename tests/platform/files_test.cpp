// Files, folders, the documents folder, threads, ticks and window messages of the platform layer.
// (Path stems and names are read through the usage lists, the zip and the upload.)

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "platform/window_messages.h"
#include "support/recording_windows.h"
#include "support/temp_home.h"
#include "support/test_paths.h"

using namespace marrowfin;
using marrowfin::test::TempHome;

TEST(Files, AtomicWriteReplacesWholeOrNotAtAll) {
    TempHome home;
    const std::u16string path = W(home.file("图库/Show.xml"));
    ASSERT_TRUE(CreateDirectories(W(home.file("图库"))));
    ASSERT_TRUE(WriteFileAtomic(path, "first version"));
    // A write that fails half-way (the file-size limit stops it) leaves the old file whole, and no temporary.
    struct rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 8;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool wrote = WriteFileAtomic(path, std::string(64, 'x'));
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(wrote);
    std::string bytes = "stale";
    ASSERT_TRUE(ReadWholeFile(path, bytes));
    EXPECT_EQ(bytes, "first version");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.file("图库")), {}), 1);
    EXPECT_FALSE(WriteFileAtomic(W(home.file("missing/dir/x.xml")), "x"));
    // Missing files and folders read as nothing.
    for (const std::u16string& p : {W(home.file("nope")), W(home.dir())}) {
        EXPECT_FALSE(ReadWholeFile(p, bytes));
        EXPECT_EQ(bytes, "");
        EXPECT_EQ(FileSize(p), -1);
    }
}

TEST(Files, RemoveTreeAndCopy) {
    TempHome home;
    const std::string top = home.file("tree");
    std::filesystem::create_directories(top + "/a/b/c");
    test::WriteBytes(top + "/a/file.dwg", "x");
    chmod((top + "/a/file.dwg").c_str(), 0444);
    chmod((top + "/a/b/c").c_str(), 0555);
    RemoveDirectoryTree(W(top));  // read-only entries go as well
    EXPECT_FALSE(PathExists(W(top)));
    const std::u16string a = W(home.file("a.xml")), b = W(home.file("b.xml"));
    ASSERT_TRUE(WriteFileAtomic(a, "A"));
    RemoveDirectoryTree(a);  // only folders are removed
    EXPECT_TRUE(CopyFileNoOverwrite(a, b));
    ASSERT_TRUE(WriteFileAtomic(a, "A2"));
    EXPECT_FALSE(CopyFileNoOverwrite(a, b));
    EXPECT_EQ(test::ReadBytes(U8(b)), "A");
}

TEST(DocumentRoot, HonoursDocDirAndFallsBack) {
    {
        TempHome home;
        const std::string custom = home.file("custom");
        std::filesystem::create_directories(custom);
        WriteOptionString(u"docDir", W(custom));
        EXPECT_EQ(DocumentRoot(), W(custom));
        WriteOptionString(u"docDir", u"");
        EXPECT_EQ(DocumentRoot(), W(custom));  // computed once per process
    }
    // docDir names a folder that is gone: the documents folder is used, and docDir is
    // written empty only when that is missing too.
    for (bool documents : {true, false}) {
        TempHome home;
        if (!documents) std::filesystem::remove_all(home.documentsDir());
        WriteOptionString(u"docDir", W(home.file("gone")));
        EXPECT_EQ(DocumentRoot(), W(home.documentsDir()));
        EXPECT_EQ(GetOptionString(u"docDir", u"?"), documents ? W(home.file("gone")) : u"");
    }
    TempHome home;
    test::WriteBytes(home.configDir() + "/user-dirs.dirs", "# c\nXDG_DESKTOP_DIR=\"$HOME/D\"\nXDG_DOCUMENTS_DIR=\"$HOME/文档\"\n");
    EXPECT_EQ(DocumentsFolder(), W(home.dir() + "/文档"));
}

TEST(Threads, AFailedStartAnswersFalseRunsNothingAndTheNextStartWorks) {
    auto token = std::make_shared<int>(0);  // tells whether the work was let go
    std::atomic<int> runs{0};
    FailThreadStartsForTests(2);
    std::thread t;
    EXPECT_FALSE(StartThread(t, [&runs, token] { ++runs; }));
    EXPECT_FALSE(StartDetachedThread([&runs, token] { ++runs; }));
    EXPECT_FALSE(t.joinable());
    EXPECT_EQ(token.use_count(), 1) << "the work of a failed start is destroyed";
    ASSERT_TRUE(StartThread(t, [&runs, token] { ++runs; }));
    t.join();
    // A throwing body ends its worker, not the process.
    ASSERT_TRUE(StartThread(t, [&runs] { ++runs; throw std::runtime_error("worker"); }));
    t.join();
    EXPECT_EQ(runs.load(), 2);
}

TEST(Ticks, DifferencesSurviveTheWrap) {
    const uint32_t now = GetTickCount();
    // Move the clock to 100 ms before the 32-bit wrap.
    ShiftTicksForTest(static_cast<int64_t>(0xFFFFFFFFu - 100u) - now);
    const uint32_t before = GetTickCount();
    ShiftTicksForTest(250);
    const uint32_t after = GetTickCount();
    EXPECT_LT(after, 1000u);  // wrapped, yet the difference is right
    EXPECT_GE(TicksSince(before), 250u);
    EXPECT_LT(after - before, 5000u);
    ShiftTicksForTest(-static_cast<int64_t>(0xFFFFFFFFu - 100u) + now - 250);
}

namespace {

struct CountedPayload : MessagePayload {
    explicit CountedPayload(std::atomic<int>& c) : freed(c) {}
    ~CountedPayload() override { ++freed; }
    std::atomic<int>& freed;
};

}  // namespace

// The order of posts from several threads is the window system's own (see the Qt layer's tests).
TEST(WindowMessages, PayloadsAreFreedWhenNobodyTakesThem) {
    std::atomic<int> freed{0};
    InstallWindowSystem(nullptr);
    EXPECT_FALSE(PostWindowMessage(1, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // no window system yet
    test::RecordingWindows windows;
    EXPECT_FALSE(PostWindowMessage(9, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // a dead window
    EXPECT_EQ(freed, 2);
    EXPECT_FALSE(PostWindowMessage(0, 2526));
    EXPECT_TRUE(PostText(1, 2526, 4, u"path"));
    ASSERT_EQ(windows.Messages(2526).size(), 1u);
    EXPECT_EQ(windows.Messages(2526)[0].text, u"path");
    EXPECT_EQ(SendWindowMessage(1, 100, 5) + SendWindowMessage(9, 100, 5), 105);
}
