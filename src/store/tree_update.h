#pragma once
// How the gallery tree changes hands. The tree has one owner, the thread that
// runs the exports and the panel (the host's user-interface thread), and only
// that thread reads or changes it. Workers never see the live tree: they get
// what they need by value, build detached nodes (a TreeUpdate), deposit them
// here and post MsgTreeUpdate to the notify window. The owner adopts what is
// waiting (AdoptTreeUpdates) when that message arrives, or before it first
// reads the tree. Every adoption that frees nodes raises the store's epoch,
// which invalidates the NodeList handles held across events.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/window_messages.h"
#include "store/gallery_node.h"

namespace marrowfin {

struct GalleryStore;

inline constexpr uint32_t MsgTreeUpdate = 0x9df;

enum class TreeUpdateKind { FirstTree, GalleryFull, ClassSummary, ClassItems };

struct TreeUpdate {
    TreeUpdateKind kind = TreeUpdateKind::FirstTree;
    std::u16string gallery;  // the gallery's name; empty for the first tree
    std::u16string classPath;  // ClassItems
    bool usable = false;  // the service's reply was used
    // The detached result: a stand-in root holding galleries (FirstTree, and
    // for GalleryFull the one gallery), a stand-in gallery holding candidate
    // classes (ClassSummary) or a stand-in class holding blocks (ClassItems).
    OwnedNode scratch;
    // FirstTree: the scratch root also carries the recent list, for a store
    // that had no root yet.
    bool newRoot = false;
    bool createIfMissing = false;
    bool boutique = false;
    int32_t version = 0;  // ClassItems
    std::u16string remoteBase;  // ClassItems
    uint32_t tick = 0;
    std::vector<std::u16string> freshClasses;  // no longer stale
    std::map<std::u16string, int32_t> galleryVersions;
    std::map<std::u16string, uint32_t> fetchTicks;
};

// What an adoption did, for the owner to carry on with.
struct TreeChange {
    TreeUpdateKind kind = TreeUpdateKind::FirstTree;
    std::u16string gallery;
    std::u16string classPath;
    bool ok = false;
};

// The window told when an update is waiting (the panel's); 0 for none.
void SetTreeNotifyWindow(WindowHandle window);
// Any thread: queues the update and tells the notify window.
void DepositTreeUpdate(GalleryStore& store, TreeUpdate update);
// Any thread: whether updates wait for the owner.
bool TreeUpdatesWaiting(GalleryStore& store);
// Owner thread: applies every waiting update in the order deposited.
std::vector<TreeChange> AdoptTreeUpdates(GalleryStore& store);
// Owner thread: applies one update (the synchronous roads and tests).
TreeChange ApplyTreeUpdate(GalleryStore& store, TreeUpdate& update);

// Nodes taken out of the tree, freed on a helper thread: a large library is
// hundreds of thousands of nodes. Nothing may point into them any more.
void ReleaseSubtreesLater(std::vector<GalleryNode*> nodes);
// Releases still running; for an orderly end of tests and benchmarks.
bool WaitForReleases();

}  // namespace marrowfin
