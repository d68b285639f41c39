#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QThread>
#include <QtTest/QTest>
#include <memory>

#include "demo_tour.h"
#include "stall_meter.h"

namespace marrowfin::demo {
namespace {

TEST(TourSupport, TellsABlankShotFromAPicture) {
    EXPECT_EQ(DistinctColours(QImage()), 0);
    QImage blank(300, 200, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_EQ(DistinctColours(blank), 1);
    QImage two = blank;
    two.setPixel(299, 199, qRgb(0, 0, 0));  // the last pixel counts
    EXPECT_EQ(DistinctColours(two), 2);
    QImage drawn = blank;
    QPainter p(&drawn);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(Qt::blue, 3));
    p.drawEllipse(20, 20, 200, 120);
    p.end();
    EXPECT_GE(DistinctColours(drawn, 16), 16);
    EXPECT_EQ(DistinctColours(drawn, 5), 5);  // stops counting at the bound
}

TEST(TourSupport, FindsThePanelByItsCaptionAndChildrenByClass) {
    EXPECT_EQ(FindPanelWidget(), nullptr);
    auto panel = std::make_unique<QWidget>();
    panel->setWindowTitle(QStringLiteral("Ombrel_Panel"));
    auto* button = new QPushButton(panel.get());
    EXPECT_EQ(FindPanelWidget(), panel.get());
    EXPECT_EQ(FindPanelChild(panel.get(), "QPushButton"), button);
    EXPECT_EQ(FindPanelChild(panel.get(), "CDWGListView"), nullptr);
    EXPECT_EQ(FindPanelChild(nullptr, "QPushButton"), nullptr);
    auto other = std::make_unique<QWidget>();
    other->setWindowTitle(QStringLiteral("Ombrel_Panel 2"));
    EXPECT_EQ(FindPanelWidget(), panel.get());
}

TEST(TourSupport, ClicksLandOnTheWidgetUnderThePoint) {
    QWidget top;
    top.resize(200, 100);
    auto* left = new QPushButton(QStringLiteral("L"), &top);
    auto* right = new QPushButton(QStringLiteral("R"), &top);
    left->setGeometry(0, 0, 100, 100);
    right->setGeometry(100, 0, 100, 100);
    int l = 0, r = 0;
    QObject::connect(left, &QPushButton::clicked, [&l] { ++l; });
    QObject::connect(right, &QPushButton::clicked, [&r] { ++r; });
    top.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&top));
    ClickAt(right, QPoint(10, 50));
    ClickAt(left, QPoint(99, 50));
    ClickAt(right, QPoint(50, 50));
    EXPECT_EQ(l, 1);
    EXPECT_EQ(r, 2);
}

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
