// The class table inside the panel, against the stand-in service: a first run
// asks on the refresh worker and applies what it stores; the sort command and
// an hourly tick start the worker, whose table and words come back through
// the panel's queue (timer 1004 reapplies, command 19 the boutique marks);
// cut answers, dropped words and a thread that cannot start keep the file.
#include "panel/dialog/hourly_refresh.h"
#include "panel_world.h"
#include "platform/threads.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

std::vector<bool> BoutiqueMarks() {
    std::vector<bool> marks;
    for (const GalleryNode* gallery : GalleryStore::Instance().root->dirChildren) marks.push_back(gallery->boutique);
    return marks;
}

TEST(PanelClassTable, FirstRunSortCommandFailuresAndHourlyRefresh) {
    g_defaultHotWord.clear();
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    auto count = [&](const char* path) { return world.service.counters().get(path).count; };

    // A first run as the service-wait test walks it; here what it leaves for the refreshes.
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_boutiqueKinds.empty() && !panel.m_hotWords.empty(); }));
    EXPECT_FALSE(panel.m_generalKinds.empty());
    const std::string cached = ReadBytes(U8(ClassTablePath()));
    // A gallery outside the tree is judged by the table: every third of the sample (the second first) is boutique.
    EXPECT_TRUE(panel.IsBlkBoutique(StoreRoot() + u"/" + world.galleries.at(1) + u"/类/块.dwg"));
    EXPECT_FALSE(panel.IsBlkBoutique(StoreRoot() + u"/" + world.galleries.at(2) + u"/类/块.dwg"));
    EXPECT_FALSE(panel.IsBlkBoutique(StoreRoot() + u"/不存在/类/块.dwg"));

    // The sort command reapplies at once, then refreshes on the worker.
    Pump(300);  // the first class list
    const std::vector<bool> marks = BoutiqueMarks();
    ASSERT_FALSE(marks.empty());
    for (GalleryNode* gallery : GalleryStore::Instance().root->dirChildren) gallery->boutique = !gallery->boutique;
    panel.m_hotWords.clear();
    g_defaultHotWord.clear();
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), 1);
    panel.m_generalKinds.clear();  // only timer 1004 can fill it again now
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_hotWords.empty() && !panel.m_generalKinds.empty(); }));
    EXPECT_EQ(g_defaultHotWord, QStringLiteral("门"));
    ASSERT_TRUE(PumpUntil([&] { return BoutiqueMarks() == marks; }));  // command 19 after the timer
    EXPECT_FALSE(IsTimerRunning(panel.Handle(), kTimerClassTableApply));
    EXPECT_EQ(count("/gallery/selpageinfo") + count("/gallery/gethotwords"), 4);

    // A cut table and dropped words: the file stays, the old table is reapplied, the words stay.
    world.service.faults().set("/gallery/selpageinfo", {.truncateAt = 40});
    world.service.faults().set("/gallery/gethotwords", {.drop = true});
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    panel.m_generalKinds.clear();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_generalKinds.empty() && count("/gallery/selpageinfo") == 3; }));
    Pump(200);
    EXPECT_FALSE(panel.m_hotWords.empty()) << "the panel keeps its words";
    EXPECT_EQ(ReadBytes(U8(ClassTablePath())), cached);
    // No thread to be had: handled as a failed fetch on the panel's thread, nothing asked.
    world.service.faults().clearAll();
    FailThreadStartsForTests(1);
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    panel.m_generalKinds.clear();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_generalKinds.empty(); }));
    EXPECT_EQ(count("/gallery/selpageinfo"), 3);
    EXPECT_EQ(ReadBytes(U8(ClassTablePath())), cached);

    // Without the network option the sort command does not ask; with it, an hourly tick at a quiet hour refreshes.
    ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 0));
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    Pump(300);
    EXPECT_EQ(count("/gallery/selpageinfo"), 3);
    ASSERT_TRUE(WriteOptionInt(u"RequestNetwork", 1));
    SetHourlyRefreshSourcesForTest([] { return 12; }, [] { return 50; });
    (void)SendWindowMessage(panel.Handle(), WM_TIMER_MESSAGE, kTimerHourlyRefresh, 0);
    SetHourlyRefreshSourcesForTest({}, {});
    ASSERT_TRUE(PumpUntil([&] { return count("/gallery/selpageinfo") == 4; }));
    Pump(200);  // the worker's last posts land

    // Without a cached table the sort command does nothing.
    ASSERT_TRUE(RemoveFile(ClassTablePath()));
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    Pump(300);
    EXPECT_EQ(count("/gallery/selpageinfo"), 4);
}

}  // namespace
