// The library driven through its exports by a host main window whose loop
// passes every event through GaDllPretanslateMsg, against the stand-in
// service with a sample library whose first two galleries are shown. The
// panel is one per process: CTest runs each case in a process of its own;
// run together, all but the first are skipped.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "request_counters.h"
#include "support/event_pump.h"
#include "support/live_service.h"
#include "support/recording_host.h"
#include "support/temp_home.h"

using namespace marrowfin::test;
namespace fs = std::filesystem;

namespace {

struct E2eWorld {
    std::unique_ptr<TempHome> home = std::make_unique<TempHome>();
    LiveService service;  // after the home: it writes the profile
    RecordingHost host;
};
E2eWorld* g_world = nullptr;
E2eWorld& World() { return *g_world; }

// The host's loop: every event of every object is offered to the panel first.
struct HostLoopFilter final : QObject {
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        MarrowfinMsg message{watched, event};
        return GaDllPretanslateMsg(&message) == 1;
    }
};

class WorldEnvironment final : public ::testing::Environment {
public:
    void SetUp() override {
        g_world = new E2eWorld;  // the panel and the host stay until the process ends, as in a host
        for (int i = 0; i < 2; ++i) AddMoreGallery(g_world->service.galleries.at(i).c_str());
        g_world->host.resize(320, 200);
        g_world->host.show();
        MarrowfinSetMainWindow(&g_world->host);
        // Owned by the application, which outlives every case of the program.
        qApp->installEventFilter(new HostLoopFilter(qApp));
        FirstSynchro();
    }
    void TearDown() override {
        g_world->service.handle.stop();
        g_world->home.reset();
    }
};

fs::path StoreRoot() { return fs::path(World().home->documentsDir()) / "Orsolen"; }

// The library's widgets by class name (the test sees only the exported header).
QWidget* FindChild(QWidget* panel, const char* className) {
    for (QWidget* w : panel ? panel->findChildren<QWidget*>() : QApplication::allWidgets())
        if (qstrcmp(w->metaObject()->className(), className) == 0) return w;
    return nullptr;
}
QWidget* FindPanel() { return FindChild(nullptr, "marrowfin::CBrindleDlg"); }
QWidget* FindButton(QWidget* panel, const QString& caption) {
    for (QAbstractButton* b : panel->findChildren<QAbstractButton*>())
        if (b->text() == caption && b->isVisible()) return b;
    return nullptr;
}

// Requests for galleries the service has answered so far (the tree's rebuilds).
long TreeRequests() { return World().service.Served("/gallery/g_all_s") + World().service.Served("/gallery/g_all"); }

std::string Gallery(int i) { return QString::fromStdU16String(World().service.galleries.at(i)).toStdString(); }
// Runs until the first synchronisation has left a catalogue in the store.
bool WaitForFirstTree(int ms) {
    const auto catalogue = [](int i) { return fs::exists(StoreRoot() / Gallery(i) / (Gallery(i) + ".xdb")); };
    return PumpUntil([&] { return catalogue(0) || catalogue(1); }, ms);
}

int PreTranslateKey(QObject* receiver, int key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    MarrowfinMsg message{receiver, &event};
    return GaDllPretanslateMsg(&message);
}

}  // namespace

// One road through the panel made by `show`: what is the library's, the host's loop, the
// host's orders, the collections' sign-in, a search from the host and closing.
TEST(Exports, ThePanelMadeByShowServesItsHost) {
    ASSERT_TRUE(WaitForFirstTree(15000));
    show();
    const uint64_t handle = GetGallery();
    QWidget* panel = FindPanel();
    ASSERT_NE(panel, nullptr);
    RecordingHost& host = World().host;
    EXPECT_EQ(std::make_tuple(panel->isVisible(), panel->parentWidget(), panel->windowTitle()),
              std::make_tuple(true, static_cast<QWidget*>(&host), QStringLiteral("Ombrel_Panel")));
    // The panel and three of its lists are the library's; the host and other children are not.
    EXPECT_EQ(IsDLLHwnd(handle), 1);
    for (const char* list : {"marrowfin::CClassListCtrl", "marrowfin::CDWGListView", "marrowfin::CSearchListCtrl"})
        EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(FindChild(panel, list))), 1) << list;
    EXPECT_EQ(IsDLLHwnd(MarrowfinWindowOf(&host)) + IsDLLHwnd(MarrowfinWindowOf(FindButton(panel, QStringLiteral("反馈")))), 0);
    show();
    ShowGallery(u"", u"");
    EXPECT_TRUE(GetGallery() == handle && host.Requests(MARROWFIN_REQUEST_CHANNEL).size() == 1u);
    Pump(700);  // the first class list comes with a timer

    // The loop: the panel's children's events count, the host's do not, and a hidden panel
    // reads nothing (what each key does is the panel's own business).
    QWidget* classList = FindChild(panel, "marrowfin::CClassListCtrl");
    ASSERT_NE(classList, nullptr);
    EXPECT_EQ((std::vector<int>{PreTranslateKey(classList, Qt::Key_Escape), PreTranslateKey(panel, Qt::Key_A),
                                PreTranslateKey(&host, Qt::Key_Escape)}),
              (std::vector<int>{1, 0, 0}));
    // A real key through the host's loop: Control+Tab hides the panel, which stays.
    QTest::keyClick(classList, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_TRUE(!panel->isVisible() && GetGallery() == handle && PreTranslateKey(classList, Qt::Key_Escape) == 0);
    MarrowfinMsg junk{reinterpret_cast<void*>(0x10), reinterpret_cast<void*>(0x20)};  // no object of the library's
    EXPECT_EQ(GaDllPretanslateMsg(&junk), 0);

    // Host orders act only for the host's window.
    show();
    const auto hostHandle = static_cast<intptr_t>(MarrowfinWindowOf(&host));
    RecordingHost stranger;
    const auto strangerHandle = static_cast<intptr_t>(MarrowfinWindowOf(&stranger));
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 3, strangerHandle) + MarrowfinSendPanelControl(handle, 2, 0), 0);
    EXPECT_TRUE(panel->isVisible());
    // Handles are compared on their low 32 bits, as a host may have cut them.
    EXPECT_TRUE(MarrowfinSendPanelControl(handle, 3, hostHandle | (intptr_t{0xABCD} << 32)) == 0 && !panel->isVisible());
    // Attaching another host shows the panel on top; the old host's order then does nothing.
    EXPECT_TRUE(MarrowfinSendPanelControl(handle, 1, strangerHandle) == 0 && panel->isVisible() &&
                (panel->windowFlags() & Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(MarrowfinSendPanelControl(handle, 3, hostHandle) == 0 && panel->isVisible());
    // Notices now go to the new host.
    host.records.clear();
    QWidget* statistics = FindButton(panel, QStringLiteral("统计"));
    ASSERT_NE(statistics, nullptr);
    QTest::mouseClick(statistics, Qt::LeftButton);
    Pump(50);
    EXPECT_EQ(stranger.records, (std::vector<RecordedMessage>{{MARROWFIN_GALLERY_HOST_NOTICE, handle, MARROWFIN_NOTICE_STATISTICS, {}}}));
    EXPECT_TRUE(host.records.empty());
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 1, hostHandle), 0);

    // The collections ask the host to sign in, and for a token only for a real user (users
    // 0 and 1 are nobody). Each round starts signed out.
    const std::pair<uint32_t, std::vector<intptr_t>> rounds[] = {
        {0, {MARROWFIN_REQUEST_SIGN_IN}}, {1, {MARROWFIN_REQUEST_SIGN_IN}}, {42, {MARROWFIN_REQUEST_SIGN_IN, MARROWFIN_REQUEST_TOKEN}}};
    for (const auto& [user, requests] : rounds) {
        MarrowfinSendPanelControl(handle, 6, 0);
        Pump(500);
        host.records.clear();
        host.userNumber = user;
        bool hiddenForSignIn = false;
        host.onEvent = [&](const RecordedMessage& r) {
            if (r.message == MARROWFIN_GALLERY_HOST_REQUEST && r.wParam == MARROWFIN_REQUEST_SIGN_IN) hiddenForSignIn = !panel->isVisible();
        };
        MarrowfinSendPanelControl(handle, 0, 0);
        EXPECT_TRUE(PumpUntil([&] { return !host.Requests(MARROWFIN_REQUEST_SIGN_IN).empty(); }, 3000));
        Pump(300);
        EXPECT_EQ(host.Codes(MARROWFIN_GALLERY_HOST_REQUEST), requests) << user;
        EXPECT_TRUE(hiddenForSignIn && panel->isVisible()) << "hidden for the sign-in only";
    }
    host.onEvent = nullptr;
    MarrowfinSendPanelControl(handle, 6, 0);
    Pump(600);  // signing out leaves the collections through the class-switch timer

    // A search from the host drops the class-list build it finds running and shows the
    // search page until a location comes.
    ShowGallery(u"", u"");
    HideGallery();
    SearchBrindleRes(u"门", u"YL");
    auto* edit = qobject_cast<QLineEdit*>(FindChild(panel, "QLineEdit"));
    ASSERT_TRUE(panel->isVisible() && edit);
    Pump(800);
    EXPECT_TRUE(edit->isVisible() && edit->text() == QStringLiteral("门"));
    EXPECT_EQ(MarrowfinSendCopyData(handle, 412, (u"\\" + World().service.galleries[0]).c_str()), 1);
    EXPECT_TRUE(!edit->isVisible() && panel->isVisible());

    // Closing saves the lists, removes the search's downloads and keeps the panel.
    const fs::path recent = StoreRoot() / "RecentlyUse.xml";
    fs::remove(recent);
    fs::create_directories(StoreRoot() / "search" / "deep");
    std::ofstream(StoreRoot() / "search" / "deep" / "x.dwg") << "x";
    CloseGallery();
    EXPECT_TRUE(!panel->isVisible() && GetGallery() == handle && fs::exists(recent) && !fs::exists(StoreRoot() / "search"));
    for (int i = 0; i < 2; ++i)  // each shown gallery has its common-use list
        EXPECT_TRUE(fs::exists(StoreRoot() / Gallery(i) / "CommonUse.xml")) << Gallery(i);
}

TEST(Exports, UpdateShowMakesAHiddenPanelAndRebuildsTheTreeOnAWorker) {
    if (GetGallery() != 0) GTEST_SKIP() << "needs a process without a panel, as CTest gives it";
    ASSERT_TRUE(WaitForFirstTree(15000));
    Pump(200);  // the first synchronisation's thread has ended
    const long before = TreeRequests();
    ShowGallery(u"", u"UpdateShow");
    // The call comes back at once with the class manager open; its end asks for the tree beside it.
    auto* manager = qobject_cast<QDialog*>(FindChild(nullptr, "marrowfin::CSelClassDlg"));
    ASSERT_TRUE(manager && manager->isVisible());
    manager->reject();
    EXPECT_TRUE(PumpUntil([&] { return TreeRequests() > before; }, 5000));
    QWidget* panel = FindPanel();
    ASSERT_TRUE(panel && !panel->parentWidget());  // only `show` hangs it under the main window
    Pump(400);
    EXPECT_TRUE(!panel->isVisible() && World().host.Requests(MARROWFIN_REQUEST_CHANNEL).size() == 1u);
}

// The host may destroy its main window, and with it the panel that `show` made as its
// child. The exports then answer as before any panel, and the next export that makes the
// panel makes a new one, which the host steers as usual.
TEST(Exports, APanelGoneWithTheMainWindowLeavesTheExportsSound) {
    if (GetGallery() != 0) GTEST_SKIP() << "needs a process without a panel, as CTest gives it";
    auto* doomed = new RecordingHost;
    doomed->show();
    MarrowfinSetMainWindow(doomed);
    show();
    const uint64_t handle = GetGallery();
    QPointer<QWidget> first = FindPanel();
    ASSERT_TRUE(first && first->parentWidget() == doomed) << "show makes the panel a child of the main window";
    Pump(400);  // the start-up's timers run
    (void)PreTranslateKey(first, Qt::Key_Escape);
    delete doomed;
    ASSERT_TRUE(first.isNull());
    QWidget stranger;
    EXPECT_EQ(PreTranslateKey(&stranger, Qt::Key_Escape), 0);
    EXPECT_EQ(std::make_tuple(GetGallery(), IsDLLHwnd(handle), IsBlkBoutique(u"/Orsolen/a/b/c.dwg")), std::make_tuple(0ull, 0, uint8_t{0}));
    HideGallery();
    CloseGallery();
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 5, 7) + MarrowfinSendCopyData(handle, 415, u"token"), 0);
    Pump(400);  // nothing of the gone panel fires any more

    ShowGallery(nullptr, u"YL");
    const uint64_t again = GetGallery();
    EXPECT_TRUE(again != 0 && again != handle && IsDLLHwnd(again) == 1);
    QWidget* second = FindPanel();
    ASSERT_TRUE(second && !second->parentWidget());
    (void)PreTranslateKey(second, Qt::Key_Escape);
    HideGallery();
    RecordingHost other;
    EXPECT_TRUE(MarrowfinSendPanelControl(again, 1, static_cast<intptr_t>(MarrowfinWindowOf(&other))) == 0 && second->isVisible());
    Pump(300);
    HideGallery();
}

// A search typed into the panel: Enter through the host's loop asks the service,
// the rows in view fetch their blocks into the search cache, a double click on a
// row's picture inserts its block (the panel hides for the ordinary mode).
TEST(Exports, ASearchTypedInThePanelFetchesRowsInViewAndInsertsOne) {
    if (GetGallery() != 0) GTEST_SKIP() << "needs a process without a panel, as CTest gives it";
    ASSERT_TRUE(WaitForFirstTree(15000));
    show();
    SearchBrindleRes(u"_00", u"");
    QWidget* panel = FindPanel();
    auto* edit = qobject_cast<QLineEdit*>(FindChild(panel, "QLineEdit"));
    QWidget* list = FindChild(panel, "marrowfin::CSearchListCtrl");
    ASSERT_TRUE(edit && list);
    ASSERT_TRUE(PumpUntil([&] { return list->isVisible(); }, 5000));
    const long searches = World().service.Served("/gallery/search_g");

    QTest::mouseClick(edit, Qt::LeftButton);
    edit->clear();
    QTest::keyClicks(edit, QStringLiteral("_01"));
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(!list->isVisible() && World().service.Served("/gallery/search_g") <= searches + 1);
    ASSERT_TRUE(PumpUntil([&] { return list->isVisible(); }, 5000));
    EXPECT_EQ(World().service.Served("/gallery/search_g"), searches + 1);

    // The rows in view come into the cache after a moment (a screen at most: the live search's test).
    const fs::path cache = StoreRoot() / "search";
    const auto files = [] { return World().service.handle.counters().get("/files/*"); };
    ASSERT_TRUE(PumpUntil([&] { return files().count >= 6 && files().active == 0; }, 8000));

    RecordingHost& host = World().host;
    const size_t before = host.Requests(MARROWFIN_REQUEST_INSERT).size();
    QTest::mouseDClick(list, Qt::LeftButton, Qt::NoModifier, QPoint(40, 30));
    ASSERT_TRUE(PumpUntil([&] { return host.Requests(MARROWFIN_REQUEST_INSERT).size() > before; }, 3000));
    const std::u16string inserted = host.Requests(MARROWFIN_REQUEST_INSERT).back().text;
    EXPECT_EQ(QString::fromStdU16String(inserted).left(int(cache.string().size())), QString::fromStdString(cache.string()));
    EXPECT_FALSE(panel->isVisible());
}

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment: stay offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new WorldEnvironment);
    return RUN_ALL_TESTS();
}
