// The class column, the subclass buttons and what they list.
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(ClassSwitch, BurstsEndInOneSwitchSubclassButtonsAreDampedFollowTheClassesAndStayOpenUnlessForced) {
    PanelWorld w;
    for (const char16_t* name : {u"五金", u"家具", u"电气", u"管道"}) w.AddGallery({name, 3, 4});
    GalleryNode* gallery = w.AddGallery({u"紧固件", 0, 0});
    w.AddClass(gallery, u"螺栓..六角", 5);
    w.AddClass(gallery, u"垫圈", 3);
    w.AddClass(gallery, u"..隐藏", 0);
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    // The recent list is the start page.
    ASSERT_EQ(std::make_pair(p.m_nav.classIndex, p.m_classList->GetItemCount()), std::make_pair(0, 7));

    // Every class switch posts event 4 exactly once; nothing switches while the clicks come.
    MessageRecorder events(&p);
    for (int row : {2, 3, 4, 5, 3}) w.ClickClassRow(row);
    EXPECT_EQ(p.m_nav.classIndex, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(std::make_tuple(events.Count(MsgPanelEvent, PanelEvent::LayoutStatus), p.m_nav.classIndex, p.m_classList->GetSelectedRow(),
                              p.m_pThumbList->GetItemCount()),
              std::make_tuple(1, 3, 3, 4));
    EXPECT_EQ(p.m_nav.curClassPath, w.root()->dirChildren[1]->dirChildren[0]->Path());
    // The row shown switches again (the delays: the model's test).
    w.ClickClassRow(3);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(events.Count(MsgPanelEvent, PanelEvent::LayoutStatus), 2);

    ASSERT_TRUE(w.OpenRow(w.RowOf(u"紧固件")));
    // The buttons show the class plan (its captions, tips and "常用": the model's test).
    ASSERT_EQ(w.VisibleSubclassButtons(), 3);
    EXPECT_EQ(p.m_pThumbList->GetItemCount(), 5);
    w.ClickButton(2081);  // within 350 ms of the switch's opening: ignored
    EXPECT_EQ(p.m_nav.curClassPath, gallery->dirChildren[0]->Path());
    w.ClickButton(2081, 400);
    Pump(30);
    EXPECT_EQ(p.m_nav.curClassPath, gallery->dirChildren[1]->Path());
    EXPECT_TRUE(p.m_subclassBtns[1]->selected && !p.m_subclassBtns[0]->selected);
    // Command 1 with item 0 names the selection.
    EXPECT_EQ(std::make_pair(p.m_pThumbList->GetItemCount(), p.m_nav.selectedName), std::make_pair(3, QStringLiteral("垫圈_0.dwg")));

    // The open button again lists nothing anew, unless a rebuild is forced.
    p.m_pThumbList->SetSelectedItem(2);
    w.ClickButton(2081, 400);
    EXPECT_EQ(p.m_pThumbList->GetSelectedItem(), 2);
    p.m_nav.forceList = true;
    w.ClickButton(2081, 400);
    EXPECT_TRUE(p.m_pThumbList->GetSelectedItem() == 0 && !p.m_nav.forceList);

    // A subclass without blocks: the empty page offers "下载图库".
    w.ClickButton(2082, 400);
    Pump(30);
    EXPECT_TRUE(!w.Shown(p.m_pThumbList) && w.ButtonShown(ControlId::DownloadGallery) && p.m_nav.selectedName.isEmpty());
}
