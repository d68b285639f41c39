// Keys through the pre-translate step, the focus that follows the mouse, the
// title drag, the click regions of the background, and a tree rebuilt beside
// the user.

#include <QKeyEvent>
#include <QMouseEvent>
#include <QThread>

#include "panel_world.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

void ShowActive(CBrindleDlg& panel) {
    panel.ShowPanel();
    panel.activateWindow();
    QApplication::setActiveWindow(&panel);
    Pump(10);
}

// A left-button press, move (with the button held) or release at a screen point.
void Mouse(CBrindleDlg& panel, QEvent::Type type, QPoint global) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(panel.mapFromGlobal(global)), QPointF(global), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &event);
}

// A key as the host's loop hands it to GaDllPretanslateMsg; one the panel
// leaves goes on to `receiver`. Answers whether the panel took it.
bool PressKey(CBrindleDlg& panel, QObject* receiver, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool release = false) {
    QKeyEvent event(release ? QEvent::KeyRelease : QEvent::KeyPress, key, modifiers);
    const bool consumed = panel.PreTranslateMessage(receiver, &event);
    if (!consumed && receiver) QCoreApplication::sendEvent(receiver, &event);
    return consumed;
}

}  // namespace

TEST(PanelInput, KeysFocusTheTitleBandAndTheBackgroundRegions) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    Pump(400);  // the first class-list tick has passed
    // Hidden, F5 is not the panel's; shown, it rebuilds the tree on a worker (what comes of it: the rebuild test).
    EXPECT_TRUE(!PressKey(panel, &panel, Qt::Key_F5) && !IsTimerRunning(panel.Handle(), kTimerBuildClassList));
    ShowActive(panel);
    EXPECT_TRUE(PressKey(panel, panel.m_classList, Qt::Key_F5) && panel.m_treeWaiting);
    ASSERT_TRUE(PumpUntil([&] { return !panel.m_treeWaiting; }));
    // On a search page F5 leaves it first.
    panel.GoToPage(PageSearch);
    EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_F5) && panel.m_nav.page != PageSearch);

    // Tab alone, Control alone and Control with another key go on.
    EXPECT_FALSE(PressKey(panel, panel.m_classList, Qt::Key_Tab) || PressKey(panel, panel.m_classList, Qt::Key_Tab, Qt::NoModifier, true) ||
                 PressKey(panel, &panel, Qt::Key_Control, Qt::ControlModifier) || PressKey(panel, &panel, Qt::Key_A, Qt::ControlModifier) ||
                 PressKey(panel, &panel, Qt::Key_Control, Qt::NoModifier, true));
    EXPECT_TRUE(panel.isVisible());
    // Tab held, then Control: the Control press hides, wherever the focus lies (Control held, then
    // Tab: the end-to-end test).
    panel.m_searchEdit->show();
    EXPECT_FALSE(PressKey(panel, panel.m_searchEdit, Qt::Key_Tab));
    EXPECT_TRUE(PressKey(panel, panel.m_searchEdit, Qt::Key_Control, Qt::ControlModifier) && !panel.isVisible());
    // Hiding forgets a Tab whose release went elsewhere (the host, once hidden).
    ShowActive(panel);
    EXPECT_TRUE(!PressKey(panel, &panel, Qt::Key_Control, Qt::ControlModifier) && panel.isVisible());
    PressKey(panel, &panel, Qt::Key_Control, Qt::NoModifier, true);

    // Enter outside the edit and Escape are taken and do nothing; Enter in
    // the edit runs the search (here of the collections).
    const int page = panel.m_nav.page;
    for (int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) EXPECT_TRUE(PressKey(panel, panel.m_classList, key));
    EXPECT_TRUE(panel.isVisible() && panel.m_nav.page == page);
    panel.GoToPage(PageCollectionSearch);
    panel.m_searchEdit->setText(QStringLiteral("阀门"));
    panel.setFocus();
    Pump(10);
    EXPECT_TRUE(PressKey(panel, &panel, Qt::Key_Return) && panel.m_search.lastSearch.isEmpty());
    panel.m_searchEdit->setFocus();
    Pump(10);
    EXPECT_TRUE(PressKey(panel, panel.m_searchEdit, Qt::Key_Return));
    EXPECT_TRUE(panel.m_search.lastSearch == QStringLiteral("阀门") && panel.m_nav.page == PageCollectionSearch);

    // The focus follows the mouse.
    panel.GoToPage(PageBrowse);
    panel.m_pThumbList->show();
    panel.m_searchEdit->show();
    panel.m_searchEdit->setFocus();
    Pump(10);
    // The move goes on to the child; the widget with the focus afterwards.
    auto focusAfterMove = [&](QWidget* child, QPoint at) {
        QMouseEvent move(QEvent::MouseMove, QPointF(at), QPointF(child->mapToGlobal(at)), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        EXPECT_FALSE(panel.PreTranslateMessage(child, &move));
        return QApplication::focusWidget();
    };
    EXPECT_EQ(focusAfterMove(&panel, QPoint(400, 10)), panel.m_searchEdit);  // the background leaves the focus
    EXPECT_EQ(focusAfterMove(panel.m_classList, QPoint(20, 20)), panel.m_classList);
    EXPECT_EQ(focusAfterMove(panel.m_pThumbList, QPoint(50, 50)), panel.m_pThumbList);
    panel.m_classList->hide();  // a hidden list takes none
    EXPECT_EQ(focusAfterMove(panel.m_classList, QPoint(20, 20)), panel.m_pThumbList);
    panel.m_classList->show();

    // Just below the title band nothing drags; in it the panel follows the
    // mouse until the button is let go.
    panel.move(100, 80);
    const QPoint start = panel.pos();
    const QPoint below = panel.mapToGlobal(QPoint(300, ScaleUnits(30)));
    const QPoint band = panel.mapToGlobal(QPoint(300, ScaleUnits(30) - 1));
    Mouse(panel, QEvent::MouseButtonPress, below);
    Mouse(panel, QEvent::MouseMove, below + QPoint(50, 40));
    Mouse(panel, QEvent::MouseButtonRelease, below + QPoint(50, 40));
    EXPECT_EQ(panel.pos(), start);
    Mouse(panel, QEvent::MouseButtonPress, band);
    std::vector<QPoint> moved;
    for (QPoint by : {QPoint(50, 30), QPoint(-20, 10)}) {
        Mouse(panel, QEvent::MouseMove, band + by);
        moved.push_back(panel.pos() - start);
    }
    Mouse(panel, QEvent::MouseButtonRelease, band + QPoint(-20, 10));
    Mouse(panel, QEvent::MouseMove, band + QPoint(200, 200));
    moved.push_back(panel.pos() - start);
    EXPECT_EQ(moved, (std::vector<QPoint>{{50, 30}, {-20, 10}, {-20, 10}}));
    Pump(1000);  // the class list is built and its first row switched to

    // The "全库搜索" box opens the search page; there a click in the box focuses the edit.
    Click(&panel, QPoint(ScaleUnits(127), ScaleUnits(90)));  // just outside the box
    EXPECT_EQ(panel.m_nav.page, PageBrowse);
    Click(&panel, QPoint(ScaleUnits(126), ScaleUnits(101)));
    ASSERT_EQ(panel.m_nav.page, PageSearch);
    Click(&panel, QPoint(ScaleUnits(13), ScaleUnits(41)));
    EXPECT_TRUE(panel.m_searchEdit->hasFocus() && panel.m_nav.page == PageSearch);
    // On a search page the picture is no region at all; back on the
    // browse page "下载图库"'s picture fetches the gallery only while its button shows.
    const QPoint picture(ScaleUnits(340), ScaleUnits(200));
    const long before = world.service.counters().get("/gallery/g_all").count;
    auto fetches = [&] { return world.service.counters().get("/gallery/g_all").count - before; };
    panel.Button(ControlId::DownloadGallery)->show();
    Click(&panel, picture);
    Pump(200);
    EXPECT_EQ(fetches(), 0);
    world.ClickButton(ControlId::SearchBack, 500);
    ASSERT_TRUE(world.WaitForSwitch());
    panel.m_nav.classIndex = 2;  // the sample's gallery
    panel.Button(ControlId::DownloadGallery)->hide();
    Click(&panel, picture);
    EXPECT_EQ(fetches(), 0);
    panel.Button(ControlId::DownloadGallery)->show();
    Click(&panel, picture);
    EXPECT_TRUE(PumpUntil([&] { return fetches() == 1; }));
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
        ASSERT_TRUE(PumpUntil([&] { return panel.m_nav.listNodes.size() > 2; }));
        const std::u16string firstClass = panel.m_nav.curClassPath;
        const std::u16string block = panel.m_nav.listNodes.At(store, 2)->Path();
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
        ASSERT_TRUE(PumpUntil([&] { return panel.m_nav.curClassPath != firstClass && !panel.m_nav.listNodes.empty(); }));
        world.ClickButton(2080, 400);
        ASSERT_TRUE(PumpUntil([&] { return panel.m_nav.curClassPath == firstClass && panel.m_nav.listNodes.size() > 2; }));
        EXPECT_TRUE(panel.m_treeWaiting);

        // The new tree waits in the queue; a double-click and a selection come behind it.
        // Waited for without turning the loop, so that the panel cannot take it yet.
        for (int i = 0; i < 500 && !TreeUpdatesWaiting(store); ++i) QThread::msleep(10);
        ASSERT_TRUE(TreeUpdatesWaiting(store));
        const uint64_t epoch = store.treeEpoch;
        PostWindowMessage(panel.Handle(), MsgPanelCommand, 3, 2);
        PostWindowMessage(panel.Handle(), MsgPanelCommand, 1, 2);
        ASSERT_TRUE(PumpUntil([&] { return !panel.m_treeWaiting; }));
        Pump(50);
        EXPECT_TRUE(store.treeEpoch > epoch && WaitForReleases());  // the old galleries are freed by now
        // Both commands found the block in the new tree.
        const GalleryNode* fresh = panel.m_nav.listNodes.At(store, 2);
        ASSERT_NE(fresh, nullptr);
        EXPECT_EQ(fresh, FindBlockByPath(store.root, block, true));
        EXPECT_EQ(panel.m_nav.selectedName, QString::fromStdU16String(fresh->name));
        ASSERT_EQ(world.host.Requests(2, 4).size(), 1u);
        EXPECT_EQ(world.host.Requests(2, 4)[0].text, block);
    }
}
