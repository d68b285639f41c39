#pragma once
// Compares a rendered picture with a reference PNG kept in the repository
// under tests/<folder>/reference/<name>.png. A pixel differs when one of its
// channels is off by more than `channel`; the picture matches while no more
// than `share` of its pixels differ (font rasterising moves a few edge pixels).
// MARROWFIN_UPDATE_REFERENCES=1 rewrites the reference instead. On a mismatch
// the actual picture is written to <test program's folder>/pictures/ and
// named in the failure.

#include <gtest/gtest.h>

#include <QImage>
#include <string>

namespace marrowfin::test {

struct PictureTolerance {
    int channel = 6;
    double share = 0.0005;
};

::testing::AssertionResult MatchesReference(const QImage& actual, const std::string& folder, const std::string& name,
                                            PictureTolerance tolerance = {});

}  // namespace marrowfin::test
