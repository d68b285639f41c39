#include "collection/cloud_replacement.h"

#include "collection/collection_calls.h"
#include "collection/folder_upload.h"
#include "collection/handover_calls.h"
#include "collection/old_collection.h"
#include "net/zip_folder.h"
#include "platform/files.h"
#include "platform/ticks.h"

namespace marrowfin {

namespace {

// Holds the old folder under its packing name. The name is given back once the
// archive is made and, should that have failed, tried again as the object goes,
// whatever road leaves the hand-over.
class PackingName {
public:
    PackingName(std::u16string old, std::u16string packing) : m_old(std::move(old)), m_packing(std::move(packing)) {
        // A folder that holds anything under that name stops the rename (only an
        // empty one is replaced): what stands there is not ours.
        m_moved = RenameFile(m_old, m_packing);
    }
    ~PackingName() { restore(); }
    PackingName(const PackingName&) = delete;
    PackingName& operator=(const PackingName&) = delete;

    bool moved() const { return m_moved; }
    // Nothing happens when the name is back already.
    void restore() {
        if (m_moved && RenameFile(m_packing, m_old)) m_moved = false;
    }

private:
    std::u16string m_old, m_packing;
    bool m_moved = false;
};

// Waits for the service's work on the archive. After an upload that was
// answered, the idle word "0" means done; after one that broke off, only
// "success" does, since "0" may mean that the archive never arrived.
bool AwaitArchiveWork(std::u16string_view token, bool uploadAnswered, const HandoverPacing& pacing) {
    for (int busy = 1;; ++busy) {
        CollectionReply reply;
        // Failed requests are repeated at once; only a run of them gives up.
        for (int failed = 1; !(reply = FetchSyncStatus(token)).delivered; ++failed)
            if (failed >= pacing.failedRequests) return false;
        if (reply.text != u"1") return reply.text == (uploadAnswered ? u"0" : u"success");
        if (busy >= pacing.busyReplies) return false;
        SleepMs(pacing.busyPauseMs);
    }
}

// The file-by-file way; it ends the transfer itself.
bool UploadOneByOne(const std::u16string& old, const std::u16string& token) {
    bool done = false;
    const FolderListReply folders = FetchFolderNames(token);
    if (folders.delivered) {
        FolderIdsByName ids;
        for (const ListedFolder& folder : folders.document.folders) ids[folder.name] = folder.id;
        // A folder that is not there (its name could not be given back) would pass for an empty one.
        done = DirectoryExists(old) && UploadFolderBlocks(old, ids, token);
    }
    EndCollectionTransfer(token);
    return done;
}

bool Replace(const HandoverInput& input, const HandoverPacing& pacing) {
    const std::u16string old = OldCollectionDir(input.root);
    const std::u16string packing = PackingDir(input.root, input.userId);
    const std::u16string archive = packing + u".zip";

    // Announced before anything on the disk moves, so that a failure here leaves it as it was.
    if (!AnnounceOldFolders(input.token, OldFolderNames(old)).delivered) return false;

    PackingName name(old, packing);
    if (!name.moved()) return UploadOneByOne(old, input.token);
    bool packed = false;
    try {
        packed = ZipFolder(packing, archive);
    } catch (...) {
        packed = false;  // the old folder gets its name back below, before the walk needs it
    }
    name.restore();
    // An archive that lacks files would replace the cloud collection with less than
    // the user has: the drawings go one by one instead.
    if (!packed) return UploadOneByOne(old, input.token);

    const CollectionReply upload = UploadCollectionArchive(archive);
    if (!upload.text.empty()) return upload.delivered && upload.text == u"success";
    return AwaitArchiveWork(input.token, upload.delivered, pacing);
}

}  // namespace

bool ReplaceCloudCollection(HandoverInput input, const HandoverPacing& pacing) {
    try {
        RestoreOldCollectionName(input.root, input.userId);
        HandoverRunning running;
        return Replace(input, pacing);
    } catch (...) {
        // The worker reports only success or failure; the disk is already put back.
        return false;
    }
}

}  // namespace marrowfin
