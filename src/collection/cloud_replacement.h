#pragma once
// The hand-over of the old local collection to the cloud: the folders are
// announced, the old folder is packed into one archive under the user number
// and uploaded, and the service's background work on it is waited for. When
// the folder cannot be packed, its drawings are collected one by one. Runs on
// a worker: it blocks for as long as the service works, minutes at worst.

#include <cstdint>
#include <string>

namespace marrowfin {

// Copied from the panel when the worker starts.
struct HandoverInput {
    int32_t userId = 0;
    std::u16string token;
    std::u16string root;  // the store's root folder, StoreRoot()
};

// How long the service's work on an uploaded archive is waited for.
struct HandoverPacing {
    uint32_t busyPauseMs = 5000;  // after each reply "1" of lfstatu
    int busyReplies = 120;  // replies of "1" before the wait is given up
    // Failed lfstatu requests in a row before the wait is given up: a dead
    // connection must not keep the worker polling for ever. A failed request is
    // repeated at once and does not count as a reply.
    int failedRequests = 120;
};

// True when the cloud now holds the old collection (the panel's success),
// false otherwise (its failure, after which the panel sends lfupload_end).
// The old folder keeps its name and content on every road; the archive
// <root>/<userId>.zip stays until the next hand-over overwrites it.
bool ReplaceCloudCollection(HandoverInput input, const HandoverPacing& pacing = {});

}  // namespace marrowfin
