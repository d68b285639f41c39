// The panel's side of the host link, driven through the exports with the
// panel's fields in view where the exports give no answer: copy-data and
// control orders, the mode, the feedback wait tick by tick, insertions that
// own their path, and the boutique question with its cache. What the host
// sees of the same roads, on real timers, is in the end-to-end tests.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QTimer>
#include <QtTest/QTest>

#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/domodal_dlg.h"
#include "panel/dialog/host_requests.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "support/recording_host.h"
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
        WriteShowList({});  // picked before: the start-up opens no class manager
        host = new RecordingHost;
        MarrowfinSetMainWindow(host);
        panel = EnsurePanel(nullptr);
    }
    static void TearDownTestSuite() { delete home; }  // the panel stays, as in a host
    void SetUp() override {
        host->records.clear();
        panel->hostWindow = HandleOf(host);
        panel->ShowPanel();
    }
    static intptr_t CopyData(uintptr_t code, const char16_t* text) { return MarrowfinSendCopyData(panel->Handle(), code, text); }
    static intptr_t Control(uintptr_t code, intptr_t lParam) { return MarrowfinSendPanelControl(panel->Handle(), code, lParam); }
    // Runs `during` inside the feedback wait's modal loop, with the wait and a tick.
    static void FeedbackWait(const std::function<void(CDomodalDlg*, const std::function<void()>&)>& during) {
        QTimer::singleShot(0, [&] {
            CDomodalDlg* wait = nullptr;
            for (QWidget* w : QApplication::topLevelWidgets())
                if (auto* d = qobject_cast<CDomodalDlg*>(w); d && d->isVisible()) wait = d;
            ASSERT_NE(wait, nullptr);
            during(wait, [wait] {
                WindowMessageEvent tick(WindowMessage{WM_TIMER_MESSAGE, CDomodalDlg::kTimerId, 0, nullptr});
                QCoreApplication::sendEvent(wait, &tick);
                QCoreApplication::sendPostedEvents();  // the notices are posted
            });
        });
        panel->FeedbackButton();
    }

    static inline marrowfin::test::TempHome* home = nullptr;
    static inline RecordingHost* host = nullptr;
    static inline CBrindleDlg* panel = nullptr;
};

}  // namespace

TEST_F(HostLink, OrdersLocationsInsertionsAndTheBoutiqueQuestion) {
    panel->userId = 9;
    panel->userToken = u"keep";
    for (uintptr_t unknown : {410u, 417u, 999u}) EXPECT_EQ(CopyData(unknown, u"5&^&x"), 0);
    EXPECT_EQ(std::tie(panel->userId, panel->userToken), std::make_tuple(9, std::u16string(u"keep")));
    // A null text is the empty one.
    EXPECT_TRUE(CopyData(413, u"YL") == 0 && panel->showMode == u"YL" && CopyData(413, nullptr) == 0 && panel->showMode.empty());
    EXPECT_TRUE(CopyData(415, u"t-415") == 0 && panel->userToken == u"t-415");
    // 416: split at the first separator; an empty number counts as 1; a huge
    // one saturates rather than wrapping; without the separator nothing changes.
    const std::tuple<const char16_t*, int32_t, const char16_t*> cases[] = {
        {u"&^&tok&^&tail", 1, u"tok&^&tail"},      {u"12345&^&abc", 12345, u"abc"}, {u"-2&^&", -2, u""},
        {u"99999999999&^&big", INT32_MAX, u"big"}, {u"77&^", INT32_MAX, u"big"},
    };
    for (const auto& [text, user, token] : cases)
        EXPECT_EQ(std::make_tuple(CopyData(416, text), panel->userId, panel->userToken), std::make_tuple(0, user, std::u16string(token)))
            << Utf16ToUtf8(text);
    // Signing out forgets the user; on the collections entry (class 1) the search text goes too.
    for (int classIndex : {1, 3}) {
        panel->userId = 77;
        panel->userToken = u"secret";
        panel->m_nav.classIndex = classIndex;
        panel->m_nav.page = PageSearch;
        panel->m_searchEdit->setText(QStringLiteral("门"));
        EXPECT_EQ(Control(6, 0), 0);
        EXPECT_EQ(std::tie(panel->userId, panel->userToken), std::make_tuple(-1, std::u16string()));
        EXPECT_EQ(panel->m_searchEdit->text(), classIndex == 1 ? QString() : QStringLiteral("门")) << classIndex;
    }
    panel->m_nav.page = PageBrowse;
    EXPECT_TRUE(host->records.empty());

    // Locations and the host's calls steer the panel and its mode.
    const WindowHandle handle = panel->Handle();
    KillTimer(handle, 2000);
    const int page = panel->m_nav.page, pending = panel->m_nav.pendingClass;
    // A location answers 1 and opens nothing; only the collections word would.
    EXPECT_EQ(CopyData(411, u"\\门窗\\推拉门"), 1);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(std::make_tuple(panel->m_nav.page, panel->m_nav.pendingClass, IsTimerRunning(handle, 2000)),
              std::make_tuple(page, pending, false));
    EXPECT_TRUE(CopyData(411, u"\\我的收藏\\1") == 1 && !panel->m_collection.quietCollect) << "the host's flag lasts this step only";
    panel->HidePanel();
    EXPECT_TRUE(CopyData(412, u"") == 1 && panel->isVisible()) << "412 shows the panel whatever the location";
    panel->HidePanel();
    SearchBrindleRes(u"推拉门", u"PMMC");
    EXPECT_EQ(std::tie(panel->showMode, panel->m_nav.page), std::make_tuple(std::u16string(u"PMMC"), int(PageSearch)));
    // The collections from the host: the search page is left first; with
    // nobody signed in the host is asked for a user, and without one nothing opens.
    panel->HidePanel();
    KillTimer(handle, 2000);
    ShiftTicksForTest(500);  // past the damping of search commands
    const size_t signIns = host->Requests(MARROWFIN_REQUEST_SIGN_IN).size();
    ResetClass(u"\\我的收藏");
    EXPECT_EQ(std::make_tuple(IsSearchPage(panel->m_nav.page), IsTimerRunning(handle, 2000), panel->showMode,
                              host->Requests(MARROWFIN_REQUEST_SIGN_IN).size(), panel->m_collection.quietCollect),
              std::make_tuple(false, false, std::u16string(u"PMMC"), signIns + 1, false));
    host->records.clear();
    // HideGallery forgets the mode; ShowGallery sets it, a null location keeps the class.
    HideGallery();
    EXPECT_EQ(panel->showMode, u"");
    ShowGallery(nullptr, u"YL");
    EXPECT_TRUE(panel->isVisible() && panel->showMode == u"YL" && host->records.empty());

    // Insertions own their path until the host takes it (as the end-to-end search inserts
    // one); to a window that dies before delivery Qt drops the event and the path with it
    // (the sanitizer builds see a leak otherwise).
    auto* brief = new RecordingHost;
    EXPECT_TRUE(PostHostInsertion(HandleOf(brief), 2, u"/x.dwg"));
    delete brief;
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(PostHostInsertion(0, 2, u"/x.dwg"));
    // A synchronous request to no window leaves the preset answer.
    int32_t permission = -1;
    SendHostRequest(0, MARROWFIN_REQUEST_PERMISSION, &permission);
    EXPECT_EQ(permission, -1);

    // The boutique question is answered from the tree and cached.
    GalleryStore& store = *panel->m_store;
    GalleryNode* savedRoot = store.root;
    panel->m_boutiqueCache.clear();
    store.root = nullptr;  // no tree: no, and nothing remembered
    EXPECT_TRUE(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg") == 0 && panel->m_boutiqueCache.empty());
    // A boutique gallery with a/b.dwg, and a recent block of it at the root,
    // where the root's own files are not searched.
    GalleryNode root(u"", u"/d/Orsolen", u"Orsolen", kKindDir, false, false, 0);
    auto* fine = new GalleryNode(u"Orsolen", u"/d/Orsolen/精品", u"精品", kKindDir, false, true, 0);
    auto* door = new GalleryNode(u"精品", u"/d/Orsolen/精品/门", u"门", kKindDir, false, false, 0);
    AddChild(&root, fine, false);
    AddChild(fine, door, false);
    AddChild(door, new GalleryNode(u"门", u"/d/Orsolen/精品/门/a.dwg", u"a.dwg", kKindFile, false, false, 2048), false);
    AddChild(&root, new GalleryNode(u"Orsolen", u"/d/Orsolen/精品/门/c.dwg", u"c.dwg", kKindFile, false, true, 2048), false);
    store.root = &root;
    // (The host's separators name the same block.)
    EXPECT_EQ((std::vector<size_t>{IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), IsBlkBoutique(u"\\d\\Orsolen\\精品\\门\\a.dwg"),
                                   IsBlkBoutique(u"/d/Orsolen/精品/门/c.dwg"), panel->m_boutiqueCache.size()}),
              (std::vector<size_t>{1, 1, 0, 2}));
    // Answers come from the cache once given, whatever the tree says now,
    // until an entry finds more than 100 there and starts it afresh.
    fine->boutique = false;
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), 1);
    for (int i = 0; i < 98; ++i) IsBlkBoutique((u"/nowhere/" + std::u16string(1, char16_t(u'A' + i))).c_str());
    EXPECT_EQ((std::vector<size_t>{panel->m_boutiqueCache.size(), IsBlkBoutique(u"/nowhere/new.dwg"), panel->m_boutiqueCache.size(),
                                   IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), IsBlkBoutique(u"/nowhere/newer.dwg"),
                                   panel->m_boutiqueCache.size(), IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg")}),
              (std::vector<size_t>{100, 0, 101, 1, 0, 1, 0}));
    store.root = savedRoot;
    DestroySubtree(&root);
    panel->m_boutiqueCache.clear();
}

TEST_F(HostLink, FeedbackWaitRemindsEveryThirdTickUntilTheUserChangesOrTheHostGoes) {
    std::vector<int> noticesAtTick;
    bool disabledDuring = false, hiddenDuring = false;
    FeedbackWait([&](CDomodalDlg* wait, const std::function<void()>& tick) {
        // The wait blocks the panel's caller, not the host: its feedback form stays usable.
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        disabledDuring = !panel->isEnabled();
        hiddenDuring = !panel->isVisible();
        QTest::keyClick(wait, Qt::Key_Return);  // Enter would close an ordinary dialog
        QTest::keyClick(wait, Qt::Key_Enter);
        for (int i = 1; i <= 7; ++i) {
            tick();
            const auto notices = host->Codes(MARROWFIN_GALLERY_HOST_NOTICE);
            noticesAtTick.push_back(int(std::ranges::count(notices, MARROWFIN_NOTICE_FEEDBACK_WAITING)));
        }
        Control(5, 31);  // the host reports back: the next tick ends it
        tick();
    });
    EXPECT_TRUE(disabledDuring && hiddenDuring && panel->isEnabled() && panel->userId == 31);
    EXPECT_EQ(noticesAtTick, (std::vector<int>{0, 0, 1, 1, 1, 2, 2}));
    EXPECT_TRUE(host->Codes(MARROWFIN_GALLERY_HOST_NOTICE) == (std::vector<intptr_t>{13, 14, 14}) &&
                host->records.front().wParam == panel->Handle());

    // The wait also ends when the host window goes.
    auto* doomed = new RecordingHost;
    panel->hostWindow = HandleOf(doomed);
    QPointer<RecordingHost> watch(doomed);
    FeedbackWait([&](CDomodalDlg*, const std::function<void()>& tick) {
        tick();
        tick();
        delete doomed;  // two ticks counted, then the host is gone
        tick();
    });
    EXPECT_TRUE(watch.isNull() && panel->isEnabled() && panel->userId == -2);  // nobody answered
    EXPECT_FALSE(PostHostNotice(panel->hostWindow, panel->Handle(), 14));  // delivered nowhere
}
