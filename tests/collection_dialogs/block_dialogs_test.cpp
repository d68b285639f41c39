// The collect and move dialogs driven by real input: what reaches the
// service, the files left on disk, each refusal with its tip, and requests
// that are slow, doubled or answered after the dialog went.

#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>
#include <fstream>

#include "skin/skin_button.h"

#include "collection_dialogs/add_blocks_from_disk.h"
#include "collection_dialogs/collectiondlg.h"
#include "collection_dialogs/move_collect_blk_dlg.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "dialogs_world.h"
#include "panel/classes/panel_workers.h"
#include "platform/text.h"
#include "support/event_pump.h"
#include "support/widget_input.h"

namespace marrowfin::test {
namespace {

using Names = std::vector<std::string>;

struct BlockDialogs : DialogWorld {
    int result = -1;

    template <class Dialog>
    void Watch(Dialog* dialog) {
        QObject::connect(dialog, &QDialog::finished, [this](int r) { result = r; });
    }
    bool Ended() {
        return PumpUntil([this] { return result != -1; });
    }

    // A collect dialog over a block file of `fileName`, open and done reading folders.
    CCollectiondlg* OpenCollect(const std::string& fileName, const std::string& name) {
        const std::string path = WriteBlock(home.file("store/建筑门窗/单开门/" + fileName));
        auto* dialog = new CCollectiondlg(&panel, W(name), W(path), SamplePreview(), token);
        result = -1;
        Watch(dialog);
        dialog->Open();
        EXPECT_TRUE(PumpUntil([dialog] { return !dialog->Waiting(); }));
        return dialog;
    }
    // Chooses a row of the folder field's list by clicking it.
    void ChooseFolder(CBlockFolderDlg* dialog, int row) {
        Click(dialog, dialog->FolderRect().center());
        QAbstractItemView* list = dialog->FolderCombo()->view();
        ASSERT_TRUE(PumpUntil([list] { return list->isVisible(); }));
        const QRect rowRect = list->visualRect(list->model()->index(row, 0));
        Click(list->viewport(), rowRect.center());
        Pump(50);
    }
};

TEST_F(BlockDialogs, CollectsUnderTheLowerCasedNameAndAsksBeforeReplacing) {
    // A user without folders: the dialog makes "收藏夹1" and offers it.
    CCollectiondlg* first = OpenCollect("Door A.DWG", "Door A.DWG");
    EXPECT_EQ(Count("get_u_f"), 1);
    EXPECT_EQ(Folders(), Names{"收藏夹1"});
    EXPECT_EQ(first->m_folder, u"收藏夹1");
    EXPECT_EQ(first->NameEdit()->text(), "Door A.DWG");
    EXPECT_FALSE(first->NameEdit()->isEnabled());
    Press(first, CCollectiondlg::IdOk);
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(Blocks("收藏夹1"), Names{"door a.dwg"});
    EXPECT_TRUE(QFile::exists(QString::fromStdString(home.file("tmp/door a.dwg"))));

    // A second folder chosen from the list; a name without extension gets one;
    // a refused character shows the red line but doesn't stop the upload.
    MakeFolders({u"收藏夹2"});
    CCollectiondlg* second = OpenCollect("Sofa;1", "Sofa;1");
    ChooseFolder(second, 1);
    EXPECT_EQ(second->m_folder, u"收藏夹2");
    Press(second, CCollectiondlg::IdOk);
    EXPECT_TRUE(second->m_badName);
    ASSERT_TRUE(Ended());
    EXPECT_TRUE(second->m_landed);
    EXPECT_EQ(Blocks("收藏夹2"), Names{"sofa;1.dwg"});

    // The same name again: "2" asks; "取消" ends the dialog as done without a landing.
    CCollectiondlg* third = OpenCollect("DOOR A.dwg", "DOOR A.dwg");
    Press(third, CCollectiondlg::IdOk);
    EXPECT_TRUE(AnswerTip(third, "此位置包含同名图块", 2));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(Count("dwg_collectu"), 3);

    // ... and "替换" sends it once more with force 1.
    CCollectiondlg* fourth = OpenCollect("door a.dwg", "door a.dwg");
    Press(fourth, CCollectiondlg::IdOk);
    EXPECT_TRUE(AnswerTip(fourth, "此位置包含同名图块", 1));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_TRUE(fourth->m_landed);
    EXPECT_EQ(Count("dwg_collectu"), 5);
    EXPECT_EQ(Blocks("收藏夹1"), Names{"door a.dwg"});
}

TEST_F(BlockDialogs, CollectRefusalsTipAndCancel) {
    MakeFolders({u"收藏夹1"});
    // The service refuses a file that is no drawing with "3".
    CCollectiondlg* refused = OpenCollect("a.dwg", "a.dwg");
    std::ofstream(home.file("store/建筑门窗/单开门/a.dwg"), std::ios::trunc) << "not a drawing";
    Press(refused, CCollectiondlg::IdOk);
    EXPECT_TRUE(AnswerTip(refused, "图块收藏失败，请重试。", 1));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Rejected);
    EXPECT_EQ(Blocks("收藏夹1"), Names{});

    // A lost upload.
    Fault("dwg_collectu", "drop=1&count=1");
    CCollectiondlg* lost = OpenCollect("a.dwg", "a.dwg");
    Press(lost, CCollectiondlg::IdOk);
    EXPECT_TRUE(AnswerTip(lost, "网络异常，请检查网络后重试", 1));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Rejected);

    // A block whose file is gone is not sent at all.
    const long uploads = Count("dwg_collectu");
    auto* missing = new CCollectiondlg(&panel, u"x.dwg", W(home.file("nowhere/x.dwg")), QImage(), token);
    result = -1;
    Watch(missing);
    missing->Open();
    ASSERT_TRUE(PumpUntil([missing] { return !missing->Waiting(); }));
    Press(missing, CCollectiondlg::IdOk);
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Rejected);
    EXPECT_EQ(Count("dwg_collectu"), uploads);
    delete missing;

    // The service down as the dialog opens: the tip, then the end; nothing uploaded.
    service->handle.stop();
    auto* down = new CCollectiondlg(&panel, u"a.dwg", W(home.file("store/建筑门窗/单开门/a.dwg")), QImage(), token);
    result = -1;
    Watch(down);
    down->Open();
    EXPECT_TRUE(AnswerTip(down, "网络异常，请检查网络后重试", 1));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Rejected);
}

TEST_F(BlockDialogs, ASlowUploadWaitsForOnePressAndALateAnswerFindsNoDialog) {
    MakeFolders({u"收藏夹1"});
    Fault("dwg_collectu", "latency=700");
    CCollectiondlg* slow = OpenCollect("a.dwg", "a.dwg");
    const QPoint from = slow->pos();
    Press(slow, CCollectiondlg::IdOk);
    EXPECT_TRUE(slow->Waiting());
    EXPECT_FALSE(ButtonOf(slow, CCollectiondlg::IdOk)->isEnabled());
    Press(slow, CCollectiondlg::IdOk);
    // The dialog still moves while it waits: a drag in the title rows.
    QTest::mousePress(slow, Qt::LeftButton, {}, QPoint(100, 10));
    QTest::mouseMove(slow, QPoint(140, 30));
    QTest::mouseRelease(slow, Qt::LeftButton, {}, QPoint(140, 30));
    EXPECT_EQ(slow->pos(), from + QPoint(40, 20));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(Count("dwg_collectu"), 1);
    EXPECT_EQ(Blocks("收藏夹1"), Names{"a.dwg"});

    // Closed before the folders come: the worker's answer is dropped.
    Fault("get_u_f", "latency=400");
    auto* gone = new CCollectiondlg(&panel, u"a.dwg", u"", QImage(), token);
    gone->Open();
    Press(gone, CCollectiondlg::IdClose);
    delete gone;
    EXPECT_TRUE(WaitForPanelWorkers(std::chrono::seconds(5)));
    Pump(50);
    EXPECT_EQ(Count("get_u_f"), 2);
}

TEST_F(BlockDialogs, MovesABlockAndDeletesTheStaleTargetFile) {
    MakeFolders({u"门", u"窗", u"家具"});
    Collect(u"门", "a.dwg");
    Collect(u"窗", "b.dwg");
    Collect(u"家具", "a.dwg");
    const std::string source = WriteBlock(mirror + "/门/a.dwg");
    const std::string stale = WriteBlock(mirror + "/窗/a.dwg");

    auto open = [&] {
        auto* dialog = new CMoveCollectBlkDlg(&panel, u"a.dwg", W(source), SamplePreview(), token, FolderMap());
        result = -1;
        Watch(dialog);
        dialog->Open();
        return dialog;
    };
    // Never the folder the block lies in; the edit shows the name without its extension.
    CMoveCollectBlkDlg* dialog = open();
    ShareSelComboBox* combo = dialog->FolderCombo();
    ASSERT_EQ(combo->count(), 2);
    for (int row = 0; row < combo->count(); ++row) EXPECT_NE(combo->itemText(row), "门");
    EXPECT_EQ(dialog->NameEdit()->text(), "a");
    // "家具" holds an a.dwg: "取消移动" leaves everything where it was.
    ChooseFolder(dialog, combo->findText("家具"));
    Press(dialog, CMoveCollectBlkDlg::IdOk);
    EXPECT_TRUE(AnswerTip(dialog, "此位置包含同名图块", 2));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Rejected);
    EXPECT_EQ(Blocks("门"), Names{"a.dwg"});

    // To "窗": the service holds it there, the stale local copy goes.
    dialog = open();
    ChooseFolder(dialog, dialog->FolderCombo()->findText("窗"));
    Press(dialog, CMoveCollectBlkDlg::IdOk);
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(dialog->m_path, W(stale));
    EXPECT_EQ(Blocks("门"), Names{});
    EXPECT_EQ(Blocks("窗"), (Names{"a.dwg", "b.dwg"}));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(stale)));
    EXPECT_TRUE(QFile::exists(QString::fromStdString(source)));

    // From 窗 onto 家具, which holds an a.dwg: "替换" sends force 1 and replaces it.
    dialog = new CMoveCollectBlkDlg(&panel, u"a.dwg", W(stale), QImage(), token, FolderMap());
    result = -1;
    Watch(dialog);
    dialog->Open();
    ChooseFolder(dialog, dialog->FolderCombo()->findText("家具"));
    Press(dialog, CMoveCollectBlkDlg::IdOk);
    EXPECT_TRUE(AnswerTip(dialog, "此位置包含同名图块", 1));
    ASSERT_TRUE(Ended());
    EXPECT_EQ(result, QDialog::Accepted);
    EXPECT_EQ(Blocks("家具"), Names{"a.dwg"});
    EXPECT_EQ(Blocks("窗"), Names{"b.dwg"});
    EXPECT_EQ(Count("mvff"), 4);
    delete dialog;
}

TEST_F(BlockDialogs, AddsChosenFilesAndTipsOncePerRefusal) {
    MakeFolders({u"门"});
    WriteBlock(home.file("disk/a.dwg"));
    WriteBlock(home.file("disk/C.DWG"));
    std::ofstream(home.file("disk/b.dwg")) << "not a drawing";
    const std::string folder = mirror + "/门";
    QDir().mkpath(QString::fromStdString(folder));
    const CollectionFolderMap map = FolderMap();
    int changed = -1;
    auto* run = CAddBlocksFromDisk::Start(
        &panel, token, W(folder), [&map](const std::u16string& name) { return FolderIdByName(map, name); },
        [&changed](bool c) { changed = c; });
    QFileDialog* files = run->FileDialog();
    ASSERT_TRUE(PumpUntil([files] { return files->isVisible(); }));
    EXPECT_EQ(files->windowTitle(), "添加图块");
    files->setDirectory(QString::fromStdString(home.file("disk")));
    auto* name = files->findChild<QLineEdit*>("fileNameEdit");
    ASSERT_NE(name, nullptr);
    name->setText(QStringLiteral("\"a.dwg\" \"b.dwg\" \"C.DWG\""));
    Key(name, Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([run] { return run->CurrentTip() && run->CurrentTip()->isVisible(); }));
    EXPECT_EQ(run->CurrentTip()->FirstLine(), "收藏失败，然后重试");
    Click(run->CurrentTip()->OkButton(), run->CurrentTip()->OkButton()->rect().center());
    ASSERT_TRUE(PumpUntil([&changed] { return changed != -1; }));
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(Count("dwg_collectu"), 3);
    EXPECT_EQ(Blocks("门"), (Names{"a.dwg", "C.DWG"}));
    EXPECT_TRUE(QFile::exists(QString::fromStdString(folder + "/C.DWG")));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(folder + "/b.dwg")));
}

}  // namespace
}  // namespace marrowfin::test
