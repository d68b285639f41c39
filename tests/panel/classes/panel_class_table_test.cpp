// The class table inside the panel: a first run asks on the refresh worker,
// the sort command and the hourly timer start the worker, its words reach the
// panel, timer 1004 reapplies the table and command 19 the boutique marks.

#include <gtest/gtest.h>

#include "panel/dialog/hot_words.h"
#include "panel/dialog/hourly_refresh.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::vector<bool> BoutiqueMarks() {
    std::vector<bool> marks;
    for (const GalleryNode* gallery : GalleryStore::Instance().root->dirChildren) marks.push_back(gallery->boutique);
    return marks;
}

}  // namespace

TEST(PanelClassTable, FirstRunSortCommandAndHourlyRefresh) {
    g_defaultHotWord.clear();
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    auto count = [&](const char* path) { return world.service.counters().get(path).count; };

    // No cached table: the refresh worker asks and the panel applies what it stores.
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_boutiqueKinds.empty() && !panel.m_hotWords.empty(); }));
    EXPECT_EQ(count("/gallery/selpageinfo"), 1);
    EXPECT_EQ(count("/gallery/gethotwords"), 1);
    EXPECT_TRUE(FileExists(ClassTablePath()));
    EXPECT_FALSE(panel.m_generalKinds.empty());
    EXPECT_FALSE(panel.m_boutiqueKinds.empty());
    ASSERT_GE(panel.m_hotWords.size(), 2u);
    EXPECT_EQ(panel.m_hotWords[0], QStringLiteral("门"));
    EXPECT_EQ(g_defaultHotWord, QStringLiteral("门"));
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), -7);  // the first run does not touch the option

    // A block of a gallery outside the tree is judged by the class table:
    // every third gallery of the sample (the second first) is a boutique one.
    ASSERT_GE(world.galleries.size(), 3u);
    EXPECT_TRUE(panel.IsBlkBoutique(StoreRoot() + u"/" + world.galleries[1] + u"/类/块.dwg"));
    EXPECT_FALSE(panel.IsBlkBoutique(StoreRoot() + u"/" + world.galleries[2] + u"/类/块.dwg"));
    EXPECT_FALSE(panel.IsBlkBoutique(StoreRoot() + u"/不存在/类/块.dwg"));

    // The sort command: reapplies at once, then refreshes on a worker whose
    // words and table come back through the panel's queue.
    Pump(300);  // the first class list
    ASSERT_NE(GalleryStore::Instance().root, nullptr);
    const std::vector<bool> marks = BoutiqueMarks();
    ASSERT_FALSE(marks.empty());
    for (GalleryNode* gallery : GalleryStore::Instance().root->dirChildren) gallery->boutique = !gallery->boutique;
    panel.m_hotWords.clear();
    g_defaultHotWord.clear();
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), 1);
    panel.m_generalKinds.clear();  // only timer 1004 can fill it again now
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_hotWords.empty(); }));
    EXPECT_EQ(g_defaultHotWord, QStringLiteral("门"));
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_generalKinds.empty(); }));
    ASSERT_TRUE(PumpUntil([&] { return BoutiqueMarks() == marks; }));  // command 19 after the timer
    EXPECT_FALSE(IsTimerRunning(panel.Handle(), kTimerClassTableApply));
    EXPECT_EQ(count("/gallery/selpageinfo"), 2);
    EXPECT_EQ(count("/gallery/gethotwords"), 2);

    // Without the network option neither the sort command nor the hourly timer asks.
    ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 0));
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    SetHourlyRefreshSourcesForTest([] { return 12; }, [] { return 50; });
    (void)SendWindowMessage(panel.Handle(), WM_TIMER_MESSAGE, kTimerHourlyRefresh, 0);
    EXPECT_FALSE(IsTimerRunning(panel.Handle(), kTimerHourlyRefresh));
    Pump(300);
    EXPECT_EQ(count("/gallery/selpageinfo"), 2);

    // With it, the hourly tick refreshes once; at a busy hour most ticks wait.
    ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 1));
    SetTimer(panel.Handle(), kTimerHourlyRefresh, kHourlyRefreshMs);
    SetHourlyRefreshSourcesForTest([] { return 9; }, [] { return 50; });
    (void)SendWindowMessage(panel.Handle(), WM_TIMER_MESSAGE, kTimerHourlyRefresh, 0);
    EXPECT_TRUE(IsTimerRunning(panel.Handle(), kTimerHourlyRefresh));
    SetHourlyRefreshSourcesForTest([] { return 9; }, [] { return 3; });
    (void)SendWindowMessage(panel.Handle(), WM_TIMER_MESSAGE, kTimerHourlyRefresh, 0);
    EXPECT_FALSE(IsTimerRunning(panel.Handle(), kTimerHourlyRefresh));
    ASSERT_TRUE(PumpUntil([&] { return count("/gallery/gethotwords") == 3; }));
    EXPECT_EQ(count("/gallery/selpageinfo"), 3);
    SetHourlyRefreshSourcesForTest({}, {});
    Pump(200);  // the worker's last posts land before the panel goes
}

TEST(PanelClassTable, SortCommandWithoutACachedTableDoesNothing) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_hotWords.empty(); }));  // the first run's worker is done
    ASSERT_TRUE(RemoveFile(ClassTablePath()));
    const long before = world.service.counters().get("/gallery/selpageinfo").count;
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    Pump(300);
    EXPECT_EQ(world.service.counters().get("/gallery/selpageinfo").count, before);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), -7);
}
