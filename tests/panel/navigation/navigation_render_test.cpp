// The browse pages as drawn: the recent list, few and many subclasses, the
// collections and the search page; at Rate 1.5 the pages whose two rows of
// buttons and bars move with the rate.
#include <gtest/gtest.h>

#include "panel_world.h"
#include "support/reference_picture.h"
#include "support/widget_input.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(NavigationRender, BrowsePagesAtRatesOneAndOneAndAHalf) {
    ParkMouse();
    for (const float rate : {1.0f, 1.5f}) {
        const std::string at = rate == 1.0f ? "_1.0" : "_1.5";
        PanelWorld w;
        w.AddGallery({u"五金", 3, 6});
        GalleryNode* many = w.AddGallery({u"机械零件", 19, 8, 2, /*boutique*/ true});
        w.AddCollections(7, {u"收藏夹1", u"螺栓..常用件", u"管件"}, 4);
        for (int i = 0; i < 5; ++i) w.AddRecent(many->dirChildren[i]->fileChildren[0]->Path());
        w.MakePanel(true, rate);
        auto looks = [&](const std::string& name) {
            return MatchesReference(w.Render(QString::fromStdString(name + at)), "panel/navigation", name + at);
        };
        if (rate == 1.0f) {
            EXPECT_TRUE(looks("recent"));  // the start page; the boutique gallery's row is marked
            ASSERT_TRUE(w.OpenRow(2));
            EXPECT_TRUE(looks("few_subclasses"));
        }
        ASSERT_TRUE(w.OpenRow(3));
        ASSERT_EQ(w.VisibleSubclassButtons(), 18);  // "常用" and the first 17 classes
        EXPECT_TRUE(looks("many_subclasses"));
        w.SignIn(7);
        ASSERT_TRUE(w.OpenRow(1));
        EXPECT_TRUE(looks("collections"));  // the bar, the folders one row lower, the list below
        if (rate == 1.0f) {
            w.ClickButton(2158);
            EXPECT_TRUE(looks("search_page"));
        }
    }
}
