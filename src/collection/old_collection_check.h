#pragma once
// Whether the old local collection still waits for its hand-over, asked
// before every action on the collection. Runs on a worker (it asks the
// service); the panel carries out the verdict.

#include <optional>

#include "collection/cloud_replacement.h"
#include "collection/collection_messages.h"

namespace marrowfin {

enum class OldCollectionStep {
    GoOn,  // settled, or nothing to hand over: the collection opens
    TransferRunning,  // no old files, but the service works on an upload: "同步中"
    WatchTransfer,  // old files and an upload under way, e.g. from before a restart: "同步中" and its timer
    SyncStatusFailed,  // the service's state could not be read: "同步失败"
    NetworkTip,  // the cloud collection could not be read: a tip, nothing else changes
    StartReplacement,  // the cloud is empty: hand over without asking
    AskUser,  // the cloud holds data: "替换" or "不替换"
};

struct OldCollectionVerdict {
    OldCollectionStep step = OldCollectionStep::GoOn;
    // What the check answers: 1 go on, 2 the page is taken by the prompt or a
    // transfer (the tree stays), 0 stop.
    int result = 1;
    std::optional<int> syncStatus;  // the page's status to set, when it changes
    bool startPollTimer = false;  // timer 1010
    bool startReplacement = false;  // a worker on ReplaceCloudCollection
    CollectionMessage message;  // the tip to show, kind None for none

    bool operator==(const OldCollectionVerdict&) const = default;
};

// Reads the decision from NewInfo.ini; while it is open, looks at the old
// folder below `input.root` and asks the service (lfstatu, get_u_collect).
OldCollectionVerdict CheckOldCollection(const HandoverInput& input);

}  // namespace marrowfin
