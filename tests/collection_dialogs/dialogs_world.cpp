#include "dialogs_world.h"

#include <QDir>
#include <QPainter>
#include <fstream>

#include "collection/collection_calls.h"
#include "collection_dialogs/collection_dialog_frame.h"
#include "fault_switches.h"
#include "platform/text.h"
#include "skin/skin_button.h"
#include "skin/skin_test_util.h"
#include "support/event_pump.h"
#include "support/widget_input.h"
#include "user_state.h"

namespace marrowfin::test {

void DialogWorld::SetUp() {
    UseRate(1.0f);
    service = std::make_unique<LiveService>();
    ASSERT_TRUE(service->handle.ok()) << service->handle.error();
    // A user of its own per test: the service's state outlives the test.
    static int users = 0;
    user = 30000 + ++users;
    token = W("token-" + std::to_string(user));
    ASSERT_TRUE(service->handle.users().addUser(user, U8(token)));
    mirror = home.file("store/" + std::to_string(user) + "_我的收藏");
    // The collect dialog's temporary copy goes below the test's home.
    hadTmp = qEnvironmentVariableIsSet("TMPDIR");
    oldTmp = qgetenv("TMPDIR");
    QDir().mkpath(QString::fromStdString(home.file("tmp")));
    qputenv("TMPDIR", QByteArray::fromStdString(home.file("tmp")));
    panel.resize(600, 400);
    ASSERT_TRUE(ShowExposed(&panel));
}

void DialogWorld::TearDown() {
    if (hadTmp)
        qputenv("TMPDIR", oldTmp);
    else
        qunsetenv("TMPDIR");
    PumpUntil([] { return true; }, 0);
}

long DialogWorld::Count(const std::string& call) { return service->Served("/gallery/" + call); }

std::vector<std::string> DialogWorld::Folders() {
    std::vector<std::string> names;
    for (const auto& folder : service->handle.users().folders(user)) names.push_back(folder.name);
    return names;
}

std::vector<std::string> DialogWorld::Blocks(const std::string& folder) {
    std::vector<std::string> names;
    const auto found = service->handle.users().folderByName(user, folder);
    if (!found) return {"no folder " + folder};
    for (const auto& block : service->handle.users().blocks(found->id)) names.push_back(block.fileName);
    return names;
}

void DialogWorld::MakeFolders(const std::vector<std::u16string>& names) {
    for (const std::u16string& name : names) ASSERT_EQ(AddFolder(token, name).document.shape, DocumentShape::Root);
}

void DialogWorld::Collect(const std::u16string& folder, const std::string& fileName) {
    const std::string path = WriteBlock(home.file("drawings/" + fileName));
    const CollectionFolderMap map = FolderMap();
    ASSERT_TRUE(CollectBlockFile(token, FolderIdByName(map, folder), W(path), CollectForce::Replace).Is(u"1"));
}

CollectionFolderMap DialogWorld::FolderMap() {
    CollectionFolderMap map;
    for (const ListedFolder& listed : FetchFolderNames(token).document.folders) {
        CollectionFolder& folder = map[listed.id];
        folder = CollectionFolder{listed.id, listed.name, W(mirror) + u"/" + listed.name, {}};
        for (const ListedBlock& block : FetchFolderBlocks(token, listed.id).document.blocks)
            folder.blocks.push_back(
                CollectedBlock{block.id, block.filename, block.url, block.info, folder.path + u"/" + block.filename});
    }
    return map;
}

std::string DialogWorld::WriteBlock(const std::string& path) {
    QDir().mkpath(QFileInfo(QString::fromStdString(path)).path());
    std::ofstream(path, std::ios::binary) << "AC1015" << std::string(1500, 'd');
    return path;
}

void DialogWorld::Fault(const std::string& call, const std::string& pairs) {
    std::multimap<std::string, std::string> params;
    for (const QString& pair : QString::fromStdString(pairs).split('&')) {
        const QStringList kv = pair.split('=');
        params.emplace(kv[0].toStdString(), kv.value(1).toStdString());
    }
    service::Fault fault;
    std::string error;
    ASSERT_TRUE(service::ParseFault(params, fault, error)) << error;
    service->handle.faults().set("/gallery/" + call, fault);
}

CSkinButton* ButtonOf(QWidget* window, int id) {
    for (CSkinButton* button : window->findChildren<CSkinButton*>())
        if (button->ControlId() == id) return button;
    return nullptr;
}

void Press(QWidget* window, int id) {
    CSkinButton* button = ButtonOf(window, id);
    ASSERT_NE(button, nullptr) << id;
    Click(button, button->rect().center());
}

::testing::AssertionResult AnswerTip(CCollectionDialogFrame* dialog, const QString& firstLine, int button) {
    if (!PumpUntil([dialog] { return dialog->CurrentTip() && dialog->CurrentTip()->isVisible(); }))
        return ::testing::AssertionFailure() << "no tip came for " << firstLine.toStdString();
    CPopTipDlg* tip = dialog->CurrentTip();
    if (tip->FirstLine() != firstLine)
        return ::testing::AssertionFailure() << "the tip says " << tip->FirstLine().toStdString();
    CSkinButton* pressed = button == 1 ? tip->OkButton() : tip->CancelButton();
    Click(pressed, pressed->rect().center());
    return ::testing::AssertionSuccess();
}

QImage SamplePreview() {
    QImage picture(160, 100, QImage::Format_RGB32);
    picture.fill(QColor(0x20, 0x20, 0x20));
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xE0, 0xE0, 0xE0), 3));
    // A door with its swing, centred; the dark margins left and right go with the cut.
    painter.drawLine(50, 85, 110, 85);
    painter.drawLine(50, 85, 50, 25);
    painter.drawArc(QRect(-10, 25, 120, 120), 0, 90 * 16);
    painter.fillRect(0, 0, 30, 100, QColor(0xFF, 0x00, 0x00));
    return picture;
}

}  // namespace marrowfin::test
