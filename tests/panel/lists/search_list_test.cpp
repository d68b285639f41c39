// The result rows: zones of a row, hover and selection handed to the painter,
// the first measure of the class line, rows dropped behind the list's back,
// and rows in every state rendered to PNG. The scrolling it shares with the
// class column is tested over both in row_window_test.cpp.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPainter>

#include "list_test_support.h"
#include "panel/lists/search_row_zone.h"
#include "render_support.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {
namespace {

TEST(SearchList, ZonesOfARowAtTheirEdges) {
    struct Case {
        int x, y;  // units from the row's corner
        int shiftX, shiftY;  // pixels added, -1 for the pixel before an edge
        int lineWidth;
        int zone;
    };
    const Case cases[] = {
        {570, 17, 0, 0, 0, ZoneCollect},   {630, 41, -1, -1, 0, ZoneCollect}, {630, 20, 0, 0, 0, ZoneNone},
        {640, 17, 0, 0, 0, ZoneUse},       {700, 41, -1, -1, 0, ZoneUse},     {700, 20, 0, 0, 0, ZoneNone},
        {650, 41, 0, 0, 0, ZoneNone},      {650, 17, -1, -1, 0, ZoneNone},
        // The link is as long as the measured line...
        {100, 30, 0, 0, 50, ZoneClassLink}, {100, 50, 49, -1, 50, ZoneClassLink}, {100, 40, 50, 0, 50, ZoneNone},
        {120, 50, 0, 0, 50, ZoneNone},     {120, 30, -1, -1, 50, ZoneNone},
        // ...nothing before the row was drawn, and never past 420 units; nor on the picture.
        {101, 40, 0, 0, 0, ZoneNone},      {420, 40, -1, -1, 5000, ZoneClassLink},
        {420, 40, 0, 0, 5000, ZoneNone},   {50, 40, 0, 0, 5000, ZoneNone},
    };
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        for (const Case& c : cases) {
            const QPoint at(ScaleUnits(c.x) + c.shiftX, ScaleUnits(c.y) + c.shiftY);
            EXPECT_EQ(SearchZoneAt(at, c.lineWidth), c.zone)
                << rate << ": " << c.x << "," << c.y << " +" << c.shiftX << "," << c.shiftY << " w" << c.lineWidth;
        }
    }
}

TEST(SearchList, RowsShownAndTheirClassLinesMeasuredOnce) {
    SearchBoard b(1.0f, 8);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    EXPECT_EQ(b.list->GetItemCount(), 8);
    EXPECT_EQ(b.list->RowRect(0).width(), ScaleUnits(723));
    // 343 units show five whole rows and part of the sixth.
    ASSERT_TRUE(b.list->IsScrollBarShown());
    EXPECT_EQ(b.list->ScrollBar()->maximum(), 3);
    Grab(b.list);
    for (int r = 0; r <= 5; ++r) EXPECT_GT(b.list->LineWidth(r), 0) << "row " << r << " was drawn";
    EXPECT_EQ(b.list->LineWidth(6), 0) << "rows out of view aren't drawn";
    EXPECT_EQ(b.list->LineWidth(7), 0);
    const int first0 = b.list->LineWidth(0);
    b.list->EnsureVisible(7);
    Grab(b.list);
    EXPECT_GT(b.list->LineWidth(7), 0);
    b.list->EnsureVisible(0);

    // A longer class line on a drawn row keeps the first measure...
    b.rows[0].subclass = QStringLiteral("门窗..平开门与推拉门与折叠门与旋转门");
    b.list->RedrawRow(0);
    Grab(b.list);
    EXPECT_EQ(b.list->LineWidth(0), first0);
    // ...until the owner hands its rows over again.
    b.list->EnsureVisible(7);
    b.list->SetRows(&b.rows);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0) << "new rows start at the top";
    EXPECT_EQ(b.list->LineWidth(0), 0);
    Grab(b.list);
    EXPECT_GT(b.list->LineWidth(0), first0);

    // No rows paint a white list.
    b.list->SetRows(nullptr);
    EXPECT_EQ(b.list->GetItemCount(), 0);
    const QImage empty = Grab(b.list);
    EXPECT_FALSE(ContainsColour(empty, empty.rect(), QColor(0x99, 0x99, 0x99), 60));
}

TEST(SearchList, RowsRemovedBehindTheListsBackAreNeverRead) {
    SearchBoard b(1.0f, 9);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    b.list->EnsureVisible(8);
    b.list->SetSelectedRow(8);
    MoveMouseTo(b.list, b.list->RowRect(8).center());
    EXPECT_EQ(b.list->HotRow(), 8);
    // The owner drops rows without a word: the list follows at its next paint.
    b.rows.resize(2);
    EXPECT_EQ(b.list->GetItemCount(), 2);
    Grab(b.list);
    EXPECT_EQ(b.list->FirstVisibleRow(), 0);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->HotRow(), -1);
    EXPECT_FALSE(b.list->IsScrollBarShown());
    EXPECT_EQ(b.list->LineWidth(8), 0);
    b.list->RedrawRow(8);
    WheelAt(b.list, QPoint(5, 5), -120);
    MoveMouseTo(b.list, QPoint(ScaleUnits(650), ScaleUnits(25)));
    EXPECT_EQ(b.list->HotRow(), 0);
}

TEST(SearchList, HoverGivesThePainterItsButtonAndLink) {
    SearchBoard b(1.0f, 3);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    const QRect collect = b.Area(1, 570, 17, 630, 41), use = b.Area(1, 640, 17, 700, 41);
    const QRect line = b.Area(1, 100, 30, 420, 50);
    // Where the mouse rests, which zone that is, and what the row shows.
    struct Step {
        int row, x, y, zone;
        bool useLit, collectLit, lineAccent;
    };
    const Step steps[] = {
        {1, 650, 25, ZoneUse, true, false, false},
        {1, 600, 25, ZoneCollect, false, true, false},
        {1, 102, 40, ZoneClassLink, false, false, true},  // the class link turns the whole line accent
        {1, 500, 40, ZoneNone, false, false, false},      // off the zones in the same row: nothing lit
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(testing::Message() << s.x << "," << s.y);
        MoveMouseTo(b.list, b.At(s.row, s.x, s.y));
        EXPECT_EQ(b.list->HotRow(), s.row);
        EXPECT_EQ(b.list->HotZone(), s.zone);
        const QImage img = Grab(b.list);
        EXPECT_EQ(ContainsColour(img, use, kHoverFill), s.useLit);
        EXPECT_EQ(ContainsColour(img, collect, kHoverFill), s.collectLit);
        EXPECT_EQ(ContainsColour(img, line, kAccent, 40), s.lineAccent);
        if (s.zone == ZoneNone) {
            EXPECT_FALSE(ContainsColour(img, b.list->RowRect(1), kHoverFill));
        }
    }

    // Another row takes the hover; leaving clears it.
    MoveMouseTo(b.list, b.At(2, 650, 25));
    EXPECT_EQ(b.list->HotRow(), 2);
    QImage img = Grab(b.list);
    EXPECT_FALSE(ContainsColour(img, use, kHoverFill));
    EXPECT_TRUE(ContainsColour(img, b.Area(2, 640, 17, 700, 41), kHoverFill));
    MoveMouseTo(&b.owner, QPoint(2, 2));
    EXPECT_EQ(b.list->HotRow(), -1);
    EXPECT_EQ(b.list->HotZone(), ZoneNone);
    img = Grab(b.list);
    EXPECT_FALSE(ContainsColour(img, img.rect(), kHoverFill));
}

TEST(SearchList, PressSelectsItsRowAndNotesIt) {
    SearchBoard b(1.0f, 3);
    ASSERT_TRUE(ShowAndWait(&b.owner));
    EXPECT_EQ(b.list->ClickedRow(), -1);
    // The band shows between the class line and the buttons only when selected.
    const auto gap = [&b](int row) { return b.Area(row, 430, 2, 530, 58); };
    EXPECT_FALSE(ContainsColour(Grab(b.list), gap(2), kBand));

    ClickAt(b.list, b.At(2, 300, 5));
    EXPECT_EQ(b.list->GetSelectedRow(), 2);
    EXPECT_EQ(b.list->ClickedRow(), 2);
    EXPECT_TRUE(ContainsColour(Grab(b.list), gap(2), kBand));

    Pump(QApplication::doubleClickInterval() + 50);
    ClickAt(b.list, b.At(0, 650, 25));
    EXPECT_EQ(b.list->GetSelectedRow(), 0);
    const QImage img = Grab(b.list);
    EXPECT_FALSE(ContainsColour(img, gap(2), kBand)) << "the old row is redrawn white";
    EXPECT_TRUE(ContainsColour(img, gap(0), kBand));

    // A press below the rows selects none and keeps the last clicked row.
    Pump(QApplication::doubleClickInterval() + 50);
    ClickAt(b.list, QPoint(ScaleUnits(300), b.list->RowRect(2).bottom() + ScaleUnits(20)));
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
    EXPECT_EQ(b.list->ClickedRow(), 0);

    // Rows handed over again, even the same ones, start unselected.
    b.list->SetSelectedRow(2);
    b.list->SetRows(&b.rows);
    EXPECT_EQ(b.list->GetSelectedRow(), -1);
}

TEST(SearchList, RowsInEveryStateRenderAtTwoRates) {
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        SearchBoard b(rate, 0, 7 * 61 + 10);
        BlockRow progress = MakeRow("折叠门.dwg", "门窗..折叠门", RowDownloading);
        progress.prefetch = false;
        progress.percent = 40;
        BlockRow remote = MakeRow("精品门套.dwg", "精品门窗..门套", RowRemote);
        remote.boutique = true;
        b.rows = {MakeRow("单开门.dwg", "门窗..平开门", RowFresh),
                  MakeRow("双开门.DWG", "门窗..平开门", RowCollected),
                  MakeRow("推拉门", "门窗", RowDownloading),
                  progress,
                  MakeRow("旋转门.dwg", "门窗..旋转门", RowFailed),
                  remote,
                  MakeRow(".dwg", "门窗..其他", RowFetched)};
        b.list->SetRows(&b.rows);
        b.list->SetSearchKey(QStringLiteral("门"));
        b.list->SetSelectedRow(1);
        ASSERT_TRUE(ShowAndWait(&b.owner));
        EXPECT_FALSE(b.list->IsScrollBarShown());
        MoveMouseTo(b.list, b.At(0, 650, 25));
        ASSERT_EQ(b.list->HotZone(), ZoneUse);
        const QImage img = Grab(b.list);
        EXPECT_TRUE(ContainsColour(img, b.Area(1, 430, 2, 530, 58), kBand));
        EXPECT_FALSE(ContainsColour(img, b.Area(2, 430, 2, 530, 58), kBand));
        EXPECT_TRUE(ContainsColour(img, b.Area(0, 640, 17, 700, 41), kHoverFill));
        // The key "门" is drawn in accent in every name.
        for (int r = 0; r < 6; ++r)
            EXPECT_TRUE(ContainsColour(img, b.Area(r, 100, 10, 420, 30), kAccent, 40)) << "row " << r;
        SavePng(img, QStringLiteral("lists_search_rate%1.png").arg(rate, 0, 'f', 1));
    }
}

}  // namespace
}  // namespace marrowfin::test
