// Routes, target classes, the collections row and the command table.

#include "panel_world.h"
#include "store/store_ini.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(Routes, RoutesTheCollectionsRowTheHostButtonsTheCommandsAndTheShowList) {
    RecordingHost host;
    PanelWorld w;
    GalleryNode* g1 = w.AddGallery({u"五金", 3, 2});
    GalleryNode* g2 = w.AddGallery({u"家具", 3, 6});
    const std::u16string mine = w.AddCollections(7, {u"夹1", u"夹2"}, 2);
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);
    auto command = [&](std::uintptr_t code, std::intptr_t lParam) { SendWindowMessage(p.Handle(), MsgPanelCommand, code, lParam); };
    auto routeTo = [&](const char16_t* route) {
        p.OpenRoute(route);
        return w.WaitForSwitch();
    };
    ASSERT_EQ(p.m_classList->GetItemCount(), 4);  // the collections have row 1 only

    // A class that is not in its gallery, and the collections without a user, open nothing.
    for (const char16_t* route : {u"/家具/没有", u"/我的收藏/夹2"}) p.OpenRoute(route);
    EXPECT_FALSE(IsTimerRunning(p.Handle(), kTimerClassSwitch));
    ASSERT_TRUE(routeTo(u"/家具/类C"));
    EXPECT_EQ(std::make_pair(p.m_nav.classIndex, p.m_nav.curClassPath), std::make_pair(w.RowOf(u"家具"), g2->dirChildren[2]->Path()));
    EXPECT_TRUE(p.m_subclassBtns[2]->selected && p.m_nav.targetClass.empty());

    // Not signed in and the host signs nobody in: the collections cannot be
    // read, so the panel goes back to the gallery it came from.
    const size_t asked = host.Requests(MARROWFIN_REQUEST_SIGN_IN).size();
    ASSERT_TRUE(w.OpenRow(1));
    EXPECT_EQ(std::make_tuple(host.Requests(MARROWFIN_REQUEST_SIGN_IN).size(), p.m_nav.page, p.m_classList->GetSelectedRow()),
              std::make_tuple(asked + 1, int(PageBrowse), w.RowOf(u"家具")));
    EXPECT_FALSE(w.ButtonShown(ControlId::AddBlocks));
    for (const FolderEntry& entry : ListFolder(StoreRoot())) EXPECT_FALSE(entry.name.ends_with(u"_收藏")) << "nothing written for nobody";
    w.SignIn(7);
    ASSERT_TRUE(routeTo(u"/我的收藏/夹2"));
    EXPECT_EQ(std::make_pair(p.m_nav.page, p.m_nav.curClassPath), std::make_pair(int(PageCollection), mine + u"/夹2"));
    EXPECT_TRUE(p.m_subclassBtns[1]->selected);
    // A gallery alone opens its first class; leaving the collections puts the buttons back.
    ASSERT_TRUE(routeTo(u"/五金"));
    EXPECT_EQ(std::make_pair(p.m_nav.classIndex, p.m_nav.curClassPath), std::make_pair(w.RowOf(u"五金"), g1->dirChildren[0]->Path()));
    EXPECT_TRUE(!w.ButtonShown(ControlId::AddBlocks) && p.m_nav.syncStatus == -2);  // leaving the collections clears their status
    // An empty route rebuilds the list on a browse page only; from a search
    // page a route goes back to browsing first.
    p.OpenRoute(u"");
    EXPECT_TRUE(IsTimerRunning(p.Handle(), kTimerBuildClassList));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_nav.curClassPath, g1->dirChildren[0]->Path());
    w.ClickButton(ControlId::OpenSearch, 500);
    ASSERT_EQ(p.m_nav.page, PageSearch);
    p.OpenRoute(u"");
    EXPECT_FALSE(IsTimerRunning(p.Handle(), kTimerBuildClassList));
    ASSERT_TRUE(routeTo(u"/家具/类B"));
    EXPECT_EQ(std::make_pair(p.m_nav.page, p.m_nav.curClassPath), std::make_pair(int(PageBrowse), g2->dirChildren[1]->Path()));

    // 21: a row that does not exist does nothing; a real one schedules the switch.
    command(21, 9);
    EXPECT_FALSE(IsTimerRunning(p.Handle(), kTimerClassSwitch));
    command(21, 3);
    EXPECT_EQ(p.m_classList->GetSelectedRow(), 3);
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_EQ(p.m_nav.listNodes.size(), 6u);
    // 1: the selected block's name, nothing for a stale index. 5: "删除图块" follows the selection.
    command(1, 4);
    EXPECT_EQ(p.m_nav.selectedName, QString::fromStdU16String(p.m_nav.listNodes.At(*p.m_store, 4)->name));
    command(1, 6);
    EXPECT_TRUE(p.m_nav.selectedName.isEmpty());
    command(5, 0);
    const bool enabled = p.m_collectionBtns[2]->isEnabled();
    command(5, -1);
    EXPECT_TRUE(enabled && !p.m_collectionBtns[2]->isEnabled());
    // 23: a result row's class link opens its class and selects the block.
    p.m_search.rows = {BlockRow{.name = QString::fromStdU16String(g2->dirChildren[2]->fileChildren[3]->name),
                                .klass = QStringLiteral("家具"),
                                .subclass = QStringLiteral("类C"),
                                .url = {},
                                .path = {},
                                .thumbnail = {}}};
    command(23, 1);  // no such row
    EXPECT_FALSE(IsTimerRunning(p.Handle(), kTimerClassSwitch));
    ShiftTicksForTest(400);
    command(23, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(std::make_pair(p.m_nav.curClassPath, p.m_pThumbList->GetSelectedItem()), std::make_pair(g2->dirChildren[2]->Path(), 3));
    // 8: opens a pending target.
    p.m_nav.targetClass = u"/家具/类A";
    ShiftTicksForTest(400);
    command(8, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_nav.curClassPath, g2->dirChildren[0]->Path());

    // 6: the user dropped 家具 (the class shown), added 新图库 and put it first.
    auto galleries = [&] {
        std::vector<std::u16string> names;
        for (GalleryNode* child : w.root()->dirChildren) names.push_back(child->name);
        return names;
    };
    RemoveFile(ShowListPath());
    for (const char16_t* name : {u"新图库", u"五金", u"新图库"}) AddGalleryToShowList(name);
    p.hide();
    command(6, 0);  // a hidden panel applies only when forced
    EXPECT_EQ(galleries(), (std::vector<std::u16string>{u"我的收藏", u"五金", u"家具"}));
    p.show();
    command(6, 0);
    EXPECT_EQ(galleries(), (std::vector<std::u16string>{u"我的收藏", u"新图库", u"五金"}));
    // 五金 kept with its classes; the listed nodes pointed into the gallery that went.
    EXPECT_TRUE(w.root()->dirChildren[2]->dirChildren.size() == 3u && p.m_nav.listNodes.empty());
    // The rebuild lists the new order; the shown class has gone, so the recent list opens.
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(std::make_tuple(p.m_classList->GetItemCount(), p.m_classList->GetItemText(2), p.m_nav.classIndex),
              std::make_tuple(4, QStringLiteral("新图库"), 0));
    // Button 2002: the class manager closed unchanged, the list is applied as it stands.
    RemoveFile(ShowListPath());
    AddGalleryToShowList(u"五金");
    w.ClickButton(ControlId::AddClasses, 400);
    ASSERT_NE(p.ClassManager(), nullptr);
    p.ClassManager()->Button(1000)->click();
    EXPECT_EQ(galleries(), (std::vector<std::u16string>{u"我的收藏", u"五金"}));
}

TEST(Routes, TargetClassBeforeTheFirstClassListBuildsItFirst) {
    PanelWorld w;
    w.AddGallery({u"五金", 2, 2});
    GalleryNode* g2 = w.AddGallery({u"家具", 3, 2});
    w.MakePanel(/*waitForStart*/ false);
    CBrindleDlg& p = *w.panel;
    ASSERT_FALSE(p.m_nav.classesReady);
    p.m_nav.targetClass = u"/家具/类B";
    p.OpenTargetClass();
    EXPECT_TRUE(p.m_nav.classesReady && !IsTimerRunning(p.Handle(), kTimerBuildClassList));  // the start tick is not needed any more
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_TRUE(p.m_nav.curClassPath == g2->dirChildren[1]->Path() && p.m_subclassBtns[1]->selected);
}
