// The host may destroy its main window, and with it the panel that `show`
// made as its child. The exports then answer as they do before any panel
// exists, and the next export that makes the panel makes a new one.

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QPointer>

#include "support/event_pump.h"
#include "support/recording_host.h"
#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "platform/profile.h"
#include "support/temp_home.h"

using namespace marrowfin;

TEST(HostWindowGone, ExportsCopeWithThePanelDestroyedWithTheMainWindow) {
    test::TempHome home;
    WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");  // no service: the start-up ends at once
    auto* host = new test::RecordingHost;
    host->resize(300, 200);
    host->show();
    MarrowfinSetMainWindow(host);
    show();
    const uint64_t handle = GetGallery();
    ASSERT_NE(handle, 0u);
    QPointer<CBrindleDlg> first = ExistingPanel();
    ASSERT_EQ(first ? first->parentWidget() : nullptr, host) << "show makes the panel a child of the main window";
    test::Pump(400);  // the start-up's timers run
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    MarrowfinMsg toPanel{first.data(), &key};
    (void)GaDllPretanslateMsg(&toPanel);

    delete host;
    ASSERT_TRUE(first.isNull());
    QWidget stranger;
    MarrowfinMsg toStranger{&stranger, &key};
    EXPECT_EQ(GaDllPretanslateMsg(&toStranger), 0);
    EXPECT_EQ(GetGallery(), 0u);
    EXPECT_EQ(IsDLLHwnd(handle), 0);
    EXPECT_EQ(IsBlkBoutique(u"/Orsolen/a/b/c.dwg"), 0);
    HideGallery();
    CloseGallery();
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 5, 7), 0);
    EXPECT_EQ(MarrowfinSendCopyData(handle, 415, u"token"), 0);
    test::Pump(400);  // nothing of the gone panel fires any more

    // A new panel, without the gone main window as parent, steered as usual.
    ShowGallery(nullptr, u"YL");
    const uint64_t again = GetGallery();
    ASSERT_NE(again, 0u);
    EXPECT_NE(again, handle);
    ASSERT_NE(ExistingPanel(), nullptr);
    EXPECT_EQ(ExistingPanel()->parentWidget(), nullptr);
    EXPECT_EQ(ExistingPanel()->showMode, u"YL");
    EXPECT_EQ(IsDLLHwnd(again), 1);
    MarrowfinMsg toNew{ExistingPanel(), &key};
    (void)GaDllPretanslateMsg(&toNew);
    EXPECT_EQ(MarrowfinSendPanelControl(again, 5, 7), 0);
    EXPECT_EQ(ExistingPanel()->userId, 7);
    test::Pump(300);
    HideGallery();
}
