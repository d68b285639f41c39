// Routes, target classes and the command table.
#include <gtest/gtest.h>

#include "panel/model/panel_messages.h"
#include "panel_world.h"
#include "store/show_list.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

void Command(CBrindleDlg& panel, std::uintptr_t code, std::intptr_t lParam) {
    SendWindowMessage(panel.Handle(), MsgPanelCommand, code, lParam);
}

std::vector<std::u16string> ChildNames(GalleryNode* node) {
    std::vector<std::u16string> names;
    for (GalleryNode* child : node->dirChildren)
        if (child) names.push_back(child->name);
    return names;
}

}  // namespace

TEST(Routes, RoutesWithAndWithoutTheCollectionPrefixAndTheSelectionCommands) {
    PanelWorld w;
    GalleryNode* g1 = w.AddGallery({u"五金", 3, 2});
    GalleryNode* g2 = w.AddGallery({u"家具", 3, 6});
    GalleryNode* mine = w.AddCollections(7, {u"夹1", u"夹2"}, 2);
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    ASSERT_EQ(p.m_classList->GetItemCount(), 4);  // the collections have row 1 only

    p.OpenRoute(u"/家具/类C");
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_classIndex, w.RowOf(u"家具"));
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[2]->Path());
    EXPECT_TRUE(p.m_subclassBtns[2]->selected);
    EXPECT_TRUE(p.m_targetClass.empty());

    // A class that is not in the tree changes nothing.
    p.OpenRoute(u"/家具/没有");
    p.OpenRoute(u"/没有/类A");
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 2000));
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[2]->Path());

    // The collections need a signed-in user.
    p.OpenRoute(u"/我的收藏/夹2");
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 2000));
    w.SignIn(7);
    p.OpenRoute(u"/我的收藏/夹2");
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_classIndex, 1);
    EXPECT_EQ(p.m_page, PageCollection);
    EXPECT_EQ(p.m_curClassPath, mine->dirChildren[1]->Path());
    EXPECT_TRUE(p.m_subclassBtns[1]->selected);

    // A gallery alone opens its first class; leaving the collections puts the buttons back.
    p.OpenRoute(u"/五金");
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_classIndex, w.RowOf(u"五金"));
    EXPECT_EQ(p.m_page, PageBrowse);
    EXPECT_EQ(p.m_curClassPath, g1->dirChildren[0]->Path());
    EXPECT_FALSE(w.ButtonShown(2100));
    EXPECT_EQ(p.m_syncStatus, -2);  // leaving the collections clears their status

    // An empty route rebuilds the list on a browse page only.
    p.OpenRoute(u"");
    EXPECT_TRUE(IsTimerRunning(p.Handle(), 1011));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_curClassPath, g1->dirChildren[0]->Path());  // the rebuild reopened the class

    // From a search page a route goes back to browsing first.
    w.ClickButton(2158, 500);
    ASSERT_EQ(p.m_page, PageSearch);
    p.OpenRoute(u"");
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 1011));
    p.OpenRoute(u"/家具/类B");
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_page, PageBrowse);
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[1]->Path());

    // 21: a row that does not exist does nothing; a real one schedules the switch.
    Command(p, 21, 9);
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 2000));
    Command(p, 21, 3);
    EXPECT_TRUE(IsTimerRunning(p.Handle(), 2000));
    EXPECT_EQ(p.m_classList->GetSelectedRow(), 3);
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_EQ(p.m_listNodes.size(), 6u);

    // 1: the selected block's name, nothing for a stale index.
    Command(p, 1, 4);
    EXPECT_EQ(p.m_selectedName, QString::fromStdU16String(p.m_listNodes.At(*p.m_store, 4)->name));
    Command(p, 1, 6);
    EXPECT_TRUE(p.m_selectedName.isEmpty());

    // 5: "删除图块" follows the selection.
    Command(p, 5, 0);
    EXPECT_TRUE(p.m_collectionBtns[2]->isEnabled());
    Command(p, 5, -1);
    EXPECT_FALSE(p.m_collectionBtns[2]->isEnabled());

    // 23: a result row's class link opens its class and selects the block.
    BlockRow row;
    row.klass = QStringLiteral("家具");
    row.subclass = QStringLiteral("类C");
    row.name = QString::fromStdU16String(g2->dirChildren[2]->fileChildren[3]->name);
    p.m_rows = {row};
    Command(p, 23, 1);  // no such row
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 2000));
    ShiftTicksForTest(400);
    Command(p, 23, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[2]->Path());
    EXPECT_EQ(p.m_pThumbList->GetSelectedItem(), 3);

    // 8: opens a pending target.
    p.m_targetClass = u"/家具/类A";
    ShiftTicksForTest(400);
    Command(p, 8, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[0]->Path());
}

TEST(Routes, TargetClassBeforeTheFirstClassListBuildsItFirst) {
    PanelWorld w;
    w.AddGallery({u"五金", 2, 2});
    GalleryNode* g2 = w.AddGallery({u"家具", 3, 2});
    w.MakePanel(/*waitForStart*/ false);
    CBrindleDlg& p = *w.panel;
    ASSERT_FALSE(p.m_classesReady);
    ASSERT_TRUE(IsTimerRunning(p.Handle(), 1011));

    p.m_targetClass = u"/家具/类B";
    p.OpenTargetClass();
    EXPECT_TRUE(p.m_classesReady);
    EXPECT_FALSE(IsTimerRunning(p.Handle(), 1011));  // the start tick is not needed any more
    EXPECT_TRUE(IsTimerRunning(p.Handle(), 2000));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(p.m_classIndex, w.RowOf(u"家具"));
    EXPECT_EQ(p.m_curClassPath, g2->dirChildren[1]->Path());
    EXPECT_TRUE(p.m_subclassBtns[1]->selected);
}

TEST(Commands, ShowListDecidesTheGalleriesAndTheirOrder) {
    PanelWorld w;
    w.AddGallery({u"五金", 2, 2});
    w.AddGallery({u"家具", 2, 2});
    GalleryNode* g3 = w.AddGallery({u"电气", 2, 2});
    w.AddCollections(7, {u"夹1"}, 1);
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"电气")));
    ASSERT_EQ(p.m_curClassPath, g3->dirChildren[0]->Path());

    // The user dropped 电气, added 新图库 and put 家具 first.
    RemoveFile(ShowListPath());
    for (const char16_t* name : {u"家具", u"新图库", u"五金", u"家具"}) AddGalleryToShowList(name);

    p.hide();
    Command(p, 6, 0);  // a hidden panel applies only when forced
    EXPECT_EQ(ChildNames(w.root()), (std::vector<std::u16string>{u"我的收藏", u"五金", u"家具", u"电气"}));
    p.show();
    Command(p, 6, 0);
    EXPECT_EQ(ChildNames(w.root()), (std::vector<std::u16string>{u"我的收藏", u"家具", u"新图库", u"五金"}));
    EXPECT_EQ(w.root()->dirChildren[1]->dirChildren.size(), 2u);  // kept with its classes
    EXPECT_TRUE(p.m_listNodes.empty());  // they pointed into the gallery that went
    EXPECT_TRUE(IsTimerRunning(p.Handle(), 1011));

    // The rebuild lists the new order; the shown class has gone, so the recent list opens.
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_EQ(p.m_classList->GetItemCount(), 5);
    EXPECT_EQ(p.m_classList->GetItemText(2), QStringLiteral("家具"));
    EXPECT_EQ(p.m_classList->GetItemText(3), QStringLiteral("新图库"));
    EXPECT_EQ(p.m_classIndex, 0);

    // Button 2002: without the class manager the list is applied as it stands.
    RemoveFile(ShowListPath());
    AddGalleryToShowList(u"五金");
    w.ClickButton(2002, 400);
    EXPECT_EQ(ChildNames(w.root()), (std::vector<std::u16string>{u"我的收藏", u"五金"}));
}
