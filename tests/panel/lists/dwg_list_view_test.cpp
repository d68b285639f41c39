// The thumbnail grid: states and previews of the shown range and its
// read-ahead, the reports of missing files, the cache's bound, what the mouse
// and keys post, name fitting, and the cells drawn at two rates.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <algorithm>

#include "list_world.h"
#include "panel/model/panel_messages.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "skin/measure_text.h"
#include "skin/skin_scale.h"
#include "support/reference_picture.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

using Ints = std::vector<int>;

TEST(DwgListView, ShownRangeLoadsPreviewsReportsMissingFilesAndKeepsStates) {
    // 0 preview, 1 no preview, 2 missing, 3 cut download, 4 png preview, then previews; 25 missing out of view.
    std::vector<Make> kinds = {Make::Preview, Make::NoPreview, Make::Missing, Make::Cut, Make::PngPreview};
    kinds.resize(300, Make::Preview);
    kinds[25] = Make::Missing;
    GridWorld w(kinds);
    ASSERT_TRUE(w.Show());
    const int last = w.view->LastVisibleItem();
    EXPECT_EQ(last, 15) << "four columns, four rows, the fourth in part";
    const auto state = [&](int i) { return w.view->ItemState(i); };
    EXPECT_EQ(Ints({state(0), state(4), state(1), state(2), state(last + 1), state(2 * last + 1), state(2 * last + 2)}),
              Ints({CDWGListView::kStateFinal, CDWGListView::kStateFinal, CDWGListView::kStateTriedOnce,
                    CDWGListView::kStateFresh, CDWGListView::kStateFinal, CDWGListView::kStateFinal,
                    CDWGListView::kStateFresh}))
        << "a screen is read ahead, nothing beyond";
    EXPECT_FALSE(FileExists(w.paths[3])) << "a cut download is deleted";
    EXPECT_EQ(w.Missing(), Ints({2, 3})) << "only shown cells report, not the read-ahead's 25";
    const int reads = w.view->PreviewReads();
    EXPECT_EQ(reads, 2 * (last + 1) - 3);  // every present file once
    // A second look at the file without preview makes it final; loaded previews are not read again.
    w.view->RedrawItem(1);
    w.Repaint();
    w.view->RedrawItem(1);
    w.Repaint();
    EXPECT_EQ(state(1), CDWGListView::kStateFinal);
    EXPECT_EQ(w.view->PreviewReads(), reads + 1);
    // While the owner scans, shown cells report nothing; scrolled in, the missing 25 reports.
    (void)w.Missing();
    w.view->isScanBusy = [] { return true; };
    w.view->RedrawItem(2);
    w.Repaint();
    EXPECT_TRUE(w.Missing().empty());
    w.view->isScanBusy = nullptr;
    Wheel(w.view, QPoint(50, 50), -1);
    w.Repaint();
    EXPECT_EQ(w.Missing(), Ints({25}));
    // The file arrives: refresh 1 redraws the cell and its preview loads.
    Wheel(w.view, QPoint(50, 50), 1);
    w.Repaint();
    (void)w.Missing();
    w.Write(2, Make::Preview);
    ASSERT_TRUE(PostWindowMessage(HandleOf(w.view), MsgListRefresh, 1, 2));
    QCoreApplication::processEvents();
    w.Repaint();
    EXPECT_EQ(state(2), CDWGListView::kStateFinal);
    EXPECT_EQ(w.Missing(), Ints({3}));
    // Down to the end and back: the cache stays bounded; dropped cells are read again and stay final.
    int peak = 0;
    for (int step = 0; step < 40 && w.view->LastVisibleItem() < 299; ++step) {
        Wheel(w.view, QPoint(50, 50), -1);
        w.Repaint();
        peak = std::max(peak, w.view->CachedPictures());
    }
    EXPECT_EQ(w.view->LastVisibleItem(), 299);
    EXPECT_LE(peak, 48);
    const int before = w.view->PreviewReads();
    w.view->EnsureVisible(0);
    w.Repaint();
    EXPECT_GT(w.view->PreviewReads(), before);
    EXPECT_EQ(state(0), CDWGListView::kStateFinal);
    w.view->SetPaths({});
    EXPECT_EQ(w.view->CachedPictures() + w.view->GetItemCount(), 0);
}

TEST(DwgListView, MouseAndKeysPostCommandsToTheOwner) {
    GridWorld w({Make::Preview, Make::Missing, Make::Preview, Make::NoPreview, Make::Preview, Make::Preview});
    ASSERT_TRUE(w.Show());
    auto commands = [&] {
        (void)w.Missing();
        return std::exchange(w.commands, {});
    };
    (void)commands();
    using Posted = std::vector<RecordedMessage>;
    Click(w.view, w.view->IconRect(2).center());
    EXPECT_EQ(w.view->GetSelectedItem(), 2);
    EXPECT_EQ(commands(), (Posted{{MsgPanelCommand, 1, 2, {}}, {MsgPanelCommand, 22, 2, {}}}));
    // A double click on the picture inserts (3), on the label renames (4).
    DoubleClick(w.view, w.view->IconRect(4).center());
    Posted got = commands();
    EXPECT_NE(std::find(got.begin(), got.end(), RecordedMessage{MsgPanelCommand, 3, 4, {}}), got.end());
    DoubleClick(w.view, w.view->LabelRect(4).center());
    got = commands();
    EXPECT_NE(std::find(got.begin(), got.end(), RecordedMessage{MsgPanelCommand, 4, 4, {}}), got.end());
    EXPECT_EQ(std::find(got.begin(), got.end(), RecordedMessage{MsgPanelCommand, 3, 4, {}}), got.end());
    // Right clicks: a menu for tried items only; beside the items the selection clears quietly.
    for (int item : {1, 3, 0}) Click(w.view, w.view->IconRect(item).center(), Qt::RightButton);
    Click(w.view, QPoint(w.view->ItemRect(3).center().x(), w.view->ItemRect(5).bottom() + 20));
    EXPECT_EQ(w.view->GetSelectedItem(), -1);
    EXPECT_EQ(commands(), (Posted{{MsgPanelEvent, 8, 3, {}}, {MsgPanelEvent, 8, 0, {}}}));
    // Keys move the selection and tell the owner; the edges hold.
    w.view->SetSelectedItem(0);
    for (Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Right}) Key(w.view, key);
    EXPECT_EQ(w.view->GetSelectedItem(), 5);
    EXPECT_EQ(commands(), (Posted{{MsgPanelCommand, 1, 4, {}}, {MsgPanelCommand, 1, 5, {}}}));
}

TEST(DwgListView, NamesFitTheCellAndCellsDrawInTheirStates) {
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        // A name as wide as the cell stands whole; one character more ends in "..." inside the cell.
        QString exact;
        while (MeasureText(exact + QStringLiteral("D")) <= ScaleUnits(132)) exact += QStringLiteral("D");
        EXPECT_EQ(CDWGListView::FitName(exact), exact);
        const QString fitted = CDWGListView::FitName(QStringLiteral("画") + exact);
        ASSERT_TRUE(fitted.endsWith(QStringLiteral("...")));
        EXPECT_TRUE((QStringLiteral("画") + exact).startsWith(fitted.chopped(3)));
        EXPECT_LE(MeasureText(fitted.chopped(3)), ScaleUnits(132 - 5));

        // Arrived previews (BMP and PNG), missing files, the page mark of a file without preview, and a
        // selected boutique item.
        GridWorld w({Make::Preview, Make::PngPreview, Make::Missing, Make::NoPreview, Make::Preview, Make::Missing,
                     Make::Preview, Make::Missing},
                    rate);
        w.view->isBoutique = [](int item) { return item == 4 || item == 6; };
        ASSERT_TRUE(w.Show());
        w.view->RedrawItem(3);
        Click(w.view, w.view->IconRect(4).center());
        w.Repaint();
        MoveAway(&w.window);
        EXPECT_TRUE(MatchesReference(w.view->grab().toImage().convertToFormat(QImage::Format_RGB32), "panel/lists",
                                     rate == 1.0f ? "grid_1.0" : "grid_1.5"));
    }
    EXPECT_EQ(CDWGListView::TitleOf(u"/store/建筑/门.窗.dwg"), QStringLiteral("门.窗"));
    EXPECT_EQ(CDWGListView::TitleOf(u"单独"), QStringLiteral("单独"));
}

}  // namespace
}  // namespace marrowfin::test
