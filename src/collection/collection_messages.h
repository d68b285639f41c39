#pragma once
// What the user is shown when a collection call fails or asks back. One
// call means different things to different callers, so the text depends on
// the road the reply came by. Roads that never show anything (the rows of
// the collection search, a folder's blocks, the walk over the old
// collection, the hand-over's own folder read) have no entry here.

#include <string>

#include "collection/collection_calls.h"

namespace marrowfin {

enum class CollectionRoad {
    LoadCollection,  // get_u_collect when the collection class opens
    LoadDefaultFolder,  // the default folder made on that road
    CheckOldCollection,  // get_u_collect before the old collection is handed over
    CollectDialogOpen,  // get_u_f, and the default folder it may make, as the collect dialog opens
    NewFolderDialog,  // favorite, add
    RenameFolderDialog,  // favorite, rename
    FolderDeletion,  // favorite, delete
    BlockDeletion,  // dwg_collect, delete
    CollectDialogUpload,  // dwg_collectu with force 0, from the collect dialog
    CollectDialogReplace,  // the same with force 1, after the user chose to replace
    AddFromDisk,  // dwg_collectu with force=true
    MoveBlockDialog,  // mvff
    RenameBlockDialog,  // cdwgrn
};

struct CollectionMessage {
    enum Kind {
        None,  // nothing is shown
        StatusLine,  // the collection page's status text
        DialogLine,  // the error line inside the dialog, which stays open
        Tip,  // a tip box
    };
    Kind kind = None;
    std::u16string title;  // a tip's title
    std::u16string text;  // the line shown; a tip's first line
    std::u16string second;  // a tip's second line, or empty
    std::u16string accept;  // a tip's first button
    std::u16string decline;  // a tip's second button, or empty for a box with one

    bool operator==(const CollectionMessage&) const = default;
};

// The message for `reply` on `road`; kind None when the reply needs none.
CollectionMessage MessageForReply(CollectionRoad road, const CollectionReply& reply);

}  // namespace marrowfin
