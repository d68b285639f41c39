// The browse and search pages as the user walks them, compared with their
// pictures: the recent list, few and many subclasses, the search page with
// its hot words and back, the collections, their search and back, result
// rows in their states; at Rate 1.5 the pages whose rows of buttons and bars
// move with the rate.
#include "panel/preview/dwg_preview.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(NavigationRender, BrowseAndSearchRoadsAtRatesOneAndOneAndAHalf) {
    ParkMouse();
    QApplication::setCursorFlashTime(0);  // the caret stands still
    for (const float rate : {1.0f, 1.5f}) {
        const std::string at = rate == 1.0f ? "_1.0" : "_1.5";
        PanelWorld w;
        GalleryNode* few = w.AddGallery({u"五金", 3, 6});
        GalleryNode* many = w.AddGallery({u"机械零件", 19, 8, 2, /*boutique*/ true});
        const std::u16string mine = w.AddCollections(7, {u"收藏夹1", u"螺栓..常用件", u"管件"}, 4);
        for (int i = 0; i < 5; ++i) w.AddRecent(many->dirChildren[i]->fileChildren[0]->Path());
        w.MakePanel(true, rate);
        CBrindleDlg& p = *w.panel;
        // Words enough, some long, for the hot word row to wrap; the first is the default word.
        for (const char* word :
             {"螺栓", "平开门", "螺母", "法兰盘", "建筑装饰构件大样", "给排水", "电气符号", "暖通空调设备", "家具", "卫浴洁具",
              "机械零件标准件", "园林景观小品", "结构节点详图", "楼梯", "停车位", "厨房设备", "办公家具组合", "灯具"})
            p.m_hotWords.push_back(QString::fromUtf8(word));
        g_defaultHotWord = p.m_hotWords[0];
        auto looks = [&](const std::string& name) {
            Pump(30);
            // The mirror's files are asked for and fail (the service has none): the cells settle.
            (void)PumpUntil([&] {
                return !IsTimerRunning(p.Handle(), kTimerThumbRequest) && p.m_thumbs.waiting.empty() && p.m_thumbs.running.empty();
            });
            return MatchesReference(p.grab().toImage(), "panel/navigation", name + at);
        };
        EXPECT_TRUE(looks("recent"));  // the start page; the boutique gallery's row is marked
        if (rate == 1.0f) {
            ASSERT_TRUE(w.OpenRow(2));
            EXPECT_TRUE(looks("few_subclasses"));
            // The search page shows the default word in the empty box and the hot words under it;
            // typed text brings the clear button.
            w.ClickButton(ControlId::OpenSearch);
            EXPECT_TRUE(looks("search_page") && p.m_search.searchUntouched);
            // The clear button empties the box and goes (its damping: the model's test).
            p.m_search.searchUntouched = false;
            QTest::keyClicks(p.m_searchEdit, QStringLiteral("abc"));
            EXPECT_TRUE(w.ButtonShown(ControlId::ClearSearch) && looks("search_typed"));
            w.ClickButton(ControlId::ClearSearch, 460);
            EXPECT_TRUE(p.m_searchEdit->text().isEmpty() && !w.ButtonShown(ControlId::ClearSearch));
            // "搜索" forgets the last press and runs at once; the empty box searches the default word.
            // The hot words go with the search.
            w.ClickButton(ControlId::Search);
            EXPECT_TRUE(p.m_searchEdit->text() == QStringLiteral("螺栓") && !w.ButtonShown(4000) && !w.ButtonShown(4017));
            // "返回" (its damping: the model's test) leaves the page with its
            // rows and waiting downloads, and the class opens again as it was.
            p.m_search.rows.resize(3);
            p.m_search.downloadQueue[1] = BlockRow{};
            w.ClickButton(ControlId::SearchBack, 460);
            EXPECT_TRUE(p.m_search.rows.empty() && p.m_search.downloadQueue.empty() && p.m_searchEdit->text().isEmpty());
            ASSERT_TRUE(IsTimerRunning(p.Handle(), kTimerBuildClassList) && w.WaitForSwitch());
            EXPECT_TRUE(p.m_nav.curClassPath == few->dirChildren[0]->Path() && looks("few_subclasses"));
        }
        ASSERT_TRUE(w.OpenRow(3));
        EXPECT_TRUE(looks("many_subclasses"));  // "常用" and the first 17 classes
        w.SignIn(7);
        ASSERT_TRUE(w.OpenRow(1));
        EXPECT_TRUE(looks("collections"));  // the bar, the folders one row lower, the list below
        // The whole-library search from the collections (the hot words built again), and back
        // without them.
        w.ClickButton(ControlId::OpenSearch, 500);
        EXPECT_TRUE(looks("search_page"));
        // Rows of a search for "门", hot words hidden as a search hides them: every state, a boutique
        // row, a real thumbnail, "使用" of the first row under the mouse. No file to fetch or read.
        p.ShowHotWords(false);
        const QString drawing = QString::fromStdString(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg");
        for (const char* name : {"平开门M1021", "双开门", "推拉门", "旋转门", "卷帘门", "折叠门", "门套", "门槛"})
            p.m_search.serverRows.push_back({.name = QString::fromUtf8(name) + ".dwg",
                                             .klass = QStringLiteral("建筑"),
                                             .subclass = QStringLiteral("门窗..平开门"),
                                             .url = {},
                                             .path = drawing + ".gone",
                                             .thumbnail = {},
                                             .thumbnailTried = true,
                                             .prefetch = false,
                                             .state = int(p.m_search.serverRows.size() % 6),
                                             .percent = 40});
        p.m_search.serverRows[0].thumbnail = LoadDwgPreview(drawing);
        p.m_search.serverRows[1].boutique = true;
        p.m_search.searchUntouched = false;
        SendWindowMessage(p.Handle(), MsgPanelCommand, 16, 0);
        p.m_searchList->SetSearchKey(QStringLiteral("门"));
        MoveTo(p.m_searchList, p.m_searchList->RowRect(0).topLeft() + ScaleBox(660, 25, 0, 0).topLeft());
        EXPECT_TRUE(p.m_searchList->HotZone() == 2 && looks("search_rows"));
        MoveAway(&p);
        w.ClickButton(ControlId::SearchBack, 500);
        ASSERT_TRUE(w.WaitForSwitch());
        EXPECT_TRUE(looks("collections") && !w.ButtonShown(4001));
        if (rate != 1.0f) continue;
        // Shown empty and out of step with the cloud: "替换" and "不替换" are offered.
        p.m_nav.itemCount = 0;
        SendWindowMessage(p.Handle(), MsgPanelEvent, 5, 0);
        EXPECT_TRUE(looks("sync_prompt"));
        p.m_nav.itemCount = 4;
        SendWindowMessage(p.Handle(), MsgPanelEvent, 5, -1);
        EXPECT_EQ(p.m_nav.curClassPath, mine + u"/收藏夹1");

        // "搜索收藏": offline the page stays, empty, and an empty box stops
        // there: no default word. "返回" brings the collections back.
        w.service.faults().set("/gallery/get_u_collect", {.drop = true});
        w.ClickButton(ControlId::SearchCollection, 500);
        ASSERT_TRUE(PumpUntil([&] { return !p.m_search.collectionRowsPending; }));
        EXPECT_TRUE(p.m_search.collectionRows.empty() && looks("collection_search"));
        w.service.faults().set("/gallery/get_u_collect", service::Fault{});
        w.ClickButton(ControlId::Search);
        // Nothing was searched.
        EXPECT_TRUE(p.m_searchEdit->text().isEmpty() && p.m_search.searchUntouched && p.m_search.searchState == 0);
        w.ClickButton(ControlId::SearchBack, 500);
        ASSERT_TRUE(w.WaitForSwitch());
        EXPECT_TRUE(looks("collections"));
    }
    g_defaultHotWord.clear();
}
