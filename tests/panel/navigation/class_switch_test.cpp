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
    struct Case {
        const char16_t* name;
        int classes, common, buttons;
    };
    const Case cases[] = {{u"零常", 0, 2, 0}, {u"九常", 9, 2, 10}, {u"十八", 18, 0, 18}, {u"十九", 19, 0, 18}};
    for (const Case& c : cases) w.AddGallery({c.name, c.classes, 2, c.common, /*boutique*/ true});
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    // The recent list is the start page.
    ASSERT_EQ(std::make_pair(p.m_nav.classIndex, p.m_classList->GetItemCount()), std::make_pair(0, 11));

    // Every class switch posts event 4 exactly once; nothing switches while the clicks come.
    MessageRecorder events(&p);
    for (int row : {2, 3, 4, 5, 3}) w.ClickClassRow(row);
    EXPECT_EQ(p.m_nav.classIndex, 0);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(std::make_tuple(events.Count(MsgPanelEvent, 4), p.m_nav.classIndex, p.m_classList->GetSelectedRow(),
                              p.m_pThumbList->GetItemCount()), std::make_tuple(1, 3, 3, 4));
    EXPECT_EQ(p.m_nav.curClassPath, w.root()->dirChildren[1]->dirChildren[0]->Path());
    // After a quiet spell the next click switches quickly; clicks that follow it closely wait long.
    EXPECT_FALSE(p.m_nav.slowSwitch);
    w.ClickClassRow(3);  // the row shown switches again
    EXPECT_TRUE(p.m_nav.slowSwitch);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(events.Count(MsgPanelEvent, 4), 2);

    ASSERT_TRUE(w.OpenRow(w.RowOf(u"紧固件")));
    ASSERT_EQ(w.VisibleSubclassButtons(), 3);
    // A leading ".." is no separator.
    EXPECT_EQ(std::make_tuple(p.m_subclassBtns[0]->text(), p.m_subclassBtns[0]->toolTip(), p.m_subclassBtns[2]->toolTip()),
              std::make_tuple(QStringLiteral("螺栓..六角"), QStringLiteral("六角"), QStringLiteral("..隐藏")));
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
    EXPECT_TRUE(!w.Shown(p.m_pThumbList) && w.ButtonShown(2151) && p.m_nav.selectedName.isEmpty());

    for (const Case& c : cases) {
        SCOPED_TRACE(QString::fromUtf16(c.name).toStdString());
        const int row = w.RowOf(c.name);
        ASSERT_TRUE(w.OpenRow(row));
        GalleryNode* g = w.root()->dirChildren[row - 2];
        // An empty gallery offers "下载图库".
        EXPECT_EQ(std::make_pair(w.VisibleSubclassButtons(), w.ButtonShown(2151)), std::make_pair(c.buttons, c.classes == 0));
        if (c.classes == 0) continue;
        // "常用" comes first and opens first with the common-use entries; the
        // buttons take the classes in order, the ones past 18 left out.
        EXPECT_EQ(p.m_subclassBtns[0]->text(), c.common ? QStringLiteral("常用") : QStringLiteral("类A"));
        EXPECT_EQ(p.m_nav.curClassPath, c.common ? g->Path() : g->dirChildren[0]->Path());
        EXPECT_EQ(p.m_pThumbList->GetItemCount(), c.common ? c.common : 2);
        const int last = c.buttons - 1;
        EXPECT_EQ(p.m_subclassBtns[last]->text(), QString::fromStdU16String(g->dirChildren[last - (c.common ? 1 : 0)]->name));
    }
}
