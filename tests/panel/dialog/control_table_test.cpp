// The control table: ids, places at two rates, first visibility, looks and
// creation order; the window itself; the clicks each button id leads to.

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QMouseEvent>

#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel_world.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/skin_button.h"
#include "skin/subclass_button.h"
#include "skin/skin_scale.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

struct Expected {
    int id;
    const char16_t* caption;
    int left, top, right, bottom;  // base units; negative left/right: from the right edge
    bool shown;
    int kind;
    int cellX, cellY, cellSize;  // cellSize 0: none
};

// Written out from the table, not from the code: the order is creation order.
const Expected kTable[] = {
    {1000, u"", -24, 7, -8, 23, true, 3, 160, 88, 16},
    {2002, u"添加更多分类", 12, 41, 126, 69, false, 12, 448, 88, 16},
    {2100, u"添加图块", 136, 41, 216, 65, false, 4, 44, 72, 14},
    {2101, u"新建文件夹", 221, 41, 317, 65, false, 4, 72, 72, 14},
    {2102, u"删除图块", 423, 41, 503, 65, false, 4, 100, 72, 14},
    {2103, u"分享收藏", 508, 41, 588, 65, false, 4, 128, 72, 14},
    {2104, u"搜索收藏", 593, 41, 673, 65, false, 4, 417, 89, 14},
    {2105, u"删除文件夹", 322, 41, 418, 65, false, 4, 100, 72, 14},
    {2150, u"添加图块", 352, 270, 422, 294, false, 13, 0, 0, 0},
    {2151, u"下载图库", 352, 270, 422, 294, false, 13, 0, 0, 0},
    {2153, u"反馈", -94, 7, -39, 23, true, 11, 64, 88, 16},
    {2158, u"搜索", -204, 7, -149, 23, true, 11, 416, 88, 16},
    {2154, u"统计", -149, 7, -94, 23, true, 11, 288, 88, 16},
    {2155, u"替换", 324, 265, 394, 289, false, 50, 0, 0, 0},
    {2156, u"不替换", 414, 265, 484, 289, false, 51, 0, 0, 0},
    {2157, u"重试", 364, 265, 434, 289, false, 50, 0, 0, 0},
    {2200, u"", 617, 44, 633, 60, false, 2, 0, 72, 14},
    {2201, u"搜索", 638, 40, 686, 64, false, 6, 0, 0, 0},
    {2202, u"返回", 697, 40, 745, 64, false, 7, 0, 0, 0},
};

// A base unit at a rate, truncated, computed here on its own.
int Px(int units, float rate) { return static_cast<int>(static_cast<float>(units) * rate); }

QRect Expect(const Expected& e, float rate) {
    const int w = Px(755, rate);
    const int left = e.left < 0 ? w - Px(-e.left, rate) : Px(e.left, rate);
    const int right = e.right < 0 ? w - Px(-e.right, rate) : Px(e.right, rate);
    const int top = Px(e.top, rate), bottom = Px(e.bottom, rate);
    return QRect(left, top, right - left, bottom - top);
}

void CheckTable(float rate) {
    SCOPED_TRACE(rate);
    WorldOptions options;
    options.rate = rate;
    SampleWorld world(options);
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

    // Skin buttons in creation order (subclass tabs apart).
    std::vector<int> order;
    for (CSkinButton* b : panel.findChildren<CSkinButton*>(Qt::FindDirectChildrenOnly))
        if (!qobject_cast<CSubclassButton*>(b)) order.push_back(b->ControlId());
    std::vector<int> expectedOrder;
    for (const Expected& e : kTable) expectedOrder.push_back(e.id);
    EXPECT_EQ(order, expectedOrder);

    const float sheet = rate < 1.2f ? 1.0f : 1.5f;  // the two buckets these rates fall in
    for (const Expected& e : kTable) {
        SCOPED_TRACE(e.id);
        CSkinButton* b = panel.Button(e.id);
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(b->ControlId(), e.id);
        EXPECT_EQ(b->text(), QString::fromUtf16(e.caption));
        EXPECT_EQ(b->geometry(), Expect(e, rate));
        EXPECT_EQ(!b->isHidden(), e.shown);
        EXPECT_EQ(b->kind, e.kind);
        EXPECT_EQ(b->isEnabled(), e.id != 2102);
        if (e.cellSize > 0) {
            EXPECT_EQ(b->sheetRect.left, Px(e.cellX, sheet));
            EXPECT_EQ(b->sheetRect.top, Px(e.cellY, sheet));
            EXPECT_EQ(b->sheetRect.right - b->sheetRect.left, Px(e.cellSize, sheet));
            EXPECT_EQ(b->sheetRect.bottom - b->sheetRect.top, Px(e.cellSize, sheet));
        } else {
            EXPECT_EQ(b->sheetRect.right, 0);
        }
    }

    // The members hold the same buttons, in their own orders.
    ASSERT_EQ(panel.m_collectionBtns.size(), 6u);
    const int collectionIds[] = {2100, 2101, 2102, 2103, 2104, 2105};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(panel.m_collectionBtns[i]->ControlId(), collectionIds[i]);
    ASSERT_EQ(panel.m_searchBtns.size(), 3u);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(panel.m_searchBtns[i]->ControlId(), 2200 + i);

    // Eighteen subclass tabs in two rows, hidden, ids 2080 to 2097.
    ASSERT_EQ(panel.m_subclassBtns.size(), 18u);
    for (int i = 0; i < 18; ++i) {
        CSubclassButton* tab = panel.m_subclassBtns[i];
        EXPECT_EQ(tab->ControlId(), 2080 + i);
        EXPECT_EQ(panel.Button(2080 + i), tab);
        EXPECT_TRUE(tab->isHidden());
        const int left = i < 9 ? 136 + 68 * i : 136 + 68 * (i - 9);
        EXPECT_EQ(tab->geometry(), QRect(Px(left, rate), Px(i < 9 ? 41 : 75, rate), Px(65, rate), Px(24, rate)))
            << i;
    }
    EXPECT_EQ(panel.Button(2098), nullptr);
    EXPECT_EQ(panel.Button(2079), nullptr);
    EXPECT_EQ(panel.Button(3000), nullptr);
    EXPECT_EQ(panel.Button(0), nullptr);

    // The edit: frameless, three units wide, hidden, in the normal font.
    ASSERT_NE(panel.m_searchEdit, nullptr);
    EXPECT_FALSE(panel.m_searchEdit->hasFrame());
    EXPECT_TRUE(panel.m_searchEdit->isHidden());
    EXPECT_EQ(panel.m_searchEdit->geometry(), QRect(Px(38, rate), Px(43, rate), Px(41, rate) - Px(38, rate),
                                                    Px(60, rate) - Px(43, rate)));
    ASSERT_NE(panel.m_progress, nullptr);
    EXPECT_TRUE(panel.m_progress->isHidden());
    EXPECT_EQ(panel.m_progress->geometry(),
              QRect(Px(644, rate), Px(435, rate), Px(746, rate) - Px(644, rate), Px(442, rate) - Px(435, rate)));

    // The lists: the class list's left is one pixel at every rate.
    ASSERT_NE(panel.m_classList, nullptr);
    EXPECT_EQ(panel.m_classList->geometry(), QRect(1, Px(112, rate), Px(132, rate), Px(295, rate)));
    EXPECT_FALSE(panel.m_classList->isHidden());
    ASSERT_NE(panel.m_searchList, nullptr);
    EXPECT_EQ(panel.m_searchList->geometry(), QRect(Px(7, rate), Px(72, rate), Px(740, rate), Px(343, rate)));
    EXPECT_TRUE(panel.m_searchList->isHidden());
    ASSERT_NE(panel.m_pThumbList, nullptr);
    EXPECT_EQ(panel.m_pThumbList->geometry(),
              QRect(Px(133, rate), Px(72, rate), Px(745, rate) - Px(133, rate), Px(415, rate) - Px(72, rate)));
    EXPECT_FALSE(panel.m_pThumbList->isHidden());
}

}  // namespace

TEST(PanelControls, TableAtRateOne) { CheckTable(1.0f); }

TEST(PanelControls, TableAtRateOneAndAHalf) { CheckTable(1.5f); }

TEST(PanelControls, ToolWindowOfAParent) {
    WorldOptions options;
    options.parentIsHost = true;
    SampleWorld world(options);
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
