// The collection as the panel reads it: the folder list (ReloadCollection),
// a folder's blocks (when its button opens), the mirror's files as they come
// into view, and deleting a block. Every request runs on a panel worker; the
// answers change the tree and m_folderMap here, on the panel's thread.
#include <QLineEdit>

#include <algorithm>

#include "collection/collection_calls.h"
#include "collection/collection_messages.h"
#include "collection/collection_mirror.h"
#include "collection_dialogs/collection_tip.h"
#include "collection_dialogs/delete_folder_run.h"
#include "net/http_transport.h"
#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/dwg_list_view.h"
#include "platform/product_texts.h"
#include "platform/files.h"
#include "skin/skin_button.h"
#include "skin/subclass_button.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

// Takes every cloud collection (of any user) off the tree and frees it; the
// old local one, <root>/我的收藏, stays.
bool DropCloudCollections(GalleryStore& store, GalleryNode* root) {
    bool dropped = false;
    auto& children = root->dirChildren;
    for (auto it = children.begin(); it != children.end();) {
        if (*it && (*it)->name == kCollectionClass && (*it)->Path().ends_with(kMirrorSuffix)) {
            if (!dropped) ++store.treeEpoch;  // handles into it go stale first
            dropped = true;
            SubtreeDeleter()(*it);
            it = children.erase(it);
        } else {
            ++it;
        }
    }
    return dropped;
}

}  // namespace

// ---- the folder list -----------------------------------------------------------

void CBrindleDlg::ReloadCollection(std::function<void(int)> then) {
    // A reload asked for meanwhile takes the place of one on its way.
    const std::uintptr_t generation = m_collection.BeginReload();
    auto finish = [&then](int result) {
        if (then) then(result);
    };
    if (userId < 1) {
        RequireLogin();
        if (userId < 1) return finish(0);
    }
    if (userToken.empty()) {
        ShowLoadStatus(LoadStep::Failed);
        return finish(0);
    }
    if (!m_store || !m_store->root) return finish(0);

    m_collection.HoldReload(generation, std::move(then));
    // An old local collection waiting for its hand-over goes first.
    CheckOldCollectionThen([this, generation](int checked) {
        if (!m_collection.IsNewestReload(generation)) return;  // a newer reload decides
        if (checked != 1) return EndCollectionLoad(checked);
        ReadCollectionFolders(generation);
    });
}

void CBrindleDlg::EndCollectionLoad(int result) {
    if (std::function<void(int)> then = m_collection.EndReload()) then(result);
}

void CBrindleDlg::ShowLoadStatus(LoadStep step) {
    if (const std::optional<int> status = m_collection.LoadStatus(step)) SetSyncStatus(*status);
}

void CBrindleDlg::ReadCollectionFolders(std::uintptr_t generation) {
    if (!m_store || !m_store->root) return EndCollectionLoad(0);
    ShowLoadStatus(LoadStep::Reading);
    FolderListRequest request;
    request.token = userToken;
    request.mirrorDir = MirrorDir(m_store->root->Path(), userId);
    request.wipeMirror = m_collection.WipesMirror();
    request.knownFolders = m_collection.KnownFolders();
    const std::u16string mirror = request.mirrorDir;
    const bool started = AskOnWorker<FolderListRead>(
        Handle(), [request = std::move(request)] { return ReadFolderList(request); },
        [this, generation, mirror](FolderListRead read) {
            if (!m_collection.IsNewestReload(generation)) return;
            AdoptFolderList(std::move(read), mirror);
        });
    if (!started) {
        ShowLoadStatus(LoadStep::Failed);
        EndCollectionLoad(0);
    }
}

void CBrindleDlg::AdoptFolderList(FolderListRead read, const std::u16string& mirror) {
    if (read.fate != CollectionReadFate::Read || !m_store || !m_store->root) {
        ShowLoadStatus(LoadStep::Failed);
        return EndCollectionLoad(0);
    }
    GalleryNode* root = m_store->root;
    (void)DropCloudCollections(*m_store, root);
    auto* collection = new GalleryNode(root->name.view(), mirror, kCollectionClass, kKindDir, false, false, 0);
    collection->parent = root;
    root->dirChildren.insert(root->dirChildren.begin(), collection);

    for (const CollectionFolder& folder : read.folders) {
        auto* node = new GalleryNode(kCollectionClass, folder.path, folder.name, kKindDir, false, false, 0);
        node->parent = collection;
        collection->dirChildren.push_back(node);
    }
    // Room for a folder again (one was deleted): "新建文件夹" comes back.
    if (m_collection.AdoptFolders(std::move(read.folders)))
        if (CSkinButton* button = Button(ControlId::NewFolder)) button->setEnabled(true);
    RelistNodes();
    ShowLoadStatus(LoadStep::Read);
    EndCollectionLoad(1);
}

// ---- a folder's blocks ------------------------------------------------------

bool CBrindleDlg::LoadFolderBlocks(CSubclassButton* button, const std::u16string& path) {
    const CollectionFolder* folder = FolderByPath(m_collection.folderMap, path);
    if (!folder) return false;
    const std::uintptr_t generation = m_collection.BeginFolderRead();
    const std::u16string token = userToken;
    const CollectionFolder asked = *folder;
    const bool started = AskOnWorker<FolderBlocksRead>(
        Handle(), [token, asked] { return ReadFolderBlocks(token, asked, asked.blocks); },
        [this, generation, path](FolderBlocksRead read) {
            // Only the newest read of the folder still open counts.
            if (!m_collection.EndFolderRead(generation, m_nav.curClassPath == path && OpenedSubclass())) return;
            AdoptFolderBlocks(std::move(read), path);
        });
    if (!started) return false;
    m_collection.folderReading = true;
    NoteOpenedSubclass(button);
    return true;
}

void CBrindleDlg::AdoptFolderBlocks(FolderBlocksRead read, const std::u16string& path) {
    if (read.fate == CollectionReadFate::Unparsable) return;
    GalleryNode* node = m_store && m_store->root ? FindNodeByPath(m_store->root, path) : nullptr;
    if (!node) return;
    if (read.fate == CollectionReadFate::Read) {
        // The service's list replaces what the folder held.
        if (!node->fileChildren.empty()) {
            ++m_store->treeEpoch;
            for (GalleryNode* child : node->fileChildren) SubtreeDeleter()(child);
            node->fileChildren.clear();
        }
        for (const CollectedBlock& block : read.blocks) {
            auto* child = new GalleryNode(node->name.view(), block.path, block.filename, kKindFile, false, false, 0);
            child->parent = node;
            node->fileChildren.push_back(child);
        }
        m_collection.FolderBlocksRead(path, std::move(read.blocks));
    }
    // Offline the blocks read before stay listed.
    ListSubclass(OpenedSubclass(), path);
}

// ---- the mirror's files ---------------------------------------------------------

void CBrindleDlg::NextCollectionThumb() {
    const std::u16string path = m_thumbs.TakeNext();
    if (path.empty()) return;
    const std::u16string url = BlockUrlByPath(m_collection.folderMap, path);
    if (url.empty()) {
        // A block without an address is not fetched; the next one may be.
        (void)PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::NextThumb, 0);
        return;
    }
    m_thumbs.Run(path);
    const WindowHandle panel = Handle();
    const bool started = StartPanelWorker([panel, url, path] {
        const bool landed = DownloadFile(url, path, 0, 0) && FileExists(path);
        if (!landed) (void)RemoveFile(path);
        (void)PostText(panel, MsgPanelEvent, landed ? PanelEvent::ThumbDone : PanelEvent::ThumbFailed, path);
    });
    if (!started) {
        m_thumbs.Ended(path);
        return;
    }
    // Up to six run side by side.
    (void)PostWindowMessage(Handle(), MsgPanelEvent, PanelEvent::NextThumb, 0);
}

// ---- deleting a block (bar button 2102) ---------------------------------------

void CBrindleDlg::DeleteSelectedBlock() {
    if (!m_pThumbList || !m_store || !m_store->root) return;
    const int item = m_pThumbList->GetSelectedItem();
    if (item < 0) return;
    GalleryNode* container = FindNodeByPath(m_store->root, m_nav.curClassPath);
    GalleryNode* block = m_nav.listNodes.At(*m_store, static_cast<size_t>(item));
    if (!container || !block || block->parent != container) return;
    const std::u16string folderName = container->name.str();
    const std::u16string blockName = block->name.str();
    const std::u16string folderId = FolderIdByName(m_collection.folderMap, folderName);
    const std::u16string blockId = BlockIdByNames(m_collection.folderMap, folderName, blockName);
    if (folderId.empty() || blockId.empty()) return;
    if (m_collection.blockDeletePending) return;  // one request at a time
    m_collection.blockDeletePending = true;
    if (CSkinButton* button = Button(ControlId::DeleteBlock)) button->setEnabled(false);

    const std::u16string token = userToken;
    const std::u16string folderPath = m_nav.curClassPath;
    const std::u16string blockPath = block->Path();
    const bool started = AskOnWorker<CollectionReply>(
        Handle(), [token, folderId, blockId] { return DeleteCollectedBlock(token, folderId, blockId); },
        [this, folderPath, blockPath, blockName](CollectionReply reply) {
            m_collection.blockDeletePending = false;
            if (CSkinButton* button = Button(ControlId::DeleteBlock)) button->setEnabled(true);
            const CollectionMessage shown = MessageForReply(CollectionRoad::BlockDeletion, reply);
            if (shown.kind == CollectionMessage::Tip) {
                (void)OpenCollectionTip(this, shown, this, nullptr);
                return;
            }
            BlockDeleted(folderPath, blockPath, blockName);
        });
    if (!started) {
        m_collection.blockDeletePending = false;
        if (CSkinButton* button = Button(ControlId::DeleteBlock)) button->setEnabled(true);
    }
}

void CBrindleDlg::BlockDeleted(const std::u16string& folderPath, const std::u16string& blockPath,
                               const std::u16string& blockName) {
    m_collection.BlockDeleted(folderPath, blockName);
    (void)RemoveFile(blockPath);
    if (GalleryNode* folder = m_store && m_store->root ? FindNodeByPath(m_store->root, folderPath) : nullptr) {
        auto& files = folder->fileChildren;
        for (auto it = files.begin(); it != files.end(); ++it) {
            if (*it && (*it)->PathIs(blockPath)) {
                ++m_store->treeEpoch;
                SubtreeDeleter()(*it);
                files.erase(it);
                break;
            }
        }
    }
    RelistNodes();
    // The folder is read again, which lists what is left.
    if (m_nav.curClassPath != folderPath) return;
    for (CSubclassButton* button : m_subclassBtns) {
        if (!button || !button->selected) continue;
        m_nav.forceList = true;
        m_nav.ExemptNextSubclassPress();
        OpenSubclass(button->ControlId());
    }
}

}  // namespace marrowfin

namespace marrowfin {

// ---- the collection bar and deleting a folder ----------------------------------

void CBrindleDlg::OnCollectionBar(int id) {
    switch (id) {
        case ControlId::AddBlocks: AddBlocksFromDisk(); return;
        case ControlId::NewFolder: NewFolder(); return;
        case ControlId::ShareCollection: ShareCollection(); return;
        case ControlId::DeleteBlock: DeleteSelectedBlock(); return;
        case ControlId::SearchCollection: GoToPage(PageCollectionSearch); return;
        case ControlId::DeleteFolder:
            if (m_nav.curClassPath.find(u"收藏") == std::u16string::npos) return;
            for (CSubclassButton* button : m_subclassBtns) {
                if (button && button->data.toStdU16String() == m_nav.curClassPath) {
                    AskDeleteFolder(button);
                    return;
                }
            }
            return;
        default: return;
    }
}

void CBrindleDlg::AskDeleteFolder(CSubclassButton* button) {
    // The button comes through a message: it must still be one of ours.
    if (!button || std::find(m_subclassBtns.begin(), m_subclassBtns.end(), button) == m_subclassBtns.end()) return;
    if (!m_store || !m_store->root || m_collection.folderDeletePending) return;
    const std::u16string path = button->data.toStdU16String();
    if (!FindNodeByPath(m_store->root, path)) return;
    const CollectionFolder* folder = FolderByPath(m_collection.folderMap, path);
    if (!folder) return;
    // The question, the request and the tips of a refusal belong to the run.
    m_collection.folderDeletePending = true;
    CDeleteFolderRun::Start(this, userToken, folder->id, [this](bool deleted) {
        m_collection.folderDeletePending = false;
        if (!deleted) return;
        // The collection opens again; its reload takes the folder's directory away.
        m_nav.targetClass = u"/" + std::u16string(kCollectionClass);
        m_nav.forceList = true;
        OpenTargetClass();
    });
}

}  // namespace marrowfin
