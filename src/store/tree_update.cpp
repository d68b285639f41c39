#include "store/tree_update.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include "platform/threads.h"
#include "platform/ticks.h"
#include "store/catalogue.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

std::atomic<WindowHandle> g_notifyWindow{0};
std::atomic<int> g_releases{0};

void FreeNodes(std::vector<GalleryNode*>& nodes) {
    for (GalleryNode* node : nodes) SubtreeDeleter()(node);
    nodes.clear();
}

GalleryNode* FindGallery(GalleryStore& store, std::u16string_view name) {
    if (!store.root) return nullptr;
    for (GalleryNode* gallery : store.root->dirChildren)
        if (gallery && gallery->name == name) return gallery;
    return nullptr;
}

// Moves every child of `from` under `to`, in order; `from` is left empty.
void MoveChildren(GalleryNode& from, GalleryNode& to, bool files) {
    auto& source = files ? from.fileChildren : from.dirChildren;
    auto& target = files ? to.fileChildren : to.dirChildren;
    for (GalleryNode* child : source) {
        if (!child) continue;
        child->parent = &to;
        target.push_back(child);
    }
    source.clear();
}

void NoteMaps(GalleryStore& store, const TreeUpdate& update) {
    for (const std::u16string& path : update.freshClasses) store.staleClasses.erase(path);
    for (const auto& [name, version] : update.galleryVersions) {
        int32_t& known = store.galleryVersions[name];
        known = std::max(known, version);
    }
    for (const auto& [name, tick] : update.fetchTicks) store.galleryFetchTicks[name] = tick;
}

bool ApplyFirstTree(GalleryStore& store, TreeUpdate& update) {
    GalleryNode* scratch = update.scratch.get();
    if (!scratch) return false;
    if (!store.root) {
        store.root = update.scratch.release();
    } else {
        // The galleries change; the recent list in memory stays as it is, and
        // so does each kept gallery's common-use list, which may be newer
        // than its file.
        std::vector<GalleryNode*> old = std::exchange(store.root->dirChildren, {});
        for (GalleryNode* gallery : scratch->dirChildren) {
            if (!gallery) continue;
            gallery->parent = store.root;
            store.root->dirChildren.push_back(gallery);
            auto kept = std::find_if(old.begin(), old.end(),
                                     [&](const GalleryNode* g) { return g && g->name == gallery->name; });
            if (kept == old.end()) continue;
            std::vector<GalleryNode*> loaded = std::exchange(gallery->fileChildren, {});
            MoveChildren(**kept, *gallery, true);
            FreeNodes(loaded);
        }
        scratch->dirChildren.clear();
        ReleaseSubtreesLater(std::move(old));
    }
    NoteMaps(store, update);
    return update.usable;
}

bool ApplyGalleryFull(GalleryStore& store, TreeUpdate& update) {
    GalleryNode* scratchGallery =
        update.scratch && !update.scratch->dirChildren.empty() ? update.scratch->dirChildren.front() : nullptr;
    GalleryNode* gallery = FindGallery(store, update.gallery);
    if (!gallery) {
        if (!update.createIfMissing || !store.root) return false;
        gallery = new GalleryNode(store.root->name, store.root->Path() + u"/" + update.gallery, update.gallery,
                                  kKindDir, false, false, 0);
        AddChild(store.root, gallery, false);
    }
    if (!update.usable) {
        // The catalogue stands in, but a gallery that still has its classes
        // keeps them rather than getting a second copy.
        if (gallery->dirChildren.empty() && scratchGallery) MoveChildren(*scratchGallery, *gallery, false);
        return false;
    }
    ReleaseSubtreesLater(std::exchange(gallery->dirChildren, {}));
    if (scratchGallery) MoveChildren(*scratchGallery, *gallery, false);
    gallery->refreshTick = update.tick;
    gallery->boutique = update.boutique;
    NoteMaps(store, update);
    WriteCatalogue(store, gallery->name);
    return true;
}

bool ApplyClassSummary(GalleryStore& store, TreeUpdate& update) {
    GalleryNode* gallery = FindGallery(store, update.gallery);
    if (!update.usable || !gallery || !update.scratch) return false;
    gallery->boutique = update.boutique;
    NoteMaps(store, update);
    RebuildClassList(store, gallery, std::exchange(update.scratch->dirChildren, {}));
    gallery->refreshTick = update.tick;
    return true;
}

bool ApplyClassItems(GalleryStore& store, TreeUpdate& update) {
    if (!update.usable || !store.root || !update.scratch) return false;
    GalleryNode* cls = FindNodeByPath(store.root, update.classPath);
    if (!cls || IsFile(*cls) || !cls->parent || !cls->parent->parent) return false;
    ReleaseSubtreesLater(std::exchange(cls->fileChildren, {}));
    MoveChildren(*update.scratch, *cls, true);
    cls->remoteBase = update.remoteBase;
    cls->version = update.version;
    NoteMaps(store, update);
    WriteCatalogue(store, cls->parent->name);
    return true;
}

}  // namespace

void SetTreeNotifyWindow(WindowHandle window) { g_notifyWindow.store(window); }

void DepositTreeUpdate(GalleryStore& store, TreeUpdate update) {
    {
        std::lock_guard<std::mutex> lock(store.treeUpdateLock);
        store.treeUpdates.push_back(std::move(update));
    }
    (void)PostWindowMessage(g_notifyWindow.load(), MsgTreeUpdate);
}

bool TreeUpdatesWaiting(GalleryStore& store) {
    std::lock_guard<std::mutex> lock(store.treeUpdateLock);
    return !store.treeUpdates.empty();
}

std::vector<TreeChange> AdoptTreeUpdates(GalleryStore& store) {
    std::deque<TreeUpdate> waiting;
    {
        std::lock_guard<std::mutex> lock(store.treeUpdateLock);
        waiting.swap(store.treeUpdates);
    }
    std::vector<TreeChange> changes;
    for (TreeUpdate& update : waiting) changes.push_back(ApplyTreeUpdate(store, update));
    return changes;
}

TreeChange ApplyTreeUpdate(GalleryStore& store, TreeUpdate& update) {
    TreeChange change{update.kind, update.gallery, update.classPath, false};
    // Handles into the tree go stale before anything is freed.
    ++store.treeEpoch;
    switch (update.kind) {
        case TreeUpdateKind::FirstTree: change.ok = ApplyFirstTree(store, update); break;
        case TreeUpdateKind::GalleryFull: change.ok = ApplyGalleryFull(store, update); break;
        case TreeUpdateKind::ClassSummary: change.ok = ApplyClassSummary(store, update); break;
        case TreeUpdateKind::ClassItems: change.ok = ApplyClassItems(store, update); break;
    }
    return change;
}

void ReleaseSubtreesLater(std::vector<GalleryNode*> nodes) {
    nodes.erase(std::remove(nodes.begin(), nodes.end(), nullptr), nodes.end());
    if (nodes.empty()) return;
    ++g_releases;
    auto owned = std::make_shared<std::vector<GalleryNode*>>(std::move(nodes));
    if (StartDetachedThread([owned] {
            FreeNodes(*owned);
            --g_releases;
        }))
        return;
    // No thread: free them here, which only costs time.
    FreeNodes(*owned);
    --g_releases;
}

bool WaitForReleases() {
    const uint32_t start = GetTickCount();
    while (g_releases.load() != 0) {
        if (TicksSince(start) > 10000) return false;
        SleepMs(2);
    }
    return true;
}

}  // namespace marrowfin
