// A fresh process whose first call is ShowGallery with the mode "UpdateShow",
// at the scale of 1.5; then the panel's pages rendered at that scale.

#include <gtest/gtest.h>

#include <QApplication>
#include <filesystem>

#include "e2e_world.h"
#include "marrowfin/marrowfin.h"

using namespace marrowfin::test;

TEST(UpdateShow, AFreshPanelHidesAndTheTreeIsRebuiltOnTheCallersThread) {
    ASSERT_TRUE(WaitForFirstTree(15000));
    Spin(200);  // the first synchronisation's thread has ended
    EXPECT_EQ(GetGallery(), 0u);
    const long before = TreeRequests();
    ShowGallery(u"", u"UpdateShow");
    // Counted before any event ran: the rebuild happened inside the call.
    EXPECT_GT(TreeRequests(), before);
    ASSERT_NE(GetGallery(), 0u);
    QWidget* panel = FindPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->parentWidget(), nullptr);  // only `show` hangs it under the main window
    Spin(400);
    EXPECT_FALSE(panel->isVisible());
    // The host's channel was asked once, during the start-up.
    EXPECT_EQ(World().host->Requests(MARROWFIN_REQUEST_CHANNEL).size(), 1u);
    // The mode stays until the host clears it: copy-data 413 and control 4.
    EXPECT_EQ(MarrowfinSendPanelControl(GetGallery(), 4, static_cast<intptr_t>(World().hostHandle)), 0);
}

TEST(UpdateShow, PanelsRenderAtRateOneAndAHalf) {
    ASSERT_TRUE(WaitForFirstTree(15000));
    ShowGallery(u"", u"");
    QWidget* panel = FindPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->width(), static_cast<int>(755 * 1.5f));
    Spin(700);
    RenderPanel(panel, QStringLiteral("e2e_start_page_rate_1.5"));
    ClickClassRow(panel, 0);
    Spin(600);
    RenderPanel(panel, QStringLiteral("e2e_recent_empty_rate_1.5"));
    ShowGallery((u"\\" + World().galleries[0]).c_str(), u"");
    Spin(600);
    RenderPanel(panel, QStringLiteral("e2e_gallery_rate_1.5"));
    // The collections entry while signed out, as it stands when the panel
    // asks the host to sign in; the host's refusal takes the panel back.
    RecordingHost& host = *World().host;
    host.userNumber = 0;
    host.onEvent = [panel](const RecordingHost::Record& r) {
        if (r.message == MARROWFIN_GALLERY_HOST_REQUEST && r.wParam == MARROWFIN_REQUEST_SIGN_IN)
            RenderPanel(panel, QStringLiteral("e2e_collections_signed_out_rate_1.5"));
    };
    MarrowfinSendPanelControl(GetGallery(), 0, 0);
    EXPECT_TRUE(SpinUntil([&] { return !host.Requests(MARROWFIN_REQUEST_SIGN_IN).empty(); }, 3000));
    host.onEvent = nullptr;
    EXPECT_TRUE(host.Requests(MARROWFIN_REQUEST_TOKEN).empty());
}
