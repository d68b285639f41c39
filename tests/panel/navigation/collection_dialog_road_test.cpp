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

int ItemOf(CBrindleDlg& p, const std::u16string& path) {
    for (int i = 0; i < p.m_pThumbList->GetItemCount(); ++i)
        if (p.m_pThumbList->GetPath(i) == path) return i;
    return -1;
}

// Right-clicks `at` on `widget`: the entries of the menu that opened ("!"
// before a disabled one); the entry `choose` is then clicked. With a
// `picture` the open menu is compared with that reference.
Texts Menu(CBrindleDlg& p, QWidget* widget, QPoint at, const QString& choose = {}, const char* picture = nullptr) {
    Click(widget, at, Qt::RightButton);
    Texts entries;
    if (!PumpUntil([&p] { return p.CollectionMenu() && p.CollectionMenu()->isVisible(); }, 500)) return entries;
    QMenu* menu = p.CollectionMenu();
    if (picture) { EXPECT_TRUE(MatchesReference(menu->grab().toImage(), "panel/navigation", picture)); }
    QAction* chosen = nullptr;
    for (QAction* action : menu->actions()) {
        if (action->isSeparator()) continue;
        entries.push_back((action->isEnabled() ? "" : "!") + action->text());
        if (action->text() == choose) chosen = action;
    }
    // The menu goes when it is clicked.
    chosen ? Click(menu, menu->actionGeometry(chosen).center()) : (void)menu->close();
    Pump(30);
    return entries;
}

// The menu of a block's cell once its picture has come.
Texts CellMenu(CBrindleDlg& p, const std::u16string& path, const QString& choose = {}, const char* picture = nullptr) {
    const int item = ItemOf(p, path);
    if (item < 0 || !PumpUntil([&] { return p.m_pThumbList->ItemState(item) != CDWGListView::kStateFresh; })) return {};
    return Menu(p, p.m_pThumbList, p.m_pThumbList->IconRect(item).center(), choose, picture);
}

Texts ButtonMenu(PanelHarness& w, const QString& caption, const QString& choose, const char* picture = nullptr) {
    for (CSubclassButton* button : w.panel->m_subclassBtns)
        if (w.Shown(button) && button->text() == caption) return Menu(*w.panel, button, button->rect().center(), choose, picture);
    return {};
}

// The collection's dialog of that kind once it is open and no longer waits.
template <class Dialog>
Dialog* DialogOf(CBrindleDlg& p) {
    Dialog* dialog = nullptr;
    PumpUntil([&] { return (dialog = qobject_cast<Dialog*>(p.CollectionWindow())) && dialog->isVisible() && !dialog->Waiting(); });
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
    users.addBlock({0, pipes, "缺失.dwg", "管件", 2048, false});  // its file never comes
    RecordingHost host;
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);
    w.SignIn(7);
    ASSERT_TRUE(w.OpenRow(1));
    const std::u16string hex = mine + u"/螺栓/六角螺栓.dwg", renamed = mine + u"/螺栓/螺栓M8.dwg";
    ASSERT_TRUE(PumpUntil([&] { return FileExists(hex) && p.m_thumbs.running.empty(); }, 8000));

    // "重命名" shows the name without its extension; a second request while
    // the dialog is open opens nothing more.
    EXPECT_EQ(CellMenu(p, hex, "重命名"), (Texts{"重命名", "删除", "移动"}));
    auto* rename = DialogOf<CModifyFolderDlg>(p);
    ASSERT_TRUE(rename);
    EXPECT_EQ(rename->NameEdit()->text(), "六角螺栓");
    (void)PostWindowMessage(p.Handle(), MsgPanelCommand, 4, ItemOf(p, hex));
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 11, ItemOf(p, hex));
    Pump(50);
    EXPECT_EQ(p.findChildren<CCollectionDialogFrame*>().size(), 1);
    Type(rename, "螺栓M8");
    ASSERT_TRUE(PumpUntil([&] { return FileExists(renamed) && !FileExists(hex) && !p.CollectionWindow(); }));
    // The list, the tree and the map follow: the move below finds the block by its new name.
    ASSERT_GE(ItemOf(p, renamed), 0);
    EXPECT_EQ(p.m_nav.listNodes.At(*p.m_store, ItemOf(p, renamed))->name, u"螺栓M8.dwg");

    // "移动" to the only other folder, which then opens with the block.
    CellMenu(p, renamed, "移动");
    auto* move = DialogOf<CMoveCollectBlkDlg>(p);
    ASSERT_TRUE(move);
    Press(move, CBlockFolderDlg::IdOk);  // the panel frees the dialog when it ends
    const std::u16string moved = mine + u"/管件/螺栓M8.dwg";
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.curClassPath == mine + u"/管件" && ItemOf(p, moved) >= 0; }));
    // A block whose file never came is not moved (its cell offers no menu yet).
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 11, ItemOf(p, mine + u"/管件/缺失.dwg"));
    EXPECT_TRUE(AnswerTips(ModalTip, {{"文件未下载，请稍后", 1}}));

    // Back in the first folder the moved block's file is gone; "删除" takes the last one.
    w.ClickButton(2080, 400);
    ASSERT_TRUE(w.WaitForSwitch());
    const std::u16string anchor = mine + u"/螺栓/地脚螺栓.dwg";
    EXPECT_FALSE(FileExists(renamed));
    CellMenu(p, anchor, "删除");
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.itemCount == 0 && !p.CollectionBusy(); }));
    EXPECT_TRUE(!users.blockByName(bolts, "地脚螺栓.dwg") && !FileExists(anchor));

    // "添加图块" on the empty folder: two drawings from the disk land and show.
    const std::string disk = w.home.file("disk");
    CreateDirectories(Utf8ToUtf16(disk));
    for (const char* name : {"a.dwg", "b.dwg"}) WriteBytes(disk + "/" + name, "AC1015" + std::string(1500, 'd'));
    w.ClickButton(ControlId::AddBlocksEmpty, 400);
    QFileDialog* files = nullptr;
    ASSERT_TRUE(PumpUntil([&] { return (files = qobject_cast<QFileDialog*>(p.CollectionWindow())) && files->isVisible(); }));
    files->setDirectory(QString::fromStdString(disk));
    auto* names = files->findChild<QLineEdit*>("fileNameEdit");
    names->setText(QStringLiteral("\"a.dwg\" \"b.dwg\""));
    Key(names, Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([&] { return p.m_pThumbList->GetItemCount() == 2 && !p.CollectionBusy(); }, 8000));
    EXPECT_TRUE(FileExists(mine + u"/螺栓/a.dwg") && FileExists(mine + u"/螺栓/b.dwg"));

    // "分享收藏": a user the host cannot sign in gets no dialog; a signed-in one gets it.
    p.userId = 0;
    w.ClickButton(ControlId::ShareCollection, 400);
    Pump(100);
    EXPECT_TRUE(!p.CollectionWindow() && host.Requests(MARROWFIN_REQUEST_SIGN_IN).size() == 1);
    w.SignIn(7);
    w.ClickButton(ControlId::ShareCollection, 400);
    EXPECT_TRUE(DialogOf<CShareDWGblockDlg>(p));
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
    auto opened = [&](const std::u16string& folder) {
        return PumpUntil([&] { return p.m_nav.curClassPath == mine + u"/" + folder && !p.CollectionBusy(); }) && w.WaitForSwitch();
    };

    // "新建文件夹" (its offered name: the dialogs' test) opens the new folder.
    w.ClickButton(ControlId::NewFolder, 400);
    auto* made = DialogOf<CNewFolderDlg>(p);
    ASSERT_TRUE(made);
    Key(made->NameEdit(), Qt::Key_Return);
    ASSERT_TRUE(opened(u"收藏夹2"));
    EXPECT_TRUE(users.folderByName(8, "收藏夹2") && DirectoryExists(mine + u"/收藏夹2"));
    EXPECT_EQ(w.FolderButtons(), (Texts{"收藏夹1", "收藏夹3", "收藏夹2"}));
    // On a slow line the user opens a folder before the list is read again:
    // the answer leaves him there rather than jumping to the new folder.
    w.service.faults().set("/gallery/get_u_f", {.latencyMs = 400});
    w.ClickButton(ControlId::NewFolder, 400);
    Key(DialogOf<CNewFolderDlg>(p)->NameEdit(), Qt::Key_Return);
    ASSERT_TRUE(PumpUntil([&] { return p.CollectionBusy(); }));
    for (CSubclassButton* button : p.m_subclassBtns)
        if (w.Shown(button) && button->text() == "收藏夹1") Click(button, button->rect().center());
    ASSERT_TRUE(PumpUntil([&] { return !p.CollectionBusy(); }, 5000));
    Pump(200);
    EXPECT_EQ(p.m_nav.curClassPath, mine + u"/收藏夹1");
    w.service.faults().set("/gallery/get_u_f", {});

    // "重命名" of a folder with a block: the directory, the button and the map follow.
    EXPECT_EQ(ButtonMenu(w, "收藏夹3", "重命名", "folder_menu_1.0"), (Texts{"重命名", "删除"}));
    auto* rename = DialogOf<CModifyFolderDlg>(p);
    ASSERT_TRUE(rename);
    Type(rename, "门窗");
    ASSERT_TRUE(opened(u"门窗"));
    EXPECT_TRUE(!PathExists(mine + u"/收藏夹3") && p.m_pThumbList->GetPath(0) == mine + u"/门窗/门.dwg");
    EXPECT_EQ(w.FolderButtons(), (Texts{"收藏夹1", "门窗", "收藏夹2", "收藏夹4"}));

    // "删除" in a button's menu deletes that folder and no other; with one
    // folder left "移动" is offered disabled.
    for (const char* folder : {"收藏夹4", "收藏夹2", "收藏夹1"}) {
        ButtonMenu(w, folder, "删除");
        EXPECT_TRUE(AnswerTips(ModalTip, {{"确定要删除该收藏夹所有图块么？", 1}}));
        ASSERT_TRUE(PumpUntil([&] { return !users.folderByName(8, folder) && !p.CollectionBusy(); }));
        ASSERT_TRUE(w.WaitForSwitch());
        EXPECT_FALSE(PathExists(mine + u"/" + Utf8ToUtf16(folder)));
    }
    EXPECT_EQ(w.FolderButtons(), Texts{"门窗"});
    EXPECT_EQ(CellMenu(p, mine + u"/门窗/门.dwg", {}, "block_menu_1.0"), (Texts{"重命名", "删除", "!移动"}));

    // The limit: the eighteenth folder disables the button; still enabled, it only tells.
    for (int i = 0; i < 16; ++i) users.addFolder(8, "夹" + std::to_string(i));
    ASSERT_TRUE(w.OpenRow(0) && w.OpenRow(1));
    w.ClickButton(ControlId::NewFolder, 400);
    made = DialogOf<CNewFolderDlg>(p);
    ASSERT_TRUE(made);
    Key(made->NameEdit(), Qt::Key_Return);
    ASSERT_TRUE(opened(u"收藏夹1"));
    EXPECT_TRUE(w.VisibleSubclassButtons() == 18 && !p.Button(ControlId::NewFolder)->isEnabled());
    p.Button(ControlId::NewFolder)->setEnabled(true);
    w.ClickButton(ControlId::NewFolder, 400);
    EXPECT_TRUE(AnswerTips(ModalTip, {{"已达到分类上限", 1}}));
    EXPECT_EQ(users.folders(8).size(), 18u);
}

TEST(CollectionDialogRoad, CollectsFromAGalleryMenuAndFromASearchRow) {
    PanelWorld w(SampleLibrary());
    GalleryNode* hardware = w.AddGallery({u"五金", 1, 3, 0, true});
    const std::u16string mine = w.AddCollections(9, {u"螺栓"}, 0);
    const std::vector<GalleryNode*>& blocks = hardware->dirChildren[0]->fileChildren;
    w.WriteBlockFiles(hardware->dirChildren[0]);
    RecordingHost host;
    host.permission = 1;
    w.MakePanel();
    CBrindleDlg& p = *w.panel;
    p.hostWindow = HandleOf(&host);
    w.SignIn(9);
    // The class opens behind an advertising tile in its first cell, which has no menu.
    p.m_adTiles[u"五金"] = AdTile{.name = u"广告", .url = {}, .target = {}, .ver = u"0", .picture = {}, .on = true};
    ASSERT_TRUE(w.OpenRow(w.RowOf(u"五金")));
    ASSERT_TRUE(p.m_pThumbList->GetPath(0).empty());
    (void)PostWindowMessage(p.Handle(), MsgPanelEvent, 8, 0);
    Pump(50);
    EXPECT_FALSE(p.CollectionMenu());

    // A boutique block: the host is asked for its gallery and refuses.
    const std::u16string second = blocks[1]->Path();
    EXPECT_EQ(CellMenu(p, second, "收藏图块"), Texts{"收藏图块"});
    ASSERT_TRUE(PumpUntil([&] { return host.Requests(MARROWFIN_REQUEST_PERMISSION).size() == 1; }));
    Pump(50);
    EXPECT_FALSE(p.CollectionWindow());
    ASSERT_EQ(host.Requests(MARROWFIN_REQUEST_GALLERY_NAME).size(), 1u);
    EXPECT_EQ(host.Requests(MARROWFIN_REQUEST_GALLERY_NAME)[0].text, u"五金");

    // Allowed: the dialog takes the block of the clicked cell, not the one
    // before the tile; "查看收藏" opens the folder that took it.
    host.permission = 0;
    CellMenu(p, second, "收藏图块");
    auto* collect = DialogOf<CCollectiondlg>(p);
    ASSERT_TRUE(collect);
    EXPECT_EQ(collect->m_path, second);
    Press(collect, CBlockFolderDlg::IdOk);
    ASSERT_TRUE(AnswerTips(ModalTip, {{"图块收藏成功", 1}}));
    ASSERT_TRUE(PumpUntil([&] { return p.m_nav.classIndex == 1 && p.m_nav.curClassPath == mine + u"/螺栓" && !p.CollectionBusy(); }));
    ASSERT_TRUE(w.WaitForSwitch());
    const std::string lowered = QString::fromStdU16String(FileNameOf(second)).toLower().toStdString();
    EXPECT_TRUE(p.m_pThumbList->GetPath(0) == mine + u"/螺栓/" + Utf8ToUtf16(lowered) && p.m_search.collected.count(second) == 1u);

    // A search row's "收藏": the row's file goes in; "关闭" marks the row.
    p.GoToPage(PageSearch);
    p.m_search.rows = {BlockRow{.name = QStringLiteral("Door.DWG"),
                                .klass = {},
                                .subclass = {},
                                .url = {},
                                .path = QString::fromStdU16String(blocks[2]->Path()),
                                .thumbnail = {},
                                .state = RowFetched}};
    p.m_searchList->show();
    (void)PostWindowMessage(p.Handle(), MsgPanelCommand, 10, 0);
    collect = DialogOf<CCollectiondlg>(p);
    ASSERT_TRUE(collect);
    EXPECT_EQ(collect->NameEdit()->text(), "Door.DWG");
    Press(collect, CBlockFolderDlg::IdOk);
    ASSERT_TRUE(AnswerTips(ModalTip, {{"图块收藏成功", 2}}));
    EXPECT_TRUE(PumpUntil([&] { return p.m_search.rows.size() == 1 && p.m_search.rows[0].state == RowCollected; }));
    EXPECT_TRUE(p.m_search.collected.count(blocks[2]->Path()) && p.m_nav.page == PageSearch);
}
