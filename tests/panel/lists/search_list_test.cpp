// The result rows: zones of a row, hover and selection handed to the painter,
// the first measure of the class line, scrolling, and rows in every state
// rendered to PNG.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPainter>
#include <QtTest/QTest>

#include "list_test_support.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/lists/search_row_zone.h"
#include "render_support.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin {
namespace {

const QColor kAccent(0x29, 0x75, 0xE6);
const QColor kBand(0xF2, 0xF3, 0xF5);
const QColor kHoverFill(0xCE, 0xE8, 0xFE);

BlockRow Row(const char* name, const char* subclass, int state) {
    BlockRow r;
    r.name = QString::fromUtf8(name);
    r.klass = QStringLiteral("建筑");
    r.subclass = QString::fromUtf8(subclass);
    r.url = QStringLiteral("http://127.0.0.1/") + r.name;
    r.state = state;
    return r;
}

std::vector<BlockRow> Rows(int n) {
    std::vector<BlockRow> rows;
    for (int i = 0; i < n; ++i) rows.push_back(Row("单开门.dwg", "门窗..平开门", RowFresh));
    return rows;
}

// The result list where the panel has it: 740 by 343 units.
struct SearchBoard {
    test::RecordingOwner owner;
    CSearchListCtrl* list = nullptr;
    explicit SearchBoard(float rate, int heightUnits = 343) {
        test::UseRate(rate);
        test::ParkMouse();
        owner.resize(ScaleUnits(760), ScaleUnits(heightUnits + 30));
        list = new CSearchListCtrl(&owner);
        list->setGeometry(ScaleUnits(7), ScaleUnits(12), ScaleUnits(740), ScaleUnits(heightUnits));
    }
    // A point of row `row` in units from the row's corner.
    QPoint At(int row, int x, int y) const { return list->RowRect(row).topLeft() + QPoint(ScaleUnits(x), ScaleUnits(y)); }
    QRect Area(int row, int l, int t, int r, int b) const {
        return ScaleRect(l, t, r, b).translated(list->RowRect(row).topLeft());
    }
};

TEST(SearchList, ZonesOfARowAtTheirEdges) {
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        test::UseRate(rate);
        auto at = [](int x, int y, int width) { return SearchZoneAt(QPoint(ScaleUnits(x), ScaleUnits(y)), width); };
        auto before = [](int x, int y, int width) {
            return SearchZoneAt(QPoint(ScaleUnits(x) - 1, ScaleUnits(y) - 1), width);
        };
        EXPECT_EQ(at(570, 17, 0), ZoneCollect);
        EXPECT_EQ(before(630, 41, 0), ZoneCollect);
        EXPECT_EQ(at(630, 20, 0), ZoneNone);  // between the buttons
        EXPECT_EQ(at(640, 17, 0), ZoneUse);
        EXPECT_EQ(before(700, 41, 0), ZoneUse);
        EXPECT_EQ(at(700, 20, 0), ZoneNone);
        EXPECT_EQ(at(650, 41, 0), ZoneNone);
        EXPECT_EQ(before(650, 17, 0), ZoneNone);
        // The link is as long as the measured line...
        EXPECT_EQ(at(100, 30, 50), ZoneClassLink);
        EXPECT_EQ(SearchZoneAt(QPoint(ScaleUnits(100) + 49, ScaleUnits(50) - 1), 50), ZoneClassLink);
        EXPECT_EQ(SearchZoneAt(QPoint(ScaleUnits(100) + 50, ScaleUnits(40)), 50), ZoneNone);
        EXPECT_EQ(at(120, 50, 50), ZoneNone);
        EXPECT_EQ(before(120, 30, 50), ZoneNone);
        // ...nothing before the row was drawn, and never past 420 units.
        EXPECT_EQ(at(101, 40, 0), ZoneNone);
        EXPECT_EQ(before(420, 40, 5000), ZoneClassLink);
        EXPECT_EQ(at(420, 40, 5000), ZoneNone);
        EXPECT_EQ(at(50, 40, 5000), ZoneNone);  // the picture
    }
}

TEST(SearchList, RowsShownScrolledAndMeasuredOnce) {
    SearchBoard b(1.0f);
    std::vector<BlockRow> rows = Rows(8);
    b.list->SetRows(&rows);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    EXPECT_EQ(b.list->GetItemCount(), 8);
    EXPECT_EQ(b.list->RowRect(1).top() - b.list->RowRect(0).top(), ScaleUnits(60) + 1);
    EXPECT_EQ(b.list->RowRect(0).width(), ScaleUnits(723));
    // 343 units show five whole rows and part of the sixth.
    ASSERT_TRUE(b.list->IsScrollBarShown());
    EXPECT_EQ(b.list->ScrollBar()->maximum(), 3);
    test::Grab(b.list);
    for (int r = 0; r <= 5; ++r) EXPECT_GT(b.list->LineWidth(r), 0) << "row " << r << " was drawn";
    EXPECT_EQ(b.list->LineWidth(6), 0) << "rows out of view aren't drawn";
    EXPECT_EQ(b.list->LineWidth(7), 0);
    const int first0 = b.list->LineWidth(0);

    test::WheelAt(b.list, b.list->RowRect(0).center(), -120);
    EXPECT_EQ(b.list->FirstVisibleRow(), 3);
    EXPECT_EQ(b.list->ScrollBar()->value(), 3);
    test::Grab(b.list);
    EXPECT_GT(b.list->LineWidth(7), 0);
    b.list->EnsureVisible(0);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);

    // A longer class line on a drawn row keeps the first measure...
    rows[0].subclass = QStringLiteral("门窗..平开门与推拉门与折叠门与旋转门");
    b.list->RedrawRow(0);
    test::Grab(b.list);
    EXPECT_EQ(b.list->LineWidth(0), first0);
    // ...until the owner hands its rows over again.
    b.list->EnsureVisible(7);
    b.list->SetRows(&rows);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0) << "new rows start at the top";
    EXPECT_EQ(b.list->LineWidth(0), 0);
    test::Grab(b.list);
    EXPECT_GT(b.list->LineWidth(0), first0);

    // Rows that fit show no bar; no rows paint a white list.
    rows.resize(5);
    b.list->SetRows(&rows);
    EXPECT_FALSE(b.list->IsScrollBarShown());
    b.list->SetRows(nullptr);
    EXPECT_EQ(b.list->GetItemCount(), 0);
    const QImage empty = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(empty, empty.rect(), QColor(0x99, 0x99, 0x99), 60));
}

TEST(SearchList, RowsRemovedBehindTheListsBackAreNeverRead) {
    SearchBoard b(1.0f);
    std::vector<BlockRow> rows = Rows(9);
    b.list->SetRows(&rows);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    b.list->EnsureVisible(8);
    b.list->SetSelectedRow(8);
    test::MoveMouseTo(b.list, b.list->RowRect(8).center());
    EXPECT_EQ(b.list->HotRow(), 8);
    // The owner drops rows without a word: the list follows at its next paint.
    rows.resize(2);
    EXPECT_EQ(b.list->GetItemCount(), 2);
    test::Grab(b.list);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->HotRow(), -1);
    EXPECT_FALSE(b.list->IsScrollBarShown());
    EXPECT_EQ(b.list->LineWidth(8), 0);
    b.list->RedrawRow(8);
    test::WheelAt(b.list, QPoint(5, 5), -120);
    test::MoveMouseTo(b.list, QPoint(ScaleUnits(650), ScaleUnits(25)));
    EXPECT_EQ(b.list->HotRow(), 0);
}

TEST(SearchList, HoverGivesThePainterItsButtonAndLink) {
    SearchBoard b(1.0f);
    std::vector<BlockRow> rows = Rows(3);
    b.list->SetRows(&rows);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    const QRect collect = b.Area(1, 570, 17, 630, 41), use = b.Area(1, 640, 17, 700, 41);
    const QRect line = b.Area(1, 100, 30, 420, 50);

    test::MoveMouseTo(b.list, b.At(1, 650, 25));
    EXPECT_EQ(b.list->HotRow(), 1);
    EXPECT_EQ(b.list->HotZone(), ZoneUse);
    QImage img = test::Grab(b.list);
    EXPECT_TRUE(test::ContainsColour(img, use, kHoverFill));
    EXPECT_FALSE(test::ContainsColour(img, collect, kHoverFill));

    test::MoveMouseTo(b.list, b.At(1, 600, 25));
    EXPECT_EQ(b.list->HotZone(), ZoneCollect);
    img = test::Grab(b.list);
    EXPECT_TRUE(test::ContainsColour(img, collect, kHoverFill));
    EXPECT_FALSE(test::ContainsColour(img, use, kHoverFill));

    // The class link turns the whole line accent.
    EXPECT_FALSE(test::ContainsColour(img, line, kAccent, 40));
    test::MoveMouseTo(b.list, b.At(1, 102, 40));
    EXPECT_EQ(b.list->HotZone(), ZoneClassLink);
    img = test::Grab(b.list);
    EXPECT_TRUE(test::ContainsColour(img, line, kAccent, 40));

    // Off the zones in the same row: nothing lit.
    test::MoveMouseTo(b.list, b.At(1, 500, 40));
    EXPECT_EQ(b.list->HotRow(), 1);
    EXPECT_EQ(b.list->HotZone(), ZoneNone);
    img = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(img, b.list->RowRect(1), kHoverFill));
    EXPECT_FALSE(test::ContainsColour(img, line, kAccent, 40));

    // Another row takes the hover; leaving clears it.
    test::MoveMouseTo(b.list, b.At(2, 650, 25));
    EXPECT_EQ(b.list->HotRow(), 2);
    img = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(img, use, kHoverFill));
    EXPECT_TRUE(test::ContainsColour(img, b.Area(2, 640, 17, 700, 41), kHoverFill));
    test::MoveMouseTo(&b.owner, QPoint(2, 2));
    EXPECT_EQ(b.list->HotRow(), -1);
    EXPECT_EQ(b.list->HotZone(), ZoneNone);
    img = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(img, img.rect(), kHoverFill));
}

TEST(SearchList, PressSelectsItsRowAndNotesIt) {
    SearchBoard b(1.0f);
    std::vector<BlockRow> rows = Rows(3);
    b.list->SetRows(&rows);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    EXPECT_EQ(b.list->ClickedRow(), -1);
    // The band shows between the class line and the buttons only when selected.
    const auto gap = [&b](int row) { return b.Area(row, 430, 2, 530, 58); };
    QImage img = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(img, gap(2), kBand));

    test::ClickAt(b.list, b.At(2, 300, 5));
    EXPECT_EQ(b.list->GetSelectedRow(), 2);
    EXPECT_EQ(b.list->ClickedRow(), 2);
    img = test::Grab(b.list);
    EXPECT_TRUE(test::ContainsColour(img, gap(2), kBand));

    test::Pump(QApplication::doubleClickInterval() + 50);
    test::ClickAt(b.list, b.At(0, 650, 25));
    EXPECT_EQ(b.list->GetSelectedRow(), 0);
    img = test::Grab(b.list);
    EXPECT_FALSE(test::ContainsColour(img, gap(2), kBand)) << "the old row is redrawn white";
    EXPECT_TRUE(test::ContainsColour(img, gap(0), kBand));

    // A press below the rows selects none and keeps the last clicked row.
    test::Pump(QApplication::doubleClickInterval() + 50);
    test::ClickAt(b.list, QPoint(ScaleUnits(300), b.list->RowRect(2).bottom() + ScaleUnits(20)));
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->ClickedRow(), 0);

    b.list->SetSelectedRow(1);
    EXPECT_EQ(b.list->GetSelectedRow(), 1);
    b.list->SetSelectedRow(3);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    b.list->SetSelectedRow(2);
    b.list->SetRows(&rows);
    EXPECT_EQ(b.list->GetSelectedRow(), -1) << "new rows start unselected";
}

void RenderStates(float rate, const char* name) {
    SearchBoard b(rate, 7 * 61 + 10);
    std::vector<BlockRow> rows;
    rows.push_back(Row("单开门.dwg", "门窗..平开门", RowFresh));
    rows.push_back(Row("双开门.DWG", "门窗..平开门", RowCollected));
    rows.push_back(Row("推拉门", "门窗", RowDownloading));
    BlockRow progress = Row("折叠门.dwg", "门窗..折叠门", RowDownloading);
    progress.prefetch = false;
    progress.percent = 40;
    rows.push_back(progress);
    rows.push_back(Row("旋转门.dwg", "门窗..旋转门", RowFailed));
    BlockRow remote = Row("精品门套.dwg", "精品门窗..门套", RowRemote);
    remote.boutique = true;
    rows.push_back(remote);
    rows.push_back(Row(".dwg", "门窗..其他", RowFetched));
    b.list->SetRows(&rows);
    b.list->SetSearchKey(QStringLiteral("门"));
    b.list->SetSelectedRow(1);
    ASSERT_TRUE(test::ShowAndWait(&b.owner));
    EXPECT_FALSE(b.list->IsScrollBarShown());
    test::MoveMouseTo(b.list, b.At(0, 650, 25));
    ASSERT_EQ(b.list->HotZone(), ZoneUse);
    const QImage img = test::Grab(b.list);
    EXPECT_TRUE(test::ContainsColour(img, b.Area(1, 430, 2, 530, 58), kBand));
    EXPECT_FALSE(test::ContainsColour(img, b.Area(2, 430, 2, 530, 58), kBand));
    EXPECT_TRUE(test::ContainsColour(img, b.Area(0, 640, 17, 700, 41), kHoverFill));
    // The key "门" is drawn in accent in every name.
    for (int r = 0; r < 6; ++r)
        EXPECT_TRUE(test::ContainsColour(img, b.Area(r, 100, 10, 420, 30), kAccent, 40)) << "row " << r;
    test::SavePng(img, QString::fromLatin1(name));
}

TEST(SearchList, RowsInEveryStateRenderAtTwoRates) {
    RenderStates(1.0f, "lists_search_rate1.0.png");
    RenderStates(1.5f, "lists_search_rate1.5.png");
}

}  // namespace
}  // namespace marrowfin
