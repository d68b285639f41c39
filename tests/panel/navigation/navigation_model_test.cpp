// The navigation model without a window: timing, damping, page moves, the
// status buttons, the subclass plan of a class row and the route's row.
#include "panel/model/navigation_model.h"
#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(NavigationModel, SwitchTimingDampingPageMovesAndStatusButtons) {
    NavigationModel nav;
    // A burst waits long and switches to its last row; after the switch the next selection is quick.
    EXPECT_EQ((std::vector<unsigned>{nav.SelectClass(2), nav.SelectClass(4)}), (std::vector<unsigned>{350, 350}));
    EXPECT_EQ(nav.TakePendingClass(), 4);
    EXPECT_EQ((std::vector<unsigned>{nav.SelectClass(3), nav.SelectClass(5)}), (std::vector<unsigned>{100, 350}));

    // Presses within 350 ticks of the last accepted one count for nothing, across the wrap too.
    const uint32_t t = 0xFFFFFF00u;
    EXPECT_EQ((std::vector<bool>{nav.AcceptSubclassPress(t), nav.AcceptSubclassPress(t + 350), nav.AcceptSubclassPress(t + 351),
                                 nav.AcceptSubclassPress(t + 352)}),
              (std::vector<bool>{true, false, true, false}));
    nav.ExemptNextSubclassPress();  // a switch's own opening
    EXPECT_TRUE(nav.AcceptSubclassPress(t + 353) && !nav.AcceptSubclassPress(t + 400));
    // Search commands: 450 ticks, but the search and the host's search always run.
    EXPECT_EQ(
        (std::vector<bool>{nav.AcceptSearchCommand(ControlId::ClearSearch, 10), nav.AcceptSearchCommand(ControlId::SearchBack, 460),
                           nav.AcceptSearchCommand(ControlId::Search, 461), nav.AcceptSearchCommand(ControlId::SearchFromHost, 462),
                           nav.AcceptSearchCommand(ControlId::StartSearch, 913), nav.AcceptSearchCommand(ControlId::StartSearch, 914)}),
        (std::vector<bool>{true, false, true, true, true, false}));

    // Pages: into a search page once, between search pages, and back to the class row's page.
    nav.classIndex = 1;
    nav.page = PageCollection;
    EXPECT_EQ(nav.GoToPage(PageBrowse), PageMove::None);
    EXPECT_EQ(nav.page, PageCollection);
    EXPECT_EQ(std::make_pair(nav.GoToPage(PageSearch), nav.page), std::make_pair(PageMove::EnterSearch, int(PageSearch)));
    EXPECT_EQ(nav.GoToPage(PageSearch), PageMove::None);
    EXPECT_EQ(nav.GoToPage(PageCollectionSearch), PageMove::EnterCollectionSearch);
    EXPECT_EQ(std::make_pair(nav.GoToPage(PageBrowse), nav.page), std::make_pair(PageMove::LeaveSearch, int(PageCollection)));
    nav.classIndex = 3;
    (void)nav.GoToPage(PageSearch);
    EXPECT_EQ(std::make_pair(nav.GoToPage(PageCollection), nav.page), std::make_pair(PageMove::LeaveSearch, int(PageBrowse)));

    // The collection page's status buttons, only on the empty collections.
    nav.classIndex = 1;
    using Ids = std::vector<int>;
    const std::pair<int, Ids> statuses[] = {{-1, {ControlId::AddBlocksEmpty}},
                                            {0, {ControlId::ReplaceCloud, ControlId::KeepCloud}},
                                            {1, {}},
                                            {3, {ControlId::RetrySync}},
                                            {4, {ControlId::RetrySync}},
                                            {-2, {}}};
    for (const auto& [status, ids] : statuses) {
        nav.syncStatus = status;
        EXPECT_EQ(nav.StatusButtons(), ids) << status;
    }
    nav.syncStatus = -1;
    nav.itemCount = 2;
    EXPECT_TRUE(nav.StatusButtons().empty());
    nav.itemCount = 0;
    nav.classIndex = 2;
    EXPECT_TRUE(nav.StatusButtons().empty());

    // The switch's state step clears the old class and takes the row's page.
    GalleryStore store;
    nav.curClassPath = u"/x";
    nav.forceList = nav.emptySubclassOpened = true;
    nav.itemCount = 7;
    nav.syncStatus = 0;
    nav.summaryPending = nav.itemsPending = u"/y";
    nav.listNodes.Add(nullptr);
    store.treeEpoch = 5;
    nav.BeginSwitch(1, store);
    EXPECT_TRUE(nav.curClassPath.empty() && !nav.forceList && !nav.emptySubclassOpened && nav.itemCount == 0 && nav.syncStatus == -1 &&
                nav.summaryPending.empty() && nav.itemsPending.empty() && nav.listNodes.empty() && nav.listNodes.Valid(store) &&
                nav.page == PageCollection);
    nav.BeginSwitch(4, store);
    EXPECT_EQ(nav.page, PageBrowse);
}

TEST(NavigationModel, SubclassPlansAndRoutesFollowTheTree) {
    PanelWorld w;
    GalleryNode* bolts = w.AddGallery({u"紧固件", 0, 0});
    w.AddClass(bolts, u"螺栓..六角", 5);
    w.AddClass(bolts, u"垫圈", 3);
    w.AddClass(bolts, u"..隐藏", 0);
    GalleryNode* nine = w.AddGallery({u"九常", 9, 2, 2});
    GalleryNode* nineteen = w.AddGallery({u"十九", 19, 2});
    auto boutiqueB = [](const std::u16string& path) { return path.ends_with(u"类B"); };
    auto captions = [](const SubclassPlan& plan) {
        std::vector<std::u16string> out;
        for (const SubclassEntry& entry : plan.buttons) out.push_back(entry.caption);
        return out;
    };

    // A leading ".." is no separator of the tip; the target is chosen.
    SubclassPlan plan = PlanSubclasses(*bolts, true, bolts->dirChildren[1]->Path(), {});
    EXPECT_EQ(captions(plan), (std::vector<std::u16string>{u"螺栓..六角", u"垫圈", u"..隐藏"}));
    EXPECT_EQ(std::make_tuple(plan.buttons[0].tip, plan.buttons[2].tip, plan.chosen, plan.entries),
              std::make_tuple(std::u16string(u"六角"), std::u16string(u"..隐藏"), size_t(1), 3));
    // "常用" leads a gallery row with common-use entries, opens its gallery
    // and takes the boutique marks away; the collection row has no "常用".
    plan = PlanSubclasses(*nine, true, u"/nowhere", boutiqueB);
    ASSERT_EQ(plan.buttons.size(), 10u);
    EXPECT_EQ(std::make_tuple(plan.buttons[0].caption, plan.buttons[0].data, plan.buttons[1].caption, plan.chosen, plan.entries),
              std::make_tuple(std::u16string(u"常用"), nine->Path(), std::u16string(u"类A"), size_t(0), 10));
    for (const SubclassEntry& entry : plan.buttons) EXPECT_FALSE(entry.boutique);
    plan = PlanSubclasses(*nine, false, {}, boutiqueB);
    EXPECT_EQ(std::make_tuple(plan.buttons.size(), plan.buttons[0].caption, plan.buttons[1].boutique, plan.buttons[0].boutique),
              std::make_tuple(size_t(9), std::u16string(u"类A"), true, false));
    // Past 18 buttons the classes count but are not shown.
    plan = PlanSubclasses(*nineteen, true, nineteen->dirChildren[18]->Path(), {});
    EXPECT_EQ(std::make_tuple(plan.buttons.size(), plan.entries, plan.chosen, plan.buttons.back().data),
              std::make_tuple(size_t(18), 19, size_t(0), nineteen->dirChildren[17]->Path()));

    // Routes: a gallery or a class gives the gallery's row; deeper or missing nodes none.
    const GalleryNode& root = *w.root();
    std::optional<TargetRow> found = FindTargetRow(root, u"/紧固件/垫圈");
    ASSERT_TRUE(found);
    EXPECT_EQ(std::make_pair(found->path, found->rowName), std::make_pair(bolts->dirChildren[1]->Path(), std::u16string(u"紧固件")));
    EXPECT_EQ(FindTargetRow(root, u"/九常")->rowName, u"九常");
    w.AddClass(bolts->dirChildren[1], u"深", 0);
    EXPECT_EQ(FindTargetRow(root, u"/紧固件/垫圈/深").value_or(TargetRow{u"none", u"none"}).rowName, u"");
    EXPECT_FALSE(FindTargetRow(root, u"/紧固件/没有") || FindTargetRow(root, u"/没有"));
    const std::vector<std::u16string> rows{u"最近使用", u"我的收藏", u"紧固件", u"九常"};
    EXPECT_EQ(
        (std::vector<int>{ClassRowOf(u"我的收藏", {}), ClassRowOf(u"最近使用", {}), ClassRowOf(u"九常", rows), ClassRowOf(u"十九", rows)}),
        (std::vector<int>{1, 0, 3, -1}));
}
