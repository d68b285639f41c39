// The tour's stall meter: the longest gap of the event loop per step.
#include <gtest/gtest.h>

#include <QThread>
#include <QtTest/QTest>

#include "stall_meter.h"

namespace marrowfin::demo {
namespace {

TEST(TourSupport, StallMeterKeepsTheLongestGapPerStageWithoutTheTourOwnWork) {
    StallMeter meter;
    meter.NoteGap(500);  // before any stage: nowhere to go
    EXPECT_TRUE(meter.stages().empty());
    meter.BeginStage(QStringLiteral("show"));
    meter.NoteGap(10);
    meter.NoteGap(1071);
    meter.NoteGap(99);
    meter.NoteGap(100);
    meter.BeginStage(QStringLiteral("collection-search"));
    meter.AddOwnWork(300);  // a screenshot inside the next gap
    meter.NoteGap(320);
    meter.AddOwnWork(50);   // more own work than the gap: no negative stall
    meter.NoteGap(20);
    meter.NoteGap(12);
    meter.Stop();
    ASSERT_EQ(meter.stages().size(), 2u);
    EXPECT_EQ(meter.stages()[0].longestGapMs, 1071);
    EXPECT_EQ(meter.stages()[0].longGaps, 2);
    EXPECT_EQ(meter.stages()[0].ticks, 4);
    EXPECT_EQ(meter.stages()[1].longestGapMs, 20);
    EXPECT_EQ(meter.stages()[1].longGaps, 0);
    const QStringList lines = meter.Table().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[1].simplified(), QStringLiteral("show 1071 2"));
    EXPECT_EQ(lines[2].simplified(), QStringLiteral("collection-search 20 0"));
    EXPECT_EQ(lines[1].indexOf(QStringLiteral("1071")) + 4, lines[0].indexOf(QStringLiteral(" ms ")) + 3);  // right-aligned under its heading
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("longest of all: 1071 ms (show)")));
}

TEST(TourSupport, StallMeterSeesAThreadThatStoodStill) {
    StallMeter meter;
    meter.BeginStage(QStringLiteral("blocked"));
    QTest::qWait(50);  // the timer ticks while the loop turns
    QThread::msleep(150);  // the thread stands: no tick can come
    QTest::qWait(50);
    meter.Stop();
    ASSERT_EQ(meter.stages().size(), 1u);
    EXPECT_GE(meter.stages()[0].ticks, 2);
    EXPECT_GE(meter.stages()[0].longestGapMs, 150);
    EXPECT_GE(meter.stages()[0].longGaps, 1);
}

}  // namespace
}  // namespace marrowfin::demo
