#pragma once
// A user of the stand-in service of their own with a panel to open the
// collection dialogs over; the service's side of the collection read back by
// name; and the steps of driving a dialog with real input to its end.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPointer>
#include <fstream>
#include <functional>
#include <optional>

#include "collection/collection_calls.h"
#include "collection/collection_folders.h"
#include "collection_dialogs/name_dlg.h"
#include "fault_switches.h"
#include "platform/text.h"
#include "request_counters.h"
#include "skin/skin_button.h"
#include "skin/skin_test_util.h"
#include "support/event_pump.h"
#include "support/live_service.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "support/widget_input.h"
#include "user_state.h"

namespace marrowfin::test {

using Names = std::vector<std::string>;
// Tips expected in order: the first line and the button pressed (1 or 2).
using Tips = std::vector<std::pair<QString, int>>;

inline bool Exists(const std::string& path) { return QFile::exists(QString::fromStdString(path)); }

// Until the dialog no longer waits for the service, or has ended and gone.
inline void WaitIdle(CCollectionDialogFrame* dialog) {
    QPointer<CCollectionDialogFrame> alive(dialog);
    EXPECT_TRUE(PumpUntil([alive] { return !alive || !alive->Waiting(); }));
}

// Opens `dialog` and waits until it no longer waits for the service.
template <class Dialog>
Dialog* Opened(Dialog* dialog) {
    dialog->Open();
    WaitIdle(dialog);
    return dialog;
}

// Presses the button `id` with real input; the button, or null.
inline CSkinButton* Press(QWidget* window, int id) {
    for (CSkinButton* button : window->findChildren<CSkinButton*>())
        if (button->ControlId() == id) return Click(button, button->rect().center()), button;
    ADD_FAILURE() << "no button " << id;
    return nullptr;
}

// Answers the tips that `current` shows, in order; false (and a failure)
// when one didn't come.
inline bool AnswerTips(const std::function<CPopTipDlg*()>& current, const Tips& tips) {
    for (const auto& [line, button] : tips) {
        if (!PumpUntil([&current] { return current() && current()->isVisible(); })) {
            ADD_FAILURE() << "no tip came for " << line.toStdString();
            return false;
        }
        EXPECT_EQ(current()->FirstLine(), line);
        CSkinButton* pressed = button == 1 ? current()->OkButton() : current()->CancelButton();
        Click(pressed, pressed->rect().center());
    }
    return true;
}

// Answers the dialog's tips, then waits for its end: its result, or -1 (and
// a failure) when a tip or the end didn't come.
inline int Finish(CCollectionDialogFrame* dialog, const Tips& tips = {}) {
    if (!AnswerTips([dialog] { return dialog->CurrentTip(); }, tips)) return -1;
    EXPECT_TRUE(PumpUntil([dialog] { return !dialog->isVisible(); })) << "the dialog stayed open";
    return dialog->isVisible() ? -1 : dialog->result();
}

inline int Drive(CCollectionDialogFrame* dialog, int id, const Tips& tips = {}) {
    Press(dialog, id);
    return Finish(dialog, tips);
}

// Types `text` over a name dialog's edit as an input method commits it, then
// Enter; waits for the answer.
inline void Type(CNameDlg* dialog, const QString& text) {
    dialog->NameEdit()->selectAll();
    QInputMethodEvent typed;
    typed.setCommitString(text);
    QApplication::sendEvent(dialog->NameEdit(), &typed);
    Key(dialog->NameEdit(), Qt::Key_Return);
    WaitIdle(dialog);
}

// A wide picture whose middle square is a door symbol.
inline QImage SamplePreview() {
    QImage picture(160, 100, QImage::Format_RGB32);
    picture.fill(QColor(0x20, 0x20, 0x20));
    QPainter painter(&picture);
    painter.setPen(QPen(QColor(0xE0, 0xE0, 0xE0), 3));
    painter.drawLine(50, 85, 110, 85);
    painter.drawLine(50, 85, 50, 25);
    painter.drawArc(QRect(-10, 25, 120, 120), 0, 90 * 16);
    // A red margin that the cut to the middle square must take away.
    painter.fillRect(0, 0, 30, 100, Qt::red);
    return picture;
}

struct DialogWorld : ::testing::Test {
    TempHome home;
    LiveService service;
    QWidget panel;
    int64_t user = 0;
    std::u16string token;
    std::string mirror;  // the user's local collection folder
    std::optional<QByteArray> oldTmp;

    void SetUp() override {
        UseRate(1.0f);
        ASSERT_TRUE(service.handle.ok()) << service.handle.error();
        // A user of its own per test: the service's state outlives the test.
        static int users = 0;
        user = 30000 + ++users;
        token = Utf8ToUtf16("token-" + std::to_string(user));
        ASSERT_TRUE(service.handle.users().addUser(user, Utf16ToUtf8(token)));
        mirror = home.file("store/" + std::to_string(user) + "_我的收藏");
        // The collect dialog's temporary copy goes below the test's home.
        if (qEnvironmentVariableIsSet("TMPDIR")) oldTmp = qgetenv("TMPDIR");
        QDir().mkpath(QString::fromStdString(home.file("tmp")));
        qputenv("TMPDIR", QByteArray::fromStdString(home.file("tmp")));
        QApplication::setCursorFlashTime(0);  // a caret that doesn't blink in pictures
        panel.resize(600, 400);
        ASSERT_TRUE(ShowExposed(&panel));
    }
    void TearDown() override { oldTmp ? (void)qputenv("TMPDIR", *oldTmp) : (void)qunsetenv("TMPDIR"); }

    // Requests that reached /gallery/<call>.
    long Count(const std::string& call) { return service.Served("/gallery/" + call); }
    // The request line of the last one.
    std::string Last(const std::string& call) { return service.handle.counters().get("/gallery/" + call).last; }
    // Folder names on the service, in its order; the blocks of one by file name.
    Names Folders() {
        Names names;
        for (const auto& folder : service.handle.users().folders(user)) names.push_back(folder.name);
        return names;
    }
    Names Blocks(const std::string& folder) {
        const auto found = service.handle.users().folderByName(user, folder);
        Names names;
        for (const auto& block : service.handle.users().blocks(found ? found->id : -1)) names.push_back(block.fileName);
        return names;
    }
    // Made on the service through the library's own calls.
    void MakeFolders(const std::vector<std::u16string>& names) {
        for (const std::u16string& name : names) ASSERT_EQ(AddFolder(token, name).document.shape, DocumentShape::Root);
    }
    void Collect(const std::u16string& folder, const std::string& fileName) {
        const std::string path = WriteBlock(home.file("drawings/" + fileName));
        ASSERT_TRUE(CollectBlockFile(token, FolderIdByName(FolderMap(), folder), Utf8ToUtf16(path), CollectForce::Replace).Is(u"1"));
    }
    // The panel's map as the collection page would have read it, blocks included.
    CollectionFolderMap FolderMap() {
        CollectionFolderMap map;
        for (const ListedFolder& listed : FetchFolderNames(token).document.folders) {
            CollectionFolder& folder = map[listed.id] = {listed.id, listed.name, Utf8ToUtf16(mirror) + u"/" + listed.name, {}};
            for (const ListedBlock& b : FetchFolderBlocks(token, listed.id).document.blocks)
                folder.blocks.push_back({b.id, b.filename, b.url, b.info, folder.path + u"/" + b.filename});
        }
        return map;
    }
    // A drawing's bytes at `path`, its folders made.
    std::string WriteBlock(const std::string& path) {
        WriteBytes(path, "AC1015" + std::string(1500, 'd'));
        return path;
    }
    void Fault(const std::string& call, const service::Fault& fault) { service.handle.faults().set("/gallery/" + call, fault); }
};

}  // namespace marrowfin::test
