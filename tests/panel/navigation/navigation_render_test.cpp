// The browse page rendered at two rates: few and many subclasses and the
// recent list. The PNGs go to <build>/tests/panel/navigation/rendered.
#include <gtest/gtest.h>

#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

void RenderAt(float rate, const QString& suffix) {
    PanelWorld w;
    w.AddGallery({u"五金", 3, 6});
    GalleryNode* many = w.AddGallery({u"机械零件", 19, 8, 2, /*boutique*/ true});
    w.AddCollections(7, {u"收藏夹1", u"螺栓..常用件", u"管件"}, 4);
    for (int i = 0; i < 5; ++i) w.AddRecent(many->dirChildren[i]->fileChildren[0]->Path());
    w.MakePanel(true, rate);
    CBrindleDlg& p = *w.panel;
    EXPECT_EQ(p.size(), QSize(ScaleUnits(755), ScaleUnits(454)));

    // The boutique gallery's row is marked, the others are not.
    ASSERT_TRUE(p.m_classList->isBoutique);
    EXPECT_TRUE(p.m_classList->isBoutique(QStringLiteral("机械零件")));
    EXPECT_FALSE(p.m_classList->isBoutique(QStringLiteral("五金")));
    EXPECT_FALSE(p.m_classList->isBoutique(QStringLiteral("最近使用")));

    // The recent list is the start page.
    ASSERT_EQ(p.m_classIndex, 0);
    EXPECT_EQ(p.m_itemCount, 5);
    EXPECT_EQ(p.m_pThumbList->geometry(), ScaleBox(133, 72, 617, 343));
    EXPECT_EQ(w.VisibleSubclassButtons(), 0);
    w.Render(QStringLiteral("recent_") + suffix);

    ASSERT_TRUE(w.OpenRow(2));
    ASSERT_EQ(w.VisibleSubclassButtons(), 3);
    w.Render(QStringLiteral("few_subclasses_") + suffix);

    ASSERT_TRUE(w.OpenRow(3));
    ASSERT_EQ(w.VisibleSubclassButtons(), 18);
    const QRect client = p.rect();
    for (CSubclassButton* button : p.m_subclassBtns) {
        EXPECT_TRUE(client.contains(button->geometry()));
        EXPECT_LT(button->geometry().bottom(), p.m_pThumbList->geometry().top());
    }
    // The two rows do not overlap.
    EXPECT_LT(p.m_subclassBtns[0]->geometry().bottom(), p.m_subclassBtns[9]->geometry().top());
    w.Render(QStringLiteral("many_subclasses_") + suffix);

    // The collections: the bar above, the folders one row lower, the list below them.
    w.SignIn(7);
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(w.VisibleSubclassButtons(), 3);
    for (CSkinButton* bar : p.m_collectionBtns) {
        ASSERT_TRUE(w.Shown(bar));
        EXPECT_LT(bar->geometry().bottom(), p.m_subclassBtns[0]->geometry().top());
    }
    EXPECT_LT(p.m_subclassBtns[0]->geometry().bottom(), p.m_pThumbList->geometry().top());
    w.Render(QStringLiteral("collections_") + suffix);

    w.ClickButton(2158);
    w.Render(QStringLiteral("search_page_") + suffix);
}

}  // namespace

TEST(NavigationRender, BrowsePagesAtRateOne) { RenderAt(1.0f, QStringLiteral("1_0")); }
TEST(NavigationRender, BrowsePagesAtRateOneAndAHalf) { RenderAt(1.5f, QStringLiteral("1_5")); }
