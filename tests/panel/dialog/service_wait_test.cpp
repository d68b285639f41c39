// The panel's loop keeps turning while the service is slow: the first run's
// class table and the collection's blocks are asked for on workers, the page
// shows its waiting state, and the answers land when they come. A late
// collection answer for a page the user has left is dropped. The class
// table's refreshes (the sort command, an hourly tick) come back through the
// panel's queue (timer 1004 reapplies, command 19 the boutique marks); cut
// answers, dropped words and a thread that cannot start keep the file.

#include "panel/dialog/collection_rows.h"
#include "panel/dialog/hourly_refresh.h"
#include "panel_world.h"
#include "platform/threads.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// Counts the ticks of a 10 ms timer on the panel's thread that fall while
// the service still holds a request of `path`: a panel that waited on that
// thread would let none through.
struct LoopWitness : QTimer {
    int ticksWhileAsked = 0;
    LoopWitness(service::ServiceHandle& service, std::string path) {
        connect(this, &QTimer::timeout, [this, &service, path] { ticksWhileAsked += service.counters().get(path).active > 0; });
        start(10);
    }
};

// Releases the held answers and waits until the one of `generation` has come.
bool AnswerCame(PanelWorld& w, std::uintptr_t generation) {
    MessageRecorder spy(w.panel.get());
    w.service.faults().releaseHeld();
    return PumpUntil([&] { return spy.Count(MsgCollectionRows, generation) == 1; });
}

std::vector<bool> BoutiqueMarks() {
    std::vector<bool> marks;
    for (const GalleryNode* gallery : GalleryStore::Instance().root->dirChildren) marks.push_back(gallery->boutique);
    return marks;
}

// Bound: a panel that waits for a held answer fails the test slowly, not for ever.
const service::Fault kHeld{.holdMs = 10000};

}  // namespace

TEST(ServiceWait, FirstRunClassTableComesFromAWorkerBeforeTheWordsAndRefreshesKeepItsFile) {
    g_defaultHotWord.clear();
    SampleWorld world({.beforeCreate = [](PanelHarness& w) {
        // The second gallery is a boutique one; list it beside the first.
        AddGalleryToShowList(w.galleries[1]);
        w.service.faults().set("/gallery/selpageinfo", kHeld);
        w.service.faults().set("/gallery/gethotwords", kHeld);
    }});
    CBrindleDlg& panel = *world.panel;
    GalleryStore& store = GalleryStore::Instance();
    const std::u16string fineBlock = StoreRoot() + u"/" + world.galleries[1] + u"/类/块.dwg";

    // Create came back while the table is still asked for, and the loop turns.
    LoopWitness witness(world.service, "/gallery/selpageinfo");
    ASSERT_TRUE(PumpUntil([&] { return witness.ticksWhileAsked >= 5; }));
    // Meanwhile the panel is what it is without a table: the class list is
    // built, no gallery is marked boutique, no kinds, no default word.
    ASSERT_TRUE(PumpUntil([&] { return panel.m_nav.classesReady; }));
    Pump(100);  // command 19 after the first class list
    ASSERT_TRUE(store.root && store.root->dirChildren.size() == 2u && store.root->dirChildren[1]->name == world.galleries[1]);
    EXPECT_EQ(BoutiqueMarks(), (std::vector<bool>{false, false}));
    EXPECT_TRUE(panel.m_generalKinds.empty() && panel.m_hotWords.empty() && g_defaultHotWord.isEmpty());
    EXPECT_FALSE(FileExists(ClassTablePath()) || panel.IsBlkBoutique(fineBlock));

    // The table lands: stored, applied, the boutique gallery marked, and the
    // answer given without it forgotten.
    world.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_boutiqueKinds.empty(); }));
    EXPECT_TRUE(FileExists(ClassTablePath()));
    ASSERT_TRUE(PumpUntil([&] { return BoutiqueMarks() == std::vector<bool>{false, true}; }));
    // The words come after the table.
    EXPECT_TRUE(panel.IsBlkBoutique(fineBlock) && panel.m_hotWords.empty());

    LoopWitness words(world.service, "/gallery/gethotwords");
    ASSERT_TRUE(PumpUntil([&] { return words.ticksWhileAsked >= 5; }));
    world.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_hotWords.empty(); }));
    EXPECT_EQ(g_defaultHotWord, QStringLiteral("门"));

    // One request each, and the first run leaves the network option alone.
    auto count = [&](const char* path) { return world.service.counters().get(path).count; };
    EXPECT_EQ(std::make_tuple(count("/gallery/selpageinfo"), count("/gallery/gethotwords"), GetOptionInt(u"RequestNetwork", -7)),
              std::make_tuple(1L, 1L, -7));

    EXPECT_FALSE(panel.m_generalKinds.empty());
    const std::string cached = ReadBytes(Utf16ToUtf8(ClassTablePath()));

    // The sort command reapplies at once, then refreshes on the worker, the service answering at once now.
    world.service.faults().clearAll();
    Pump(300);  // the first class list
    const std::vector<bool> marks = BoutiqueMarks();  // as checked above
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
    EXPECT_EQ(std::make_pair(panel.m_hotWords.empty(), ReadBytes(Utf16ToUtf8(ClassTablePath()))), std::make_pair(false, cached));
    // No thread to be had: handled as a failed fetch on the panel's thread, nothing asked.
    world.service.faults().clearAll();
    FailThreadStartsForTests(1);
    (void)SendWindowMessage(panel.Handle(), MsgPanelCommand, 24, 0);
    panel.m_generalKinds.clear();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_generalKinds.empty(); }));
    EXPECT_EQ(std::make_pair(count("/gallery/selpageinfo"), ReadBytes(Utf16ToUtf8(ClassTablePath()))), std::make_pair(3L, cached));

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

// The collection's blocks: asked for on a worker while the page waits, listed
// and filtered when they land; an answer for a page the user has left is
// dropped and the page leaves its waiting state.
TEST(LivePages, CollectionSearchWaitsForTheCloudBlocksFiltersThemAndDropsLateAnswers) {
    PanelWorld w(SampleLibrary());
    // User 42 keeps "螺栓M8.dwg", "螺母.dwg" (a boutique block, also in the mirror) and "Bolt-Large.dwg".
    ASSERT_TRUE(w.service.users().addUser(42, "token-42"));
    int64_t folder = 0;
    ASSERT_EQ(w.service.users().addFolder(42, "收藏夹1", &folder), "");
    for (const std::string name : {"螺栓M8.dwg", "螺母.dwg", "Bolt-Large.dwg"})
        w.service.users().addBlock({0, folder, name, "收藏夹1", 3000, name == "螺母.dwg"});
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    auto asked = [&] { return w.service.counters().get("/gallery/get_u_collect").count; };
    w.SignIn(42);
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(p.m_nav.page, PageCollection);
    // The mirror starts clean at the first read: the nut lands in it afterwards.
    WriteBytes(Utf16ToUtf8(NumberedCollectionFolder(42)) + "/收藏夹1/螺母.dwg", std::string(2000, 'x'));
    const long opened = asked();
    // "搜索收藏" opens the page at once, waiting; the loop turns meanwhile.
    w.service.faults().set("/gallery/get_u_collect", kHeld);
    LoopWitness witness(w.service, "/gallery/get_u_collect");
    w.ClickButton(ControlId::SearchCollection);
    EXPECT_EQ(std::make_tuple(p.m_nav.page, p.m_search.collectionRowsPending, p.m_search.searchState),
              std::make_tuple(int(PageCollectionSearch), true, 1));  // "图块加载中，请稍候"
    ASSERT_TRUE(PumpUntil([&] { return witness.ticksWhileAsked >= 5; }));

    // A filter asked for before the rows came runs when they land.
    p.m_searchEdit->setText(QStringLiteral("螺"));
    w.ClickButton(ControlId::Search);
    w.service.faults().clear("/gallery/get_u_collect");
    w.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !p.m_search.collectionRowsPending; }));
    Pump(30);  // command 16 shows the hits
    EXPECT_EQ(asked(), opened + 1);
    ASSERT_EQ(p.m_search.collectionRows.size(), 3u);
    for (const BlockRow& row : p.m_search.collectionRows) {
        const bool nut = row.name == QStringLiteral("螺母.dwg");
        // The nut's file is in the mirror.
        EXPECT_EQ(std::make_tuple(row.klass, row.subclass, row.prefetch, row.path, row.state, row.boutique),
                  std::make_tuple(QStringLiteral("我的收藏"), QStringLiteral("收藏夹1"), true,
                                  QString::fromStdU16String(NumberedCollectionFolder(42)) + QStringLiteral("/收藏夹1/") + row.name,
                                  int(nut ? RowCollected : RowRemote), nut))
            << row.name.toStdString();
    }
    EXPECT_TRUE(p.m_search.rows.size() == 2u && p.m_search.searchState == 0 && w.Shown(p.m_searchList));

    // Leave before the answer: it comes, and is dropped. Only the page's
    // request is held; the collections' own reload on the way back is not.
    w.ClickButton(ControlId::SearchBack, 500);
    ASSERT_TRUE(w.WaitForSwitch());
    w.service.faults().set("/gallery/get_u_collect", service::Fault{.holdMs = 10000, .body = {}, .remaining = 1});
    w.ClickButton(ControlId::SearchCollection, 500);
    const std::uintptr_t left = p.m_search.collectionRowsGeneration;
    w.ClickButton(ControlId::SearchBack, 500);
    EXPECT_EQ(p.m_search.searchState, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_TRUE(AnswerCame(w, left));
    EXPECT_TRUE(p.m_nav.page == PageCollection && p.m_search.collectionRows.empty() && p.m_search.rows.empty() &&
                !p.m_search.collectionRowsPending);

    // A failing service leaves the page open and empty: the navigation's offline walk.
}
