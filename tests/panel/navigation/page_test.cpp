// The pages whose buttons talk to the stand-in service.
#include <gtest/gtest.h>

#include <QtTest/QTest>

#include "net/gallery_sync.h"
#include "panel_world.h"
#include "platform/text.h"
#include "support/live_service.h"
#include "support/test_paths.h"
#include "user_state.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(LivePages, CollectionSearchListsTheCloudBlocksAndFiltersThem) {
    PanelWorld w(SampleLibrary());
    w.ServeCollection(42);
    GalleryNode* mine = w.AddCollections(42, {u"收藏夹1"}, 0);
    WriteBytes(U8(mine->dirChildren[0]->Path()) + "/螺母.dwg", std::string(2000, 'x'));
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    w.SignIn(42);
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(p.m_page, PageCollection);

    w.ClickButton(2104);
    ASSERT_EQ(p.m_page, PageCollectionSearch);
    ASSERT_TRUE(PumpUntil([&] { return !p.m_collectionRowsPending; }));
    EXPECT_EQ(w.service.counters().get("/gallery/get_u_collect").count, 1);
    ASSERT_EQ(p.m_collectionRows.size(), 3u);
    const BlockRow* nut = nullptr;
    for (const BlockRow& row : p.m_collectionRows) {
        EXPECT_EQ(row.klass, QStringLiteral("我的收藏"));
        EXPECT_EQ(row.subclass, QStringLiteral("收藏夹1"));
        EXPECT_TRUE(row.prefetch);
        EXPECT_EQ(row.path, QString::fromStdU16String(NumberedCollectionFolder(42)) + QStringLiteral("/收藏夹1/") + row.name);
        if (row.name == QStringLiteral("螺母.dwg")) {
            nut = &row;
        } else {
            EXPECT_EQ(row.state, RowRemote);
            EXPECT_FALSE(row.boutique);
        }
    }
    ASSERT_NE(nut, nullptr);
    EXPECT_EQ(nut->state, RowCollected);  // its file is in the mirror
    EXPECT_TRUE(nut->boutique);

    // The filter folds case and shows the hits; nothing found, the state says so and the old hits go.
    struct Query {
        const char16_t* text;
        size_t hits;
        int state;
    };
    for (const Query& q : {Query{u"BOLT", 1, 0}, Query{u"螺", 2, 0}, Query{u"垫圈", 0, 3}}) {
        SCOPED_TRACE(QString::fromUtf16(q.text).toStdString());
        const QString text = QString::fromUtf16(q.text);
        p.m_searchEdit->clear();
        // Typed where the test keyboard has the keys.
        text.front().unicode() < 0x80 ? QTest::keyClicks(p.m_searchEdit, text) : p.m_searchEdit->setText(text);
        w.ClickButton(2201);
        Pump(30);
        EXPECT_EQ(p.m_lastSearch, text.toLower());
        EXPECT_EQ(p.m_rows.size(), q.hits);
        EXPECT_EQ(p.m_searchState, q.state);
        EXPECT_EQ(w.Shown(p.m_searchList), q.hits > 0);
        if (q.hits == 1) {
            EXPECT_EQ(p.m_rows[0].name, QStringLiteral("Bolt-Large.dwg"));
        }
    }

    // A failing service leaves the page open with nothing to filter.
    w.ClickButton(2202, 500);
    ASSERT_TRUE(w.WaitForSwitch());
    service::Fault fault;
    fault.status = 500;
    w.service.faults().set("/gallery/get_u_collect", fault);
    w.ClickButton(2104);
    EXPECT_EQ(p.m_page, PageCollectionSearch);
    ASSERT_TRUE(PumpUntil([&] { return !p.m_collectionRowsPending; }));
    EXPECT_TRUE(p.m_collectionRows.empty());
    EXPECT_EQ(p.m_searchState, 0);
    EXPECT_EQ(w.service.counters().get("/gallery/get_u_collect").count, 2);
}

TEST(LivePages, DownloadGalleryButtonTipsOnFailureAndFillsTheGalleryOnSuccess) {
    PanelWorld w(SampleLibrary());
    const std::u16string name = w.galleries[0];
    GalleryNode* gallery = w.AddGallery({name, 0, 0});
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    ASSERT_TRUE(w.OpenRow(2));
    ASSERT_TRUE(w.ButtonShown(2151));

    service::Fault fault;
    fault.status = 500;
    w.service.faults().set("/gallery/g_all", fault);
    {
        TipWatcher watcher(QStringLiteral("download_failed_tip"));
        w.ClickButton(2151);
        // The gallery comes on a worker: the button waits, disabled, and a
        // second press sends nothing.
        EXPECT_FALSE(p.Button(2151)->isEnabled());
        w.ClickButton(2151);
        ASSERT_TRUE(PumpUntil([&] { return watcher.seen == 1; }));
        EXPECT_TRUE(p.Button(2151)->isEnabled());
        EXPECT_EQ(watcher.okText, QStringLiteral("确定"));
        EXPECT_FALSE(watcher.cancelShown);
    }
    EXPECT_EQ(w.service.counters().get("/gallery/g_all").count, 1);
    EXPECT_TRUE(gallery->dirChildren.empty());
    EXPECT_TRUE(IsTimerRunning(p.Handle(), 1011));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_TRUE(w.ButtonShown(2151));  // still empty

    w.service.faults().clearAll();
    {
        TipWatcher watcher(QStringLiteral("download_unexpected_tip"));
        w.ClickButton(2151);
        ASSERT_TRUE(PumpUntil([&] { return !gallery->dirChildren.empty(); }));
        EXPECT_EQ(watcher.seen, 0);
    }
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_FALSE(gallery->dirChildren.empty());
    EXPECT_FALSE(w.ButtonShown(2151));
    EXPECT_EQ(w.VisibleSubclassButtons(), static_cast<int>(std::min<size_t>(18, gallery->dirChildren.size())));
    EXPECT_EQ(p.m_curClassPath, gallery->dirChildren[0]->Path());
    EXPECT_TRUE(w.Shown(p.m_pThumbList));
}

TEST(LivePages, SwitchingRefreshesAStaleGalleryAndOpeningAStaleClassFetchesItsBlocks) {
    PanelWorld w(SampleLibrary());
    const std::u16string name = w.galleries[1];
    GalleryNode* gallery = w.AddGallery({name, 0, 0});
    ASSERT_TRUE(FetchGalleryFull(w.store, name, false));
    ASSERT_GE(gallery->dirChildren.size(), 2u);
    // An hour later, with the blocks of the second class gone stale.
    gallery->refreshTick = GetTickCount() - kGalleryFreshMs - 1;
    GalleryNode* second = gallery->dirChildren[1];
    const size_t blocks = second->fileChildren.size();
    ASSERT_GT(blocks, 0u);
    w.store.staleClasses[second->Path()] = second->version + 1;
    w.service.counters().reset();
    w.MakePanel();
    CBrindleDlg& p = *w.panel;

    // Both fetches run on workers; the page follows when they come.
    ASSERT_TRUE(w.OpenRow(2));
    ASSERT_TRUE(PumpUntil([&] { return w.VisibleSubclassButtons() == static_cast<int>(gallery->dirChildren.size()); }));
    EXPECT_EQ(w.service.counters().get("/gallery/g_cs_s").count, 1);
    EXPECT_EQ(w.service.counters().get("/gallery/g_cs").count, 0);  // the first class is up to date
    ASSERT_EQ(p.m_subclassBtns[1]->data, QString::fromStdU16String(second->Path()));

    w.service.faults().set("/gallery/g_cs", {.latencyMs = 400});
    w.ClickButton(2081, 400);
    EXPECT_EQ(p.m_listNodes.size(), 0u);  // nothing listed while the blocks are on their way
    ASSERT_TRUE(PumpUntil([&] { return p.m_listNodes.size() == blocks; }));
    EXPECT_EQ(w.service.counters().get("/gallery/g_cs").count, 1);
    EXPECT_EQ(w.store.staleClasses.count(p.m_curClassPath), 0u);
    EXPECT_EQ(p.m_pThumbList->GetItemCount(), static_cast<int>(blocks));
    EXPECT_EQ(p.m_listNodes.size(), blocks);

    // A second switch within the hour asks nothing.
    ShiftTicksForTest(400);
    ASSERT_TRUE(w.OpenRow(2));
    EXPECT_EQ(w.service.counters().get("/gallery/g_cs_s").count, 1);
}
