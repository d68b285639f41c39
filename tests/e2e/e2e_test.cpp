// The library driven through its exports by a host main window, against the
// stand-in service. The panel is one per process: CTest runs each case in a
// process of its own, and run together they go in this order, the first one
// needing a process without a panel.

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QLineEdit>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "e2e_world.h"
#include "marrowfin/marrowfin.h"

using namespace marrowfin::test;
namespace fs = std::filesystem;

namespace {

fs::path StoreRoot() { return fs::path(World().home->documentsDir()) / "Orsolen"; }

class EndToEnd : public ::testing::Test {
protected:
    RecordingHost& host = *World().host;
};

// The cases after the first two start from the panel as `show` leaves it.
class ShownPanelCase : public EndToEnd {
protected:
    void SetUp() override {
        panel = ShownPanel();
        ASSERT_NE(panel, nullptr);
    }
    QWidget* panel = nullptr;
};

}  // namespace

TEST_F(EndToEnd, NothingIsMadeBeforeAPanelIsAskedFor) {
    EXPECT_EQ(GetGallery(), 0u);
    // Questions and orders that never make a panel.
    EXPECT_EQ(IsBlkBoutique(u"/home/u/Documents/Orsolen/门窗/推拉门/a.dwg"), 0);
    EXPECT_EQ(IsBlkBoutique(nullptr), 0);
    EXPECT_EQ(IsDLLHwnd(World().hostHandle), 0);
    EXPECT_EQ(IsDLLHwnd(0), 0);
    HideGallery();
    CloseGallery();
    QKeyEvent f5(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
    MarrowfinMsg message{&host, &f5};
    EXPECT_EQ(GaDllPretanslateMsg(&message), 0);
    EXPECT_EQ(GaDllPretanslateMsg(nullptr), 0);
    // Orders to a window that is no panel answer 0 and reach nobody.
    EXPECT_EQ(MarrowfinSendCopyData(World().hostHandle, 412, u"\\x"), 0);
    EXPECT_EQ(MarrowfinSendPanelControl(World().hostHandle, 3, static_cast<intptr_t>(World().hostHandle)), 0);
    EXPECT_EQ(MarrowfinSendCopyData(0, 416, u"1&^&t"), 0);
    Spin(50);
    EXPECT_EQ(GetGallery(), 0u);
    EXPECT_EQ(FindPanel(), nullptr);
    EXPECT_TRUE(host.records.empty());
    EXPECT_TRUE(host.isVisible());
    // CloseGallery without a panel saves nothing.
    EXPECT_FALSE(fs::exists(StoreRoot() / "RecentlyUse.xml"));
}

TEST_F(EndToEnd, ShowMakesOnePanelUnderTheMainWindowAndAsksForTheChannel) {
    ASSERT_TRUE(WaitForFirstTree(15000));
    show();
    const uint64_t handle = GetGallery();
    ASSERT_NE(handle, 0u);
    QWidget* panel = ShownPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->parentWidget(), &host);  // `show` passes the main window
    EXPECT_EQ(panel->windowTitle(), QStringLiteral("Ombrel_Panel"));
    ASSERT_EQ(host.Requests(MARROWFIN_REQUEST_CHANNEL).size(), 1u);
    EXPECT_EQ(IsDLLHwnd(handle), 1);
    EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(FindChild(panel, "marrowfin::CClassListCtrl"))), 1);
    EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(FindChild(panel, "marrowfin::CDWGListView"))), 1);
    EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(FindChild(panel, "marrowfin::CSearchListCtrl"))), 1);
    EXPECT_EQ(IsDLLHwnd(World().hostHandle), 0);
    EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(FindButton(panel, QStringLiteral("反馈")))), 0);
    // A second show and ShowGallery reuse it.
    show();
    ShowGallery(u"", u"");
    EXPECT_EQ(GetGallery(), handle);
    EXPECT_EQ(host.Requests(MARROWFIN_REQUEST_CHANNEL).size(), 1u);
    // The first class list comes with a timer.
    Spin(700);
    RenderPanel(panel, QStringLiteral("e2e_start_page_rate_1.0"));
}

TEST_F(ShownPanelCase, AHiddenPanelAnswersNothingThroughTheLoop) {
    HideGallery();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_Escape), 0);
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_F5), 0);
    // A message that isn't even a message: not read while hidden.
    MarrowfinMsg junk{reinterpret_cast<void*>(0x10), reinterpret_cast<void*>(0x20)};
    EXPECT_EQ(GaDllPretanslateMsg(&junk), 0);
    show();
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(ShownPanelCase, KeysOfThePanelAreTakenAsThePanelDefinesThem) {
    QWidget* classList = FindChild(panel, "marrowfin::CClassListCtrl");
    ASSERT_NE(classList, nullptr);
    const long treeRequests = TreeRequests();

    // Escape and Enter are consumed and close nothing; other keys pass.
    EXPECT_EQ(PreTranslateKey(classList, Qt::Key_Escape), 1);
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_Return), 1);
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_Enter), 1);
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_A), 0);
    EXPECT_TRUE(panel->isVisible());
    // Events of the host's own windows are not the panel's.
    EXPECT_EQ(PreTranslateKey(World().host, Qt::Key_Escape), 0);

    // F5 rebuilds the tree on this thread: the service is asked before it returns.
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_F5), 1);
    EXPECT_GT(TreeRequests(), treeRequests);
    EXPECT_TRUE(panel->isVisible());

    // Tab alone is the dialog's own; real key events through the host's loop.
    QTest::keyClick(panel, Qt::Key_Tab);
    EXPECT_TRUE(panel->isVisible());
    // Escape through the loop does not close it either.
    QTest::keyClick(classList, Qt::Key_Escape);
    EXPECT_TRUE(panel->isVisible());
    // Control+Tab hides it, whatever child has the focus.
    QTest::keyClick(classList, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_NE(GetGallery(), 0u);
    show();
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(ShownPanelCase, HostOrdersActOnlyForTheHostsWindow) {
    const uint64_t handle = GetGallery();
    RecordingHost stranger;
    const uint64_t strangerHandle = MarrowfinWindowOf(&stranger);

    EXPECT_EQ(MarrowfinSendPanelControl(handle, 3, static_cast<intptr_t>(strangerHandle)), 0);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 2, 0), 0);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 3, static_cast<intptr_t>(World().hostHandle)), 0);
    EXPECT_FALSE(panel->isVisible());

    // Attaching another host shows the panel on top; the old host's order then does nothing.
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 1, static_cast<intptr_t>(strangerHandle)), 0);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(panel->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 3, static_cast<intptr_t>(World().hostHandle)), 0);
    EXPECT_TRUE(panel->isVisible());
    // The statistics button now notifies the new host.
    QWidget* statistics = FindButton(panel, QStringLiteral("统计"));
    ASSERT_NE(statistics, nullptr);
    QTest::mouseClick(statistics, Qt::LeftButton);
    Spin(50);
    ASSERT_EQ(stranger.Notices(MARROWFIN_NOTICE_STATISTICS).size(), 1u);
    EXPECT_EQ(stranger.Notices(MARROWFIN_NOTICE_STATISTICS)[0].wParam, handle);
    EXPECT_TRUE(host.Notices(MARROWFIN_NOTICE_STATISTICS).empty());
    // Back to the main window.
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 1, static_cast<intptr_t>(World().hostHandle)), 0);
}

TEST_F(ShownPanelCase, CollectionLocationWithoutCollectionsAnswersOneAndDoesNothing) {
    host.records.clear();
    const QImage before = RenderPanel(panel, QStringLiteral("e2e_before_411"));
    EXPECT_EQ(MarrowfinSendCopyData(GetGallery(), 411, u"\\门窗\\推拉门"), 1);
    Spin(600);  // a class switch would have come by now
    EXPECT_EQ(RenderPanel(panel, QStringLiteral("e2e_after_411")), before);
    EXPECT_TRUE(host.records.empty());
    EXPECT_TRUE(panel->isVisible());
    // The codes without a defined answer answer 0.
    EXPECT_EQ(MarrowfinSendCopyData(GetGallery(), 413, u""), 0);
    EXPECT_EQ(MarrowfinSendCopyData(GetGallery(), 999, u"x"), 0);
}

TEST_F(ShownPanelCase, FeedbackWaitsForTheHostAndUserAndTokenEndIt) {
    host.records.clear();
    const uint64_t handle = GetGallery();
    bool visibleDuringWait = true;
    bool enabledDuringWait = true;
    host.onEvent = [&](const RecordingHost::Record& r) {
        if (r.message != MARROWFIN_GALLERY_HOST_NOTICE) return;
        if (r.lParam == MARROWFIN_NOTICE_FEEDBACK) {
            visibleDuringWait = panel->isVisible();
            enabledDuringWait = panel->isEnabled();
            // A number of -2 keeps the panel waiting.
            EXPECT_EQ(MarrowfinSendCopyData(handle, 416, u"-2&^&still"), 0);
        }
        // The first reminder: the host hands a token with an empty number
        // (user 1), which ends the wait at the next tick.
        if (r.lParam == MARROWFIN_NOTICE_FEEDBACK_WAITING) {
            EXPECT_EQ(MarrowfinSendCopyData(handle, 416, u"&^&tok-e2e"), 0);
        }
    };
    QWidget* feedback = FindButton(panel, QStringLiteral("反馈"));
    ASSERT_NE(feedback, nullptr);
    QElapsedTimer clock;
    clock.start();
    QTest::mouseClick(feedback, Qt::LeftButton);  // returns when the wait ends
    const qint64 waited = clock.elapsed();
    host.onEvent = nullptr;
    ASSERT_EQ(host.Notices(MARROWFIN_NOTICE_FEEDBACK).size(), 1u);
    EXPECT_EQ(host.Notices(MARROWFIN_NOTICE_FEEDBACK)[0].wParam, handle);
    // Exactly one reminder: on the third 800 ms tick, and the wait ended on the fourth.
    EXPECT_EQ(host.Notices(MARROWFIN_NOTICE_FEEDBACK_WAITING).size(), 1u);
    EXPECT_GE(waited, 3000);
    EXPECT_FALSE(visibleDuringWait);
    EXPECT_FALSE(enabledDuringWait);
    EXPECT_TRUE(panel->isEnabled());
    EXPECT_EQ(host.records.front().lParam, MARROWFIN_NOTICE_FEEDBACK);
    show();
}

TEST_F(ShownPanelCase, PanelsOfTheSampleRenderAtRateOne) {
    show();
    // The recent list is empty on a fresh home.
    ClickClassRow(panel, 0);
    Spin(600);
    RenderPanel(panel, QStringLiteral("e2e_recent_empty_rate_1.0"));
    // The first gallery of the shown list, by its route.
    ShowGallery((u"\\" + World().galleries[0]).c_str(), u"");
    Spin(600);
    RenderPanel(panel, QStringLiteral("e2e_gallery_rate_1.0"));
    // The collections entry while nobody is signed in: the panel asks the
    // host to sign in (hiding itself meanwhile); nobody does, so no token is
    // asked for and the panel goes back.
    MarrowfinSendPanelControl(GetGallery(), 6, 0);  // whoever an earlier case signed in
    Spin(500);
    host.records.clear();
    host.userNumber = 0;
    bool hiddenForSignIn = false;
    host.onEvent = [&](const RecordingHost::Record& r) {
        if (r.message != MARROWFIN_GALLERY_HOST_REQUEST || r.wParam != MARROWFIN_REQUEST_SIGN_IN) return;
        hiddenForSignIn = !panel->isVisible();
        RenderPanel(panel, QStringLiteral("e2e_collections_signed_out_rate_1.0"));
    };
    MarrowfinSendPanelControl(GetGallery(), 0, 0);
    EXPECT_TRUE(SpinUntil([&] { return !host.Requests(MARROWFIN_REQUEST_SIGN_IN).empty(); }, 3000));
    Spin(300);
    EXPECT_TRUE(hiddenForSignIn);
    EXPECT_EQ(host.RequestOrder(), (std::vector<uintptr_t>{MARROWFIN_REQUEST_SIGN_IN}));
    EXPECT_TRUE(panel->isVisible());
    RenderPanel(panel, QStringLiteral("e2e_collections_refused_rate_1.0"));
    // Signed in as a real user: the token follows at once.
    host.records.clear();
    host.userNumber = 42;
    host.onEvent = nullptr;
    MarrowfinSendPanelControl(GetGallery(), 0, 0);
    EXPECT_TRUE(SpinUntil([&] { return !host.Requests(MARROWFIN_REQUEST_TOKEN).empty(); }, 3000));
    EXPECT_EQ(host.RequestOrder(), (std::vector<uintptr_t>{MARROWFIN_REQUEST_SIGN_IN, MARROWFIN_REQUEST_TOKEN}));
    Spin(600);
    RenderPanel(panel, QStringLiteral("e2e_collections_signed_in_rate_1.0"));
    // Signing out again leaves the collections (through the class-switch timer).
    MarrowfinSendPanelControl(GetGallery(), 6, 0);
    Spin(600);
    show();
}

TEST_F(ShownPanelCase, SearchFromTheHostShowsTheSearchPage) {
    HideGallery();
    SearchBrindleRes(u"门", u"YL");
    EXPECT_TRUE(panel->isVisible());
    auto* edit = qobject_cast<QLineEdit*>(FindChild(panel, "QLineEdit"));
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(edit->isVisible());
    EXPECT_EQ(edit->text(), QStringLiteral("门"));
    Spin(800);
    RenderPanel(panel, QStringLiteral("e2e_search_rate_1.0"));
    // A location from the host leaves the search page again.
    EXPECT_EQ(MarrowfinSendCopyData(GetGallery(), 412, (u"\\" + World().galleries[0]).c_str()), 1);
    EXPECT_FALSE(edit->isVisible());
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(ShownPanelCase, CloseGallerySavesTheListsAndKeepsThePanel) {
    const uint64_t handle = GetGallery();
    const fs::path recent = StoreRoot() / "RecentlyUse.xml";
    fs::remove(recent);
    fs::create_directories(StoreRoot() / "search" / "deep");
    std::ofstream(StoreRoot() / "search" / "deep" / "x.dwg") << "x";
    CloseGallery();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(GetGallery(), handle);
    EXPECT_TRUE(fs::exists(recent));
    EXPECT_FALSE(fs::exists(StoreRoot() / "search"));
    // Each shown gallery has its common-use list.
    for (int i = 0; i < 2; ++i) {
        const std::string name = QString::fromStdU16String(World().galleries[i]).toStdString();
        EXPECT_TRUE(fs::exists(StoreRoot() / name / "CommonUse.xml")) << name;
    }
    // Hidden, so the loop passes everything again.
    EXPECT_EQ(PreTranslateKey(panel, Qt::Key_Escape), 0);
    show();
    EXPECT_EQ(GetGallery(), handle);
}
