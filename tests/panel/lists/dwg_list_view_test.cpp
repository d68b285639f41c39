// The thumbnail grid: states and previews of the shown range and its
// read-ahead, the reports of missing files, the cache's bound, mouse commands,
// name fitting, and renders.
#include <gtest/gtest.h>

#include <QtTest/QTest>
#include <algorithm>

#include "grid_world.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/model/panel_messages.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "render_support.h"
#include "skin/measure_text.h"
#include "skin/scroll_bar_ex.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {
namespace {

TEST(DwgListView, ShownRangeLoadsPreviewsReportsMissingFilesAndKeepsStates) {
    // 0 preview, 1 no preview, 2 missing, 3 cut download, 4 png preview, then previews.
    std::vector<Make> kinds = {Make::Preview, Make::NoPreview, Make::Missing, Make::Cut, Make::PngPreview};
    kinds.resize(60, Make::Preview);
    kinds[25] = Make::Missing;  // out of view at first
    GridWorld w(kinds);
    w.view->SetPaths(w.paths);
    EXPECT_EQ(w.view->PreviewReads(), 0) << "filling reads nothing";
    ASSERT_TRUE(w.Show());

    EXPECT_EQ(w.view->Columns(), 4);
    const int last = w.view->LastVisibleItem();
    EXPECT_EQ(w.view->FirstVisibleItem(), 0);
    EXPECT_EQ(last, 15) << "four rows show, the fourth in part";
    EXPECT_EQ(w.view->ItemState(0), CDWGListView::kStateFinal);
    EXPECT_EQ(w.view->ItemState(4), CDWGListView::kStateFinal) << "a PNG preview counts";
    EXPECT_EQ(w.view->ItemState(1), CDWGListView::kStateTriedOnce);
    EXPECT_EQ(w.view->ItemState(2), CDWGListView::kStateFresh);
    EXPECT_EQ(w.view->ItemState(last + 1), CDWGListView::kStateFinal) << "a screen is read ahead";
    EXPECT_EQ(w.view->ItemState(2 * last + 1), CDWGListView::kStateFinal);
    EXPECT_EQ(w.view->ItemState(2 * last + 2), CDWGListView::kStateFresh) << "nothing beyond the read-ahead";
    EXPECT_FALSE(FileExists(w.paths[3])) << "a cut download is deleted";
    EXPECT_EQ(w.Missing(), (std::vector<int>{2, 3})) << "only shown cells report, not the read-ahead's 25";
    const int reads = w.view->PreviewReads();
    EXPECT_EQ(reads, 2 * (last + 1) - 3);  // every present file once

    // A new hint on the same range: the file without preview is tried a
    // second time and is final then; loaded previews are not read again.
    w.view->RedrawItem(1);
    w.Repaint();
    EXPECT_EQ(w.view->ItemState(1), CDWGListView::kStateFinal);
    EXPECT_EQ(w.view->PreviewReads(), reads + 1);
    w.view->RedrawItem(1);
    w.Repaint();
    EXPECT_EQ(w.view->PreviewReads(), reads + 1) << "a final page mark stays without reading";

    // Scrolling away and back: the cells come back from the cache.
    (void)w.Missing();
    WheelAt(w.view, QPoint(50, 50), -120);
    w.Repaint();
    EXPECT_GT(w.view->FirstVisibleItem(), 0);
    EXPECT_GE(w.view->LastVisibleItem(), 25);
    EXPECT_EQ(w.Missing(), (std::vector<int>{25})) << "the missing file scrolled in is reported";
    const int afterScroll = w.view->PreviewReads();
    WheelAt(w.view, QPoint(50, 50), 120);
    w.Repaint();
    EXPECT_EQ(w.view->FirstVisibleItem(), 0);
    EXPECT_EQ(w.view->PreviewReads(), afterScroll) << "state 1 cells are not read again";
    EXPECT_EQ(w.Missing(), (std::vector<int>{2, 3})) << "missing cells ask each time they show";

    // While the owner scans, shown cells report nothing.
    w.view->isScanBusy = [] { return true; };
    w.view->RedrawItem(2);
    w.Repaint();
    EXPECT_TRUE(w.Missing().empty());
    w.view->isScanBusy = nullptr;

    // The file arrives: MsgListRefresh 1 redraws the cell and its preview loads.
    w.Arrive(2);
    ASSERT_TRUE(PostWindowMessage(HandleOf(w.view), MsgListRefresh, 1, 2));
    QCoreApplication::processEvents();
    w.Repaint();
    EXPECT_EQ(w.view->ItemState(2), CDWGListView::kStateFinal);
    EXPECT_EQ(w.Missing(), (std::vector<int>{3}));

    // New paths start afresh.
    w.view->SetPaths({});
    EXPECT_EQ(w.view->GetItemCount(), 0);
    EXPECT_EQ(w.view->CachedPictures(), 0);
    EXPECT_EQ(w.view->ItemState(0), -1);
}

TEST(DwgListView, CacheStaysBoundedOverALongList) {
    GridWorld w(std::vector<Make>(300, Make::Preview));
    ASSERT_TRUE(w.Show());
    const int shown = w.view->LastVisibleItem() - w.view->FirstVisibleItem() + 1;
    int peak = 0;
    for (int step = 0; step < 40 && w.view->LastVisibleItem() < 299; ++step) {
        WheelAt(w.view, QPoint(50, 50), -120);
        w.Repaint();
        peak = std::max(peak, w.view->CachedPictures());
    }
    EXPECT_EQ(w.view->LastVisibleItem(), 299) << "the end is reached";
    EXPECT_TRUE(w.view->ScrollBar()->isVisible());
    EXPECT_LE(peak, std::max(48, 3 * shown));
    EXPECT_GE(w.view->CachedPictures(), shown);
    // Back at the top the dropped cells are read again (recycled), and they
    // still count as final.
    const int reads = w.view->PreviewReads();
    w.view->EnsureVisible(0);
    w.Repaint();
    EXPECT_EQ(w.view->FirstVisibleItem(), 0);
    EXPECT_GT(w.view->PreviewReads(), reads);
    EXPECT_EQ(w.view->ItemState(0), CDWGListView::kStateFinal);
}

TEST(DwgListView, MouseAndKeysPostCommandsToTheOwner) {
    GridWorld w({Make::Preview, Make::Missing, Make::Preview, Make::NoPreview, Make::Preview, Make::Preview});
    ASSERT_TRUE(w.Show());
    (void)w.Commands();

    ClickAt(w.view, w.view->IconRect(2).center());
    EXPECT_EQ(w.view->GetSelectedItem(), 2);
    EXPECT_EQ(w.Commands(), (std::vector<Recorded>{{MsgPanelCommand, 1, 2}, {MsgPanelCommand, 22, 2}}));

    DoubleClickAt(w.view, w.view->IconRect(4).center());
    std::vector<Recorded> got = w.Commands();
    EXPECT_NE(std::find(got.begin(), got.end(), Recorded{MsgPanelCommand, 3, 4}), got.end());
    DoubleClickAt(w.view, w.view->LabelRect(4).center());
    got = w.Commands();
    EXPECT_NE(std::find(got.begin(), got.end(), Recorded{MsgPanelCommand, 4, 4}), got.end());
    EXPECT_EQ(std::find(got.begin(), got.end(), Recorded{MsgPanelCommand, 3, 4}), got.end());

    // Right clicks: a menu for tried items only.
    ClickAt(w.view, w.view->IconRect(1).center(), Qt::RightButton);
    ClickAt(w.view, w.view->IconRect(3).center(), Qt::RightButton);
    ClickAt(w.view, w.view->IconRect(0).center(), Qt::RightButton);
    EXPECT_EQ(w.Commands(), (std::vector<Recorded>{{MsgPanelEvent, 8, 3}, {MsgPanelEvent, 8, 0}}));

    // A click beside the items clears the selection and tells nobody.
    ClickAt(w.view, QPoint(w.view->ItemRect(3).center().x(), w.view->ItemRect(5).bottom() + 20));
    EXPECT_EQ(w.view->GetSelectedItem(), -1);
    EXPECT_TRUE(w.Commands().empty());

    // Keys move the selection and tell the owner; the edges hold.
    w.view->SetSelectedItem(0);
    QTest::keyClick(w.view, Qt::Key_Down);
    EXPECT_EQ(w.view->GetSelectedItem(), 4);
    QTest::keyClick(w.view, Qt::Key_Down);
    EXPECT_EQ(w.view->GetSelectedItem(), 4);
    QTest::keyClick(w.view, Qt::Key_Right);
    EXPECT_EQ(w.view->GetSelectedItem(), 5);
    EXPECT_EQ(w.Commands(), (std::vector<Recorded>{{MsgPanelCommand, 1, 4}, {MsgPanelCommand, 1, 5}}));
}

TEST(DwgListView, NamesFitTheCell) {
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        // Grow a name of wide characters and narrow ones until it has the cell's width.
        QString exact;
        while (MeasureText(exact + QStringLiteral("D")) <= ScaleUnits(132)) exact += QStringLiteral("D");
        ASSERT_LE(MeasureText(exact), ScaleUnits(132));
        EXPECT_EQ(CDWGListView::FitName(exact), exact) << "a name that fits stands whole";
        const QString longer = QStringLiteral("画") + exact;
        const QString fitted = CDWGListView::FitName(longer);
        ASSERT_TRUE(fitted.endsWith(QStringLiteral("...")));
        EXPECT_TRUE(longer.startsWith(fitted.chopped(3)));
        EXPECT_LE(MeasureText(fitted.chopped(3)), ScaleUnits(132 - 5));
    }
    UseRate(1.0f);
    EXPECT_EQ(CDWGListView::TitleOf(u"/store/建筑/门.窗.dwg"), QStringLiteral("门.窗"));
    EXPECT_EQ(CDWGListView::TitleOf(u"/store/建筑/无扩展名"), QStringLiteral("无扩展名"));
    EXPECT_EQ(CDWGListView::TitleOf(u"单独"), QStringLiteral("单独"));
}

TEST(DwgListView, RendersArrivedMissingAndSelectedBoutiqueCells) {
    for (float rate : {1.0f, 1.5f}) {
        GridWorld w({Make::Preview, Make::PngPreview, Make::Missing, Make::NoPreview, Make::Preview, Make::Missing,
                     Make::Preview, Make::Missing},
                    rate);
        w.view->isBoutique = [](int item) { return item == 4 || item == 6; };
        ASSERT_TRUE(w.Show());
        w.view->RedrawItem(3);  // the second try: final page mark
        ClickAt(w.view, w.view->IconRect(4).center());
        w.Repaint();
        const QImage shot = Grab(w.view);
        SavePng(shot, QString::asprintf("thumbs_grid_rate%.1f.png", rate));

        // The selected boutique item: gold bar under its label, the crown on its picture.
        const QRect label = w.view->LabelRect(4);
        EXPECT_EQ(PixelAt(shot, label.center().x(), label.bottom() + 2), kBoutique);
        const QRect icon = w.view->IconRect(4);
        const QRect crown(icon.x() + ScaleUnits(12), icon.y() + ScaleUnits(7), ScaleUnits(16), ScaleUnits(16));
        EXPECT_TRUE(ContainsColour(shot, crown, kBoutique, 60)) << "the crown";
        // The frame of a fitted cell on every picture, placeholder or not.
        for (int i : {0, 2, 3})
            EXPECT_EQ(PixelAt(shot, w.view->IconRect(i).x(), w.view->IconRect(i).center().y()), kAccent) << i;
        // Placeholders A and B differ from each other and from a preview.
        const QImage a = shot.copy(w.view->IconRect(3)), b = shot.copy(w.view->IconRect(2));
        EXPECT_NE(a, b);
        EXPECT_NE(shot.copy(w.view->IconRect(0)), b);
        EXPECT_EQ(b, shot.copy(w.view->IconRect(5))) << "one spinner for every missing file";
    }
    UseRate(1.0f);
}

}  // namespace
}  // namespace marrowfin::test
