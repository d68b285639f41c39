// The panel's side of the host link, driven through the exports with the
// panel's fields in view where the exports give no answer: copy-data and
// control orders, the mode, the feedback wait tick by tick, insertions that
// own their path, and the boutique question with its cache. What the host
// sees of the same roads, on real timers, is in the end-to-end tests.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QtTest/QTest>

#include "host/panel_access.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/domodal_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/lists/class_list_ctrl.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
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
        host = new RecordingHost;
        MarrowfinSetMainWindow(host);
        panel = EnsurePanel(nullptr);
    }
    static void TearDownTestSuite() { delete home; }  // the panel stays, as in a host
    void SetUp() override {
        host->records.clear();
        panel->hostWindow = HostHandle();
        panel->ShowPanel();
    }
    static intptr_t CopyData(uintptr_t code, const char16_t* text) {
        return MarrowfinSendCopyData(panel->Handle(), code, text);
    }
    static intptr_t Control(uintptr_t code, intptr_t lParam) {
        return MarrowfinSendPanelControl(panel->Handle(), code, lParam);
    }
    static WindowHandle HostHandle() { return HandleOf(host); }

    static inline marrowfin::test::TempHome* home = nullptr;
    static inline RecordingHost* host = nullptr;
    static inline CBrindleDlg* panel = nullptr;
};

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

TEST_F(HostLink, CopyDataSetsModeTokenAndUserAsTheHostWroteThem) {
    panel->userId = 9;
    panel->userToken = u"keep";
    for (uintptr_t unknown : {410u, 417u, 999u}) EXPECT_EQ(CopyData(unknown, u"5&^&x"), 0);
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
        {u"&^&tok&^&tail", 1, u"tok&^&tail"}, {u"12345&^&abc", 12345, u"abc"}, {u"-2&^&", -2, u""},
        {u"99999999999&^&big", INT32_MAX, u"big"}, {u"77&^", INT32_MAX, u"big"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(U8(c.text));
        EXPECT_EQ(CopyData(416, c.text), 0);
        EXPECT_EQ(panel->userId, c.user);
        EXPECT_EQ(panel->userToken, c.token);
    }
}

TEST_F(HostLink, LocationsAnswerOneAndOnlyTheCollectionsWordOpensAnything) {
    KillTimer(panel->Handle(), 2000);
    const int page = panel->m_page, pending = panel->m_pendingClass;
    const bool force = panel->m_forceList;
    QCoreApplication::sendPostedEvents();
    marrowfin::test::MessageRecorder posted(panel);
    EXPECT_EQ(CopyData(411, u"\\门窗\\推拉门"), 1);
    EXPECT_EQ(posted.Count(MARROWFIN_COPY_DATA, 0), 1);
    EXPECT_EQ(posted.Take().size(), 1u);  // the order itself, and nothing it posted
    EXPECT_EQ(panel->m_page, page);
    EXPECT_EQ(panel->m_pendingClass, pending);
    EXPECT_EQ(panel->m_forceList, force);
    EXPECT_FALSE(IsTimerRunning(panel->Handle(), 2000));
    // With the word it answers 1 as well, and the host's flag lasts this step only.
    EXPECT_EQ(CopyData(411, u"\\我的收藏\\1"), 1);
    EXPECT_FALSE(panel->m_hostAskedCollections);
    // 412 shows the panel whatever the location.
    panel->HidePanel();
    EXPECT_EQ(CopyData(412, u""), 1);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(host->records.empty());
}

TEST_F(HostLink, ControlsClearTheModeForTheHostOnlySetTheUserAndSignOut) {
    // 4 compares on the low 32 bits; a handle of another window changes nothing.
    panel->showMode = u"PMMC";
    EXPECT_EQ(Control(4, static_cast<intptr_t>(HandleOf(panel->m_classList))), 0);
    EXPECT_EQ(panel->showMode, u"PMMC");
    EXPECT_EQ(Control(4, static_cast<intptr_t>(HostHandle() | (uint64_t{0xABCD} << 32))), 0);
    EXPECT_EQ(panel->showMode, u"");
    EXPECT_EQ(Control(5, 4321), 0);
    EXPECT_EQ(panel->userId, 4321);
    // Signing out forgets the user; on the collections entry (class 1) the search text goes too.
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

TEST_F(HostLink, TheModeIsTheHostsLastWordAndOrdersReachOnlyThePanel) {
    const WindowHandle handle = panel->Handle();
    panel->HidePanel();
    SearchBrindleRes(u"推拉门", u"PMMC");
    EXPECT_EQ(panel->showMode, u"PMMC");
    EXPECT_EQ(panel->m_page, PageSearch);
    // The collections from the host: the search page is left first, row 1
    // comes through the switch timer, the panel stays hidden.
    panel->HidePanel();
    KillTimer(handle, 2000);
    ShiftTicksForTest(500);  // past the damping of search commands
    ResetClass(u"\\我的收藏");
    EXPECT_FALSE(IsSearchPage(panel->m_page));
    EXPECT_EQ(panel->m_pendingClass, 1);
    EXPECT_TRUE(IsTimerRunning(handle, 2000));
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"PMMC");
    // HideGallery forgets the mode; ShowGallery sets it, a null location keeps the class.
    HideGallery();
    EXPECT_EQ(panel->showMode, u"");
    ShowGallery(nullptr, u"YL");
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->showMode, u"YL");
    // Orders to the host's handle do not reach the panel, though it exists.
    EXPECT_EQ(MarrowfinSendCopyData(HostHandle(), 415, u"lost"), 0);
    EXPECT_EQ(MarrowfinSendPanelControl(HostHandle(), 5, 1), 0);
    EXPECT_NE(panel->userToken, u"lost");
    EXPECT_NE(panel->userId, 1);
    EXPECT_TRUE(host->records.empty());
}

TEST_F(HostLink, FeedbackWaitRemindsEveryThirdTickUntilTheUserChanges) {
    std::vector<int> noticesAtTick;
    bool disabledDuring = false, hiddenDuring = false;
    QTimer::singleShot(0, [&] {  // runs inside the wait's modal loop
        CDomodalDlg* wait = RunningWait();
        ASSERT_NE(wait, nullptr);
        // The wait blocks the panel's caller, not the host: its feedback form stays usable.
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        disabledDuring = !panel->isEnabled();
        hiddenDuring = !panel->isVisible();
        // Enter would close an ordinary dialog.
        QTest::keyClick(wait, Qt::Key_Return);
        QTest::keyClick(wait, Qt::Key_Enter);
        EXPECT_EQ(RunningWait(), wait);
        for (int tick = 1; tick <= 7; ++tick) {
            Tick(wait);
            noticesAtTick.push_back(static_cast<int>(host->Notices(MARROWFIN_NOTICE_FEEDBACK_WAITING).size()));
        }
        Control(5, 31);  // the host reports back: the next tick ends it
        Tick(wait);
    });
    panel->FeedbackButton();
    EXPECT_TRUE(disabledDuring);
    EXPECT_TRUE(hiddenDuring);
    EXPECT_TRUE(panel->isEnabled());
    EXPECT_EQ(panel->userId, 31);
    EXPECT_EQ(noticesAtTick, (std::vector<int>{0, 0, 1, 1, 1, 2, 2}));
    EXPECT_EQ(host->NoticeOrder(), (std::vector<intptr_t>{13, 14, 14}));
    EXPECT_EQ(host->records.front().wParam, panel->Handle());
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
    EXPECT_FALSE(PostHostNotice(panel->hostWindow, panel->Handle(), 14));  // delivered nowhere
}

TEST_F(HostLink, InsertionsOwnTheirPathUntilTheHostTakesIt) {
    EXPECT_TRUE(PostHostInsertion(HostHandle(), 3, u"/d/Orsolen/门窗/推拉门/a.dwg"));
    QCoreApplication::sendPostedEvents();
    ASSERT_EQ(host->Requests(3).size(), 1u);
    EXPECT_EQ(host->Requests(3)[0].text, u"/d/Orsolen/门窗/推拉门/a.dwg");
    // To a window that dies before delivery: Qt drops the event and the path
    // with it (the sanitizer builds see a leak otherwise).
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

TEST_F(HostLink, BoutiqueAnswersFromTheTreeAndCachesIt) {
    GalleryStore& store = *panel->m_store;
    GalleryNode* savedRoot = store.root;
    panel->m_boutiqueCache.clear();
    store.root = nullptr;  // no tree: no, and nothing remembered
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), 0);
    EXPECT_TRUE(panel->m_boutiqueCache.empty());

    auto* root = new GalleryNode(u"", u"/d/Orsolen", u"Orsolen", kKindDir, false, false, 0);
    auto add = [](GalleryNode* parent, const std::u16string& name, const std::u16string& kind, bool boutique) {
        auto* n = new GalleryNode(parent->name, parent->Path() + u"/" + name, name, kind, false, boutique,
                                  kind == kKindFile ? 2048 : 0);
        AddChild(parent, n, false);
        return n;
    };
    GalleryNode* fine = add(root, u"精品", kKindDir, true);
    add(add(fine, u"门", kKindDir, false), u"a.dwg", kKindFile, false);
    GalleryNode* plain = add(root, u"普通", kKindDir, false);
    add(add(plain, u"墙", kKindDir, false), u"b.dwg", kKindFile, false);
    // A recent block of the boutique gallery lies at the root: the root's own files are not searched.
    AddChild(root, new GalleryNode(u"Orsolen", u"/d/Orsolen/精品/门/c.dwg", u"c.dwg", kKindFile, false, true, 2048), false);
    store.root = root;

    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), 1);
    EXPECT_EQ(IsBlkBoutique(u"\\d\\Orsolen\\精品\\门\\a.dwg"), 1);  // the host's separators
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"), 0);
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/c.dwg"), 0);
    EXPECT_EQ(panel->m_boutiqueCache.size(), 3u);
    // Answers come from the cache once given, whatever the tree says now ...
    fine->boutique = false;
    plain->boutique = true;
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), 1);
    // ... until the 101st entry starts it afresh.
    for (int i = 0; i < 97; ++i) IsBlkBoutique((u"/nowhere/" + std::u16string(1, char16_t(u'A' + i))).c_str());
    EXPECT_EQ(panel->m_boutiqueCache.size(), 100u);
    EXPECT_EQ(IsBlkBoutique(u"/nowhere/new.dwg"), 0);
    EXPECT_EQ(panel->m_boutiqueCache.size(), 1u);
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/精品/门/a.dwg"), 0);
    EXPECT_EQ(IsBlkBoutique(u"/d/Orsolen/普通/墙/b.dwg"), 1);

    store.root = savedRoot;
    DestroySubtree(root);
    delete root;
    panel->m_boutiqueCache.clear();
}
