#pragma once
// The collection as the panel holds it: its folders by id, the reloads and folder
// reads on their way, the requests pending and the hand-over's poll, with
// their decisions as plain operations. No widgets: the panel starts the
// workers, hands their answers here and applies what comes back.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "collection/collection_folders.h"

namespace marrowfin {

// What a finished hand-over asks of the panel.
struct HandoverEnd {
    bool settle = false;  // the old collection's tip is written "1" and the collections open again
    int syncStatus = -1;  // else the page's status ("同步失败") and the transfer's end told to the service
};

// Where a reload stands, for the page's status.
enum class LoadStep { Reading, Read, Failed };

// The poll of a transfer from an earlier run answered.
enum class SyncPoll { GoOn, Landed, Failed };

class CollectionModel {
public:
    CollectionFolderMap folderMap;  // the folders by id, with their blocks once read
    bool quietCollect = false;  // a reload asked for from outside keeps the page's state
    bool justRead = false;  // the next switch to the collections opens them as read
    int32_t user = -1;  // user of the last collection target
    bool loading = false;  // a reload is on its way
    bool folderReading = false;
    bool blockDeletePending = false;
    bool folderDeletePending = false;
    bool syncPollPending = false;

    // `CollectionBusy`: a request of the collections is on its way to or from the service.
    bool Busy() const { return loading || folderReading || blockDeletePending || folderDeletePending; }

    // A reload starts: it takes the place of one on its way, whose `then` is
    // dropped, and keeps `quietCollect` as it is now. Answers its generation.
    std::uintptr_t BeginReload();
    // The page's status at a step of the newest reload ("正在同步", none,
    // "同步失败"); a quiet reload leaves the page's state alone.
    std::optional<int> LoadStatus(LoadStep step) const;
    // The reload of `generation` goes on to the service and `then` waits for its result.
    void HoldReload(std::uintptr_t generation, std::function<void(int)> then);
    // Whether an answer of `generation` still counts: no newer reload began.
    bool IsNewestReload(std::uintptr_t generation) const { return generation == m_reloads; }
    // The reload ends: its `then`, to be called with the result (empty when dropped).
    std::function<void(int)> EndReload();

    // The request of a folder list: the folders known, and whether the mirror
    // starts clean (the first read of a run: the mirror is a cache).
    bool WipesMirror() const { return folderMap.empty(); }
    std::vector<std::pair<std::u16string, std::u16string>> KnownFolders() const;
    // The service's folder list replaces the map; a folder keeps its last
    // block list while its path is the same, so that the files of blocks that
    // left the service go at its next opening. Answers whether there is room
    // for another folder.
    bool AdoptFolders(std::vector<CollectionFolder> read);
    bool RoomForFolder() const { return folderMap.size() < static_cast<size_t>(kMaxCollectionFolders); }
    // "移动" needs another folder to move a block to.
    bool CanMoveBlocks() const { return folderMap.size() >= 2; }

    // A folder's blocks are asked for: answers the read's generation.
    std::uintptr_t BeginFolderRead();
    // The read of `generation` answered: whether it is adopted, which it is
    // only as the newest read while its folder is still the one open.
    bool EndFolderRead(std::uintptr_t generation, bool folderStillOpen);
    std::uintptr_t FolderReads() const { return m_folderReads; }
    // A folder made: once the list is read again it opens, unless the user
    // opened another folder since `readsBefore` or left the collections.
    bool OpensMadeFolder(int reloaded, std::uintptr_t readsBefore, int classIndex) const;
    // The blocks the service listed for the folder at `path`.
    void FolderBlocksRead(const std::u16string& path, std::vector<CollectedBlock> blocks);

    // The map after the service carried out a change.
    void BlockDeleted(const std::u16string& folderPath, const std::u16string& blockName);
    void FolderRenamed(const std::u16string& oldPath, const std::u16string& newPath, const std::u16string& newName);

    // A route into the collections: whether the list must be read first (no
    // known user, or another one than last time); remembers `userId`.
    bool TargetNeedsReload(int32_t userId);

    // The hand-over's end and its poll.
    static HandoverEnd CloudSyncEnded(bool landed);
    // False while an answer is awaited: a slow answer is not asked for twice.
    bool BeginSyncPoll();
    SyncPoll SyncPolled(int status);

private:
    std::uintptr_t m_reloads = 0;  // generation of the newest reload
    bool m_quietReload = false;  // the newest reload was asked for from outside
    std::function<void(int)> m_then;  // what the newest reload continues with
    std::uintptr_t m_folderReads = 0;  // generation of the newest folder read
};

}  // namespace marrowfin
