// The panel's side of the host link, with the panel's fields in view: the
// host's orders, copy-data, the sign-in request, the feedback wait, the
// boutique question, and the requests and notices as the host receives them.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QtTest/QTest>

#include "../e2e/recording_host.h"
#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/domodal_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/lists/class_list_ctrl.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "support/temp_home.h"

using namespace marrowfin;
using marrowfin::test::RecordingHost;

namespace {

// One panel for the program, as in the host's process; made with no service
// reachable (a refused port), so its start-up ends at once with empty tables.
class HostLink : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home = new marrowfin::test::TempHome;
        WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
        host = new RecordingHost;
        host->resize(200, 100);
        SetApplicationMainWindow(host);
        panel = EnsurePanel(nullptr);
    }
    static void TearDownTestSuite() {
        // The panel stays, as in a host; the home folder goes.
        delete home;
    }
    void SetUp() override {
        host->records.clear();
        host->onEvent = nullptr;
        host->answerRequests = true;
        panel->hostWindow = HandleOf(host);
        panel->ShowPanel();
    }

    static std::intptr_t CopyData(std::uintptr_t code, const char16_t* text) {
        CopyDataStruct data;
        data.dwData = code;
        data.lpData = text;
        return SendWindowMessage(panel->Handle(), WM_COPYDATA_MESSAGE, 0, reinterpret_cast<std::intptr_t>(&data));
    }
    static std::intptr_t Control(std::uintptr_t code, std::intptr_t lParam) {
        return SendWindowMessage(panel->Handle(), GalleryPanelControl, code, lParam);
    }
    static WindowHandle HostHandle() { return HandleOf(host); }

    static marrowfin::test::TempHome* home;
    static RecordingHost* host;
    static CBrindleDlg* panel;
};

marrowfin::test::TempHome* HostLink::home = nullptr;
RecordingHost* HostLink::host = nullptr;
CBrindleDlg* HostLink::panel = nullptr;

// The wait dialog that runs modally now, or null.
CDomodalDlg* RunningWait() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* wait = qobject_cast<CDomodalDlg*>(w); wait && wait->isVisible()) return wait;
    return nullptr;
}

void Tick(CDomodalDlg* wait) {
    WindowMessageEvent tick(WindowMessage{WM_TIMER_MESSAGE, CDomodalDlg::kTimerId, 0, nullptr});
    QCoreApplication::sendEvent(wait, &tick);
    QCoreApplication::sendPostedEvents();  // the notices are posted
}

}  // namespace

TEST_F(HostLink, StartUpAskedTheHostForItsChannelAndTookTheMainWindow) {
    // Made in SetUpTestSuite, before the records were cleared: the fields tell.
    EXPECT_EQ(panel->m_hostChannel, u"channel-e2e");
    EXPECT_EQ(panel, EnsurePanel(nullptr));  // one panel for good
    EXPECT_EQ(ExistingPanel(), panel);
}

TEST_F(HostLink, CopyDataSetsModeTokenAndUserAsTheHostWroteThem) {
    // A null record and unknown numbers go to the default handling.
    EXPECT_EQ(SendWindowMessage(panel->Handle(), WM_COPYDATA_MESSAGE, 0, 0), 0);
    panel->userId = 9;
    panel->userToken = u"keep";
    EXPECT_EQ(CopyData(410, u"5&^&x"), 0);
    EXPECT_EQ(CopyData(417, u"5&^&x"), 0);
    EXPECT_EQ(panel->userId, 9);
    EXPECT_EQ(panel->userToken, u"keep");

    EXPECT_EQ(CopyData(413, u"YL"), 0);
    EXPECT_EQ(panel->showMode, u"YL");
    EXPECT_EQ(CopyData(413, nullptr), 0);  // a null text is the empty one
    EXPECT_EQ(panel->showMode, u"");
    EXPECT_EQ(CopyData(415, u"t-415"), 0);
    EXPECT_EQ(panel->userToken, u"t-415");

    // 416: split at the first separator; an empty number counts as 1; a huge
    // one saturates rather than wrapping; without the separator nothing changes.
    struct Case { const char16_t* text; int32_t user; const char16_t* token; };
    const Case cases[] = {
        {u"&^&tok&^&tail", 1, u"tok&^&tail"},
        {u"12345&^&abc", 12345, u"abc"},
        {u"-2&^&", -2, u""},
        {u"99999999999&^&big", INT32_MAX, u"big"},
        {u"77&^", INT32_MAX, u"big"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(U8(c.text));
        EXPECT_EQ(CopyData(416, c.text), 0);
        EXPECT_EQ(panel->userId, c.user);
        EXPECT_EQ(panel->userToken, c.token);
    }
}

TEST_F(HostLink, CollectionLocationWithoutCollectionsAnswersOneAndDoesNothing) {
    KillTimer(panel->Handle(), 2000);
    const int page = panel->m_page;
    const int pending = panel->m_pendingClass;
    const bool force = panel->m_forceList;
    EXPECT_EQ(CopyData(411, u"\\门窗\\推拉门"), 1);
    EXPECT_EQ(panel->m_page, page);
    EXPECT_EQ(panel->m_pendingClass, pending);
    EXPECT_EQ(panel->m_forceList, force);
    EXPECT_FALSE(panel->m_hostAskedCollections);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(host->records.empty());
    // With the word it answers 1 as well, and the host's flag lasts this step only.
    EXPECT_EQ(CopyData(411, u"\\我的收藏\\1"), 1);
    EXPECT_FALSE(panel->m_hostAskedCollections);
    // 412 shows the panel and answers 1 whatever the location.
    panel->HidePanel();
    EXPECT_EQ(CopyData(412, u""), 1);
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(HostLink, PanelControlActsOnlyForTheHostsOwnWindow) {
    // 3 and 4 compare on the low 32 bits; a handle of another window changes nothing.
    panel->showMode = u"PMMC";
    const WindowHandle other = HandleOf(panel->m_classList);
    EXPECT_EQ(Control(3, static_cast<std::intptr_t>(other)), 0);
    EXPECT_EQ(Control(4, static_cast<std::intptr_t>(other)), 0);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"PMMC");
    const std::intptr_t widened = static_cast<std::intptr_t>(HostHandle() | (uint64_t{0xABCD} << 32));
    EXPECT_EQ(Control(4, widened), 0);
    EXPECT_EQ(panel->showMode, u"");
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(Control(3, static_cast<std::intptr_t>(HostHandle())), 0);
    EXPECT_FALSE(panel->isVisible());

    // 2 does nothing; 5 sets the user.
    EXPECT_EQ(Control(2, 12345), 0);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(Control(5, 4321), 0);
    EXPECT_EQ(panel->userId, 4321);

    // 1 takes the given window as host, shows the panel and restarts timer 1007.
    RecordingHost second;
    const WindowHandle secondHandle = HandleOf(&second);
    KillTimer(panel->Handle(), 1007);
    EXPECT_EQ(Control(1, static_cast<std::intptr_t>(secondHandle)), 0);
    EXPECT_EQ(panel->hostWindow, secondHandle);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(panel->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(IsTimerRunning(panel->Handle(), 1007));
    // The old host no longer hides it.
    EXPECT_EQ(Control(3, static_cast<std::intptr_t>(HostHandle())), 0);
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(HostLink, SigningOutForgetsTheUserAndLeavesTheCollections) {
    // On the collections entry (class 1) the search text goes; off it, it stays.
    for (int classIndex : {1, 3}) {
        SCOPED_TRACE(classIndex);
        panel->userId = 77;
        panel->userToken = u"secret";
        panel->m_classIndex = classIndex;
        panel->m_page = PageSearch;
        panel->m_searchEdit->setText(QStringLiteral("门"));
        EXPECT_EQ(Control(6, 0), 0);
        EXPECT_EQ(panel->userId, -1);
        EXPECT_EQ(panel->userToken, u"");
        EXPECT_EQ(panel->m_searchEdit->text(), classIndex == 1 ? QString() : QStringLiteral("门"));
    }
    panel->m_page = PageBrowse;
}

TEST_F(HostLink, SignInAsksForTheTokenOnlyForARealUser) {
    bool hiddenDuring = false;
    bool listDisabledDuring = false;
    host->onEvent = [&](const RecordingHost::Record& r) {
        if (r.message != MARROWFIN_GALLERY_HOST_REQUEST || r.wParam != MARROWFIN_REQUEST_SIGN_IN) return;
        hiddenDuring = !panel->isVisible();
        listDisabledDuring = !panel->m_classList->isEnabled();
    };
    host->userNumber = 4242;
    host->token = u"tok-4242";
    panel->userToken = u"old";
    EXPECT_EQ(panel->RequireLogin(), 4242);
    EXPECT_EQ(host->RequestOrder(), (std::vector<uintptr_t>{5, 1}));
    EXPECT_EQ(panel->userToken, u"tok-4242");
    EXPECT_TRUE(hiddenDuring);
    EXPECT_TRUE(listDisabledDuring);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(panel->m_classList->isEnabled());

    // 1 and 0 are no real user: no token request, the old token stays.
    for (uint32_t number : {1u, 0u}) {
        host->records.clear();
        host->userNumber = number;
        EXPECT_EQ(panel->RequireLogin(), static_cast<int>(number));
        EXPECT_EQ(host->RequestOrder(), (std::vector<uintptr_t>{5}));
        EXPECT_EQ(panel->userToken, u"tok-4242");
    }
    // A host that leaves the request unanswered leaves the preset 0.
    host->records.clear();
    host->answerRequests = false;
    EXPECT_EQ(panel->RequireLogin(), 0);
    // No host window at all: the same, and nothing is sent anywhere.
    panel->hostWindow = 0;
    EXPECT_EQ(panel->RequireLogin(), 0);
    EXPECT_EQ(host->RequestOrder(), (std::vector<uintptr_t>{5}));
}

TEST_F(HostLink, FeedbackWaitRemindsEveryThirdTickUntilTheUserChanges) {
    std::vector<int> noticesAtTick;
    bool returned = false;
    bool disabledDuring = false;
    bool hiddenDuring = false;
    QTimer::singleShot(0, [&] {
        // Runs inside the wait's modal loop.
        CDomodalDlg* wait = RunningWait();
        ASSERT_NE(wait, nullptr);
        // The wait blocks the panel's caller, not the host: its feedback form stays usable.
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        disabledDuring = !panel->isEnabled();
        hiddenDuring = !panel->isVisible();
        EXPECT_TRUE(IsTimerRunning(HandleOf(wait), CDomodalDlg::kTimerId));
        // Enter would close an ordinary dialog.
        QTest::keyClick(wait, Qt::Key_Return);
        QTest::keyClick(wait, Qt::Key_Enter);
        EXPECT_EQ(RunningWait(), wait);
        for (int tick = 1; tick <= 7; ++tick) {
            Tick(wait);
            noticesAtTick.push_back(static_cast<int>(host->Notices(14).size()));
        }
        // The host reports back: the user number changes, the next tick ends it.
        Control(5, 31);
        Tick(wait);
    });
    panel->FeedbackButton();
    returned = true;
    EXPECT_TRUE(returned);
    EXPECT_TRUE(disabledDuring);
    EXPECT_TRUE(hiddenDuring);
    EXPECT_TRUE(panel->isEnabled());
    EXPECT_EQ(panel->userId, 31);
    EXPECT_EQ(noticesAtTick, (std::vector<int>{0, 0, 1, 1, 1, 2, 2}));
    ASSERT_EQ(host->Notices(13).size(), 1u);
    EXPECT_EQ(host->Notices(13)[0].wParam, panel->Handle());
    EXPECT_EQ(host->Notices(14)[0].wParam, panel->Handle());
    // The feedback notice came before any reminder.
    EXPECT_EQ(host->records.front().lParam, 13);
}

TEST_F(HostLink, FeedbackWaitEndsWhenTheHostWindowGoes) {
    auto* doomed = new RecordingHost;
    panel->hostWindow = HandleOf(doomed);
    QPointer<RecordingHost> watch(doomed);
    QTimer::singleShot(0, [&] {
        CDomodalDlg* wait = RunningWait();
        ASSERT_NE(wait, nullptr);
        Tick(wait);
        Tick(wait);
        delete doomed;  // two ticks counted, then the host is gone
        Tick(wait);
    });
    panel->FeedbackButton();
    EXPECT_TRUE(watch.isNull());
    EXPECT_EQ(panel->userId, -2);  // nobody answered
    EXPECT_TRUE(panel->isEnabled());
    // Notices to a gone window are not delivered anywhere.
    EXPECT_FALSE(PostHostNotice(panel->hostWindow, panel->Handle(), 14));
}

TEST_F(HostLink, FeedbackWaitRunsOnTheRealTimer) {
    // One real round: 800 ms ticks, the reminder on the third (2.4 s); the
    // host answers the reminder and the next tick ends the wait.
    host->onEvent = [&](const RecordingHost::Record& r) {
        if (r.message == MARROWFIN_GALLERY_HOST_NOTICE && r.lParam == 14) Control(5, 8);
    };
    panel->FeedbackButton();
    EXPECT_EQ(host->Notices(13).size(), 1u);
    EXPECT_EQ(host->Notices(14).size(), 1u);
    EXPECT_EQ(panel->userId, 8);
}

TEST_F(HostLink, StatisticsOnlyNotifies) {
    panel->userId = 6;
    panel->StatisticsButton();
    QCoreApplication::sendPostedEvents();
    ASSERT_EQ(host->Notices(16).size(), 1u);
    EXPECT_EQ(host->Notices(16)[0].wParam, panel->Handle());
    EXPECT_EQ(panel->userId, 6);
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(HostLink, InsertionsOwnTheirPathUntilTheHostTakesIt) {
    EXPECT_TRUE(PostHostInsertion(HostHandle(), 3, u"/d/Orsolen/门窗/推拉门/a.dwg"));
    QCoreApplication::sendPostedEvents();
    ASSERT_EQ(host->Requests(3).size(), 1u);
    EXPECT_EQ(host->Requests(3)[0].text, u"/d/Orsolen/门窗/推拉门/a.dwg");
    // To a window that dies before delivery: Qt drops the event and the path with it.
    auto* brief = new RecordingHost;
    EXPECT_TRUE(PostHostInsertion(HandleOf(brief), 2, u"/x.dwg"));
    delete brief;
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(PostHostInsertion(0, 2, u"/x.dwg"));
    // A synchronous request to no window leaves the preset answer.
    int32_t permission = -1;
    SendHostRequest(0, MARROWFIN_REQUEST_PERMISSION, &permission);
    EXPECT_EQ(permission, -1);
    SendHostRequest(HostHandle(), MARROWFIN_REQUEST_PERMISSION, &permission);
    EXPECT_EQ(permission, 0);
}

TEST_F(HostLink, FindRowMatchesNameClassUrlAndPath) {
    panel->m_rows.clear();
    BlockRow a;
    a.name = QStringLiteral("a.dwg");
    a.klass = QStringLiteral("门窗");
    a.url = QStringLiteral("http://x/a");
    a.path = QStringLiteral("/p/a.dwg");
    BlockRow b = a;
    b.path = QStringLiteral("/p/b.dwg");
    panel->m_rows = {b, a, a};
    EXPECT_EQ(panel->FindRow(a), 1);  // the first equal row
    BlockRow c = a;
    c.state = RowFailed;  // state and size are not compared
    c.size = 99;
    EXPECT_EQ(panel->FindRow(c), 1);
    c.url = QStringLiteral("http://x/c");
    EXPECT_EQ(panel->FindRow(c), -1);
    panel->m_rows.clear();
    EXPECT_EQ(panel->FindRow(a), -1);
}

TEST_F(HostLink, BoutiqueAnswersFromTheTreeAndCachesIt) {
    GalleryStore& store = *panel->m_store;
    GalleryNode* savedRoot = store.root;
    panel->m_boutiqueCache.clear();

    // No tree: false, and nothing is remembered.
    store.root = nullptr;
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"));
    EXPECT_TRUE(panel->m_boutiqueCache.empty());

    auto* root = new GalleryNode(u"", u"/d/Orsolen", u"Orsolen", kKindDir, false, false, 0);
    // A child named `name` below `parent`, with the path and owner the tree gives it.
    auto add = [](GalleryNode* parent, const std::u16string& name, const std::u16string& kind, bool boutique) {
        auto* n = new GalleryNode(parent->name, parent->path + u"/" + name, name, kind, false, boutique,
                                 kind == kKindFile ? 2048 : 0);
        AddChild(parent, n, false);
        return n;
    };
    GalleryNode* fine = add(root, u"精品", kKindDir, true);
    add(add(fine, u"门", kKindDir, false), u"a.dwg", kKindFile, false);
    GalleryNode* plain = add(root, u"普通", kKindDir, false);
    add(add(plain, u"墙", kKindDir, false), u"b.dwg", kKindFile, false);
    // The recent list holds a block of the boutique gallery at the root too.
    auto* recent = new GalleryNode(u"Orsolen", u"/d/Orsolen/精品/门/c.dwg", u"c.dwg", kKindFile, false, true, 2048);
    AddChild(root, recent, false);
    store.root = root;

    EXPECT_TRUE(panel->IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"));
    EXPECT_TRUE(panel->IsBlkBoutique(u"\\d\\Orsolen\\精品\\门\\a.dwg"));  // the host's separators
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"));
    // Only in the recent list: the root's own files are not searched, and
    // without the class table the gallery is not known as boutique.
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/精品/门/c.dwg"));
    EXPECT_EQ(panel->m_boutiqueCache.size(), 3u);

    // Answers come from the cache once given, whatever the tree says now.
    fine->boutique = false;
    plain->boutique = true;
    EXPECT_TRUE(panel->IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"));
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"));

    // Past 100 entries the cache starts afresh, and the tree answers again.
    for (int i = 0; i < 97; ++i) panel->IsBlkBoutique(u"/nowhere/" + std::u16string(1, char16_t(u'A' + i)) + u".dwg");
    EXPECT_EQ(panel->m_boutiqueCache.size(), 100u);
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"));  // cached before: still the old answer
    EXPECT_FALSE(panel->IsBlkBoutique(u"/nowhere/new.dwg"));
    EXPECT_EQ(panel->m_boutiqueCache.size(), 1u);
    EXPECT_FALSE(panel->IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"));  // the tree's present answer
    EXPECT_TRUE(panel->IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"));

    store.root = savedRoot;
    DestroySubtree(root);
    delete root;
    panel->m_boutiqueCache.clear();
}

TEST_F(HostLink, ExportsSteerTheExistingPanel) {
    const WindowHandle handle = panel->Handle();
    EXPECT_EQ(GetGallery(), handle);
    EXPECT_EQ(IsDLLHwnd(handle), 1);
    EXPECT_EQ(IsDLLHwnd(HandleOf(panel->m_classList)), 1);
    EXPECT_EQ(IsDLLHwnd(HandleOf(panel->m_searchEdit)), 0);  // not one of the four
    EXPECT_EQ(IsDLLHwnd(HostHandle()), 0);

    // A search from the host: mode taken, the pending class-list build dropped,
    // the search page with the text, the panel shown.
    panel->HidePanel();
    SetTimer(handle, 1011, 10000);
    SearchBrindleRes(u"推拉门", u"PMMC");
    EXPECT_EQ(panel->showMode, u"PMMC");
    EXPECT_FALSE(IsTimerRunning(handle, 1011));
    EXPECT_EQ(panel->m_page, PageSearch);
    EXPECT_EQ(panel->m_searchEdit->text(), QStringLiteral("推拉门"));
    EXPECT_TRUE(panel->isVisible());

    // The collections from the host: the search page is left first, row 1 is
    // selected through the switch timer, the panel stays as it is (hidden here).
    panel->HidePanel();
    KillTimer(handle, 2000);
    ShiftTicksForTest(500);  // past the damping of search commands
    ResetClass(u"\\我的收藏");
    EXPECT_FALSE(IsSearchPage(panel->m_page));
    EXPECT_EQ(panel->m_pendingClass, 1);
    EXPECT_TRUE(IsTimerRunning(handle, 2000));
    EXPECT_FALSE(panel->m_hostAskedCollections);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"PMMC");

    // HideGallery forgets the mode; CloseGallery keeps the panel.
    panel->ShowPanel();
    HideGallery();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"");
    ShowGallery(nullptr, u"YL");
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"YL");
    CloseGallery();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(GetGallery(), handle);
    EXPECT_EQ(ExistingPanel(), panel);

    // Host-side sends reach only the panel.
    EXPECT_EQ(MarrowfinSendCopyData(handle, 415, u"via-export"), 0);
    EXPECT_EQ(panel->userToken, u"via-export");
    EXPECT_EQ(MarrowfinSendCopyData(HostHandle(), 415, u"lost"), 0);
    EXPECT_EQ(panel->userToken, u"via-export");
    EXPECT_EQ(MarrowfinSendPanelControl(handle, 5, 606), 0);
    EXPECT_EQ(panel->userId, 606);
    EXPECT_EQ(MarrowfinSendPanelControl(HostHandle(), 5, 1), 0);
    EXPECT_EQ(panel->userId, 606);
    EXPECT_TRUE(host->records.empty());
}
