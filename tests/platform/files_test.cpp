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

TEST(Files, MissingAndUnreadableAnswerEmpty) {
    TempHome home;
    const std::u16string missing = W(home.file("nope.bin"));
    std::string bytes = "stale";
    EXPECT_FALSE(ReadWholeFile(missing, bytes));
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(FileSize(missing), -1);
    EXPECT_FALSE(FileExists(missing));
    EXPECT_FALSE(PathExists(u""));
    // A folder is not a readable file.
    EXPECT_FALSE(ReadWholeFile(W(home.dir()), bytes));
    EXPECT_EQ(FileSize(W(home.dir())), -1);
    EXPECT_TRUE(DirectoryExists(W(home.dir())));
    EXPECT_FALSE(FileExists(W(home.dir())));
}

TEST(Files, AtomicWriteReplacesWholeOrNotAtAll) {
    TempHome home;
    const std::u16string path = W(home.file("图库/Show.xml"));
    ASSERT_TRUE(CreateDirectories(W(home.file("图库"))));
    ASSERT_TRUE(WriteFileAtomic(path, "first version"));
    std::string bytes;
    ASSERT_TRUE(ReadWholeFile(path, bytes));
    EXPECT_EQ(bytes, "first version");
    EXPECT_EQ(FileSize(path), 13);

    // A write that fails half-way (the file-size limit stops it) leaves the old file whole.
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
    ASSERT_TRUE(ReadWholeFile(path, bytes));
    EXPECT_EQ(bytes, "first version");
    // No temporary is left beside it.
    int entries = 0;
    for ([[maybe_unused]] auto& e : std::filesystem::directory_iterator(home.file("图库"))) ++entries;
    EXPECT_EQ(entries, 1);

    // A folder that does not exist cannot take a file.
    EXPECT_FALSE(WriteFileAtomic(W(home.file("missing/dir/x.xml")), "x"));
    EXPECT_FALSE(WriteFileAtomic(u"", "x"));
}

TEST(Files, RemoveTreeClearsReadOnlyEntries) {
    TempHome home;
    const std::string top = home.file("tree");
    std::filesystem::create_directories(top + "/a/b/c");
    test::WriteBytes(top + "/a/file.dwg", "x");
    test::WriteBytes(top + "/a/b/c/deep.dwg", "y");
    chmod((top + "/a/file.dwg").c_str(), 0444);
    chmod((top + "/a/b/c").c_str(), 0555);
    RemoveDirectoryTree(W(top));
    EXPECT_FALSE(PathExists(W(top)));
    // Missing folders and empty names are quiet.
    RemoveDirectoryTree(W(top));
    RemoveDirectoryTree(u"");
    // A file path is left alone: only folders are removed.
    test::WriteBytes(home.file("keep.txt"), "k");
    RemoveDirectoryTree(W(home.file("keep.txt")));
    EXPECT_TRUE(FileExists(W(home.file("keep.txt"))));
}

TEST(Files, CopyNeverOverwritesAndRenameReplaces) {
    TempHome home;
    const std::u16string a = W(home.file("a.xml")), b = W(home.file("b.xml"));
    ASSERT_TRUE(WriteFileAtomic(a, "A"));
    EXPECT_TRUE(CopyFileNoOverwrite(a, b));
    ASSERT_TRUE(WriteFileAtomic(a, "A2"));
    EXPECT_FALSE(CopyFileNoOverwrite(a, b));
    std::string bytes;
    ReadWholeFile(b, bytes);
    EXPECT_EQ(bytes, "A");
    EXPECT_FALSE(CopyFileNoOverwrite(W(home.file("none")), W(home.file("c"))));
    EXPECT_TRUE(RenameFile(a, b));
    ReadWholeFile(b, bytes);
    EXPECT_EQ(bytes, "A2");
    EXPECT_FALSE(FileExists(a));
    EXPECT_FALSE(RenameFile(a, b));
}
