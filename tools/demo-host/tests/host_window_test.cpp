// The demo host's main window over an export table that only writes down how
// it was called: the answers to the panel's requests, the sign-in dialog, the
// insertion road onto the drawing sheet, the toolbar's and menu's orders, and
// the feedback form that ends the panel's wait.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest/QTest>
#include <functional>
#include <memory>

#include "drawing_sheet.h"
#include "feedback_dialog.h"
#include "host_window.h"
#include "sign_in_dialog.h"
#include "support/test_paths.h"

namespace marrowfin::demo {
namespace {

QStringList g_calls;       // e.g. "show", "ShowGallery(\A|YL)", "control(55,5,10001)"
uint64_t g_panel = 0;      // what GetGallery answers
QString g_boutiqueSuffix;  // IsBlkBoutique answers 1 for paths ending so

QString Text(const char16_t* text) { return text ? QString::fromUtf16(text) : QStringLiteral("<null>"); }
void Add(const QString& call) { g_calls << call; }

GalleryExports RecordedExports() {
    g_calls.clear();
    g_panel = 0;
    g_boutiqueSuffix.clear();
    GalleryExports e;
    e.FirstSynchro = [] { Add("FirstSynchro"); };
    e.show = [] { Add("show"); };
    e.ShowGallery = [](const char16_t* l, const char16_t* m) { Add(QStringLiteral("ShowGallery(%1|%2)").arg(Text(l), Text(m))); };
    e.HideGallery = [] { Add("HideGallery"); };
    e.CloseGallery = [] { Add("CloseGallery"); };
    e.GetGallery = []() -> uint64_t { return g_panel; };
    e.GaDllPretanslateMsg = [](MarrowfinMsg*) { return 0; };
    e.IsDLLHwnd = [](uint64_t) { return 0; };
    e.SearchBrindleRes = [](const char16_t* t, const char16_t* m) { Add(QStringLiteral("Search(%1|%2)").arg(Text(t), Text(m))); };
    e.ResetClass = [](const char16_t* t) { Add(QStringLiteral("ResetClass(%1)").arg(Text(t))); };
    e.IsBlkBoutique = [](const char16_t* path) -> uint8_t {
        return !g_boutiqueSuffix.isEmpty() && Text(path).endsWith(g_boutiqueSuffix);
    };
    e.ShowBoutiqueGallery = [] { Add("ShowBoutiqueGallery"); };
    e.AddMoreGallery = [](const char16_t* n) { Add(QStringLiteral("AddMoreGallery(%1)").arg(Text(n))); };
    e.MarrowfinWindowOf = [](void*) -> uint64_t { return 99; };
    e.MarrowfinSetMainWindow = [](void*) { Add("SetMainWindow"); };
    e.MarrowfinSendPanelControl = [](uint64_t panel, uintptr_t code, intptr_t l) -> intptr_t {
        Add(QStringLiteral("control(%1,%2,%3)").arg(panel).arg(code).arg(l));
        return 0;
    };
    e.MarrowfinSendCopyData = [](uint64_t panel, uintptr_t code, const char16_t* t) -> intptr_t {
        Add(QStringLiteral("copy(%1,%2,%3)").arg(panel).arg(code).arg(Text(t)));
        return code == 411 || code == 412 ? 1 : 0;
    };
    return e;
}

QString Dwg(const char* name) {
    return QString::fromStdString(marrowfin::test::SharedDir()) + QStringLiteral("/testdata/dwg/") + QString::fromLatin1(name);
}

// Runs `answer` on the next modal dialog once it is up.
void WhenModal(std::function<void(QWidget*)> answer) {
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (QWidget* modal = QApplication::activeModalWidget(); modal && modal->isVisible()) {
            timer->deleteLater();
            timer->stop();
            answer(modal);
        }
    });
    timer->start();
}
void Accept(QWidget* w) { static_cast<QDialog*>(w)->accept(); }
void Reject(QWidget* w) { static_cast<QDialog*>(w)->reject(); }
std::function<void(QWidget*)> AcceptText(const QString& text) {
    return [text](QWidget* w) {
        static_cast<QInputDialog*>(w)->setTextValue(text);
        Accept(w);
    };
}

class HostWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    // A request as the panel sends it: synchronously, the answer through lParam.
    void Request(uintptr_t code, void* lParam) {
        MarrowfinHostEvent event(MARROWFIN_GALLERY_HOST_REQUEST, code, reinterpret_cast<intptr_t>(lParam));
        QCoreApplication::sendEvent(window.get(), &event);
    }
    void PostInsert(uintptr_t code, const QString& path) {
        auto text = path.isNull() ? nullptr : std::make_unique<std::u16string>(path.toStdU16String());
        QCoreApplication::postEvent(window.get(), new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_REQUEST, code, 0, std::move(text)));
        QCoreApplication::processEvents();
    }
    void Notice(intptr_t code) {
        MarrowfinHostEvent event(MARROWFIN_GALLERY_HOST_NOTICE, 5, code);
        QCoreApplication::sendEvent(window.get(), &event);
    }
    void Trigger(const QString& action) { window->action(action)->trigger(); }

    GalleryExports exports = RecordedExports();
    std::unique_ptr<HostWindow> window =
        std::make_unique<HostWindow>(exports, QStringList{QStringLiteral("建筑门窗"), QStringLiteral("Title Blocks")});
};

TEST_F(HostWindowTest, SignInGivesTheDialogsUserAndTheTokenFollows) {
    std::u16string token;
    Request(MARROWFIN_REQUEST_TOKEN, &token);
    EXPECT_TRUE(token.empty());  // nobody signed in yet
    QString shownUser;
    struct Round { std::function<void(QWidget*)> answer; uint32_t number; uint32_t user; };
    const Round rounds[] = {
        {Reject, 0, 0},
        {[&](QWidget* w) {  // the dialog comes filled with the demo user
             shownUser = static_cast<SignInDialog*>(w)->userField()->text();
             QTest::mouseClick(w->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
         }, 10001, 10001},
        {[](QWidget* w) {  // typed keys go through the field's validator
             auto* field = static_cast<SignInDialog*>(w)->userField();
             field->selectAll();
             QTest::keyClicks(field, QStringLiteral("42x7"));
             QTest::keyClick(field, Qt::Key_Return);
         }, 427, 427},
        {[](QWidget* w) {  // an emptied field signs nobody in; the earlier sign-in stands
             static_cast<SignInDialog*>(w)->userField()->clear();
             Accept(w);
         }, 0, 427},
    };
    for (const Round& round : rounds) {
        SCOPED_TRACE(round.number);
        WhenModal(round.answer);
        uint32_t number = 0;
        Request(MARROWFIN_REQUEST_SIGN_IN, &number);
        EXPECT_EQ(number, round.number);
        EXPECT_EQ(window->userId(), round.user);
        if (round.number == 0) continue;
        Request(MARROWFIN_REQUEST_TOKEN, &token);
        EXPECT_EQ(token, u"demo-token-" + QString::number(round.number).toStdU16String());
    }
    EXPECT_EQ(shownUser, QStringLiteral("10001"));
}

TEST_F(HostWindowTest, AnswersChannelPermissionAndGalleryNameAndSurvivesNullAnswers) {
    QStringList spoken;
    QObject::connect(window.get(), &HostWindow::panelSpoke, [&spoken](const QString& line) { spoken << line; });
    std::u16string channel = u"stale";
    Request(MARROWFIN_REQUEST_CHANNEL, &channel);
    EXPECT_EQ(channel, u"demo");
    std::u16string gallery = u"精品图库A";
    Request(MARROWFIN_REQUEST_GALLERY_NAME, &gallery);
    EXPECT_EQ(window->lastGalleryAsked(), QStringLiteral("精品图库A"));
    int32_t allowed = -1;
    Request(MARROWFIN_REQUEST_PERMISSION, &allowed);
    EXPECT_EQ(allowed, 0);
    Request(MARROWFIN_REQUEST_CHANNEL, nullptr);
    Request(MARROWFIN_REQUEST_PERMISSION, nullptr);
    Request(42, nullptr);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("42")));
    // Each request is told once, with how it was answered.
    ASSERT_EQ(spoken.size(), 6);
    EXPECT_EQ(spoken[1], QStringLiteral("request 8: The gallery concerned is 精品图库A"));
    EXPECT_TRUE(spoken[5].startsWith(QStringLiteral("request 42 (not answered): ")));
}

TEST_F(HostWindowTest, AnInsertedBlockWaitsForAClickAndIsPlacedOnTheGrid) {
    DrawingSheet* sheet = window->sheet();
    g_boutiqueSuffix = QStringLiteral("png_ac1027.dwg");
    PostInsert(MARROWFIN_REQUEST_INSERT_YL, Dwg("bmp8_ac1015.dwg"));
    ASSERT_TRUE(sheet->HasPending());
    EXPECT_TRUE(sheet->blocks().empty());
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(29, 31));  // snapped: 29 -> 20, 31 -> 40
    ASSERT_EQ(sheet->blocks().size(), 1u);
    EXPECT_EQ(sheet->blocks()[0].at, QPoint(20, 40));
    EXPECT_EQ(sheet->blocks()[0].path, Dwg("bmp8_ac1015.dwg"));
    EXPECT_FALSE(sheet->blocks()[0].preview.isNull());
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));  // nothing waits
    EXPECT_EQ(sheet->blocks().size(), 1u);

    // A right click or Escape gives a waiting block up; a new insertion replaces the waiting one.
    PostInsert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));
    QTest::mouseClick(sheet, Qt::RightButton, Qt::NoModifier, QPoint(100, 100));
    EXPECT_FALSE(sheet->HasPending());
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("no_preview_ac1009.dwg"));
    sheet->setFocus();
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet->HasPending());
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    PostInsert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(300, 60));
    // A drawing without a preview is placed all the same, as a labelled box;
    // a boutique block is marked (asked by its path when placed).
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(500, 300));
    ASSERT_EQ(sheet->blocks().size(), 3u);
    EXPECT_TRUE(sheet->blocks()[1].preview.isNull());
    EXPECT_FALSE(sheet->blocks()[2].preview.isNull());
    QStringList listed;
    for (int i = 0; i < window->insertedList()->count(); ++i) listed << window->insertedList()->item(i)->text();
    EXPECT_EQ(listed, (QStringList{"bmp8_ac1015  [YL]", "no_preview_ac1009", "png_ac1027  [PMMC]  ★"}));

    // An insertion without a path is told, not placed.
    PostInsert(MARROWFIN_REQUEST_INSERT, QString());
    EXPECT_FALSE(sheet->HasPending());
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("without a path")));
}

TEST_F(HostWindowTest, ToolbarAndMenuDriveTheExports) {
    // Without a panel the orders are not sent, and the user is told.
    Trigger("control0");
    Trigger("copy415");
    EXPECT_TRUE(g_calls.isEmpty());
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("no panel")));
    g_panel = 55;
    auto setNumber = [](QWidget* w) {  // the number offered is the demo user's
        EXPECT_EQ(static_cast<QInputDialog*>(w)->intValue(), 10001);
        static_cast<QInputDialog*>(w)->setIntValue(-2);
        Accept(w);
    };
    auto openClass = [](QWidget* w) {  // the location, then the mode
        AcceptText(QStringLiteral("\\建筑门窗\\单开门"))(w);
        WhenModal(AcceptText(QStringLiteral("YL")));
    };
    // Each action with the answer to its dialog and the call it makes; the
    // window's own handle (99) goes with controls 1, 3 and 4, and copy-data
    // orders offer a text fitting their number.
    const std::tuple<const char*, std::function<void(QWidget*)>, QString> orders[] = {
        {"gallery", {}, "show"}, {"hide", {}, "HideGallery"}, {"close", {}, "CloseGallery"},
        {"openClass", openClass, "ShowGallery(\\建筑门窗\\单开门|YL)"},
        {"search", Reject, ""}, {"search", Accept, "Search(门|)"},
        {"resetClass", AcceptText("我的收藏"), "ResetClass(我的收藏)"}, {"pickGalleries", {}, "ShowBoutiqueGallery"},
        {"addGallery", AcceptText("  "), ""}, {"addGallery", AcceptText(" 照明灯具 "), "AddMoreGallery(照明灯具)"},
        {"control0", {}, "control(55,0,0)"}, {"control1", {}, "control(55,1,99)"}, {"control2", {}, "control(55,2,0)"},
        {"control3", {}, "control(55,3,99)"}, {"control4", {}, "control(55,4,99)"}, {"control5", setNumber, "control(55,5,-2)"},
        {"control6", {}, "control(55,6,0)"}, {"copy411", Accept, "copy(55,411,\\我的收藏)"},
        {"copy412", Accept, "copy(55,412,\\建筑门窗)"}, {"copy413", Accept, "copy(55,413,YL)"},
        {"copy414", Accept, "copy(55,414,门)"}, {"copy415", Accept, "copy(55,415,demo-token-10001)"},
        {"copy416", Accept, "copy(55,416,10001&^&demo-token-10001)"},
    };
    for (const auto& [action, dialog, call] : orders) {
        g_calls.clear();
        if (dialog) WhenModal(dialog);
        Trigger(action);
        EXPECT_EQ(g_calls.join(' '), call) << action;
    }
    // Closing the host saves the gallery's lists.
    g_calls.clear();
    window->close();
    EXPECT_EQ(g_calls, QStringList{QStringLiteral("CloseGallery")});
}

TEST_F(HostWindowTest, FeedbackFormEndsThePanelsWaitWhenClosed) {
    g_panel = 31;
    Notice(MARROWFIN_NOTICE_STATISTICS);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("statistics")));
    Notice(MARROWFIN_NOTICE_FEEDBACK);
    Notice(MARROWFIN_NOTICE_FEEDBACK);  // one form, however often asked
    ASSERT_EQ(window->findChildren<FeedbackDialog*>().size(), 1);
    auto* form = window->findChild<FeedbackDialog*>();
    EXPECT_TRUE(form->isVisible());
    Notice(MARROWFIN_NOTICE_FEEDBACK_WAITING);
    Notice(MARROWFIN_NOTICE_FEEDBACK_WAITING);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("(2)")));
    EXPECT_TRUE(g_calls.isEmpty());  // nothing sent while the form is open
    // Nobody signed in: the wait ends with "nobody" (-1).
    QTest::keyClicks(form->textField(), QStringLiteral("more doors"));
    QTest::mouseClick(form->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(g_calls, QStringList{QStringLiteral("control(31,5,-1)")});
    EXPECT_EQ(window->lastStatus(), QStringLiteral("Feedback sent"));
    // Signed in: the user's number, also when the form is just closed.
    window->setUserId(10001);
    g_calls.clear();
    Notice(MARROWFIN_NOTICE_FEEDBACK);
    QCoreApplication::processEvents();
    ASSERT_NE(window->findChild<FeedbackDialog*>(), nullptr);
    window->findChild<FeedbackDialog*>()->close();
    QCoreApplication::processEvents();
    EXPECT_EQ(g_calls, QStringList{QStringLiteral("control(31,5,10001)")});
}

}  // namespace
}  // namespace marrowfin::demo
