#pragma once
// The collection's calls to the service, one function each. Every call
// blocks on the thread that makes it and never retries; the caller decides
// what a reply means (see collection_messages.h for what a failure shows).
// Tokens and ids go into the query as they stand; names the user typed are
// escaped so that they reach the service as typed.

#include <string>
#include <string_view>

#include "collection/collection_lists.h"
#include "platform/window_messages.h"

namespace marrowfin {

// The folder the service is asked to make when a user has none.
inline constexpr std::u16string_view kDefaultFolderName = u"收藏夹1";

// A reply as it came: the transport's verdict (false on a failed connection
// or a status other than 200) and the text, a word or a document.
struct CollectionReply {
    bool delivered = false;
    std::u16string text;

    // Words are compared on the whole text, and only on a delivered reply.
    bool Is(std::u16string_view word) const { return delivered && text == word; }
};

struct FolderListReply : CollectionReply {
    FolderListDocument document;  // parsed from `text` whether delivered or not
};

struct BlockListReply : CollectionReply {
    BlockListDocument document;
};

// get_u_f: the folders, without blocks.
FolderListReply FetchFolderNames(std::u16string_view token);
// get_u_collect: "empty" when the user has no folder, else the folder list,
// with each folder's blocks when `withBlocks`.
FolderListReply FetchCollection(std::u16string_view token, bool withBlocks);
// favorite, operate=add: the whole folder list once the folder is made;
// "favorites is exist" or "error" when it is not.
FolderListReply AddFolder(std::u16string_view token, std::u16string_view name);
// favorite, operate=update: "success", "favorites is exist" or "error".
CollectionReply RenameFolder(std::u16string_view token, std::u16string_view folderId, std::u16string_view newName);
// favorite, operate=del: "success" or another word.
CollectionReply DeleteFolder(std::u16string_view token, std::u16string_view folderId);
// favorite_dwgs: the folder's block list.
BlockListReply FetchFolderBlocks(std::u16string_view token, std::u16string_view folderId);
// dwg_collect, operate=del: "success" or another word.
CollectionReply DeleteCollectedBlock(std::u16string_view token, std::u16string_view folderId,
                                     std::u16string_view blockId);

// The `force` of an upload, one per road that uploads a block.
enum class CollectForce {
    Ask,  // force=0: a block of that name is answered with "2"
    Replace,  // force=1: the user chose to replace it
    FromDisk,  // force=true: blocks the user adds from the disk
    Synchronise,  // force=false: the walk over the old collection
};
// dwg_collectu: uploads `localPath` into the folder; "1" collected, "2" a
// block of that name is there, "3" failed. An empty folder id is sent as it is.
CollectionReply CollectBlockFile(std::u16string_view token, std::u16string_view folderId, std::u16string_view localPath,
                                 CollectForce force, WindowHandle progressWindow = 0);
// mvff: "success", "filename is exist" (unless `force`), or another word.
CollectionReply MoveCollectedBlock(std::u16string_view token, std::u16string_view fromFolderId,
                                   std::u16string_view toFolderId, std::u16string_view blockId, bool force);
// cdwgrn: a block list holding the renamed block; "file is not exist" or
// "filename is exist" when the name cannot be taken.
BlockListReply RenameCollectedBlock(std::u16string_view token, std::u16string_view folderId,
                                    std::u16string_view blockId, std::u16string_view newName);

// sharef: hands the user's collection to the service; only the transport's
// verdict counts, the reply text is not read.
CollectionReply ShareCollection(std::u16string_view token);

}  // namespace marrowfin
