#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QtTest/QTest>
#include <functional>
#include <memory>

#include "drawing_sheet.h"
#include "feedback_dialog.h"
#include "host_window.h"
#include "recorded_exports.h"
#include "sign_in_dialog.h"
#include "support/test_paths.h"

namespace marrowfin::demo {
namespace {

using test::Record;

QString Dwg(const char* name) {
    return QString::fromStdString(marrowfin::test::SharedDir()) + QStringLiteral("/testdata/dwg/") + QString::fromLatin1(name);
}

// Runs `answer` on the next modal dialog once it is up (the caller then
// starts the code that opens it).
void WhenModal(std::function<void(QWidget*)> answer) {
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (QWidget* modal = QApplication::activeModalWidget(); modal && modal->isVisible()) {
            timer->stop();
            timer->deleteLater();
            answer(modal);
        }
    });
    timer->start();
}

class HostWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        exports = test::RecordedExports();
        window = std::make_unique<HostWindow>(exports, QStringList{QStringLiteral("建筑门窗"), QStringLiteral("Title Blocks")});
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    // Sends a request the way the panel does: synchronously, answer through lParam.
    void Request(uintptr_t code, void* lParam) {
        MarrowfinHostEvent event(MARROWFIN_GALLERY_HOST_REQUEST, code, reinterpret_cast<intptr_t>(lParam));
        QCoreApplication::sendEvent(window.get(), &event);
    }
    void PostInsert(uintptr_t code, const QString& path) {
        QCoreApplication::postEvent(window.get(), new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_REQUEST, code, 0,
                                                                         std::make_unique<std::u16string>(path.toStdU16String())));
        QCoreApplication::processEvents();
    }
    void Notice(intptr_t code) {
        MarrowfinHostEvent event(MARROWFIN_GALLERY_HOST_NOTICE, 5, code);
        QCoreApplication::sendEvent(window.get(), &event);
    }

    GalleryExports exports;
    std::unique_ptr<HostWindow> window;
};

TEST_F(HostWindowTest, SignInThenTokenFollowTheUserTheDialogGave) {
    // Nobody signed in yet: request 1 leaves the token empty.
    std::u16string token;
    Request(MARROWFIN_REQUEST_TOKEN, &token);
    EXPECT_TRUE(token.empty());

    // Cancel leaves 0.
    WhenModal([](QWidget* w) { static_cast<QDialog*>(w)->reject(); });
    uint32_t number = 0;
    Request(MARROWFIN_REQUEST_SIGN_IN, &number);
    EXPECT_EQ(number, 0u);
    EXPECT_EQ(window->userId(), 0u);

    // The dialog comes pre-filled with the demo user; Sign in takes it.
    QString shownUser;
    WhenModal([&shownUser](QWidget* w) {
        auto* dialog = qobject_cast<SignInDialog*>(w);
        ASSERT_NE(dialog, nullptr);
        shownUser = dialog->userField()->text();
        QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    Request(MARROWFIN_REQUEST_SIGN_IN, &number);
    EXPECT_EQ(shownUser, QStringLiteral("10001"));
    EXPECT_EQ(number, 10001u);
    Request(MARROWFIN_REQUEST_TOKEN, &token);
    EXPECT_EQ(token, u"demo-token-10001");

    // Another number typed by hand; keys go through the field's validator.
    WhenModal([](QWidget* w) {
        auto* dialog = static_cast<SignInDialog*>(w);
        dialog->userField()->selectAll();
        QTest::keyClicks(dialog->userField(), QStringLiteral("42x7"));
        QTest::keyClick(dialog->userField(), Qt::Key_Return);
    });
    number = 0;
    Request(MARROWFIN_REQUEST_SIGN_IN, &number);
    EXPECT_EQ(number, 427u);
    Request(MARROWFIN_REQUEST_TOKEN, &token);
    EXPECT_EQ(token, u"demo-token-427");

    // A field emptied by the user signs nobody in, even with Sign in pressed.
    WhenModal([](QWidget* w) {
        auto* dialog = static_cast<SignInDialog*>(w);
        dialog->userField()->clear();
        dialog->accept();
    });
    number = 0;
    Request(MARROWFIN_REQUEST_SIGN_IN, &number);
    EXPECT_EQ(number, 0u);
    EXPECT_EQ(window->userId(), 427u);  // the earlier sign-in stands
}

TEST_F(HostWindowTest, AnswersChannelPermissionAndGalleryName) {
    QStringList spoken;
    QObject::connect(window.get(), &HostWindow::panelSpoke, [&spoken](const QString& line) { spoken << line; });
    std::u16string channel = u"stale";
    Request(MARROWFIN_REQUEST_CHANNEL, &channel);
    EXPECT_EQ(channel, u"demo");

    std::u16string gallery = u"精品图库A";
    Request(MARROWFIN_REQUEST_GALLERY_NAME, &gallery);
    EXPECT_EQ(window->lastGalleryAsked(), QStringLiteral("精品图库A"));
    EXPECT_EQ(gallery, u"精品图库A");  // read only
    int32_t allowed = -1;
    Request(MARROWFIN_REQUEST_PERMISSION, &allowed);
    EXPECT_EQ(allowed, 0);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("精品图库A")));

    // Null pointers and unknown codes are survived and told.
    Request(MARROWFIN_REQUEST_CHANNEL, nullptr);
    Request(MARROWFIN_REQUEST_PERMISSION, nullptr);
    Request(42, nullptr);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("42")));
    EXPECT_EQ(window->requestsSeen(MARROWFIN_REQUEST_CHANNEL), 2);
    // Each request is told once, with how it was answered.
    ASSERT_EQ(spoken.size(), 6);
    EXPECT_EQ(spoken[0], QStringLiteral("request 7: Channel \"demo\" handed over"));
    EXPECT_EQ(spoken[1], QStringLiteral("request 8: The gallery concerned is 精品图库A"));
    EXPECT_TRUE(spoken[5].startsWith(QStringLiteral("request 42 (not answered): ")));
}

TEST_F(HostWindowTest, AnInsertedBlockWaitsForAClickAndIsPlacedOnTheGrid) {
    DrawingSheet* sheet = window->sheet();
    Record().boutiqueSuffix = QStringLiteral("png_ac1027.dwg");
    PostInsert(MARROWFIN_REQUEST_INSERT_YL, Dwg("bmp8_ac1015.dwg"));
    ASSERT_TRUE(sheet->HasPending());
    EXPECT_TRUE(sheet->blocks().empty());
    EXPECT_EQ(window->insertedList()->count(), 0);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("bmp8_ac1015")));

    // Snapped to the nearest grid point: 29 -> 20, 31 -> 40.
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(29, 31));
    ASSERT_EQ(sheet->blocks().size(), 1u);
    EXPECT_FALSE(sheet->HasPending());
    const PlacedBlock& placed = sheet->blocks()[0];
    EXPECT_EQ(placed.at, QPoint(20, 40));
    EXPECT_EQ(placed.mode, QStringLiteral("YL"));
    EXPECT_FALSE(placed.preview.isNull());
    EXPECT_EQ(placed.path, Dwg("bmp8_ac1015.dwg"));
    ASSERT_EQ(window->insertedList()->count(), 1);
    EXPECT_EQ(window->insertedList()->item(0)->text(), QStringLiteral("bmp8_ac1015  [YL]"));

    // A second click without a pending block places nothing.
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
    EXPECT_EQ(sheet->blocks().size(), 1u);

    // A drawing without a preview is still inserted, as a labelled box; a
    // right click or Escape gives up a waiting block.
    PostInsert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));
    ASSERT_TRUE(sheet->HasPending());
    QTest::mouseClick(sheet, Qt::RightButton, Qt::NoModifier, QPoint(100, 100));
    EXPECT_FALSE(sheet->HasPending());
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("no_preview_ac1009.dwg"));
    sheet->setFocus();
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_FALSE(sheet->HasPending());
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    PostInsert(MARROWFIN_REQUEST_INSERT, Dwg("no_preview_ac1009.dwg"));  // replaces the waiting one
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(300, 60));
    ASSERT_EQ(sheet->blocks().size(), 2u);
    EXPECT_TRUE(sheet->blocks()[1].preview.isNull());
    EXPECT_TRUE(sheet->blocks()[1].mode.isEmpty());
    EXPECT_EQ(window->insertedList()->item(1)->text(), QStringLiteral("no_preview_ac1009"));
    // A boutique block is marked in the list (asked by its path when placed).
    PostInsert(MARROWFIN_REQUEST_INSERT_PMMC, Dwg("png_ac1027.dwg"));
    QTest::mouseClick(sheet, Qt::LeftButton, Qt::NoModifier, QPoint(500, 300));
    ASSERT_EQ(window->insertedList()->count(), 3);
    EXPECT_EQ(window->insertedList()->item(2)->text(), QStringLiteral("png_ac1027  [PMMC]  ★"));
    EXPECT_FALSE(sheet->blocks()[2].preview.isNull());

    // An insertion without a path is told, not placed.
    QCoreApplication::postEvent(window.get(), new MarrowfinHostEvent(MARROWFIN_GALLERY_HOST_REQUEST, MARROWFIN_REQUEST_INSERT, 0));
    QCoreApplication::processEvents();
    EXPECT_FALSE(sheet->HasPending());
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("without a path")));

    // What the sheet shows: the grid paper, the preview where the first
    // block lies, the labelled box of the second.
    const QImage shot = sheet->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QDir().mkpath(QCoreApplication::applicationDirPath() + QStringLiteral("/rendered"));
    shot.save(QCoreApplication::applicationDirPath() + QStringLiteral("/rendered/demo_sheet.png"));
    EXPECT_EQ(QColor(shot.pixel(DrawingSheet::kGrid * 10, 7)), QColor(0xa8, 0xbe, 0xd4));  // a major line
    EXPECT_EQ(QColor(shot.pixel(DrawingSheet::kGrid * 10 + 7, 7)), QColor(0xfd, 0xfd, 0xf8));  // paper
    const QRect first = DrawingSheet::BlockRect(sheet->blocks()[0]);
    int unlikePaper = 0;
    for (int y = first.top() + 2; y < first.bottom() - 2; y += 3)
        for (int x = first.left() + 2; x < first.right() - 2; x += 3)
            unlikePaper += QColor(shot.pixel(x, y)) != QColor(0xfd, 0xfd, 0xf8) && QColor(shot.pixel(x, y)) != QColor(0xdc, 0xe6, 0xf0);
    EXPECT_GT(unlikePaper, 50);
    const QRect second = DrawingSheet::BlockRect(sheet->blocks()[1]);
    EXPECT_EQ(QColor(shot.pixel(second.left() + 3, second.top() + 3)), QColor(0xf4, 0xf4, 0xf4));

    // The whole window: toolbar, sheet, the list with its three entries, the status.
    const QImage whole = window->grab().toImage();
    whole.save(QCoreApplication::applicationDirPath() + QStringLiteral("/rendered/demo_host_window.png"));
    const QRect listArea(window->insertedList()->mapTo(window.get(), QPoint(0, 0)), window->insertedList()->size());
    int dark = 0;  // text pixels of the entries
    for (int y = listArea.top(); y < listArea.top() + 60; ++y)
        for (int x = listArea.left(); x < listArea.right(); ++x) dark += qGray(whole.pixel(x, y)) < 100;
    EXPECT_GT(dark, 30);
}

TEST_F(HostWindowTest, ToolbarAndMenuDriveTheExports) {
    window->action(QStringLiteral("gallery"))->trigger();
    window->action(QStringLiteral("hide"))->trigger();
    window->action(QStringLiteral("close"))->trigger();
    EXPECT_EQ(Record().calls, (QStringList{"show", "HideGallery", "CloseGallery"}));

    // Open class: location offered from the first gallery, then the mode.
    Record().calls.clear();
    WhenModal([](QWidget* w) {
        auto* d = qobject_cast<QInputDialog*>(w);
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->textValue(), QStringLiteral("\\建筑门窗"));
        d->setTextValue(QStringLiteral("\\建筑门窗\\单开门"));
        d->accept();
        WhenModal([](QWidget* w2) {
            auto* mode = qobject_cast<QInputDialog*>(w2);
            ASSERT_NE(mode, nullptr);
            mode->setTextValue(QStringLiteral("YL"));
            mode->accept();
        });
    });
    window->action(QStringLiteral("openClass"))->trigger();
    EXPECT_EQ(Record().calls, QStringList{QStringLiteral("ShowGallery(\\建筑门窗\\单开门|YL)")});

    // Cancelled dialogs call nothing.
    Record().calls.clear();
    WhenModal([](QWidget* w) { static_cast<QDialog*>(w)->reject(); });
    window->action(QStringLiteral("search"))->trigger();
    EXPECT_TRUE(Record().calls.isEmpty());
    WhenModal([](QWidget* w) { static_cast<QDialog*>(w)->accept(); });
    window->action(QStringLiteral("search"))->trigger();
    EXPECT_EQ(Record().calls, QStringList{QStringLiteral("Search(门|)")});

    // Without a panel the orders are not sent, and the user is told.
    Record().calls.clear();
    window->action(QStringLiteral("control0"))->trigger();
    window->action(QStringLiteral("copy415"))->trigger();
    EXPECT_TRUE(Record().calls.isEmpty());
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("no panel")));

    // With one: the window's own handle goes with 1, 3 and 4; 5 asks the number.
    Record().panel = 55;
    for (int code : {0, 1, 2, 3, 4, 6}) window->action(QStringLiteral("control%1").arg(code))->trigger();
    WhenModal([](QWidget* w) {
        auto* d = qobject_cast<QInputDialog*>(w);
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->intValue(), 10001);
        d->setIntValue(-2);
        d->accept();
    });
    window->action(QStringLiteral("control5"))->trigger();
    EXPECT_EQ(Record().calls, (QStringList{"control(55,0,0)", "control(55,1,99)", "control(55,2,0)", "control(55,3,99)",
                                           "control(55,4,99)", "control(55,6,0)", "control(55,5,-2)"}));

    // Copy-data orders offer a text fitting their number.
    Record().calls.clear();
    for (int code = 411; code <= 416; ++code) {
        WhenModal([](QWidget* w) { static_cast<QDialog*>(w)->accept(); });
        window->action(QStringLiteral("copy%1").arg(code))->trigger();
    }
    EXPECT_EQ(Record().calls, (QStringList{"copy(55,411,\\我的收藏)", "copy(55,412,\\建筑门窗)", "copy(55,413,YL)",
                                           "copy(55,414,门)", "copy(55,415,demo-token-10001)",
                                           "copy(55,416,10001&^&demo-token-10001)"}));
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("answer 0")));

    // The other exports a host has: a class without showing, the picker, a gallery more.
    Record().calls.clear();
    WhenModal([](QWidget* w) {
        auto* d = qobject_cast<QInputDialog*>(w);
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->textValue(), QStringLiteral("建筑门窗"));
        d->setTextValue(QStringLiteral("我的收藏"));
        d->accept();
    });
    window->action(QStringLiteral("resetClass"))->trigger();
    window->action(QStringLiteral("pickGalleries"))->trigger();
    WhenModal([](QWidget* w) {
        static_cast<QInputDialog*>(w)->setTextValue(QStringLiteral("  "));  // blank: nothing to add
        static_cast<QDialog*>(w)->accept();
    });
    window->action(QStringLiteral("addGallery"))->trigger();
    WhenModal([](QWidget* w) {
        static_cast<QInputDialog*>(w)->setTextValue(QStringLiteral(" 照明灯具 "));
        static_cast<QDialog*>(w)->accept();
    });
    window->action(QStringLiteral("addGallery"))->trigger();
    EXPECT_EQ(Record().calls, (QStringList{"ResetClass(我的收藏)", "ShowBoutiqueGallery", "AddMoreGallery(照明灯具)"}));

    // Closing the host saves the gallery's lists.
    Record().calls.clear();
    window->close();
    EXPECT_EQ(Record().calls, QStringList{QStringLiteral("CloseGallery")});
}

TEST_F(HostWindowTest, FeedbackFormEndsThePanelsWaitWhenClosed) {
    Record().panel = 31;
    Notice(MARROWFIN_NOTICE_STATISTICS);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("statistics")));
    EXPECT_TRUE(Record().calls.isEmpty());

    Notice(MARROWFIN_NOTICE_FEEDBACK);
    auto* form = window->findChild<FeedbackDialog*>();
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible());
    // A second notice while it is open does not open another.
    Notice(MARROWFIN_NOTICE_FEEDBACK);
    EXPECT_EQ(window->findChildren<FeedbackDialog*>().size(), 1);
    Notice(MARROWFIN_NOTICE_FEEDBACK_WAITING);
    Notice(MARROWFIN_NOTICE_FEEDBACK_WAITING);
    EXPECT_TRUE(window->lastStatus().contains(QStringLiteral("(2)")));
    EXPECT_TRUE(Record().calls.isEmpty());  // nothing sent while the form is open

    // Nobody signed in: the wait ends with "nobody" (-1).
    QTest::keyClicks(form->textField(), QStringLiteral("more doors"));
    QTest::mouseClick(form->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(Record().calls, QStringList{QStringLiteral("control(31,5,-1)")});
    EXPECT_EQ(window->lastStatus(), QStringLiteral("Feedback sent"));

    // Signed in: the user's number, also when the form is just closed.
    window->setUserId(10001);
    Record().calls.clear();
    Notice(MARROWFIN_NOTICE_FEEDBACK);
    QCoreApplication::processEvents();
    form = window->findChild<FeedbackDialog*>();
    ASSERT_NE(form, nullptr);
    form->close();
    QCoreApplication::processEvents();
    EXPECT_EQ(Record().calls, QStringList{QStringLiteral("control(31,5,10001)")});
    EXPECT_EQ(window->noticesSeen(MARROWFIN_NOTICE_FEEDBACK), 3);
}

}  // namespace
}  // namespace marrowfin::demo
