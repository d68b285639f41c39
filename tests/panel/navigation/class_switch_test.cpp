// The class column, the subclass buttons and the thumbnail list's place.
#include <gtest/gtest.h>

#include "panel/model/panel_messages.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

QString Caption(CBrindleDlg& panel, int index) { return panel.m_subclassBtns[index]->text(); }

}  // namespace

TEST(ClassSwitch, BurstsOfClicksEndInOneSwitchAndSubclassButtonsAreDampedAndStayOpenUnlessForced) {
    PanelWorld w;
    for (const char16_t* name : {u"五金", u"家具", u"电气", u"管道"}) w.AddGallery({name, 3, 4});
    GalleryNode* gallery = w.AddGallery({u"紧固件", 0, 0});
    w.AddClass(gallery, u"螺栓..六角", 5);
    w.AddClass(gallery, u"垫圈", 3);
    w.AddClass(gallery, u"..隐藏", 0);
    w.MakePanel();
    ASSERT_TRUE(w.panel->m_classesReady);
    EXPECT_EQ(w.panel->m_classIndex, 0);  // the recent list is the start page
    ASSERT_EQ(w.panel->m_classList->GetItemCount(), 7);
    EXPECT_EQ(w.panel->m_classList->GetItemText(1), QStringLiteral("我的收藏"));

    // Every class switch posts event 4 exactly once, and nothing else here does.
    MessageSpy spy(w.panel.get());
    for (int row : {2, 3, 4, 5, 3}) w.ClickClassRow(row);
    EXPECT_TRUE(IsTimerRunning(w.panel->Handle(), 2000));
    EXPECT_EQ(w.panel->m_classIndex, 0);  // nothing switched while the clicks came
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(spy.Count(MsgPanelEvent, 4), 1);
    EXPECT_EQ(w.panel->m_classIndex, 3);
    EXPECT_EQ(w.panel->m_classList->GetSelectedRow(), 3);
    EXPECT_EQ(w.panel->m_curClassPath, w.root()->dirChildren[1]->dirChildren[0]->Path());
    EXPECT_EQ(w.panel->m_pThumbList->GetItemCount(), 4);
    // After a quiet spell the next click switches quickly; clicks that follow
    // it closely wait the long time again.
    EXPECT_FALSE(w.panel->m_slowSwitch);
    w.ClickClassRow(3);  // the row that is shown switches again (and lists anew)
    EXPECT_TRUE(w.panel->m_slowSwitch);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(spy.Count(MsgPanelEvent, 4), 2);
    EXPECT_EQ(w.panel->m_classIndex, 3);

    // A subclass press right after a switch is damped: the switch's opening counts.
    w.ClickButton(2081);
    EXPECT_EQ(w.panel->m_curClassPath, w.root()->dirChildren[1]->dirChildren[0]->Path());

    ASSERT_TRUE(w.OpenRow(w.RowOf(u"紧固件")));
    CBrindleDlg& p = *w.panel;
    ASSERT_EQ(w.VisibleSubclassButtons(), 3);
    EXPECT_EQ(Caption(p, 0), QStringLiteral("螺栓..六角"));
    EXPECT_EQ(p.m_subclassBtns[0]->toolTip(), QStringLiteral("六角"));
    EXPECT_EQ(p.m_subclassBtns[2]->toolTip(), QStringLiteral("..隐藏"));  // a leading ".." is no separator
    EXPECT_TRUE(p.m_subclassBtns[0]->selected);
    EXPECT_EQ(p.m_curClassPath, gallery->dirChildren[0]->Path());
    EXPECT_EQ(p.m_pThumbList->GetItemCount(), 5);

    // Within 350 ms of the last opening a press is ignored.
    w.ClickButton(2081);
    EXPECT_EQ(p.m_curClassPath, gallery->dirChildren[0]->Path());
    EXPECT_FALSE(p.m_subclassBtns[1]->selected);

    w.ClickButton(2081, 400);
    Pump(30);
    EXPECT_EQ(p.m_curClassPath, gallery->dirChildren[1]->Path());
    EXPECT_TRUE(p.m_subclassBtns[1]->selected);
    EXPECT_FALSE(p.m_subclassBtns[0]->selected);
    EXPECT_EQ(p.m_pThumbList->GetItemCount(), 3);
    EXPECT_EQ(p.m_pThumbList->GetSelectedItem(), 0);
    EXPECT_EQ(p.m_selectedName, QStringLiteral("垫圈_0.dwg"));  // command 1 with item 0

    // The open button again: nothing is listed anew, the selection stays.
    p.m_pThumbList->SetSelectedItem(2);
    w.ClickButton(2081, 400);
    EXPECT_EQ(p.m_pThumbList->GetSelectedItem(), 2);
    // ... unless a rebuild is forced.
    p.m_forceList = true;
    w.ClickButton(2081, 400);
    EXPECT_EQ(p.m_pThumbList->GetSelectedItem(), 0);
    EXPECT_FALSE(p.m_forceList);

    // A subclass without blocks: the empty page offers "下载图库".
    w.ClickButton(2082, 400);
    Pump(30);
    EXPECT_EQ(p.m_itemCount, 0);
    EXPECT_FALSE(w.Shown(p.m_pThumbList));
    EXPECT_TRUE(w.ButtonShown(2151));
    EXPECT_FALSE(w.ButtonShown(2150));
    EXPECT_TRUE(p.m_emptySubclassOpened);
    EXPECT_TRUE(p.m_selectedName.isEmpty());
}

TEST(ClassSwitch, ButtonsAndThumbnailListFollowTheNumberOfSubclasses) {
    struct Case {
        const char16_t* name;
        int classes;
        int common;
        int buttons;
        bool secondRow;
    };
    const Case cases[] = {
        {u"零", 0, 0, 0, false},      {u"零常", 0, 2, 0, false},    {u"九", 9, 0, 9, false},
        {u"九常", 9, 2, 10, true},
        {u"十", 10, 0, 10, true},     {u"十八", 18, 0, 18, true},   {u"十八常", 18, 2, 18, true},
        {u"十九", 19, 0, 18, true},   {u"十九常", 19, 1, 18, true},
    };
    PanelWorld w;
    for (const Case& c : cases) w.AddGallery({c.name, c.classes, 2, c.common, /*boutique*/ true});
    w.MakePanel();
    CBrindleDlg& p = *w.panel;

    for (const Case& c : cases) {
        SCOPED_TRACE(QString::fromUtf16(c.name).toStdString());
        const int row = w.RowOf(c.name);
        ASSERT_GE(row, 2);
        ASSERT_TRUE(w.OpenRow(row));
        GalleryNode* gallery = w.root()->dirChildren[row - 2];
        EXPECT_EQ(p.m_classIndex, row);
        EXPECT_EQ(w.VisibleSubclassButtons(), c.buttons);
        if (c.classes == 0) {
            EXPECT_EQ(p.m_itemCount, 0);
            EXPECT_FALSE(w.Shown(p.m_pThumbList));
            EXPECT_TRUE(w.ButtonShown(2151));
            EXPECT_EQ(p.m_curClassPath, gallery->Path());
            continue;
        }
        EXPECT_FALSE(w.ButtonShown(2151));
        EXPECT_TRUE(w.Shown(p.m_pThumbList));
        EXPECT_EQ(p.m_pThumbList->geometry(),
                  c.secondRow ? ScaleBox(133, 106, 617, 309) : ScaleBox(133, 72, 617, 343));
        const int first = c.common ? 1 : 0;
        if (c.common) {
            EXPECT_EQ(Caption(p, 0), QStringLiteral("常用"));
            EXPECT_EQ(p.m_subclassBtns[0]->data, QString::fromStdU16String(gallery->Path()));
            // "常用" opens first and lists the common-use entries.
            EXPECT_EQ(p.m_curClassPath, gallery->Path());
            EXPECT_EQ(p.m_pThumbList->GetItemCount(), c.common);
        } else {
            EXPECT_EQ(p.m_curClassPath, gallery->dirChildren[0]->Path());
            EXPECT_EQ(p.m_pThumbList->GetItemCount(), 2);
        }
        EXPECT_EQ(p.m_itemCount, p.m_pThumbList->GetItemCount());  // the blocks of the opened button
        // The buttons take the classes in order; the ones past 18 are left out.
        const int last = c.buttons - 1;
        EXPECT_EQ(Caption(p, last), QString::fromStdU16String(gallery->dirChildren[last - first]->name));
        EXPECT_EQ(p.m_subclassBtns[first]->boutique, !c.common);
        if (c.buttons > 9) {
            EXPECT_EQ(p.m_subclassBtns[9]->geometry().topLeft(), ScaleBox(136, 75, 65, 24).topLeft());
        }
        EXPECT_EQ(p.m_subclassBtns[last]->geometry().size(), ScaleBox(0, 0, 65, 24).size());
        // Every shown button stands above the list.
        for (int i = 0; i < c.buttons; ++i)
            EXPECT_LT(p.m_subclassBtns[i]->geometry().bottom(), p.m_pThumbList->geometry().top());
    }
}
