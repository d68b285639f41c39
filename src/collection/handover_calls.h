#pragma once
// The service calls of the one-time hand-over of the old local collection:
// the folder announcement, the archive upload, the state of the service's
// work on it and the end of the transfer. Each blocks and never retries.

#include <string_view>

#include "collection/collection_calls.h"

namespace marrowfin {

// What lfstatu says.
enum SyncQuery : int {
    SyncIdle = 0,  // any reply but "1"
    SyncWorking = 1,  // "1": the service works on an upload of this user
    SyncUnreachable = 2,  // the request failed
};
int QuerySyncStatus(std::u16string_view token);
// lfstatu's reply as it came, for the polls that tell the words apart.
CollectionReply FetchSyncStatus(std::u16string_view token);

// lfsync: announces the folders, their names joined by "*"; the reply text means nothing.
CollectionReply AnnounceOldFolders(std::u16string_view token, std::u16string_view folderNames);
// lfupload: the archive, with an empty parent_dir and no query (the archive's
// top folder names the user). Empty while the service still works on it,
// "success" when done, another text when refused.
CollectionReply UploadCollectionArchive(std::u16string_view archivePath);
// lfupload_end: the transfer is over, whatever its outcome; the reply is not read.
void EndCollectionTransfer(std::u16string_view token);

}  // namespace marrowfin
