// The demo host's command line, at the bounds of each option.
#include <gtest/gtest.h>

#include "demo_options.h"

namespace marrowfin::demo {
namespace {

ParsedOptions Parse(const QStringList& args) { return ParseDemoOptions(args, QStringLiteral("/b/tools/demo-host")); }

TEST(DemoOptions, ReadsEveryOptionWithinItsBoundsAndDefaultsTheRest) {
    EXPECT_EQ(Parse({}).options.library, QStringLiteral("/b/libmarrowfin.so"));  // the build folder's library
    const ParsedOptions p =
        Parse({"--library", "/x/lib.so", "--tour", "/t", "--short", "--sample", "/s", "--rate-label", "1.5", "--step-timeout", "100"});
    ASSERT_TRUE(p.error.isEmpty()) << p.error.toStdString();
    EXPECT_EQ(QStringList({p.options.library, p.options.tourDir, p.options.sampleDir, p.options.rateLabel}),
              QStringList({"/x/lib.so", "/t", "/s", "1.5"}));
    EXPECT_TRUE(p.options.stepTimeoutMs == 100 && p.options.shortTour);
    EXPECT_EQ(Parse({"--step-timeout", "600000"}).options.stepTimeoutMs, 600000);
    // Each of these lines must be told apart, never silently half-read.
    const QList<QStringList> bad = {
        {"--library"},
        {"--library", ""},
        {"--tour"},
        {"--sample"},
        {"--rate-label"},
        {"--rate-label", "a/b"},  // would put the shots in another folder
        {"--step-timeout", "99"},
        {"--step-timeout", "600001"},
        {"--step-timeout", "soon"},
        {"--step-timeout"},
        {"--short"},  // only with --tour
        {"--tour", "/t", "--bogus"},
        {"tour"},
    };
    for (const QStringList& args : bad) EXPECT_FALSE(Parse(args).error.isEmpty()) << args.join(' ').toStdString();
}

}  // namespace
}  // namespace marrowfin::demo
