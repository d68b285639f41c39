// The collection's menus and dialogs opened from the panel with real input
// against the stand-in service: each change checked on the service, in the
// mirror on disk, in the panel's map and tree, and in what the panel shows
// right after it.

#include <QFileDialog>
#include <QMenu>

#include "collection/collection_calls.h"
#include "collection_dialogs/collectiondlg.h"
#include "collection_dialogs/dialogs_world.h"
#include "collection_dialogs/modify_folder_dlg.h"
#include "collection_dialogs/move_collect_blk_dlg.h"
#include "collection_dialogs/new_folder_dlg.h"
#include "collection_dialogs/share_dwg_block_dlg.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "panel_world.h"
#include "platform/paths.h"
#include "store/gallery_node.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

using Texts = std::vector<QString>;

Texts FolderButtons(CBrindleDlg& p) {
    Texts captions;
    for (CSubclassButton* button : p.m_subclassBtns)
        if (button && button->isVisibleTo(&p)) captions.push_back(button->text());
    return captions;
}

CSubclassButton* FolderButton(CBrindleDlg& p, const QString& caption) {
    for (CSubclassButton* button : p.m_subclassBtns)
        if (button && button->isVisibleTo(&p) && button->text() == caption) return button;
    ADD_FAILURE() << "no folder button " << caption.toStdString();
    return nullptr;
}

int ItemOf(CBrindleDlg& p, const std::u16string& path) {
    for (int i = 0; i < p.m_pThumbList->GetItemCount(); ++i)
        if (p.m_pThumbList->GetPath(i) == path) return i;
    return -1;
}

// Right-clicks `at` on `widget`; the entries of the menu that opens ("!" in
// front of a disabled one), or none.
Texts OpenMenu(CBrindleDlg& p, QWidget* widget, QPoint at) {
    Click(widget, at, Qt::RightButton);
    if (!PumpUntil([&p] { return p.CollectionMenu() && p.CollectionMenu()->isVisible(); }, 500)) return {};
    Texts entries;
    for (QAction* action : p.CollectionMenu()->actions())
        if (!action->isSeparator()) entries.push_back((action->isEnabled() ? "" : "!") + action->text());
    return entries;
}

// Chooses `text` in the open menu with a click.
void Choose(CBrindleDlg& p, const QString& text) {
    QMenu* menu = p.CollectionMenu();
    ASSERT_TRUE(menu);
    for (QAction* action : menu->actions()) {
        if (action->text() != text) continue;
        Click(menu, menu->actionGeometry(action).center());
        Pump(30);
        return;
    }
    FAIL() << "no entry " << text.toStdString();
}

// The item's menu on the thumbnail list, once its picture has come.
void ChooseOnItem(CBrindleDlg& p, int item, const QString& text) {
    ASSERT_GE(item, 0);
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->ItemState(item) != CDWGListView::kStateFresh; }));
    p.m_pThumbList->EnsureVisible(item);
    ASSERT_FALSE(OpenMenu(p, p.m_pThumbList, p.m_pThumbList->IconRect(item).center()).empty());
    Choose(p, text);
}

void ChooseOnButton(CBrindleDlg& p, const QString& caption, const QString& text) {
    CSubclassButton* button = FolderButton(p, caption);
    ASSERT_TRUE(button);
    EXPECT_EQ(OpenMenu(p, button, button->rect().center()), (Texts{"重命名", "删除"}));
    Choose(p, text);
}

// The collection's dialog of that kind once it is open and no longer waits.
template <class Dialog>
Dialog* DialogOf(CBrindleDlg& p) {
    Dialog* dialog = nullptr;
    PumpUntil([&] {
        dialog = qobject_cast<Dialog*>(p.CollectionWindow());
        return dialog && dialog->isVisible() && !dialog->Waiting();
    });
    EXPECT_TRUE(dialog) << "no dialog came";
    return dialog;
}

CPopTipDlg* ModalTip() { return qobject_cast<CPopTipDlg*>(QApplication::activeModalWidget()); }

}  // namespace

TEST(CollectionDialogRoad, BlocksRenamedMovedDeletedAndAddedFromThePanelFollowEverywhere) {
    PanelWorld w(SampleLibrary());
    const std::u16string mine = w.AddCollections(7, {u"螺栓", u"管件"}, 0);
    for (const char* name : {"六角螺栓.dwg", "地脚螺栓.dwg"}) w.CollectDrawing(7, "螺栓", name);
    service::UserState& users = w.service.users();
    const int64_t bolts = users.folderByName(7, "螺栓")->id, pipes = users.folderByName(7, "管件")->id;
    // A block whose file the service cannot give.
    users.addBlock({0, pipes, "缺失.dwg", "管件", 2048, false});
    RecordingHost host;
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);
    w.SignIn(7);
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(p.m_curClassPath, mine + u"/螺栓");
    const std::u16string hex = mine + u"/螺栓/六角螺栓.dwg", renamed = mine + u"/螺栓/螺栓M8.dwg";
    ASSERT_TRUE(PumpUntil([&] { return FileExists(hex) && p.m_thumbRunning.empty(); }, 8000));

    // "重命名": the dialog shows the name without its extension; a second
    // request while it is open opens nothing more.
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->ItemState(ItemOf(p, hex)) != CDWGListView::kStateFresh; }));
    EXPECT_EQ(OpenMenu(p, p.m_pThumbList, p.m_pThumbList->IconRect(ItemOf(p, hex)).center()),
              (Texts{"重命名", "删除", "移动"}));
    Choose(p, "重命名");
    auto* rename = DialogOf<CModifyFolderDlg>(p);
    ASSERT_TRUE(rename);
    EXPECT_EQ(rename->NameEdit()->text(), "六角螺栓");
    (void)PostWindowMessage(p.Handle(), MsgPanelCommand, 4, ItemOf(p, hex));
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 11, ItemOf(p, hex));
    Pump(50);
    EXPECT_EQ(p.findChildren<CCollectionDialogFrame*>().size(), 1);
    Type(rename, "螺栓M8");
    ASSERT_TRUE(PumpUntil([&] { return FileExists(renamed) && !p.CollectionWindow(); }));
    EXPECT_FALSE(FileExists(hex));
    EXPECT_TRUE(users.blockByName(bolts, "螺栓M8.dwg").has_value());
    EXPECT_FALSE(users.blockByName(bolts, "六角螺栓.dwg").has_value());
    // The list, the tree and the map follow: the next steps find the block by its new name.
    const int item = ItemOf(p, renamed);
    ASSERT_GE(item, 0);
    EXPECT_EQ(p.m_listNodes.At(*p.m_store, item)->name, u"螺栓M8.dwg");
    EXPECT_EQ(BlockIdByNames(p.m_folderMap, u"螺栓", u"螺栓M8.dwg"),
              W(std::to_string(users.blockByName(bolts, "螺栓M8.dwg")->id)));

    // "移动" to the only other folder, which then opens with the block.
    ChooseOnItem(p, item, "移动");
    auto* move = DialogOf<CMoveCollectBlkDlg>(p);
    ASSERT_TRUE(move);
    EXPECT_EQ(move->FolderCombo()->count(), 1);
    Press(move, CBlockFolderDlg::IdOk);  // the panel frees the dialog when it ends
    const std::u16string moved = mine + u"/管件/螺栓M8.dwg";
    ASSERT_TRUE(PumpUntil([&] { return p.m_curClassPath == mine + u"/管件" && ItemOf(p, moved) >= 0; }));
    EXPECT_TRUE(users.blockByName(pipes, "螺栓M8.dwg").has_value());
    EXPECT_TRUE(PumpUntil([&] { return FileExists(moved); }, 8000));
    // A block whose file never came is not moved (its cell offers no menu yet).
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 11, ItemOf(p, mine + u"/管件/缺失.dwg"));
    EXPECT_TRUE(AnswerTips(ModalTip, {{"文件未下载，请稍后", 1}}));
    EXPECT_FALSE(qobject_cast<CMoveCollectBlkDlg*>(p.CollectionWindow()));

    // Back in the first folder the moved block's file is gone; "删除" takes the last one.
    w.ClickButton(2080, 400);
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_FALSE(FileExists(renamed));
    const std::u16string anchor = mine + u"/螺栓/地脚螺栓.dwg";
    ASSERT_EQ(p.m_pThumbList->GetItemCount(), 1);
    ChooseOnItem(p, ItemOf(p, anchor), "删除");
    ASSERT_TRUE(PumpUntil([&] { return p.m_itemCount == 0 && !p.CollectionBusy(); }));
    EXPECT_FALSE(users.blockByName(bolts, "地脚螺栓.dwg").has_value());
    EXPECT_FALSE(FileExists(anchor));

    // "添加图块" on the empty folder: two drawings from the disk land and show.
    const std::string disk = w.home.file("disk");
    CreateDirectories(W(disk));
    for (const char* name : {"a.dwg", "b.dwg"}) WriteBytes(disk + "/" + name, "AC1015" + std::string(1500, 'd'));
    ASSERT_TRUE(w.ButtonShown(2150));
    w.ClickButton(2150, 400);
    QFileDialog* files = nullptr;
    ASSERT_TRUE(PumpUntil([&] { return (files = qobject_cast<QFileDialog*>(p.CollectionWindow())) && files->isVisible(); }));
    files->setDirectory(QString::fromStdString(disk));
    auto* names = files->findChild<QLineEdit*>("fileNameEdit");
    names->setText(QStringLiteral("\"a.dwg\" \"b.dwg\""));
    Key(names, Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->GetItemCount() == 2 && !p.CollectionBusy(); }, 8000));
    EXPECT_TRUE(FileExists(mine + u"/螺栓/a.dwg") && FileExists(mine + u"/螺栓/b.dwg"));
    EXPECT_TRUE(users.blockByName(bolts, "a.dwg") && users.blockByName(bolts, "b.dwg"));
    EXPECT_EQ(p.m_folderMap.at(W(std::to_string(bolts))).blocks.size(), 2u);

    // "分享收藏": a user the host cannot sign in gets no dialog; a signed-in one shares.
    p.userId = 0;
    w.ClickButton(2103, 400);
    Pump(100);
    EXPECT_FALSE(p.CollectionWindow());
    EXPECT_EQ(host.Requests(MARROWFIN_REQUEST_SIGN_IN).size(), 1u);
    w.SignIn(7);
    w.ClickButton(2103, 400);
    auto* share = DialogOf<CShareDWGblockDlg>(p);
    ASSERT_TRUE(share);
    share->m_stepMs = 10;
    share->m_settleMs = 10;
    Press(share, CShareDWGblockDlg::IdShare);
    ASSERT_TRUE(PumpUntil([&] { return share->m_result == 1; }));
    EXPECT_EQ(users.shareCount(7), 1);
    Press(share, CShareDWGblockDlg::IdCancel);
    EXPECT_TRUE(PumpUntil([&] { return !p.CollectionWindow(); }));
}

TEST(CollectionDialogRoad, FoldersMadeRenamedAndDeletedFromTheBarAndTheirMenus) {
    PanelWorld w(SampleLibrary());
    const std::u16string mine = w.AddCollections(8, {u"收藏夹1", u"收藏夹3"}, 0);
    w.CollectDrawing(8, "收藏夹3", "门.dwg");
    service::UserState& users = w.service.users();
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    w.SignIn(8);
    ASSERT_TRUE(w.OpenRow(1));

    // "新建文件夹" offers the first gap and opens the new folder.
    w.ClickButton(2101, 400);
    auto* made = DialogOf<CNewFolderDlg>(p);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->NameEdit()->text(), "收藏夹2");
    Key(made->NameEdit(), Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([&] { return p.m_curClassPath == mine + u"/收藏夹2" && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_TRUE(users.folderByName(8, "收藏夹2").has_value());
    EXPECT_TRUE(DirectoryExists(mine + u"/收藏夹2"));
    EXPECT_EQ(FolderButtons(p), (Texts{"收藏夹1", "收藏夹3", "收藏夹2"}));
    EXPECT_EQ(p.m_folderMap.size(), 3u);

    // "重命名" of a folder with a block: the directory, the button and the map follow.
    ChooseOnButton(p, "收藏夹3", "重命名");
    auto* rename = DialogOf<CModifyFolderDlg>(p);
    ASSERT_TRUE(rename);
    Type(rename, "门窗");
    ASSERT_TRUE(PumpUntil([&] { return p.m_curClassPath == mine + u"/门窗" && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_FALSE(users.folderByName(8, "收藏夹3").has_value());
    EXPECT_TRUE(users.folderByName(8, "门窗").has_value());
    EXPECT_FALSE(PathExists(mine + u"/收藏夹3"));
    EXPECT_EQ(FolderButtons(p), (Texts{"收藏夹1", "门窗", "收藏夹2"}));
    EXPECT_EQ(FolderIdByName(p.m_folderMap, u"门窗"), W(std::to_string(users.folderByName(8, "门窗")->id)));
    EXPECT_EQ(p.m_pThumbList->GetPath(0), mine + u"/门窗/门.dwg");
    EXPECT_TRUE(PumpUntil([&] { return FileExists(mine + u"/门窗/门.dwg"); }, 8000));

    // "删除" in a button's menu deletes that folder and no other.
    ChooseOnButton(p, "收藏夹2", "删除");
    EXPECT_TRUE(AnswerTips(ModalTip, {{"确定要删除该收藏夹所有图块么？", 1}}));
    ASSERT_TRUE(PumpUntil([&] { return !users.folderByName(8, "收藏夹2") && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(FolderButtons(p), (Texts{"收藏夹1", "门窗"}));
    EXPECT_FALSE(PathExists(mine + u"/收藏夹2"));
    // With one folder left "移动" is offered disabled.
    ChooseOnButton(p, "收藏夹1", "删除");
    EXPECT_TRUE(AnswerTips(ModalTip, {{"确定要删除该收藏夹所有图块么？", 1}}));
    ASSERT_TRUE(PumpUntil([&] { return p.m_folderMap.size() == 1 && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    ASSERT_EQ(FolderButtons(p), Texts{"门窗"});
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->ItemState(0) != CDWGListView::kStateFresh; }));
    EXPECT_EQ(OpenMenu(p, p.m_pThumbList, p.m_pThumbList->IconRect(0).center()), (Texts{"重命名", "删除", "!移动"}));
    p.CollectionMenu()->close();

    // The limit: the eighteenth folder disables the button; still enabled, it only tells.
    for (int i = 0; i < 16; ++i) users.addFolder(8, "夹" + std::to_string(i));
    ASSERT_TRUE(w.OpenRow(0));
    ASSERT_TRUE(w.OpenRow(1));
    ASSERT_EQ(w.VisibleSubclassButtons(), 17);
    w.ClickButton(2101, 400);
    made = DialogOf<CNewFolderDlg>(p);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->NameEdit()->text(), "收藏夹1");
    Key(made->NameEdit(), Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([&] { return p.m_curClassPath == mine + u"/收藏夹1" && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    EXPECT_EQ(w.VisibleSubclassButtons(), 18);
    EXPECT_FALSE(p.Button(2101)->isEnabled());
    p.Button(2101)->setEnabled(true);
    w.ClickButton(2101, 400);
    EXPECT_TRUE(AnswerTips(ModalTip, {{"已达到分类上限", 1}}));
    EXPECT_EQ(users.folders(8).size(), 18u);
}

TEST(CollectionDialogRoad, CollectsFromAGalleryMenuAndFromASearchRow) {
    PanelWorld w(SampleLibrary());
    GalleryNode* hardware = w.AddGallery({u"五金", 1, 3, 0, true});
    const std::u16string mine = w.AddCollections(9, {u"螺栓"}, 0);
    const int64_t bolts = w.service.users().folderByName(9, "螺栓")->id;
    std::string drawing;
    ASSERT_TRUE(ReadWholeFile(W(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg"), drawing));
    CreateDirectories(hardware->dirChildren[0]->Path());
    for (GalleryNode* block : hardware->dirChildren[0]->fileChildren) ASSERT_TRUE(WriteFileAtomic(block->Path(), drawing));
    RecordingHost host;
    host.permission = 1;
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);
    w.SignIn(9);
    // The class opens behind an advertising tile in its first cell.
    p.m_adTiles[u"五金"] = AdTile{.name = u"广告", .url = {}, .target = {}, .ver = u"0", .picture = {}, .on = true};
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"五金")));
    ASSERT_TRUE(p.m_pThumbList->GetPath(0).empty());
    const std::u16string second = hardware->dirChildren[0]->fileChildren[1]->Path();
    const int item = ItemOf(p, second);
    ASSERT_EQ(item, 2);
    // The tile's cell has no menu.
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 8, 0);
    Pump(50);
    EXPECT_FALSE(p.CollectionMenu());

    // A boutique block: the host is asked for its gallery and refuses.
    ChooseOnItem(p, item, "收藏图块");
    ASSERT_TRUE(PumpUntil([&] { return host.Requests(MARROWFIN_REQUEST_PERMISSION).size() == 1; }));
    Pump(50);
    EXPECT_FALSE(p.CollectionWindow());
    ASSERT_EQ(host.Requests(MARROWFIN_REQUEST_GALLERY_NAME).size(), 1u);
    EXPECT_EQ(host.Requests(MARROWFIN_REQUEST_GALLERY_NAME)[0].text, u"五金");

    // Allowed: the dialog takes the block of the clicked cell, not the one before the tile.
    host.permission = 0;
    ChooseOnItem(p, item, "收藏图块");
    auto* collect = DialogOf<CCollectiondlg>(p);
    ASSERT_TRUE(collect);
    EXPECT_EQ(collect->m_path, second);
    Press(collect, CBlockFolderDlg::IdOk);
    ASSERT_TRUE(AnswerTips(ModalTip, {{"图块收藏成功", 1}}));
    // "查看收藏": the folder that took the block opens with it.
    ASSERT_TRUE(PumpUntil([&] { return p.m_classIndex == 1 && p.m_curClassPath == mine + u"/螺栓" && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    const std::string lowered = (QString::fromStdU16String(FileNameOf(second)).toLower()).toStdString();
    EXPECT_TRUE(w.service.users().blockByName(bolts, lowered).has_value());
    EXPECT_EQ(p.m_pThumbList->GetPath(0), mine + u"/螺栓/" + W(lowered));
    EXPECT_EQ(p.m_collected.count(second), 1u);

    // A search row's "收藏": the row's file goes in; "关闭" marks the row.
    const std::u16string third = hardware->dirChildren[0]->fileChildren[2]->Path();
    p.GoToPage(PageSearch);
    BlockRow row;
    row.name = QStringLiteral("Door.DWG");
    row.klass = QStringLiteral("五金");
    row.path = QString::fromStdU16String(third);
    row.state = RowFetched;
    p.m_rows = {row};
    p.m_searchList->show();
    (void)PostWindowMessage(p.Handle(), MsgPanelCommand, 10, 0);
    collect = DialogOf<CCollectiondlg>(p);
    ASSERT_TRUE(collect);
    EXPECT_EQ(collect->NameEdit()->text(), "Door.DWG");
    Press(collect, CBlockFolderDlg::IdOk);
    ASSERT_TRUE(AnswerTips(ModalTip, {{"图块收藏成功", 2}}));
    EXPECT_TRUE(PumpUntil([&] { return p.m_rows.size() == 1 && p.m_rows[0].state == RowCollected; }));
    EXPECT_TRUE(w.service.users().blockByName(bolts, "door.dwg").has_value());
    EXPECT_EQ(p.m_collected.count(third), 1u);
    EXPECT_EQ(p.m_page, PageSearch);
}
