#include <gtest/gtest.h>

#include "demo_options.h"

namespace marrowfin::demo {
namespace {

ParsedOptions Parse(const QStringList& args) { return ParseDemoOptions(args, QStringLiteral("/b/tools/demo-host")); }

TEST(DemoOptions, DefaultsFindTheBuildFoldersLibrary) {
    const ParsedOptions p = Parse({});
    ASSERT_TRUE(p.error.isEmpty()) << p.error.toStdString();
    EXPECT_EQ(p.options.library, QStringLiteral("/b/libmarrowfin.so"));
    EXPECT_TRUE(p.options.tourDir.isEmpty());
    EXPECT_EQ(p.options.rateLabel, QStringLiteral("1.0"));
    EXPECT_EQ(p.options.stepTimeoutMs, 15000);
    EXPECT_FALSE(p.options.shortTour);
    EXPECT_FALSE(p.help);
}

TEST(DemoOptions, ReadsEveryOption) {
    const ParsedOptions p = Parse({"--library", "/x/lib.so", "--tour", "/t", "--short", "--sample", "/s",
                                   "--rate-label", "1.5", "--step-timeout", "100"});
    ASSERT_TRUE(p.error.isEmpty()) << p.error.toStdString();
    EXPECT_EQ(p.options.library, QStringLiteral("/x/lib.so"));
    EXPECT_EQ(p.options.tourDir, QStringLiteral("/t"));
    EXPECT_EQ(p.options.sampleDir, QStringLiteral("/s"));
    EXPECT_EQ(p.options.rateLabel, QStringLiteral("1.5"));
    EXPECT_EQ(p.options.stepTimeoutMs, 100);
    EXPECT_TRUE(p.options.shortTour);
    EXPECT_TRUE(Parse({"--help"}).help);
    EXPECT_EQ(Parse({"--step-timeout", "600000"}).options.stepTimeoutMs, 600000);
}

TEST(DemoOptions, RefusesWhatItCannotUse) {
    // Each of these lines must be told apart, never silently half-read.
    const QList<QStringList> bad = {
        {"--library"},                 // value missing at the end
        {"--library", ""},             // empty value
        {"--tour"},
        {"--sample"},
        {"--rate-label"},
        {"--rate-label", "a/b"},       // would put the shots in another folder
        {"--step-timeout", "99"},      // below the bound
        {"--step-timeout", "600001"},  // above it
        {"--step-timeout", "soon"},
        {"--step-timeout"},
        {"--short"},                   // only with --tour
        {"--tour", "/t", "--bogus"},
        {"tour"},
    };
    for (const QStringList& args : bad) {
        const ParsedOptions p = Parse(args);
        EXPECT_FALSE(p.error.isEmpty()) << args.join(' ').toStdString();
    }
    EXPECT_TRUE(Parse({"--tour", "/t", "--bogus"}).error.contains(QStringLiteral("--bogus")));
}

}  // namespace
}  // namespace marrowfin::demo
