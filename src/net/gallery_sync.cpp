#include "net/gallery_sync.h"

#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "markup/markup_document.h"
#include "net/gallery_sync_workers.h"
#include "net/http_transport.h"
#include "net/tree_lock.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/profile.h"
#include "platform/ticks.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/previous_generation.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store/store_settings.h"
#include "store/usage_lists.h"

namespace marrowfin {

namespace {

using sync_detail::CatalogueWrites;
using sync_detail::SubtreeRelease;
using sync_detail::ClassVersions;
using sync_detail::ReadCatalogueVersionsAt;
using sync_detail::VersionsReadAhead;
using ExclusiveTree = std::unique_lock<std::shared_mutex>;

int32_t ToInt(std::u16string_view text) { return ParseProfileInt(text); }

// a + "/" + b in one allocation: a full reply makes hundreds of thousands.
std::u16string JoinPath(std::u16string_view a, std::u16string_view b) {
    std::u16string out;
    out.reserve(a.size() + 1 + b.size());
    out.append(a).append(1, u'/').append(b);
    return out;
}

// Sends a request whose values are in the query; true when the reply is
// usable: not empty, well-formed, with a root element (which becomes main).
bool FetchReply(std::u16string_view pathAndQuery, MarkupDocument& doc) {
    std::string reply;
    (void)PostFormBytes(ServiceBaseUrl() + std::u16string(pathAndQuery), u"", reply);
    if (reply.empty() || !doc.SetUtf8Text(reply)) return false;
    return doc.FindElement(u"root");
}

GalleryNode* FindGallery(GalleryStore& store, std::u16string_view name) {
    if (!store.root) return nullptr;
    return FindNodeByPath(store.root, store.root->path + u"/" + std::u16string(name));
}

// FindNodeByPath from the root while the first tree is built. There every
// dir below a gallery is a class whose path is the gallery's path, "/" and
// its name, so a gallery whose path doesn't lead the wanted one can't hold
// it; skipping its classes keeps a reply of many galleries from walking all
// earlier galleries' classes once for each later gallery.
GalleryNode* FindGalleryOfRun(GalleryNode* root, std::u16string_view path) {
    if (root->path == path) return root;
    for (GalleryNode* gallery : root->dirChildren) {
        if (!gallery) continue;
        const std::u16string_view own = gallery->path;
        if (own == path) return gallery;
        if (path.size() > own.size() && path[own.size()] == u'/' && path.substr(0, own.size()) == own)
            if (GalleryNode* hit = FindNodeByPath(gallery, path)) return hit;
    }
    return nullptr;
}

GalleryNode* NewGalleryNode(const GalleryNode& root, std::u16string_view name) {
    return new GalleryNode(root.name, root.path + u"/" + std::u16string(name), std::u16string(name), kKindDir, false,
                           false, 0);
}

void FreeClasses(GalleryNode* gallery) {
    for (GalleryNode*& cls : gallery->dirChildren) {
        if (!cls) continue;
        DestroySubtree(cls);
        delete cls;
        cls = nullptr;
    }
    gallery->dirChildren.clear();
}

// The class versions a gallery's catalogue holds; the seal is not checked.
ClassVersions ReadCatalogueVersions(const GalleryNode& gallery) {
    bool existed = false;
    return ReadCatalogueVersionsAt(CatalogueFile(gallery), existed);
}

// Raises the gallery's highest version, in memory and in version.ini at once.
void NoteClassVersion(GalleryStore& store, const GalleryNode& gallery, int32_t version, int32_t& highest) {
    if (version <= highest) return;
    highest = version;
    store.galleryVersions[gallery.name] = version;
    (void)WriteGalleryVersion(gallery.name, version);
}

// The store's stale classes that lie in the gallery.
StaleClasses StaleClassesOf(const GalleryStore& store, const GalleryNode& gallery) {
    StaleClasses stale;
    if (store.staleClasses.empty()) return stale;
    for (const GalleryNode* cls : gallery.dirChildren)
        if (cls)
            if (auto it = store.staleClasses.find(cls->path); it != store.staleClasses.end()) stale.insert(*it);
    return stale;
}

// Reads the block elements (`tag`) below the current main element into `cls`.
// A full reply holds hundreds of thousands of blocks: each node is built
// with the fewest strings possible, the file name moving into the node's name.
void ReadBlocks(MarkupDocument& doc, std::u16string_view tag, GalleryNode* cls, bool boutique) {
    static const std::u16string kFileKind(kKindFile);
    // The block array is left to grow by itself: reserving each class's
    // array whole made freeing the tree much slower (measured on the rebuild
    // road) and building it no faster.
    // The size and hidden flag are read into buffers kept across the loop;
    // only the file name, which moves into the node, is a string per block.
    std::u16string size;
    std::u16string hi;
    doc.EnterElement();
    while (doc.FindElement(tag)) {
        std::u16string fn = doc.GetAttribute(u"fn");
        if (fn.empty()) continue;
        doc.GetAttribute(u"size", size);
        if (size.empty()) continue;
        doc.GetAttribute(u"hi", hi);
        const bool hidden = hi == u"1";
        std::u16string path = JoinPath(cls->path, fn);
        std::u16string remote = JoinPath(cls->remoteBase, fn);
        auto* block =
            new GalleryNode(cls->name, std::move(path), std::move(fn), kFileKind, hidden, boutique, ToInt(size));
        block->remoteBase = std::move(remote);
        if (!AddChild(cls, block, false)) delete block;
    }
    doc.LeaveElement();
}

// The classes of one gallery element (or of the root of a one-gallery reply)
// with their blocks, as the full replies give them.
void ReadFullGallery(GalleryStore& store, MarkupDocument& doc, GalleryNode* gallery, const ClassVersions& old,
                     int32_t& highest, CatalogueWrites* writes = nullptr) {
    doc.EnterElement();
    while (doc.FindElement(u"item")) {
        const std::u16string cs = doc.GetAttribute(u"cs");
        const std::u16string bu = doc.GetAttribute(u"b_u");
        const std::u16string ver = doc.GetAttribute(u"ver");
        if (cs.empty() || bu.empty() || ver.empty()) continue;
        auto* cls = new GalleryNode(gallery->name, JoinPath(gallery->path, cs), cs, kKindDir, false, false, 0);
        cls->version = ToInt(ver);
        cls->remoteBase = bu;
        // A risen version makes the downloaded blocks of the class suspect.
        if (auto it = old.find(cs); it != old.end() && cls->version > it->second) {
            if (writes) writes->Settle(cls->path);
            RemoveDirectoryTree(cls->path);
        }
        if (!AddChild(gallery, cls, false)) {
            delete cls;
            continue;
        }
        ReadBlocks(doc, u"dwg", cls, gallery->boutique);
        store.staleClasses.erase(cls->path);
        NoteClassVersion(store, *gallery, cls->version, highest);
    }
    doc.LeaveElement();
}

}  // namespace

void BuildFirstTree(GalleryStore& store) {
    store.syncBusy.store(1);
    std::u16string query;
    std::optional<SubtreeRelease> previous;
    {
        ExclusiveTree lock(TreeLock());
        if (store.root) {
            // The galleries go (freed beside the request); the recent list stays loaded.
            previous.emplace(std::exchange(store.root->dirChildren, {}));
        } else {
            const std::u16string rootPath = StoreRoot();
            if (!DirectoryExists(rootPath)) (void)CreateDirectories(rootPath);
            store.root = new GalleryNode(u"", rootPath, kRootName, kKindDir, false, false, 0);
        }
        if (store.root->fileChildren.empty()) LoadRecentList(store);
        if (!FileExists(ShowListPath())) MoveFromPreviousGeneration();
    }
    const int32_t downver = GetOptionInt(u"downver", -1);
    const std::vector<ShowItem> names = ReadShowList(true);
    std::optional<VersionsReadAhead> ahead;
    // Every helper is done before the run reports itself finished.
    auto finish = [&] {
        if (previous) previous->Join();
        store.syncBusy.store(0);
    };
    if (names.empty()) {
        finish();
        return;
    }
    {
        ExclusiveTree lock(TreeLock());
        for (const ShowItem& item : names) {
            if (!query.empty()) query += u',';
            query += item.name;
            GalleryNode* gallery = NewGalleryNode(*store.root, item.name);
            if (!AddChild(store.root, gallery, false)) delete gallery;
        }
        ahead.emplace(*store.root);
    }

    MarkupDocument doc;
    const bool usable = FetchReply(u"/gallery/g_all_s?gallery_name=" + query, doc);
    if (usable)
        ahead->Join();
    else
        ahead->Stop();
    ExclusiveTree lock(TreeLock());
    if (!usable) {
        for (GalleryNode* gallery : store.root->dirChildren)
            if (gallery) (void)ReadCatalogue(store, gallery->name);
        finish();
        return;
    }
    const bool forceRefresh = doc.GetAttribute(u"dv") == u"1" && downver == -1;
    CatalogueWrites writes;
    doc.EnterElement();
    while (doc.FindElement(u"gallery")) {
        const std::u16string gn = doc.GetAttribute(u"gn");
        GalleryNode* gallery = FindGalleryOfRun(store.root, JoinPath(store.root->path, gn));
        if (!gallery || gallery == store.root) continue;
        ClassVersions old;
        if (!ahead->Take(*gallery, old)) {
            // A gallery seen twice: its first catalogue is composed from it, so
            // it stays as it is until that write is done.
            writes.Settle(CatalogueFile(*gallery));
            old = ReadCatalogueVersions(*gallery);
        }
        gallery->boutique = doc.GetAttribute(u"gv") == u"1";
        if (forceRefresh && !old.empty()) {
            // The one-time forced refresh: every known class looks outdated, in this run only.
            for (auto& [name, version] : old) --version;
            (void)WriteOptionInt(u"downver", 1);
        }
        gallery->refreshTick = GetTickCount();
        int32_t highest = ReadGalleryVersion(gallery->name);
        ReadFullGallery(store, doc, gallery, old, highest, &writes);
        writes.Add(*gallery, StaleClassesOf(store, *gallery));
        store.galleryFetchTicks[gallery->name] = gallery->refreshTick;
    }
    writes.Finish();
    finish();
}

void WaitForSync(GalleryStore& store) {
    for (int step = 0; step < kWaitForSyncSteps && store.syncBusy.load() != 0; ++step) SleepMs(kWaitForSyncStepMs);
}

bool FetchGalleryFull(GalleryStore& store, std::u16string_view name, bool createIfMissing) {
    if (!store.root) return false;
    GalleryNode* gallery = FindGallery(store, name);
    if (!gallery || gallery == store.root) {
        if (!createIfMissing) return false;
        ExclusiveTree lock(TreeLock());
        gallery = NewGalleryNode(*store.root, name);
        if (!AddChild(store.root, gallery, false)) {
            delete gallery;
            return false;
        }
    }
    MarkupDocument doc;
    const bool usable = FetchReply(u"/gallery/g_all?gallery_name=" + std::u16string(name), doc);
    ExclusiveTree lock(TreeLock());
    if (!usable || doc.GetAttribute(u"gn") != name) {
        // The catalogue appends: a gallery that still has its classes keeps them
        // as they are rather than getting a second copy.
        if (gallery->dirChildren.empty()) (void)ReadCatalogue(store, name);
        return false;
    }
    ClassVersions old;
    for (const GalleryNode* cls : gallery->dirChildren)
        if (cls) old[cls->name] = cls->version;
    FreeClasses(gallery);
    gallery->refreshTick = GetTickCount();
    gallery->boutique = doc.GetAttribute(u"gv") == u"1";
    int32_t highest = ReadGalleryVersion(gallery->name);
    ReadFullGallery(store, doc, gallery, old, highest);
    (void)WriteCatalogue(store, gallery->name);
    store.galleryFetchTicks[gallery->name] = gallery->refreshTick;
    return true;
}

void OpenAddedGallery(GalleryStore& store, std::u16string_view name) {
    const auto it = store.galleryFetchTicks.find(std::u16string(name));
    if (it != store.galleryFetchTicks.end() && TicksSince(it->second) <= kGalleryFreshMs) {
        ExclusiveTree lock(TreeLock());
        (void)ReadCatalogue(store, name);
        return;
    }
    (void)FetchGalleryFull(store, name, false);
}

void RefreshClassSummary(GalleryStore& store, std::u16string_view name) {
    GalleryNode* gallery = FindGallery(store, name);
    if (!gallery || gallery == store.root) return;
    if (TicksSince(gallery->refreshTick) <= kGalleryFreshMs) return;
    MarkupDocument doc;
    if (!FetchReply(u"/gallery/g_cs_s?gallery_name=" + std::u16string(name), doc)) return;
    if (doc.GetAttribute(u"gn") != name) return;
    ExclusiveTree lock(TreeLock());
    gallery->boutique = doc.GetAttribute(u"gv") == u"1";
    int32_t highest = ReadGalleryVersion(gallery->name);
    std::vector<GalleryNode*> candidates;
    doc.EnterElement();
    while (doc.FindElement(u"item")) {
        const std::u16string cs = doc.GetAttribute(u"cs");
        auto* cls = new GalleryNode(gallery->name, gallery->path + u"/" + cs, cs, kKindDir, false, false, 0);
        cls->version = ToInt(doc.GetAttribute(u"ver"));
        candidates.push_back(cls);
        NoteClassVersion(store, *gallery, cls->version, highest);
    }
    doc.LeaveElement();
    RebuildClassList(store, gallery, std::move(candidates));
    gallery->refreshTick = GetTickCount();
}

void OpenClass(GalleryStore& store, std::u16string_view path) {
    if (!store.root || !FindNodeByPath(store.root, path)) return;
    if (store.staleClasses.count(std::u16string(path))) FetchClassItems(store, path);
}

void FetchClassItems(GalleryStore& store, std::u16string_view path) {
    if (!store.root) return;
    GalleryNode* cls = FindNodeByPath(store.root, path);
    if (!cls || IsFile(*cls) || !cls->parent || !cls->parent->parent) return;
    MarkupDocument doc;
    if (!FetchReply(u"/gallery/g_cs?gallery_name=" + cls->parent->name + u"&cs=" + cls->name, doc)) return;
    ExclusiveTree lock(TreeLock());
    for (GalleryNode*& block : cls->fileChildren) {
        if (!block) continue;
        DestroySubtree(block);
        delete block;
        block = nullptr;
    }
    cls->fileChildren.clear();
    cls->remoteBase = doc.GetAttribute(u"b_u");
    cls->version = ToInt(doc.GetAttribute(u"ver"));
    ReadBlocks(doc, u"item", cls, false);
    store.staleClasses.erase(cls->path);
    // A refetched class discards its downloaded blocks.
    if (DirectoryExists(cls->path)) RemoveDirectoryTree(cls->path);
    (void)WriteCatalogue(store, cls->parent->name);
}

}  // namespace marrowfin
