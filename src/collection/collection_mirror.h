#pragma once
// Reading the collection from the service into the mirror on disk. Both reads
// run on a worker: they make the requests and do the disk work (the mirror's
// directories, files of blocks that left the service), and hand back values
// that the panel turns into its folder map and tree on its own thread.

#include <string>
#include <utility>
#include <vector>

#include "collection/collection_folders.h"

namespace marrowfin {

enum class CollectionReadFate {
    Read,  // the service answered with a document
    TransportFailed,  // no answer, or a status other than 200
    Unparsable,  // an answer that is no document
};

struct FolderListRead {
    CollectionReadFate fate = CollectionReadFate::TransportFailed;
    // In the service's order, each with its path under the mirror and no
    // blocks. Folders whose name would leave the mirror are left out.
    std::vector<CollectionFolder> folders;
};

struct FolderListRequest {
    std::u16string token;
    std::u16string mirrorDir;
    // The first read of this run of the panel starts the mirror clean.
    bool wipeMirror = false;
    // The folders the panel knew (id, path): the directories of those the
    // service no longer lists are deleted.
    std::vector<std::pair<std::u16string, std::u16string>> knownFolders;
};

// get_u_collect; "empty" makes the default folder and reads again. On a read
// the mirror is made ready: wiped first when asked, then its directory and
// one per folder created, and the directories of folders that went deleted.
FolderListRead ReadFolderList(const FolderListRequest& request);

struct FolderBlocksRead {
    CollectionReadFate fate = CollectionReadFate::TransportFailed;
    std::vector<CollectedBlock> blocks;  // in the service's order
};

// favorite_dwgs of one folder. On a read, the local files of `oldBlocks`
// whose name the new list no longer holds are deleted.
FolderBlocksRead ReadFolderBlocks(const std::u16string& token, const CollectionFolder& folder,
                                  const std::vector<CollectedBlock>& oldBlocks);

}  // namespace marrowfin
