// Keys through the pre-translate step, the focus that follows the mouse, the
// title drag and the click regions of the background.

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QRegion>

#include "net/download_queue.h"
#include "panel_world.h"
#include "store/gallery_tree.h"
#include "store/tree_update.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

void ShowActive(CBrindleDlg& panel) {
    panel.ShowPanel();
    panel.activateWindow();
    QApplication::setActiveWindow(&panel);
    Pump();
}

void MoveOver(CBrindleDlg& panel, QWidget* child, QPoint at) {
    QMouseEvent move(QEvent::MouseMove, QPointF(at), QPointF(panel.mapToGlobal(child->mapTo(&panel, at))),
                     Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    EXPECT_FALSE(panel.PreTranslateMessage(child, &move));
}

// A left-button press, move (with the button held) or release at a screen point.
void Mouse(CBrindleDlg& panel, QEvent::Type type, QPoint global) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(panel.mapFromGlobal(global)), QPointF(global), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &event);
}

}  // namespace

TEST(PanelInput, F5RebuildsOnlyWhileVisible) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    const WindowHandle self = panel.Handle();
    Pump(400);  // the first class-list tick has passed
    ASSERT_FALSE(IsTimerRunning(self, kTimerBuildClassList));
    auto trees = [&] { return world.service.counters().get("/gallery/g_all_s").count; };
    const long before = trees();

    // Hidden: the key is not the panel's.
    EXPECT_FALSE(PressKey(panel, &panel, Qt::Key_F5));
    EXPECT_FALSE(IsTimerRunning(self, kTimerBuildClassList));
    EXPECT_EQ(trees(), before);

    ShowActive(panel);
    EXPECT_TRUE(PressKey(panel, panel.m_classList, Qt::Key_F5));
    EXPECT_TRUE(panel.m_treeWaiting);  // rebuilt on a worker; its arrival rebuilds the class list
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_treeWaiting; }));
    EXPECT_EQ(trees(), before + 1);
    EXPECT_TRUE(panel.isVisible());

    // On a search page F5 leaves it first.
    panel.GoToPage(PageSearch);
    ASSERT_EQ(panel.m_page, PageSearch);
    EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_F5));
    EXPECT_NE(panel.m_page, PageSearch);
}

TEST(PanelInput, ControlTabHidesWhileEnterAndEscapeNeverClose) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    ShowActive(panel);
    {
        SCOPED_TRACE("Control and Tab");
        // Tab alone goes on to the normal processing.
        EXPECT_FALSE(PressKey(panel, panel.m_classList, Qt::Key_Tab));
        EXPECT_FALSE(ReleaseKey(panel, panel.m_classList, Qt::Key_Tab));
        EXPECT_TRUE(panel.isVisible());
        // Control alone, and Control with another key after Tab was released.
        EXPECT_FALSE(PressKey(panel, &panel, Qt::Key_Control, Qt::ControlModifier));
        EXPECT_FALSE(PressKey(panel, &panel, Qt::Key_A, Qt::ControlModifier));
        EXPECT_FALSE(ReleaseKey(panel, &panel, Qt::Key_Control));
        EXPECT_TRUE(panel.isVisible());

        // Control held, then Tab: the Tab press hides.
        EXPECT_FALSE(PressKey(panel, &panel, Qt::Key_Control, Qt::ControlModifier));
        EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_Tab, Qt::ControlModifier));
        EXPECT_FALSE(panel.isVisible());
        ReleaseKey(panel, &panel, Qt::Key_Tab, Qt::ControlModifier);
        ReleaseKey(panel, &panel, Qt::Key_Control);

        // Tab held, then Control: the Control press hides, wherever the focus lies.
        ShowActive(panel);
        panel.m_searchEdit->show();
        EXPECT_FALSE(PressKey(panel, panel.m_searchEdit, Qt::Key_Tab));
        EXPECT_TRUE(PressKey(panel, panel.m_searchEdit, Qt::Key_Control, Qt::ControlModifier));
        EXPECT_FALSE(panel.isVisible());

        // Hiding forgets a Tab whose release went elsewhere (the host, once hidden).
        ShowActive(panel);
        EXPECT_FALSE(PressKey(panel, &panel, Qt::Key_Control, Qt::ControlModifier));
        EXPECT_TRUE(panel.isVisible());
        ReleaseKey(panel, &panel, Qt::Key_Control);
    }
    SCOPED_TRACE("Enter and Escape");
    const int page = panel.m_page;
    // Enter outside the edit: consumed, nothing runs.
    EXPECT_TRUE(PressKey(panel, panel.m_classList, Qt::Key_Return));
    EXPECT_TRUE(PressKey(panel, panel.m_classList, Qt::Key_Enter));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.m_page, page);
    EXPECT_EQ(panel.m_searchState, 0);
    EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_Escape));
    EXPECT_TRUE(panel.isVisible());

    // Enter in the edit runs the search (here the search of the collections),
    // elsewhere it does not.
    panel.GoToPage(PageCollectionSearch);
    ASSERT_EQ(panel.m_page, PageCollectionSearch);
    panel.m_searchEdit->setText(QStringLiteral("阀门"));
    panel.setFocus();
    Pump();
    ASSERT_FALSE(panel.m_searchEdit->hasFocus());
    EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_Return));
    EXPECT_TRUE(panel.m_lastSearch.isEmpty());
    panel.m_searchEdit->setFocus();
    Pump();
    ASSERT_TRUE(panel.m_searchEdit->hasFocus());
    EXPECT_TRUE(PressKey(panel, panel.m_searchEdit, Qt::Key_Return));
    EXPECT_EQ(panel.m_lastSearch, QStringLiteral("阀门"));
    EXPECT_FALSE(panel.m_searchUntouched);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.m_page, PageCollectionSearch);
}

TEST(PanelInput, MouseMoveFocusesTheListUnderItAndTheTitleBandDrags) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    ShowActive(panel);
    {
        SCOPED_TRACE("focus");
        panel.m_searchEdit->show();
        panel.m_searchEdit->setFocus();
        Pump();
        ASSERT_TRUE(panel.m_searchEdit->hasFocus());
        // Over the background: the focus stays.
        MoveOver(panel, &panel, QPoint(400, 10));
        EXPECT_TRUE(panel.m_searchEdit->hasFocus());
        MoveOver(panel, panel.m_classList, QPoint(20, 20));
        EXPECT_TRUE(panel.m_classList->hasFocus());
        MoveOver(panel, panel.m_pThumbList, QPoint(50, 50));
        EXPECT_TRUE(panel.m_pThumbList->hasFocus());
        // A hidden list takes no focus.
        panel.m_classList->hide();
        MoveOver(panel, panel.m_classList, QPoint(20, 20));
        EXPECT_TRUE(panel.m_pThumbList->hasFocus());
    }
    SCOPED_TRACE("drag");
    panel.move(100, 80);
    const QPoint start = panel.pos();
    // Just below the band: no drag.
    Mouse(panel, QEvent::MouseButtonPress, panel.mapToGlobal(QPoint(300, ScaleUnits(30))));
    Mouse(panel, QEvent::MouseMove, panel.mapToGlobal(QPoint(350, ScaleUnits(30) + 40)));
    Mouse(panel, QEvent::MouseButtonRelease, panel.mapToGlobal(QPoint(350, ScaleUnits(30) + 40)));
    EXPECT_EQ(panel.pos(), start);

    // In the band: the panel follows the mouse until the button is let go.
    const QPoint grab = panel.mapToGlobal(QPoint(300, ScaleUnits(30) - 1));
    Mouse(panel, QEvent::MouseButtonPress, grab);
    Mouse(panel, QEvent::MouseMove, grab + QPoint(50, 30));
    EXPECT_EQ(panel.pos(), start + QPoint(50, 30));
    Mouse(panel, QEvent::MouseMove, grab + QPoint(-20, 10));
    EXPECT_EQ(panel.pos(), start + QPoint(-20, 10));
    Mouse(panel, QEvent::MouseButtonRelease, grab + QPoint(-20, 10));
    const QPoint dropped = panel.pos();
    Mouse(panel, QEvent::MouseMove, grab + QPoint(200, 200));
    EXPECT_EQ(panel.pos(), dropped);
}

TEST(PanelInput, SearchBoxClickRegionsAndItsRepaintOnFocus) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    ShowActive(panel);
    ASSERT_EQ(panel.m_page, PageBrowse);

    struct PaintSpy : QObject {
        QRegion painted;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint) painted += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
    } spy;
    const QRect box = ScaleRect(11, 39, 689, 65);
    auto focusRound = [&] {
        Pump(50);
        spy.painted = QRegion();
        panel.installEventFilter(&spy);
        panel.m_searchEdit->setFocus();
        Pump(50);
        panel.setFocus();
        Pump(50);
        panel.removeEventFilter(&spy);
        return spy.painted;
    };
    // The edit's focus repaints the box on search pages only.
    panel.m_searchEdit->show();
    EXPECT_FALSE(focusRound().intersects(QRect(box.left(), box.top(), 20, box.height())));

    // Just outside the "全库搜索" box: nothing; its corners: the search page.
    for (QPoint at : {QPoint(127, 90), QPoint(60, 102), QPoint(12, 90)})
        ClickPanel(panel, QPoint(ScaleUnits(at.x()), ScaleUnits(at.y())));
    EXPECT_EQ(panel.m_page, PageBrowse);
    ClickPanel(panel, QPoint(ScaleUnits(126), ScaleUnits(101)));
    ASSERT_EQ(panel.m_page, PageSearch);
    EXPECT_TRUE(focusRound().contains(box));

    // On the search page the box region no longer switches, the search box focuses the edit.
    panel.setFocus();
    Pump();
    ASSERT_FALSE(panel.m_searchEdit->hasFocus());
    ClickPanel(panel, QPoint(ScaleUnits(600), ScaleUnits(66)));
    EXPECT_FALSE(panel.m_searchEdit->hasFocus());
    ClickPanel(panel, QPoint(ScaleUnits(13), ScaleUnits(41)));
    EXPECT_TRUE(panel.m_searchEdit->hasFocus());
    EXPECT_EQ(panel.m_page, PageSearch);
}

TEST(PanelInput, DownloadPictureActsOnlyWhileItsButtonShows) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    ShowActive(panel);
    Pump(1000);  // the class list is built and its first row switched to
    ASSERT_GE(panel.m_classList->GetItemCount(), 3);
    panel.m_classIndex = 2;  // the sample's gallery
    auto fetches = [&] { return world.service.counters().get("/gallery/g_all").count; };
    const long before = fetches();
    const QPoint picture(ScaleUnits(340), ScaleUnits(200));

    panel.Button(2151)->hide();
    ClickPanel(panel, picture);
    EXPECT_EQ(fetches(), before);

    panel.Button(2151)->show();
    ClickPanel(panel, QPoint(ScaleUnits(332), ScaleUnits(200)));  // just left of the picture
    ClickPanel(panel, QPoint(ScaleUnits(340), ScaleUnits(259)));  // just below it
    EXPECT_EQ(fetches(), before);
    ClickPanel(panel, picture);
    EXPECT_TRUE(PumpUntil([&] { return fetches() == before + 1; }));

    // On a search page the picture is no region at all.
    Pump(200);
    panel.GoToPage(PageSearch);
    panel.Button(2151)->show();
    ClickPanel(panel, picture);
    Pump(200);
    EXPECT_EQ(fetches(), before + 1);
}

// A rebuild of the tree (F5, or the host's "UpdateShow") runs beside the
// user: the panel keeps working on the tree in hand, and commands queued
// behind the new tree's arrival read the new nodes, never freed ones.
TEST(PanelInput, ARebuildRunsBesideTheUserAndQueuedCommandsReadOnlyLiveNodes) {
    for (const bool byKey : {true, false}) {
        SCOPED_TRACE(byKey ? "F5" : "UpdateShow");
        SampleWorld world;
        CBrindleDlg& panel = *world.panel;
        GalleryStore& store = *panel.m_store;
        panel.hostWindow = HandleOf(&world.host);
        ShowActive(panel);
        ASSERT_TRUE(PumpUntil([&] { return panel.m_classList->GetItemCount() >= 3; }));
        ASSERT_TRUE(world.OpenRow(2));
        ASSERT_TRUE(PumpUntil([&] { return panel.m_listNodes.size() > 2; }));
        const std::u16string firstClass = panel.m_curClassPath;
        const std::u16string block = panel.m_listNodes.At(store, 2)->Path();
        ASSERT_TRUE(CreateDirectories(firstClass));
        ASSERT_TRUE(WriteFileAtomic(block, std::string(kMinBlockFileSize, 'd')));

        world.service.faults().set("/gallery/g_all_s", {.latencyMs = 700});
        if (byKey) {
            ASSERT_TRUE(PressKey(panel, panel.m_classList, Qt::Key_F5));
        } else {
            panel.showMode = u"UpdateShow";
            panel.RebuildTree();
        }
        ASSERT_TRUE(panel.m_treeWaiting);
        // Meanwhile the user opens the second class: it lists from the tree in hand.
        world.ClickButton(2081, 400);
        ASSERT_TRUE(PumpUntil([&] { return panel.m_curClassPath != firstClass && !panel.m_listNodes.empty(); }));
        world.ClickButton(2080, 400);
        ASSERT_TRUE(PumpUntil([&] { return panel.m_curClassPath == firstClass && panel.m_listNodes.size() > 2; }));
        EXPECT_TRUE(panel.m_treeWaiting);

        // The new tree waits in the queue; a double-click and a selection come behind it.
        ASSERT_TRUE(PumpUntil([&] { return TreeUpdatesWaiting(store); }, 5000));
        const uint64_t epoch = store.treeEpoch;
        PostWindowMessage(panel.Handle(), MsgPanelCommand, 3, 2);
        PostWindowMessage(panel.Handle(), MsgPanelCommand, 1, 2);
        ASSERT_TRUE(PumpUntil([&] { return !panel.m_treeWaiting; }));
        Pump(50);
        EXPECT_GT(store.treeEpoch, epoch);
        EXPECT_TRUE(WaitForReleases());  // the old galleries are freed by now
        // Both commands found the block in the new tree.
        const GalleryNode* fresh = panel.m_listNodes.At(store, 2);
        ASSERT_NE(fresh, nullptr);
        EXPECT_EQ(fresh, FindBlockByPath(store.root, block, true));
        EXPECT_EQ(panel.m_selectedName, QString::fromStdU16String(fresh->name));
        ASSERT_EQ(world.host.Requests(2, 4).size(), 1u);
        EXPECT_EQ(world.host.Requests(2, 4)[0].text, block);
    }
}
