#pragma once
// Brings the local tree and the catalogues up to date from the service, by
// class version: all listed galleries at start, one gallery, one gallery's
// class versions, or one class's blocks. A failed or unusable reply never
// destroys what the tree had: the catalogues stand in at start.
//
// Each road has three steps (see store/tree_update.h): the owner thread takes
// what the request needs from the tree (Prepare*), any thread talks to the
// service and builds detached nodes (RunTreeRequest), and the owner applies
// the result (ApplyTreeUpdate). The panel runs the middle step on a worker
// (StartTreeRequest); the plain forms below run all three on the caller.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "store/tree_update.h"

namespace marrowfin {

struct GalleryStore;

// A gallery's cached state counts as fresh this long after its last fetch.
inline constexpr uint32_t kGalleryFreshMs = 3600000;

// What a worker needs to fetch, by value: it never reads the live tree.
struct TreeRequest {
    TreeUpdateKind kind = TreeUpdateKind::GalleryFull;
    std::u16string rootName;
    std::u16string rootPath;
    std::u16string gallery;
    std::u16string className;
    std::u16string classPath;
    std::map<std::u16string, int32_t> oldVersions;  // class name -> version
    bool createIfMissing = false;
    bool hadClasses = false;
};

// The first tree, built detached on the calling (worker) thread from
// Show.xml, one request for all listed galleries and the catalogues, and
// deposited for the owner. syncBusy is 1 while it runs. With `cataloguesFirst`
// the galleries as their catalogues have them are deposited before the
// service is asked, so that a panel can show them while the answer comes.
void BuildFirstTree(GalleryStore& store, bool cataloguesFirst = false);
// Owner: runs BuildFirstTree on a worker unless one runs already, catalogues
// first when the store has no tree yet. False when no worker could be started.
bool StartFirstTree(GalleryStore& store);

std::optional<TreeRequest> PrepareGalleryFull(const GalleryStore& store, std::u16string_view name,
                                              bool createIfMissing);
// Nothing when the gallery is unknown or its summary is still fresh.
std::optional<TreeRequest> PrepareClassSummary(const GalleryStore& store, std::u16string_view name);
// Nothing when the path is not a class of a gallery.
std::optional<TreeRequest> PrepareClassItems(const GalleryStore& store, std::u16string_view path);
TreeUpdate RunTreeRequest(const TreeRequest& request);
// Owner: runs the request on a worker; its update arrives as MsgTreeUpdate.
// False when no worker could be started.
bool StartTreeRequest(GalleryStore& store, TreeRequest request);

// The same roads on the calling thread, for callers that may wait.
bool FetchGalleryFull(GalleryStore& store, std::u16string_view name, bool createIfMissing);
void RefreshClassSummary(GalleryStore& store, std::u16string_view name);
void OpenClass(GalleryStore& store, std::u16string_view path);
void FetchClassItems(GalleryStore& store, std::u16string_view path);

// True when the class's blocks are known to be outdated.
bool ClassIsStale(const GalleryStore& store, std::u16string_view path);

}  // namespace marrowfin
