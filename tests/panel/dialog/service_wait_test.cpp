// The panel's loop keeps turning while the service is slow: the first run's
// class table and the collection's blocks are asked for on workers, the page
// shows its waiting state, and the answers land when they come. A late
// collection answer for a page the user has left is dropped.

#include <gtest/gtest.h>

#include <QtTest/QTest>

#include "panel/dialog/collection_rows.h"
#include "panel/dialog/hot_words.h"
#include "panel_world.h"
#include "platform/text.h"
#include "store/show_list.h"
#include "support/live_service.h"
#include "user_state.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// Counts the ticks of a 10 ms timer on the panel's thread that fall while
// the service still holds a request of `path`: a panel that waited on that
// thread would let none through.
class LoopWitness {
public:
    LoopWitness(service::ServiceHandle& service, std::string path) : m_service(service), m_path(std::move(path)) {
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (m_service.counters().get(m_path).active > 0) ++ticksWhileAsked;
        });
        m_timer.start();
    }
    int ticksWhileAsked = 0;

private:
    service::ServiceHandle& m_service;
    std::string m_path;
    QTimer m_timer;
};

// Bound: a panel that waits for a held answer fails the test slowly, not for ever.
const service::Fault kHeld{.holdMs = 10000};

}  // namespace

TEST(ServiceWait, FirstRunClassTableComesFromAWorkerInTheDesignedOrder) {
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
    ASSERT_TRUE(PumpUntil([&] { return panel.m_classesReady; }));
    Pump(100);  // command 19 after the first class list
    ASSERT_NE(store.root, nullptr);
    ASSERT_EQ(store.root->dirChildren.size(), 2u);
    for (const GalleryNode* gallery : store.root->dirChildren) EXPECT_FALSE(gallery->boutique) << U8(gallery->name);
    EXPECT_TRUE(panel.m_generalKinds.empty());
    EXPECT_TRUE(panel.m_hotWords.empty());
    EXPECT_TRUE(g_defaultHotWord.isEmpty());
    EXPECT_FALSE(FileExists(ClassTablePath()));
    EXPECT_FALSE(panel.IsBlkBoutique(fineBlock));

    // The table lands: stored, applied, the boutique gallery marked, and the
    // answer given without it forgotten.
    world.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_boutiqueKinds.empty(); }));
    EXPECT_TRUE(FileExists(ClassTablePath()));
    auto gallery = [&](const std::u16string& name) {
        for (const GalleryNode* g : store.root->dirChildren)
            if (g->name == name) return g;
        return static_cast<const GalleryNode*>(nullptr);
    };
    ASSERT_NE(gallery(world.galleries[1]), nullptr);
    ASSERT_TRUE(PumpUntil([&] { return gallery(world.galleries[1])->boutique; }));
    EXPECT_FALSE(gallery(world.galleries[0])->boutique);
    EXPECT_TRUE(panel.IsBlkBoutique(fineBlock));
    EXPECT_TRUE(panel.m_hotWords.empty());  // the words come after the table

    LoopWitness words(world.service, "/gallery/gethotwords");
    ASSERT_TRUE(PumpUntil([&] { return words.ticksWhileAsked >= 5; }));
    world.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_hotWords.empty(); }));
    EXPECT_EQ(g_defaultHotWord, QStringLiteral("门"));

    // One request each, and the first run leaves the network option alone.
    EXPECT_EQ(world.service.counters().get("/gallery/selpageinfo").count, 1);
    EXPECT_EQ(world.service.counters().get("/gallery/gethotwords").count, 1);
    EXPECT_EQ(GetOptionInt(u"RequestNetwork", -7), -7);
}

TEST(ServiceWait, CollectionRowsComeFromAWorkerAndALateAnswerIsDropped) {
    PanelWorld w(SampleLibrary());
    w.ServeCollection(42);
    w.AddCollections(42, {u"收藏夹1"}, 0);
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    w.SignIn(42);
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(p.m_page, PageCollection);
    // "搜索收藏" opens the page at once, waiting; the loop turns meanwhile.
    w.service.faults().set("/gallery/get_u_collect", kHeld);
    LoopWitness witness(w.service, "/gallery/get_u_collect");
    w.ClickButton(2104);
    EXPECT_EQ(p.m_page, PageCollectionSearch);
    EXPECT_TRUE(p.m_collectionRowsPending);
    EXPECT_EQ(p.m_searchState, 1);  // "图块加载中，请稍候"
    ASSERT_TRUE(PumpUntil([&] { return witness.ticksWhileAsked >= 5; }));
    w.Render(QStringLiteral("collection_search_waiting"));

    // A filter asked for before the rows came runs when they land.
    p.m_searchEdit->setText(QStringLiteral("螺"));
    w.ClickButton(2201);
    EXPECT_TRUE(p.m_rows.empty());
    EXPECT_EQ(p.m_searchState, 1);
    w.service.faults().releaseHeld();
    ASSERT_TRUE(PumpUntil([&] { return !p.m_collectionRowsPending; }));
    EXPECT_EQ(p.m_collectionRows.size(), 3u);
    Pump(30);  // command 16 shows the hits
    EXPECT_EQ(p.m_rows.size(), 2u);
    EXPECT_EQ(p.m_searchState, 0);
    EXPECT_TRUE(w.Shown(p.m_searchList));

    // Leave before the answer: it comes, and is dropped.
    w.ClickButton(2202, 500);
    ASSERT_TRUE(w.WaitForSwitch());
    w.ClickButton(2104, 500);
    const std::uintptr_t left = p.m_collectionRowsGeneration;
    EXPECT_EQ(p.m_searchState, 1);
    w.ClickButton(2202, 500);
    EXPECT_EQ(p.m_searchState, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    {
        MessageRecorder spy(&p);
        w.service.faults().releaseHeld();
        ASSERT_TRUE(PumpUntil([&] { return spy.Count(MsgCollectionRows, left) == 1; }));
    }
    EXPECT_EQ(p.m_page, PageCollection);
    EXPECT_TRUE(p.m_collectionRows.empty());
    EXPECT_TRUE(p.m_rows.empty());
    EXPECT_FALSE(p.m_collectionRowsPending);

    // Leave and come back before the first answer: the newer answer stands,
    // the older one (a single block here) is dropped when it comes late.
    service::Fault late = kHeld;
    late.body = "<root><favorites favorites_id=\"1\" favorites_name=\"收藏夹1\">"
                "<dwg filename=\"旧.dwg\" dwg_info=\"收藏夹1\" dwg_url=\"http://x/旧.dwg\" size=\"3000\" gv=\"0\"/>"
                "</favorites></root>";
    late.remaining = 1;
    w.service.faults().set("/gallery/get_u_collect", late);
    w.ClickButton(2104, 500);
    const std::uintptr_t older = p.m_collectionRowsGeneration;
    w.ClickButton(2202, 500);
    ASSERT_TRUE(w.WaitForSwitch());
    w.ClickButton(2104, 500);
    ASSERT_TRUE(PumpUntil([&] { return !p.m_collectionRowsPending; }));
    EXPECT_EQ(p.m_collectionRows.size(), 3u);
    {
        MessageRecorder spy(&p);
        w.service.faults().releaseHeld();
        ASSERT_TRUE(PumpUntil([&] { return spy.Count(MsgCollectionRows, older) == 1; }));
    }
    EXPECT_EQ(p.m_page, PageCollectionSearch);
    ASSERT_EQ(p.m_collectionRows.size(), 3u);
    for (const BlockRow& row : p.m_collectionRows) EXPECT_NE(row.name, QStringLiteral("旧.dwg"));
    EXPECT_EQ(p.m_searchState, 0);
}
