// The collection dialogs driven by real input against the stand-in service:
// what the service holds afterwards, the files left on disk, the values
// handed back to the panel, every refusal with its message, and requests
// that are slow, doubled, lost or answered after the dialog went.

#include <QAbstractItemView>
#include <QFileDialog>
#include <QTest>

#include "collection/name_rule.h"
#include "collection_dialogs/add_blocks_from_disk.h"
#include "collection_dialogs/collectiondlg.h"
#include "collection_dialogs/delete_folder_run.h"
#include "collection_dialogs/modify_folder_dlg.h"
#include "collection_dialogs/move_collect_blk_dlg.h"
#include "collection_dialogs/new_folder_dlg.h"
#include "collection_dialogs/share_dwg_block_dlg.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "dialogs_world.h"
#include "panel/classes/panel_workers.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {
namespace {

constexpr int OK = QDialog::Accepted, CANCEL = QDialog::Rejected;

struct Roads : DialogWorld {
    // A collect dialog over a block file at store/建筑门窗/单开门/<name>.
    CCollectiondlg* Collecting(const std::string& name) {
        const std::string path = WriteBlock(home.file("store/建筑门窗/单开门/" + name));
        return Opened(new CCollectiondlg(&panel, Utf8ToUtf16(name), Utf8ToUtf16(path), SamplePreview(), token));
    }
    CMoveCollectBlkDlg* Moving(const std::string& path) {
        return Opened(new CMoveCollectBlkDlg(&panel, u"a.dwg", Utf8ToUtf16(path), QImage(), token, FolderMap()));
    }
    void Choose(CBlockFolderDlg* dialog, const QString& text) {
        Choose(dialog, dialog->FolderCombo(), dialog->FolderRect().center(), text);
    }
    // Opens the list of the field at `field` and clicks the row of `text`.
    void Choose(QWidget* dialog, ShareSelComboBox* combo, QPoint field, const QString& text) {
        Click(dialog, field);
        QAbstractItemView* list = combo->view();
        ASSERT_TRUE(PumpUntil([list] { return list->isVisible(); }));
        Click(list->viewport(), list->visualRect(list->model()->index(combo->findText(text), 0)).center());
        Pump(30);
    }
};

TEST_F(Roads, CollectsUnderTheLowerCasedNameAndAsksBeforeReplacing) {
    // A user without folders: the dialog makes "收藏夹1" and offers it.
    CCollectiondlg* first = Collecting("Door A.DWG");
    EXPECT_EQ(Folders(), Names{"收藏夹1"});
    EXPECT_EQ(Drive(first, CCollectiondlg::IdOk), OK);
    EXPECT_TRUE(first->m_landed && Blocks("收藏夹1") == Names{"door a.dwg"} && Exists(home.file("tmp/door a.dwg")));

    // Another folder chosen from the list; a name without extension gets one;
    // a refused character shows the red line but doesn't stop the upload.
    MakeFolders({u"收藏夹2"});
    CCollectiondlg* second = Collecting("Sofa;1");
    Choose(second, "收藏夹2");
    EXPECT_EQ(Drive(second, CCollectiondlg::IdOk), OK);
    EXPECT_TRUE(second->m_badName && Blocks("收藏夹2") == Names{"sofa;1.dwg"});

    // The same name again: "取消" ends as done without landing, "替换" sends force 1.
    CCollectiondlg* declined = Collecting("DOOR A.dwg");
    EXPECT_EQ(Drive(declined, CCollectiondlg::IdOk, {{"此位置包含同名图块", 2}}), OK);
    EXPECT_FALSE(declined->m_landed);
    CCollectiondlg* replaced = Collecting("door a.dwg");
    EXPECT_EQ(Drive(replaced, CCollectiondlg::IdOk, {{"此位置包含同名图块", 1}}), OK);
    EXPECT_TRUE(replaced->m_landed && Count("dwg_collectu") == 5 && Blocks("收藏夹1") == Names{"door a.dwg"});
}

TEST_F(Roads, CollectRefusalsTipAndCancel) {
    MakeFolders({u"收藏夹1"});
    CCollectiondlg* refused = Collecting("a.dwg");
    std::ofstream(home.file("store/建筑门窗/单开门/a.dwg"), std::ios::trunc) << "no drawing";  // answered "3"
    EXPECT_EQ(Drive(refused, CCollectiondlg::IdOk, {{"图块收藏失败，请重试。", 1}}), CANCEL);
    // (A lost upload's tip is the calls' table; it ends the dialog as the refusal does.)
    // A block whose file is gone is not sent at all.
    auto* missing = Opened(new CCollectiondlg(&panel, u"x.dwg", Utf8ToUtf16(home.file("none/x.dwg")), QImage(), token));
    EXPECT_EQ(Drive(missing, CCollectiondlg::IdOk), CANCEL);
    EXPECT_TRUE(Count("dwg_collectu") == 1 && Blocks("收藏夹1").empty());
    // An empty folder list is no document: nothing is made, the list stays empty.
    Fault("get_u_f", {.emptyBody = true, .remaining = 1});
    EXPECT_TRUE(Collecting("b.dwg")->FolderCombo()->count() == 0 && Count("favorite") == 1);
    // The service down as the dialog opens.
    service.handle.stop();
    auto* down = new CCollectiondlg(&panel, u"a.dwg", u"", QImage(), token);
    down->Open();
    EXPECT_EQ(Finish(down, {{"网络异常，请检查网络后重试", 1}}), CANCEL);
}

TEST_F(Roads, ASlowRequestTakesOnePressAndALateAnswerFindsNoDialog) {
    MakeFolders({u"收藏夹1"});
    Fault("dwg_collectu", {.latencyMs = 700});
    CCollectiondlg* slow = Collecting("a.dwg");
    const QPoint from = slow->pos();
    Press(slow, CCollectiondlg::IdOk);
    EXPECT_FALSE(Press(slow, CCollectiondlg::IdOk)->isEnabled());  // the second press finds it waiting
    // The dialog still moves while it waits: a drag in the title rows.
    QTest::mousePress(slow, Qt::LeftButton, {}, QPoint(100, 10));
    QTest::mouseMove(slow, QPoint(140, 30));
    QTest::mouseRelease(slow, Qt::LeftButton, {}, QPoint(140, 30));
    EXPECT_EQ(slow->pos(), from + QPoint(40, 20));
    EXPECT_EQ(Finish(slow), OK);
    // By the time the workers are done a second request would have started.
    EXPECT_TRUE(WaitForPanelWorkers(std::chrono::seconds(5)) && Count("dwg_collectu") == 1);

    // The same for a name dialog and Enter.
    Fault("favorite", {.latencyMs = 500});
    auto* create = Opened(new CNewFolderDlg(&panel, token, Utf8ToUtf16(mirror), FolderMap()));
    Key(create->NameEdit(), Qt::Key_Return);
    Key(create->NameEdit(), Qt::Key_Return);
    EXPECT_EQ(Drive(create, CNameDlg::IdOk), OK);
    EXPECT_EQ(Count("favorite"), 2);

    // Closed before the folders come: the worker's answer is dropped.
    Fault("get_u_f", {.latencyMs = 400});
    auto* gone = new CCollectiondlg(&panel, u"a.dwg", u"", QImage(), token);
    gone->Open();
    Press(gone, CCollectiondlg::IdClose);
    delete gone;
    EXPECT_TRUE(WaitForPanelWorkers(std::chrono::seconds(5)));
    Pump(50);
    EXPECT_EQ(Count("get_u_f"), 3);
}

TEST_F(Roads, MovesABlockAndDeletesTheStaleTargetFile) {
    MakeFolders({u"门", u"窗", u"家具"});
    Collect(u"门", "a.dwg");
    Collect(u"窗", "b.dwg");
    Collect(u"家具", "a.dwg");
    const std::string source = WriteBlock(mirror + "/门/a.dwg");
    const std::string stale = WriteBlock(mirror + "/窗/a.dwg");

    // Never the folder the block lies in; the edit shows the name without its extension.
    CMoveCollectBlkDlg* move = Moving(source);
    EXPECT_TRUE(move->FolderCombo()->count() == 2 && move->FolderCombo()->findText("门") == -1 && move->NameEdit()->text() == "a");
    // "家具" holds an a.dwg: "取消移动" leaves everything where it was.
    Choose(move, "家具");
    EXPECT_EQ(Drive(move, CMoveCollectBlkDlg::IdOk, {{"此位置包含同名图块", 2}}), CANCEL);
    EXPECT_EQ(Blocks("门"), Names{"a.dwg"});

    move = Moving(source);
    Choose(move, "窗");
    EXPECT_EQ(Drive(move, CMoveCollectBlkDlg::IdOk), OK);
    EXPECT_EQ(move->m_path, Utf8ToUtf16(stale));
    EXPECT_TRUE(Blocks("门").empty() && Blocks("窗") == (Names{"a.dwg", "b.dwg"}) && !Exists(stale) && Exists(source));

    // From 窗 onto 家具: "替换" sends force 1 and replaces its a.dwg.
    move = Moving(stale);
    Choose(move, "家具");
    EXPECT_EQ(Drive(move, CMoveCollectBlkDlg::IdOk, {{"此位置包含同名图块", 1}}), OK);
    EXPECT_TRUE(Blocks("家具") == Names{"a.dwg"} && Blocks("窗") == Names{"b.dwg"} && Count("mvff") == 4);
}

TEST_F(Roads, AddsChosenFilesAndTipsOncePerRefusal) {
    MakeFolders({u"门"});
    WriteBlock(home.file("disk/a.dwg"));
    WriteBlock(home.file("disk/C.DWG"));
    std::ofstream(home.file("disk/b.dwg")) << "no drawing";
    const std::string folder = mirror + "/门";
    QDir().mkpath(QString::fromStdString(folder));
    const CollectionFolderMap map = FolderMap();
    int changed = -1;
    auto* run = CAddBlocksFromDisk::Start(
        &panel, token, Utf8ToUtf16(folder), [&map](const std::u16string& name) { return FolderIdByName(map, name); },
        [&changed](bool c) { changed = c; });
    QFileDialog* files = run->FileDialog();
    ASSERT_TRUE(PumpUntil([files] { return files->isVisible(); }));
    files->setDirectory(QString::fromStdString(home.file("disk")));
    auto* name = files->findChild<QLineEdit*>("fileNameEdit");
    name->setText(QStringLiteral("\"a.dwg\" \"b.dwg\" \"C.DWG\""));
    Key(name, Qt::Key_Return);
    EXPECT_TRUE(AnswerTips([run] { return run->CurrentTip(); }, {{"收藏失败，然后重试", 1}}));
    ASSERT_TRUE(PumpUntil([&changed] { return changed != -1; }));
    EXPECT_TRUE(changed == 1 && Blocks("门") == (Names{"a.dwg", "C.DWG"}) && Exists(folder + "/C.DWG") && !Exists(folder + "/b.dwg"));
}

TEST_F(Roads, DeletesAFolderOnlyWhenConfirmedAndTellsWhyNot) {
    MakeFolders({u"门", u"窗"});
    Collect(u"门", "a.dwg");
    const std::u16string id = FolderIdByName(FolderMap(), u"门");
    const QString question = "确定要删除该收藏夹所有图块么？";
    auto removal = [&](const Tips& tips) {
        int deleted = -1;
        auto* run = CDeleteFolderRun::Start(&panel, token, id, [&deleted](bool d) { deleted = d; });
        EXPECT_TRUE(AnswerTips([run] { return run->CurrentTip(); }, tips));
        EXPECT_TRUE(PumpUntil([&deleted] { return deleted != -1; }));
        return deleted;
    };
    EXPECT_EQ(removal({{question, 2}}), 0);
    Fault("favorite", {.drop = true, .remaining = 1});
    EXPECT_EQ(removal({{question, 1}, {"删除失败，请检查网络", 1}}), 0);
    // The declined one sent nothing (a confirmed one that lands: the panel's road).
    EXPECT_TRUE(Folders() == (Names{"门", "窗"}) && Count("favorite") == 3);
}

TEST_F(Roads, NewFolderRefusalsKeepTheDialogAndItsLine) {
    MakeFolders({u"收藏夹1", u"收藏夹3"});
    auto* create = Opened(new CNewFolderDlg(&panel, token, Utf8ToUtf16(mirror), FolderMap()));
    // Refused on the spot without a request; typing clears the line; blanks do nothing.
    for (const char* bad : {"a+b", "v1.2"}) {
        Type(create, bad);
        EXPECT_EQ(create->m_error, CNameDlg::BadCharacters) << bad;
    }
    QTest::keyClick(create->NameEdit(), Qt::Key_Backspace);
    EXPECT_EQ(create->m_error, CNameDlg::NoError);
    Type(create, "   ");
    // A lost request says nothing; Esc does not end the dialog.
    Fault("favorite", {.drop = true, .remaining = 1});
    Type(create, "门窗");
    Key(create->NameEdit(), Qt::Key_Escape);
    EXPECT_TRUE(create->isVisible() && create->m_error == CNameDlg::NoError);
    EXPECT_TRUE(Count("favorite") == 3 && Folders() == (Names{"收藏夹1", "收藏夹3"}));

    Type(create, " 门窗 ");
    EXPECT_EQ(Finish(create), OK);
    ASSERT_EQ(create->m_folders.size(), 3u);
    EXPECT_TRUE(create->m_name == u"门窗" && create->m_folders[2].path == Utf8ToUtf16(mirror + "/门窗"));
}

// (A rename that lands, ".dwg" put behind a bare name, the mirror and the panel's map following it: the panel's roads.)
TEST_F(Roads, RenameRefusalsAndAnUnchangedName) {
    MakeFolders({u"门", u"窗"});
    Collect(u"门", "a.dwg");
    Collect(u"门", "b.dwg");
    auto* folder = Opened(new CModifyFolderDlg(&panel, token, FolderMap(), Utf8ToUtf16(mirror), u"门", 0));
    Type(folder, "窗");
    EXPECT_EQ(folder->m_error, CNameDlg::NameTaken);
    // The unchanged name ends it with no request.
    Type(folder, " 门");
    EXPECT_TRUE(Finish(folder) == CANCEL && Count("favorite") == 3);

    auto* block = Opened(new CModifyFolderDlg(&panel, token, FolderMap(), Utf8ToUtf16(mirror + "/门"), u"a.dwg", 1, false));
    Type(block, "b");
    EXPECT_EQ(block->m_error, CNameDlg::NameTaken);
    Type(block, "a.v2");
    EXPECT_TRUE(block->m_error == CNameDlg::BadCharacters && Count("cdwgrn") == 1);  // "b" was asked, "a.v2" refused here
}

TEST(NameRule, RefusesListedCharactersAndDoubledMarksOnly) {
    for (std::u16string_view bad : {u"a?b", u"a\\b", u"a/b", u"a*b", u"a\"b", u"a<b", u"a>b", u"a%b", u"a:b", u"a;b", u"a&b", u"a.b",
                                    u"a。b", u"a；b", u"a、b", u"a|b", u"a……", u"——"})
        EXPECT_FALSE(NamePassesRule(bad, NameUse::CollectedBlock)) << Utf16ToUtf8(bad);
    for (std::u16string_view good : {u"门窗 1", u"a…b", u"a—b", u"a+b", u"Title-Blocks_2"})
        EXPECT_TRUE(NamePassesRule(good, NameUse::CollectedBlock)) << Utf16ToUtf8(good);
    EXPECT_FALSE(NamePassesRule(u"a+b", NameUse::TypedName));
}

TEST(ShareKinds, RowsFollowTheRootsChildren) {
    using Rows = std::vector<std::u16string>;
    EXPECT_EQ(ShareKindRows({u"我的收藏"}), Rows{u"其他"});
    EXPECT_EQ(ShareKindRows({u"建筑门窗", u"我的收藏"}), Rows{u"建筑门窗"});
    EXPECT_EQ(ShareKindRows({u"建筑门窗"}), (Rows{u"建筑门窗", u"其他"}));
    EXPECT_EQ(ShareKindRows({u"B", u"我的收藏", u"A"}), (Rows{u"B", u"A"}));
}

TEST_F(Roads, SharesOnceAfterAFailureWhileTheBarWaitsBelowTwenty) {
    auto* share = Opened(new CShareDWGblockDlg(&panel, token, {u"建筑门窗", u"我的收藏", u"家具"}));
    share->m_stepMs = 10;
    share->m_settleMs = 100;
    const QPoint field = ScaleRect(77, 214, 171, 238).center();
    EXPECT_EQ(g_shareKind, u"建筑门窗");
    Choose(share, share->KindCombo(), field, "家具");
    EXPECT_EQ(g_shareKind, u"家具");

    Fault("sharef", {.status = 500, .remaining = 1});
    Press(share, CShareDWGblockDlg::IdShare);
    ASSERT_TRUE(PumpUntil([share] { return share->m_result != -1; }));
    EXPECT_TRUE(share->m_result == 0 && share->ShareButton()->text() == "重新分享");
    Click(share, field);  // the field stays closed
    EXPECT_FALSE(share->KindCombo()->view()->isVisible());

    // Many steps pass while the service waits: the bar stops at 20 until it answers.
    Fault("sharef", {.latencyMs = 1000});
    Press(share, CShareDWGblockDlg::IdShare);
    EXPECT_FALSE(share->ShareButton()->isVisible());
    Click(share, share->ShareButton()->geometry().center());  // where the button was
    int highest = 0;
    ASSERT_TRUE(PumpUntil([&] {
        if (share->m_result == -1 && share->Progress()->GetPos() != 95) highest = std::max(highest, share->Progress()->GetPos());
        return share->m_result != -1;
    }));
    EXPECT_EQ(std::make_tuple(highest, share->m_result, share->Progress()->GetPos(), Count("sharef")), std::make_tuple(20, 1, 100, 2L));
    // Only the token travels, not the kind.
    EXPECT_EQ(Last("sharef"), "POST /gallery/sharef?usertoken=" + Utf16ToUtf8(token));
    EXPECT_EQ(Drive(share, CShareDWGblockDlg::IdCancel), CANCEL);
}

}  // namespace
}  // namespace marrowfin::test
