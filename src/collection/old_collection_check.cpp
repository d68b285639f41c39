#include "collection/old_collection_check.h"

#include "collection/collection_calls.h"
#include "collection/handover_calls.h"
#include "collection/old_collection.h"
#include "store/store_ini.h"

namespace marrowfin {

namespace {

OldCollectionVerdict Verdict(OldCollectionStep step, const CollectionReply& reply = {}) {
    using enum OldCollectionStep;
    OldCollectionVerdict v;
    v.step = step;
    switch (step) {
        case GoOn: break;
        case TransferRunning:
            v.result = 2;
            v.syncStatus = 2;
            break;
        case WatchTransfer:
            v.result = 2;
            v.syncStatus = 2;
            v.startPollTimer = true;
            break;
        case SyncStatusFailed:
            v.result = 0;
            v.syncStatus = 4;
            break;
        case NetworkTip:
            v.result = 0;
            v.message = MessageForReply(CollectionRoad::CheckOldCollection, reply);
            break;
        case StartReplacement:
            v.result = 2;
            v.syncStatus = 2;
            v.startReplacement = true;
            break;
        case AskUser:
            v.result = 2;
            v.syncStatus = 0;
            break;
    }
    return v;
}

}  // namespace

OldCollectionVerdict CheckOldCollection(const HandoverInput& input) {
    using enum OldCollectionStep;
    if (ReadOldCollectTip() != u"0") return Verdict(GoOn);
    RestoreOldCollectionName(input.root, input.userId);
    const bool oldFiles = HoldsOldFiles(OldCollectionDir(input.root));
    const int status = QuerySyncStatus(input.token);
    if (status == SyncUnreachable) return Verdict(SyncStatusFailed);
    if (!oldFiles) return Verdict(status == SyncWorking ? TransferRunning : GoOn);
    if (status == SyncWorking) return Verdict(WatchTransfer);
    const FolderListReply cloud = FetchCollection(input.token, false);
    if (!cloud.delivered) return Verdict(NetworkTip, cloud);
    return Verdict(cloud.Is(u"empty") ? StartReplacement : AskUser);
}

}  // namespace marrowfin
