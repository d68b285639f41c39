// The controls: ids, captions, creation order and first visibility; places
// that scale edge by edge with the rate; the window itself; the clicks each
// button id leads to.

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>
#include <map>

#include "panel_world.h"
#include "skin/progress_ctrl_owner.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

// The skin buttons in creation order (subclass tabs apart); the title bar's
// keep their distance from the right edge.
struct Control {
    int id;
    const char16_t* caption;
    bool shown;
    bool fromRight;
};
const Control kButtons[] = {
    {1000, u"", true, true}, {2002, u"添加更多分类", false, false}, {2100, u"添加图块", false, false},
    {2101, u"新建文件夹", false, false}, {2102, u"删除图块", false, false}, {2103, u"分享收藏", false, false},
    {2104, u"搜索收藏", false, false}, {2105, u"删除文件夹", false, false}, {2150, u"添加图块", false, false},
    {2151, u"下载图库", false, false}, {2153, u"反馈", true, true}, {2158, u"搜索", true, true}, {2154, u"统计", true, true},
    {2155, u"替换", false, false}, {2156, u"不替换", false, false}, {2157, u"重试", false, false}, {2200, u"", false, false},
    {2201, u"搜索", false, false}, {2202, u"返回", false, false},
};

// A base unit at a rate, truncated, computed here on its own.
int Px(int units, float rate) { return static_cast<int>(static_cast<float>(units) * rate); }

// A place in base units (the panel's place at rate 1) at `rate`, each edge truncated on its own.
QRect Scaled(const QRect& base, float rate, bool fromRight) {
    const int w = Px(755, rate);
    auto x = [&](int units) { return fromRight ? w - Px(755 - units, rate) : Px(units, rate); };
    const int left = x(base.left()), right = x(base.left() + base.width());
    const int top = Px(base.top(), rate), bottom = Px(base.top() + base.height(), rate);
    return QRect(left, top, right - left, bottom - top);
}

struct Placed {
    QRect place;
    QRect cell;  // in the skin sheet; empty: none
};

// Checks what holds at every rate and notes each button's place and cell.
void CheckControls(float rate, std::map<int, Placed>& placed) {
    SCOPED_TRACE(rate);
    SampleWorld world({.rate = rate});
    CBrindleDlg& panel = *world.panel;

    EXPECT_EQ(panel.size(), QSize(Px(755, rate), Px(454, rate)));
    EXPECT_EQ(panel.windowTitle(), QStringLiteral("Ombrel_Panel"));
    EXPECT_TRUE(panel.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_TRUE(panel.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(panel.isWindow());
    EXPECT_FALSE(panel.windowIcon().isNull());
    // Centred on the desktop.
    const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_LE(std::abs(panel.x() + panel.width() / 2 - desk.center().x()), 1);
    EXPECT_LE(std::abs(panel.y() + panel.height() / 2 - desk.center().y()), 1);

    std::vector<int> order, expectedOrder;
    for (CSkinButton* b : panel.findChildren<CSkinButton*>(Qt::FindDirectChildrenOnly))
        if (!qobject_cast<CSubclassButton*>(b)) order.push_back(b->ControlId());
    for (const Control& c : kButtons) expectedOrder.push_back(c.id);
    EXPECT_EQ(order, expectedOrder);

    for (const Control& c : kButtons) {
        SCOPED_TRACE(c.id);
        CSkinButton* b = panel.Button(c.id);
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(b->ControlId(), c.id);
        EXPECT_EQ(b->text(), QString::fromUtf16(c.caption));
        EXPECT_EQ(!b->isHidden(), c.shown);
        EXPECT_EQ(b->isEnabled(), c.id != 2102);
        const auto& cell = b->sheetRect;
        placed[c.id] = {b->geometry(), QRect(cell.left, cell.top, cell.right - cell.left, cell.bottom - cell.top)};
    }
    // Independent anchors: the close button's corner and the collection bar's row.
    EXPECT_EQ(placed[1000].place, QRect(Px(755, rate) - Px(24, rate), Px(7, rate), Px(16, rate), Px(16, rate)));
    EXPECT_EQ(placed[2100].place, QRect(Px(136, rate), Px(41, rate), Px(216, rate) - Px(136, rate), Px(24, rate)));

    // The members hold the same buttons, in their own orders.
    std::vector<int> collection, search;
    for (CSkinButton* b : panel.m_collectionBtns) collection.push_back(b->ControlId());
    for (CSkinButton* b : panel.m_searchBtns) search.push_back(b->ControlId());
    EXPECT_EQ(collection, (std::vector<int>{2100, 2101, 2102, 2103, 2104, 2105}));
    EXPECT_EQ(search, (std::vector<int>{2200, 2201, 2202}));

    // Eighteen subclass tabs in two rows, hidden, ids 2080 to 2097.
    EXPECT_EQ(panel.m_subclassBtns.size(), 18u);
    for (int i = 0; i < static_cast<int>(panel.m_subclassBtns.size()); ++i) {
        CSubclassButton* tab = panel.m_subclassBtns[i];
        EXPECT_EQ(tab->ControlId(), 2080 + i);
        EXPECT_EQ(panel.Button(2080 + i), tab);
        EXPECT_TRUE(tab->isHidden());
        const int left = 136 + 68 * (i % 9);
        EXPECT_EQ(tab->geometry(), QRect(Px(left, rate), Px(i < 9 ? 41 : 75, rate), Px(65, rate), Px(24, rate))) << i;
    }
    for (int id : {2098, 2079, 3000, 0}) EXPECT_EQ(panel.Button(id), nullptr) << id;

    for (QWidget* part : std::initializer_list<QWidget*>{panel.m_searchEdit, panel.m_progress, panel.m_classList,
                                                          panel.m_searchList, panel.m_pThumbList})
        ASSERT_NE(part, nullptr);
    // The edit: frameless, three units wide, hidden.
    EXPECT_FALSE(panel.m_searchEdit->hasFrame());
    EXPECT_TRUE(panel.m_searchEdit->isHidden());
    EXPECT_EQ(panel.m_searchEdit->geometry(), Scaled(QRect(38, 43, 3, 17), rate, false));
    EXPECT_TRUE(panel.m_progress->isHidden());
    EXPECT_EQ(panel.m_progress->geometry(), Scaled(QRect(644, 435, 102, 7), rate, false));
    // The lists: the class list's left is one pixel at every rate.
    EXPECT_EQ(panel.m_classList->geometry(), QRect(1, Px(112, rate), Px(132, rate), Px(295, rate)));
    EXPECT_FALSE(panel.m_classList->isHidden());
    EXPECT_EQ(panel.m_searchList->geometry(), QRect(Px(7, rate), Px(72, rate), Px(740, rate), Px(343, rate)));
    EXPECT_TRUE(panel.m_searchList->isHidden());
    EXPECT_EQ(panel.m_pThumbList->geometry(), Scaled(QRect(133, 72, 612, 343), rate, false));
    EXPECT_FALSE(panel.m_pThumbList->isHidden());
}

}  // namespace

TEST(PanelControls, TableAtRatesOneAndOneAndAHalf) {
    std::map<int, Placed> base, wide;
    CheckControls(1.0f, base);
    CheckControls(1.5f, wide);
    ASSERT_EQ(base.size(), std::size(kButtons));
    ASSERT_EQ(wide.size(), std::size(kButtons));
    for (const Control& c : kButtons) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(wide.at(c.id).place, Scaled(base.at(c.id).place, 1.5f, c.fromRight));
        // Rate 1.5 falls in the sheet bucket of 1.5: cells scale, no cell stays none.
        const QRect& cell = base.at(c.id).cell;
        EXPECT_EQ(wide.at(c.id).cell, QRect(Px(cell.x(), 1.5f), Px(cell.y(), 1.5f), Px(cell.width(), 1.5f),
                                            Px(cell.height(), 1.5f)));
        EXPECT_EQ(base.at(c.id).cell.isEmpty(), c.id == 2150 || c.id == 2151 || (c.id >= 2155 && c.id <= 2157) ||
                                                    c.id == 2201 || c.id == 2202);
    }
}

TEST(PanelControls, ToolWindowOfAParent) {
    SampleWorld world({.parentIsHost = true});
    EXPECT_EQ(world.panel->parentWidget(), &world.host);
    EXPECT_TRUE(world.panel->isWindow());
    EXPECT_EQ(world.panel->windowFlags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_TRUE(world.panel->windowFlags() & Qt::FramelessWindowHint);
    // A second Create changes nothing.
    EXPECT_FALSE(world.panel->Create(nullptr));
    EXPECT_EQ(world.panel->parentWidget(), &world.host);
}

TEST(PanelControls, ClearButtonFollowsTheEditAndButtonsReachTheirHandlers) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    panel.ShowPanel();
    // Typing widens the edit over the placeholder; emptying it shrinks it back.
    panel.m_searchEdit->setText(QStringLiteral("阀门"));
    EXPECT_FALSE(panel.Button(2200)->isHidden());
    EXPECT_EQ(panel.m_searchEdit->geometry(), ScaleBox(38, 43, 500, 17));
    panel.m_searchEdit->clear();
    EXPECT_TRUE(panel.Button(2200)->isHidden());
    EXPECT_EQ(panel.m_searchEdit->geometry(), ScaleBox(38, 43, 3, 17));

    // 2104 opens the search of the collections.
    panel.Button(2104)->show();
    world.ClickButton(2104);
    EXPECT_EQ(panel.m_page, PageCollectionSearch);

    // The close button hides the panel.
    panel.ShowPanel();
    ASSERT_TRUE(panel.isVisible());
    world.ClickButton(1000);
    EXPECT_FALSE(panel.isVisible());
}
