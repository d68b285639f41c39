#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "sample_galleries.h"

namespace marrowfin::demo {
namespace {

void Write(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

TEST(SampleGalleries, ReadsGalleryLinesInOrderWithoutRepeats) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    Write(dir.filePath("library.tsv"),
          "# a comment\n"
          "dv\t0\r\n"
          "gallery\t\xe5\xbb\xba\xe7\xad\x91\xe9\x97\xa8\xe7\xaa\x97\t0\r\n"  // 建筑门窗, CRLF
          "class\t\xe5\xbb\xba\xe7\xad\x91\xe9\x97\xa8\xe7\xaa\x97\tSliding Doors\t3\n"
          "gallery\tTitle Blocks\t1\n"
          "gallery\tTitle Blocks\t1\n"            // repeated
          "gallery\t\t0\n"                        // no name
          "#gallery\tCommented\t0\n"
          "galleryX\tNot one\t0\n"
          "gallery\tLast Without Newline\t0");
    QString error;
    const QStringList names = ReadSampleGalleries(dir.path(), &error);
    EXPECT_EQ(names, (QStringList{QStringLiteral("建筑门窗"), QStringLiteral("Title Blocks"),
                                  QStringLiteral("Last Without Newline")}));
    EXPECT_TRUE(error.isEmpty());
}

TEST(SampleGalleries, SaysWhyThereAreNone) {
    QTemporaryDir dir;
    QString error;
    EXPECT_TRUE(ReadSampleGalleries(dir.path() + "/missing", &error).isEmpty());
    EXPECT_TRUE(error.contains(QStringLiteral("cannot read"))) << error.toStdString();

    Write(dir.filePath("library.tsv"), "dv\t1\nclass\tA\tB\t1\n");
    error.clear();
    EXPECT_TRUE(ReadSampleGalleries(dir.path(), &error).isEmpty());
    EXPECT_TRUE(error.contains(QStringLiteral("names no gallery"))) << error.toStdString();
    // The error is optional.
    EXPECT_TRUE(ReadSampleGalleries(dir.path()).isEmpty());
}

}  // namespace
}  // namespace marrowfin::demo
