// The collection's dialogs as the panel opens them: the context menus of the
// thumbnail list and the folder buttons, collecting a block (from a gallery
// or a search row), moving and renaming blocks, new and renamed folders,
// adding drawings from the disk and sharing. Menus, dialogs and tips open
// without a loop of their own; what follows an OK runs when they end, and
// the tree, m_folderMap, the mirror and the view follow at once.
#include <QAction>
#include <QCollator>
#include <QCursor>
#include <QMenu>

#include <algorithm>

#include "collection_dialogs/add_blocks_from_disk.h"
#include "platform/product_texts.h"
#include "platform/qt/qt_text.h"
#include "collection_dialogs/collection_tip.h"
#include "collection_dialogs/collectiondlg.h"
#include "collection_dialogs/modify_folder_dlg.h"
#include "collection_dialogs/move_collect_blk_dlg.h"
#include "collection_dialogs/new_folder_dlg.h"
#include "collection_dialogs/share_dwg_block_dlg.h"
#include "marrowfin/marrowfin.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/dialog/host_requests.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "panel/preview/dwg_preview.h"
#include "platform/files.h"
#include "platform/qt/qt_window_system.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

// A folder of the collection as a route: "/我的收藏/<folder>".
const std::u16string kCollectionFolderRoute = std::u16string(kCollectionRoute) + u"/";
constexpr char16_t kDwg[] = u".dwg";

// Entries of the collection's context menus.
constexpr int kMenuRename = 2000;
constexpr int kMenuDelete = 2001;
constexpr int kMenuMove = 2002;
constexpr int kMenuCollect = 1000;

CollectionMessage Notice(std::u16string title, std::u16string text, std::u16string accept = u"确定",
                         std::u16string decline = {}) {
    CollectionMessage shown;
    shown.kind = CollectionMessage::Tip;
    shown.title = std::move(title);
    shown.text = std::move(text);
    shown.accept = std::move(accept);
    shown.decline = std::move(decline);
    return shown;
}

// The gallery folder's name: the path component two levels above the file.
std::u16string GalleryOfBlock(std::u16string_view path) {
    size_t end = path.size();
    for (int level = 0; level < 2; ++level) {
        end = path.rfind(u'/', end - 1);
        if (end == std::u16string_view::npos || end == 0) return {};
    }
    const size_t begin = path.rfind(u'/', end - 1);
    return std::u16string(path.substr(begin == std::u16string_view::npos ? 0 : begin + 1, end - (begin + 1)));
}

bool HoldsDwg(const std::u16string& name) { return name.find(kDwg) != std::u16string::npos; }

// Folder nodes in the order of their paths under the Chinese collation.
void SortFolderNodes(GalleryNode* parent) {
    QCollator collator{QLocale(QLocale::Chinese, QLocale::China)};
    std::stable_sort(parent->dirChildren.begin(), parent->dirChildren.end(),
                     [&collator](const GalleryNode* a, const GalleryNode* b) {
                         if (!a || !b) return b != nullptr && a == nullptr;
                         return collator.compare(ToQString(a->Path()), ToQString(b->Path())) < 0;
                     });
}

}  // namespace

// ---- one window at a time ------------------------------------------------------

bool CBrindleDlg::CollectionWindowOpen() {
    QWidget* open = m_collectionWindow.data();
    // Files from the disk go on uploading after their dialog closed; their tips come later.
    if (!open && m_addFromDisk) open = m_addFromDisk->CurrentTip();
    if (!open && m_addFromDisk) open = m_addFromDisk->FileDialog();
    if (!open && !m_addFromDisk) return false;
    // A second request brings the open one forward instead.
    if (open) {
        open->raise();
        open->activateWindow();
    }
    return true;
}

template <class Dialog>
Dialog* CBrindleDlg::HoldCollectionDialog(Dialog* dialog, std::function<void(Dialog&, int)> then) {
    m_collectionWindow = dialog;
    connect(dialog, &QDialog::finished, this, [this, dialog, then = std::move(then)](int result) {
        dialog->deleteLater();
        m_collectionWindow = nullptr;
        if (then) then(*dialog, result);
    });
    return dialog;
}

CSubclassButton* CBrindleDlg::SubclassButtonOf(std::intptr_t handle) const {
    auto* button = qobject_cast<CSubclassButton*>(ObjectOf(static_cast<WindowHandle>(handle)));
    // The handle came through a message: it must still name one of ours.
    if (!button || std::find(m_subclassBtns.begin(), m_subclassBtns.end(), button) == m_subclassBtns.end())
        return nullptr;
    return button;
}

int CBrindleDlg::ItemOfPath(const std::u16string& path) const {
    if (!m_pThumbList || path.empty()) return -1;
    for (int i = 0; i < m_pThumbList->GetItemCount(); ++i)
        if (m_pThumbList->GetPath(i) == path) return i;
    return -1;
}

QMenu* CBrindleDlg::PopCollectionMenu(const std::vector<std::pair<QString, int>>& entries,
                                      const std::set<int>& disabled, std::function<void(int)> chosen) {
    if (m_collectionMenu) m_collectionMenu->close();
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& [text, id] : entries) {
        if (text.isEmpty()) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(text);
        action->setData(id);
        action->setEnabled(!disabled.contains(id));
    }
    connect(menu, &QMenu::triggered, this, [chosen = std::move(chosen)](QAction* action) {
        if (chosen) chosen(action->data().toInt());
    });
    m_collectionMenu = menu;
    menu->popup(QCursor::pos());
    return menu;
}

// ---- the thumbnail list's menu (event 8) ----------------------------------------

void CBrindleDlg::ThumbnailMenu(std::intptr_t item) {
    if (!m_pThumbList || !m_store || !m_store->root) return;
    if (item < 0 || item >= m_pThumbList->GetItemCount() || IsSearchPage(m_nav.page)) return;
    if (m_nav.classIndex == 1) {
        // The menu acts on the block it was opened on, wherever it stands by then.
        const std::u16string path = m_pThumbList->GetPath(static_cast<int>(item));
        if (path.empty()) return;
        std::set<int> disabled;
        if (!m_collection.CanMoveBlocks()) disabled.insert(kMenuMove);
        PopCollectionMenu({{QStringLiteral("重命名"), kMenuRename},
                           {QString(), 0},
                           {QStringLiteral("删除"), kMenuDelete},
                           {QStringLiteral("移动"), kMenuMove}},
                          disabled, [this, path](int id) {
                              // Rename and move are posted: their dialogs open once the menu has closed.
                              const int at = ItemOfPath(path);
                              if (at < 0) return;
                              if (id == kMenuRename) {
                                  (void)PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::RenameBlock, at);
                              } else if (id == kMenuDelete) {
                                  // The bar's "删除图块" takes the selected item.
                                  m_pThumbList->SetSelectedItem(at);
                                  DeleteSelectedBlock();
                              } else if (id == kMenuMove) {
                                  (void)PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::MoveBlock, at);
                              }
                          });
        return;
    }
    if (m_nav.classIndex < 2) return;
    // The tile's cell has no menu.
    if (item == 0 && GetAdTile(*this, nullptr)) return;
    const std::u16string path = m_pThumbList->GetPath(static_cast<int>(item));
    if (path.empty()) return;
    PopCollectionMenu({{ToQString(kCollectTitle), kMenuCollect}}, {}, [this, path](int) { CollectListedBlock(path); });
}

void CBrindleDlg::CollectListedBlock(const std::u16string& path) {
    const int item = ItemOfPath(path);
    const GalleryNode* node = item >= 0 && m_store ? m_nav.listNodes.At(*m_store, static_cast<size_t>(item)) : nullptr;
    if (!node || !node->PathIs(path) || !FileExists(path)) return;
    if (CollectionWindowOpen()) return;
    if (userId < 2 && RequireLogin() < 2) return;
    const std::u16string name = node->name.str();
    CheckOldCollectionThen([this, name, path](int verdict) {
        if (verdict == 0 || !HostAllowsCollecting(path)) return;
        OpenCollectDialog(name, path, LoadDwgPreview(ToQString(path)), nullptr);
    });
}

bool CBrindleDlg::HostAllowsCollecting(const std::u16string& path) {
    if (!IsBlkBoutique(path)) return true;
    // The host decides whether a boutique block may be collected.
    std::u16string gallery = GalleryOfBlock(path);
    SendHostRequest(hostWindow, MARROWFIN_REQUEST_GALLERY_NAME, &gallery);
    int32_t allowed = -1;
    SendHostRequest(hostWindow, MARROWFIN_REQUEST_PERMISSION, &allowed);
    return allowed == 0;
}

void CBrindleDlg::OpenCollectDialog(const std::u16string& name, const std::u16string& path, const QImage& picture,
                                    std::function<void()> closed) {
    if (CollectionWindowOpen()) return;
    auto* dialog = HoldCollectionDialog<CCollectiondlg>(
        new CCollectiondlg(this, name, path, picture, userToken),
        [this, path, closed = std::move(closed)](CCollectiondlg& done, int result) {
            if (result != QDialog::Accepted) return;
            m_search.collected[path] = 1;
            if (!done.m_landed) return;
            const std::u16string folder = done.m_folder;
            m_collectionWindow = OpenCollectionTip(this, Notice(kCollectTitle, u"图块收藏成功", u"查看收藏", u"关闭"),
                                                   this, [this, folder, closed](int answer) {
                                                       if (answer != 1) {
                                                           if (closed) closed();
                                                           return;
                                                       }
                                                       // "查看收藏": the folder that took the block opens.
                                                       if (m_nav.page == PageSearch)
                                                           SearchCommand(ControlId::SearchBack);
                                                       if (!m_store || !m_store->root) return;
                                                       m_nav.targetClass =
                                                           MirrorDir(m_store->root->Path(), userId) + u"/" + folder;
                                                       m_nav.forceList = true;
                                                       SelectClass(1, true);
                                                   });
        });
    dialog->Open();
}

// ---- a search row's "收藏" (command 10) -----------------------------------------

void CBrindleDlg::CollectRow(std::intptr_t index) {
    if (!m_searchList || !m_searchList->isVisible()) return;
    if (index < 0 || index >= static_cast<std::intptr_t>(m_search.rows.size())) return;
    const BlockRow& row = m_search.rows[static_cast<size_t>(index)];
    if (row.state != RowFresh && row.state != RowFetched) return;
    if (CollectionWindowOpen()) return;
    if (userId < 2 && RequireLogin() < 2) return;
    const RowKey key = KeyOf(row);
    CheckOldCollectionThen([this, key](int verdict) {
        // The rows may have changed meanwhile: the row is found again by its identity.
        const int at = m_search.FindRow(key);
        if (verdict == 0 || at < 0) return;
        const BlockRow& row = m_search.rows[static_cast<size_t>(at)];
        if (!HostAllowsCollecting(key.path)) return;
        OpenCollectDialog(row.name.toStdU16String(), key.path, row.thumbnail, [this, key] {
            const int shown = m_search.FindRow(key);
            if (shown < 0) return;
            m_search.rows[static_cast<size_t>(shown)].state = RowCollected;
            RedrawResultRow(shown);
        });
    });
}

// ---- a folder button's menu (event 9) --------------------------------------------

void CBrindleDlg::FolderButtonMenu(std::intptr_t handle) {
    CSubclassButton* button = SubclassButtonOf(handle);
    if (!button || m_nav.classIndex != 1 || IsSearchPage(m_nav.page)) return;
    const WindowHandle target = HandleOf(button);
    PopCollectionMenu({{QStringLiteral("重命名"), kMenuRename}, {QString(), 0}, {QStringLiteral("删除"), kMenuDelete}},
                      {}, [this, target](int id) {
                          CSubclassButton* chosen = SubclassButtonOf(static_cast<std::intptr_t>(target));
                          if (!chosen) return;
                          // Posted: the dialog or tip opens once the menu has closed.
                          if (id == kMenuRename)
                              (void)PostWindowMessage(Handle(), MsgPanelCommand, PanelCommand::RenameFolder,
                                                      static_cast<std::intptr_t>(target));
                          else if (id == kMenuDelete)
                              (void)PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::DeleteFolder,
                                                      reinterpret_cast<std::intptr_t>(chosen));
                      });
}

// ---- renaming a folder (command 2) ------------------------------------------------

void CBrindleDlg::RenameFolder(std::intptr_t handle) {
    CSubclassButton* button = SubclassButtonOf(handle);
    if (!button || !m_store || !m_store->root) return;
    GalleryNode* node = FindNodeByPath(m_store->root, button->data.toStdU16String());
    if (!node || !node->parent || m_nav.classIndex != 1 || IsSearchPage(m_nav.page)) return;
    if (m_nav.curClassPath.find(u"收藏") == std::u16string::npos) return;
    if (CollectionWindowOpen()) return;
    const std::u16string oldPath = node->Path();
    const std::u16string parentPath = node->parent->Path();
    const std::u16string oldName = node->name.str();
    const WindowHandle target = HandleOf(button);
    auto* dialog = HoldCollectionDialog<CModifyFolderDlg>(
        new CModifyFolderDlg(this, userToken, m_collection.folderMap, parentPath, oldName,
                             CModifyFolderDlg::RenameFolderMode),
        [this, oldPath, parentPath, oldName, target](CModifyFolderDlg& done, int result) {
            if (result != QDialog::Accepted || done.m_name == oldName) return;
            FolderRenamed(oldPath, parentPath + u"/" + done.m_name, done.m_name, target);
        });
    dialog->Open();
}

void CBrindleDlg::FolderRenamed(const std::u16string& oldPath, const std::u16string& newPath,
                                const std::u16string& newName, WindowHandle buttonHandle) {
    // The service has the new name; a local rename that fails ends quietly.
    if (!RenameFile(oldPath, newPath)) return;
    m_collection.FolderRenamed(oldPath, newPath, newName);
    GalleryNode* node = m_store && m_store->root ? FindNodeByPath(m_store->root, oldPath) : nullptr;
    if (!node) return;
    RenameNode(node, newName);
    if (m_nav.curClassPath == oldPath) m_nav.curClassPath = newPath;
    if (CSubclassButton* button = SubclassButtonOf(static_cast<std::intptr_t>(buttonHandle))) {
        button->setText(ToQString(newName));
        button->data = ToQString(newPath);
        button->setToolTip(ToQString(newName));
    }
    // The thumbnails already listed lie in the new directory now.
    if (m_pThumbList)
        for (int i = 0; i < m_pThumbList->GetItemCount(); ++i) {
            const std::u16string path = m_pThumbList->GetPath(i);
            if (path.rfind(oldPath + u"/", 0) == 0) m_pThumbList->SetPath(i, newPath + path.substr(oldPath.size()));
        }
    RelistNodes();
    GalleryNode* parent = node->parent;
    if (!parent || parent->name != kCollectionClass) return;
    SortFolderNodes(parent);
    m_nav.targetClass = kCollectionFolderRoute + newName;
    m_nav.forceList = true;
    OpenTargetClass();
}

// ---- renaming a block (command 4) -------------------------------------------------

GalleryNode* CBrindleDlg::ListedBlockAt(std::intptr_t item) {
    if (!m_store || !m_pThumbList || item < 0 || item >= m_pThumbList->GetItemCount()) return nullptr;
    GalleryNode* node = m_nav.listNodes.At(*m_store, static_cast<size_t>(item));
    return node && IsFile(*node) && node->parent ? node : nullptr;
}

void CBrindleDlg::RenameBlock(std::intptr_t item) {
    // Only a block of the collections is renamed; anywhere else the double click activates.
    if (m_nav.classIndex != 1 || IsSearchPage(m_nav.page) || m_nav.curClassPath.find(u"收藏") == std::u16string::npos) {
        ActivateBlock(*this, item);
        return;
    }
    GalleryNode* node = ListedBlockAt(item);
    if (!node || CollectionWindowOpen()) return;
    const std::u16string path = node->Path();
    if (!FileExists(path)) {
        m_collectionWindow =
            OpenCollectionTip(this, Notice(u"修改名称", u"文件未下载，请稍后", u"确定", u"取消"), this, nullptr);
        return;
    }
    std::u16string name = node->name.str();
    if (!HoldsDwg(name)) name += kDwg;
    const std::u16string parentPath = node->parent->Path();
    CollectionFolderMap& folders = m_collection.folderMap;
    auto* dialog = HoldCollectionDialog<CModifyFolderDlg>(
        new CModifyFolderDlg(this, userToken, folders, parentPath, name, CModifyFolderDlg::RenameBlockMode, false),
        [this, path, name, parentPath](CModifyFolderDlg& done, int result) {
            if (result != QDialog::Accepted || done.m_name == name) return;
            const std::u16string newPath = parentPath + u"/" + done.m_name;
            if (!RenameFile(path, newPath)) return;
            done.ApplyTo(m_collection.folderMap);
            BlockRenamed(path, newPath, done.m_name);
        });
    dialog->Open();
}

void CBrindleDlg::BlockRenamed(const std::u16string& oldPath, const std::u16string& newPath,
                               const std::u16string& fileName) {
    GalleryNode* folder =
        m_store && m_store->root ? FindNodeByPath(m_store->root, oldPath.substr(0, oldPath.rfind(u'/'))) : nullptr;
    GalleryNode* node = nullptr;
    if (folder)
        for (GalleryNode* child : folder->fileChildren)
            if (child && child->PathIs(oldPath)) node = child;
    if (!node) return;
    const std::u16string stem = fileName.substr(0, fileName.size() - 4);
    RenameNode(node, stem);
    // A block of the collections is named by its file name, as the service
    // lists it, and lies where the file went (whatever the case of ".dwg").
    node->name = fileName;
    node->SetPath(newPath);
    const int item = ItemOfPath(oldPath);
    if (item >= 0 && m_pThumbList) {
        m_pThumbList->SetPath(item, newPath);
        m_pThumbList->RenameItem(item, ToQString(stem));
    }
    m_nav.selectedName = ToQString(fileName);
    update(ScaleRect(9, 424, 540, 450));
}

// ---- moving a block (event 11) ----------------------------------------------------

void CBrindleDlg::MoveBlock(std::intptr_t item) {
    GalleryNode* node = ListedBlockAt(item);
    if (!node || CollectionWindowOpen()) return;
    const std::u16string path = node->Path();
    if (!FileExists(path)) {
        m_collectionWindow = OpenCollectionTip(this, Notice(u"修改名称", u"文件未下载，请稍后"), this, nullptr);
        return;
    }
    auto* dialog = HoldCollectionDialog<CMoveCollectBlkDlg>(
        new CMoveCollectBlkDlg(this, node->name.str(), path, LoadDwgPreview(ToQString(path)), userToken,
                               m_collection.folderMap),
        [this](CMoveCollectBlkDlg& done, int result) {
            if (result != QDialog::Accepted) return;
            // The target folder opens and reads the block from the service; the
            // source folder drops its file when it is next opened.
            m_nav.targetClass = kCollectionFolderRoute + done.m_folder;
            m_nav.forceList = true;
            OpenTargetClass();
        });
    dialog->Open();
}

// ---- the collection bar: 2100, 2101, 2103 ------------------------------------------

void CBrindleDlg::AddBlocksFromDisk() {
    if (userId < 2 && RequireLogin() < 1) return;
    if (m_nav.curClassPath.empty() || !m_store || !m_store->root) return;
    if (CollectionWindowOpen()) return;
    if (!DirectoryExists(m_nav.curClassPath) || !FindNodeByPath(m_store->root, m_nav.curClassPath)) {
        m_nav.forceList = true;
        SelectClass(1, true);
        return;
    }
    const std::u16string folderPath = m_nav.curClassPath;
    auto* run = CAddBlocksFromDisk::Start(
        this, userToken, folderPath,
        [this](const std::u16string& name) { return FolderIdByName(m_collection.folderMap, name); },
        [this, folderPath](bool changed) {
            m_collectionWindow = nullptr;
            // The folder is read again, which lists the new blocks.
            if (!changed || m_nav.curClassPath != folderPath) return;
            for (CSubclassButton* button : m_subclassBtns) {
                if (!button || !button->selected) continue;
                m_nav.forceList = true;
                m_nav.ExemptNextSubclassPress();
                OpenSubclass(button->ControlId());
                return;
            }
        });
    m_collectionWindow = run->FileDialog();
    m_addFromDisk = run;
}

void CBrindleDlg::NewFolder() {
    if (m_nav.curClassPath.empty() || !m_store || !m_store->root) return;
    if (CollectionWindowOpen()) return;
    GalleryNode* node = FindNodeByPath(m_store->root, m_nav.curClassPath);
    if (!node) {
        if (m_classList && m_nav.classIndex >= 0) {
            m_nav.forceList = true;
            SelectClass(m_nav.classIndex, false);
        }
        return;
    }
    GalleryNode* parent = node->parent;
    if (!parent || parent->name != kCollectionClass) return;
    if (static_cast<int>(parent->dirChildren.size()) >= kMaxCollectionFolders) {
        m_collectionWindow = OpenCollectionTip(this, Notice(kProductTitle, u"已达到分类上限"), this, nullptr);
        return;
    }
    const std::u16string parentPath = parent->Path();
    auto* dialog =
        HoldCollectionDialog<CNewFolderDlg>(new CNewFolderDlg(this, userToken, parentPath, m_collection.folderMap),
                                            [this, parentPath](CNewFolderDlg& done, int result) {
                                                if (result != QDialog::Accepted) return;
                                                done.EnterInto(m_collection.folderMap);
                                                FolderMade(parentPath, done.m_name);
                                            });
    dialog->Open();
}

void CBrindleDlg::FolderMade(const std::u16string& parentPath, const std::u16string& name) {
    const std::u16string path = parentPath + u"/" + name;
    CreateDirectories(path);
    GalleryNode* parent = m_store && m_store->root ? FindNodeByPath(m_store->root, parentPath) : nullptr;
    if (!DirectoryExists(path) || !parent) return;
    if (!FindNodeByPath(parent, path)) {
        auto* folder = new GalleryNode(kCollectionClass, path, name, kKindDir, false, false, 0);
        folder->parent = parent;
        parent->dirChildren.push_back(folder);
    }
    const int folders = static_cast<int>(parent->dirChildren.size());
    if (folders <= kMaxCollectionFolders && folders <= static_cast<int>(m_subclassBtns.size())) {
        if (CSubclassButton* button = m_subclassBtns[static_cast<size_t>(folders - 1)]) {
            button->data = ToQString(path);
            button->setText(ToQString(name));
            button->setToolTip(ToQString(name));
            button->show();
        }
        // The new folder opens once the list is read again, unless the user
        // has opened a folder or left the collection meanwhile.
        const std::uintptr_t readsBefore = m_collection.FolderReads();
        ReloadCollection([this, name, readsBefore](int reloaded) {
            if (!m_collection.OpensMadeFolder(reloaded, readsBefore, m_nav.classIndex)) return;
            m_nav.targetClass = kCollectionFolderRoute + name;
            m_nav.forceList = true;
            OpenTargetClass();
        });
    }
    if (folders >= kMaxCollectionFolders)
        if (CSkinButton* button = Button(ControlId::NewFolder)) button->setEnabled(false);
}

void CBrindleDlg::ShareCollection() {
    if (userId < 2 && RequireLogin() < 1) return;
    if (CollectionWindowOpen()) return;
    std::vector<std::u16string> kinds;
    if (m_store && m_store->root)
        for (const GalleryNode* child : m_store->root->dirChildren)
            if (child) kinds.push_back(child->name.str());
    auto* dialog = HoldCollectionDialog<CShareDWGblockDlg>(new CShareDWGblockDlg(this, userToken, kinds), nullptr);
    dialog->Open();
}

}  // namespace marrowfin
