#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/files.h"
#include "platform/text.h"
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

TEST(Files, RemoveTreeCopyAndRename) {
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
    EXPECT_TRUE(RenameFile(a, b));
    EXPECT_EQ(test::ReadBytes(U8(b)), "A2");
    EXPECT_FALSE(FileExists(a) || RenameFile(a, b));
}
