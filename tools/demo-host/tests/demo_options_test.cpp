// The demo host's command line and the sample folder it reads gallery names from.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "demo_options.h"
#include "sample_galleries.h"

namespace marrowfin::demo {
namespace {

ParsedOptions Parse(const QStringList& args) { return ParseDemoOptions(args, QStringLiteral("/b/tools/demo-host")); }

TEST(DemoOptions, ReadsEveryOptionWithinItsBoundsAndDefaultsTheRest) {
    const DemoOptions defaults = Parse({}).options;
    EXPECT_EQ(defaults.library, QStringLiteral("/b/libmarrowfin.so"));  // the build folder's library
    EXPECT_EQ(defaults.rateLabel, QStringLiteral("1.0"));
    const ParsedOptions p = Parse({"--library", "/x/lib.so", "--tour", "/t", "--short", "--sample", "/s",
                                   "--rate-label", "1.5", "--step-timeout", "100"});
    ASSERT_TRUE(p.error.isEmpty()) << p.error.toStdString();
    EXPECT_EQ(QStringList({p.options.library, p.options.tourDir, p.options.sampleDir, p.options.rateLabel}),
              QStringList({"/x/lib.so", "/t", "/s", "1.5"}));
    EXPECT_EQ(p.options.stepTimeoutMs, 100);
    EXPECT_TRUE(p.options.shortTour);
    EXPECT_EQ(Parse({"--step-timeout", "600000"}).options.stepTimeoutMs, 600000);
    // Each of these lines must be told apart, never silently half-read.
    const QList<QStringList> bad = {
        {"--library"}, {"--library", ""}, {"--tour"}, {"--sample"}, {"--rate-label"},
        {"--rate-label", "a/b"},  // would put the shots in another folder
        {"--step-timeout", "99"}, {"--step-timeout", "600001"}, {"--step-timeout", "soon"}, {"--step-timeout"},
        {"--short"},  // only with --tour
        {"--tour", "/t", "--bogus"}, {"tour"},
    };
    for (const QStringList& args : bad) EXPECT_FALSE(Parse(args).error.isEmpty()) << args.join(' ').toStdString();
}

TEST(SampleGalleries, ReadsGalleryLinesInOrderWithoutRepeats) {
    QTemporaryDir dir;
    QFile f(dir.filePath(QStringLiteral("library.tsv")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("# a comment\ndv\t0\r\n"
            "gallery\t\xe5\xbb\xba\xe7\xad\x91\xe9\x97\xa8\xe7\xaa\x97\t0\r\n"  // 建筑门窗, CRLF
            "class\t\xe5\xbb\xba\xe7\xad\x91\xe9\x97\xa8\xe7\xaa\x97\tSliding Doors\t3\n"
            "gallery\tTitle Blocks\t1\ngallery\tTitle Blocks\t1\n"  // repeated
            "gallery\t\t0\n#gallery\tCommented\t0\ngalleryX\tNot one\t0\n"
            "gallery\tLast Without Newline\t0");
    f.close();
    QString error;
    EXPECT_EQ(ReadSampleGalleries(dir.path(), &error),
              (QStringList{QStringLiteral("建筑门窗"), QStringLiteral("Title Blocks"), QStringLiteral("Last Without Newline")}));
    EXPECT_TRUE(error.isEmpty());
}

}  // namespace
}  // namespace marrowfin::demo
