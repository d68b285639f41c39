// The thumbnail list as it stands: paths, count and selection.
#include <gtest/gtest.h>

#include "list_test_support.h"
#include "panel/lists/dwg_list_view.h"
#include "render_support.h"

namespace marrowfin {
namespace {

TEST(DwgListView, KeepsPathsAndAnswersCountAndSelection) {
    CDWGListView view;
    view.resize(200, 120);
    EXPECT_EQ(view.GetItemCount(), 0);
    EXPECT_EQ(view.GetSelectedItem(), -1);
    view.SetSelectedItem(0);
    EXPECT_EQ(view.GetSelectedItem(), -1) << "nothing to select";

    view.SetPaths({u"", u"/store/建筑/门.dwg", u"/store/建筑/窗.dwg"});
    EXPECT_EQ(view.GetItemCount(), 3);
    EXPECT_EQ(view.GetPath(0), u"") << "the tile cell keeps its empty path";
    EXPECT_EQ(view.GetPath(2), u"/store/建筑/窗.dwg");
    EXPECT_EQ(view.GetPath(3), u"");
    view.SetSelectedItem(2);
    EXPECT_EQ(view.GetSelectedItem(), 2);
    view.SetSelectedItem(3);
    EXPECT_EQ(view.GetSelectedItem(), -1);
    view.SetSelectedItem(1);
    view.EnsureVisible(1);
    EXPECT_EQ(view.GetSelectedItem(), 1);
    view.SetPaths({u"/store/a.dwg"});
    EXPECT_EQ(view.GetSelectedItem(), -1) << "new paths start unselected";
    EXPECT_EQ(view.GetItemCount(), 1);

    ASSERT_TRUE(test::ShowAndWait(&view));
    const QImage img = test::Grab(&view);
    EXPECT_FALSE(test::ContainsColour(img, img.rect(), QColor(Qt::black), 200)) << "a white area";
}

}  // namespace
}  // namespace marrowfin
