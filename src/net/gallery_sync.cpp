#include "net/gallery_sync.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "markup/markup_document.h"
#include "net/gallery_sync_workers.h"
#include "net/http_transport.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/threads.h"
#include "platform/ticks.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/previous_generation.h"
#include "store/show_list.h"
#include "store/store_ini.h"
#include "store/store_paths.h"
#include "store/usage_lists.h"

namespace marrowfin {

namespace {

using sync_detail::CatalogueWrites;
using sync_detail::ClassVersions;
using sync_detail::ReadCatalogueVersionsAt;
using sync_detail::VersionsReadAhead;

int32_t ToInt(std::u16string_view text) {
    // A block's size, as nearly every number of a reply is, is a few plain
    // digits: read here, without the general reader's blanks, sign and cap.
    if (!text.empty() && text.size() <= 9) {
        int32_t value = 0;
        for (const char16_t c : text) {
            if (c < u'0' || c > u'9') return ParseProfileInt(text);
            value = value * 10 + (c - u'0');
        }
        return value;
    }
    return ParseProfileInt(text);
}

// Sends a request whose values are in the query; true when the reply is
// usable: not empty, well-formed, with a root element (which becomes main).
bool FetchReply(std::u16string_view pathAndQuery, MarkupDocument& doc) {
    std::string reply;
    (void)PostFormBytes(ServiceBaseUrl() + std::u16string(pathAndQuery), u"", reply);
    if (reply.empty() || !doc.SetUtf8Text(reply)) return false;
    return doc.FindElement(u"root");
}

const GalleryNode* FindGallery(const GalleryStore& store, std::u16string_view name) {
    if (!store.root) return nullptr;
    for (const GalleryNode* gallery : store.root->dirChildren)
        if (gallery && gallery->name == name) return gallery;
    return nullptr;
}

// FindNodeByPath from the root while the first tree is built. There every
// dir below a gallery is a class whose path is the gallery's path, "/" and
// its name, so a gallery whose path doesn't lead the wanted one can't hold
// it; skipping its classes keeps a reply of many galleries from walking all
// earlier galleries' classes once for each later gallery.
GalleryNode* FindGalleryOfRun(GalleryNode* root, std::u16string_view path) {
    if (root->PathIs(path)) return root;
    for (GalleryNode* gallery : root->dirChildren) {
        if (!gallery) continue;
        const std::u16string own = gallery->Path();
        if (own == path) return gallery;
        if (path.size() > own.size() && path[own.size()] == u'/' && path.substr(0, own.size()) == own)
            if (GalleryNode* hit = FindNodeByPath(gallery, path)) return hit;
    }
    return nullptr;
}

GalleryNode* NewGalleryNode(const GalleryNode& root, std::u16string_view name) {
    return new GalleryNode(root.name, JoinPath(root.Path(), name), std::u16string(name), kKindDir, false, false, 0);
}

// A detached root of the given identity, for a worker to build under.
OwnedNode ScratchRoot(std::u16string_view name, std::u16string_view path) {
    return OwnedNode(new GalleryNode(u"", std::u16string(path), std::u16string(name), kKindDir, false, false, 0));
}

// Hangs a gallery under a detached root without reading its common-use list:
// the owner keeps the one it has.
GalleryNode* AttachBare(GalleryNode& parent, GalleryNode* child) {
    child->parent = &parent;
    parent.dirChildren.push_back(child);
    return child;
}

// The class versions a gallery's catalogue holds; the seal is not checked.
ClassVersions ReadCatalogueVersions(const GalleryNode& gallery) {
    bool existed = false;
    return ReadCatalogueVersionsAt(CatalogueFile(gallery), existed);
}

// A gallery's highest class version: read from version.ini before its
// classes are read, raised by each newer class, and written back once when
// they are all read. A rewrite of the file per class made the first tree of
// a large library spend a third of its time on this one small file.
class GalleryHighest {
public:
    explicit GalleryHighest(std::u16string_view gallery) : GalleryHighest(gallery, ReadGalleryVersion(gallery)) {}
    GalleryHighest(std::u16string_view gallery, int32_t saved) : m_gallery(gallery), m_value(saved), m_saved(saved) {}
    void Note(int32_t version) {
        if (version > m_value) m_value = version;
    }
    // Into the update for the owner's map, and into version.ini.
    void Save(TreeUpdate& update) {
        if (m_value <= m_saved) return;
        m_saved = m_value;
        update.galleryVersions[m_gallery] = m_value;
        (void)WriteGalleryVersion(m_gallery, m_value);
    }

private:
    std::u16string m_gallery;
    int32_t m_value;
    int32_t m_saved;
};

// Reads the block elements (`tag`) below the current main element into `cls`.
// A full reply holds hundreds of thousands of blocks: each node is built
// with the fewest strings possible, the file name moving into the node's name.
void ReadBlocks(MarkupDocument& doc, std::u16string_view tag, GalleryNode* cls, bool boutique) {
    // The block array is left to grow by itself: reserving each class's
    // array whole made freeing the tree much slower and building it no faster.
    // The attributes are read as views into the reply (a scratch buffer only
    // where a reference needs decoding): the name is copied once, into the
    // node, and the path and URL follow from the class.
    // The three are read in one pass over each start tag.
    static constexpr std::u16string_view kNames[3] = {u"fn", u"size", u"hi"};
    std::u16string_view values[3];
    std::u16string scratch[3];
    doc.EnterElement();
    while (doc.FindElement(tag)) {
        doc.AttributeViews(kNames, values, scratch);
        const auto& [fn, size, hi] = values;
        if (fn.empty() || size.empty()) continue;
        GalleryNode* block = NewBlock(fn, hi == u"1", boutique, ToInt(size));
        if (!AddChild(cls, block, false)) delete block;
    }
    doc.LeaveElement();
}

// The classes of one gallery element (or of the root of a one-gallery reply)
// with their blocks, as the full replies give them.
void ReadFullGallery(TreeUpdate& update, MarkupDocument& doc, GalleryNode* gallery, const ClassVersions& old,
                     GalleryHighest& highest, CatalogueWrites* writes = nullptr) {
    doc.EnterElement();
    while (doc.FindElement(u"item")) {
        const std::u16string cs = doc.GetAttribute(u"cs");
        const std::u16string bu = doc.GetAttribute(u"b_u");
        const std::u16string ver = doc.GetAttribute(u"ver");
        if (cs.empty() || bu.empty() || ver.empty()) continue;
        auto* cls = new GalleryNode(gallery->name, JoinPath(gallery->Path(), cs), cs, kKindDir, false, false, 0);
        cls->version = ToInt(ver);
        cls->remoteBase = bu;
        // A risen version makes the downloaded blocks of the class suspect.
        if (auto it = old.find(cs); it != old.end() && cls->version > it->second) {
            if (writes) writes->Settle(cls->Path());
            RemoveDirectoryTree(cls->Path());
        }
        if (!AddChild(gallery, cls, false)) {
            delete cls;
            continue;
        }
        ReadBlocks(doc, u"dwg", cls, gallery->boutique);
        update.freshClasses.push_back(cls->Path());
        highest.Note(cls->version);
    }
    doc.LeaveElement();
    highest.Save(update);
}

// The first tree, detached: the galleries of Show.xml under a stand-in root
// that also holds the recent list (used only by a store without a root).
// The listed galleries as their catalogues have them, with the recent list;
// none when Show.xml is missing or no catalogue could be read.
TreeUpdate ComposeCatalogueTree() {
    TreeUpdate update;
    update.kind = TreeUpdateKind::FirstTree;
    const std::u16string rootPath = StoreRoot();
    if (!FileExists(ShowListPath())) return update;
    update.scratch = ScratchRoot(kRootName, rootPath);
    GalleryNode* root = update.scratch.get();
    bool read = false;
    for (const ShowItem& item : ReadShowList(true)) {
        GalleryNode* gallery = NewGalleryNode(*root, item.name);
        if (!AddChild(root, gallery, false)) delete gallery;
        read = ReadCatalogueInto(*root, item.name) || read;
    }
    if (!read) update.scratch.reset();
    else LoadRecentListInto(*root);
    return update;
}

// With `cataloguesShown` a failed request leaves no update: the catalogues'
// tree deposited before it is all there is.
TreeUpdate ComposeFirstTree(bool cataloguesShown = false) {
    TreeUpdate update;
    update.kind = TreeUpdateKind::FirstTree;
    const std::u16string rootPath = StoreRoot();
    if (!DirectoryExists(rootPath)) (void)CreateDirectories(rootPath);
    update.scratch = ScratchRoot(kRootName, rootPath);
    GalleryNode* root = update.scratch.get();
    LoadRecentListInto(*root);
    if (!FileExists(ShowListPath())) MoveFromPreviousGeneration();
    const int32_t downver = GetOptionInt(u"downver", -1);
    const std::vector<ShowItem> names = ReadShowList(true);
    if (names.empty()) return update;

    std::u16string query;
    for (const ShowItem& item : names) {
        if (!query.empty()) query += u',';
        query += item.name;
        GalleryNode* gallery = NewGalleryNode(*root, item.name);
        if (!AddChild(root, gallery, false)) delete gallery;
    }
    VersionsReadAhead ahead(*root);
    MarkupDocument doc;
    update.usable = FetchReply(u"/gallery/g_all_s?gallery_name=" + query, doc);
    if (!update.usable) {
        ahead.Stop();
        if (cataloguesShown) {
            update.scratch.reset();
            return update;
        }
        for (GalleryNode* gallery : root->dirChildren)
            if (gallery) (void)ReadCatalogueInto(*root, gallery->name);
        return update;
    }
    ahead.Join();
    const bool forceRefresh = doc.GetAttribute(u"dv") == u"1" && downver == -1;
    // version.ini once for all galleries, not once per gallery; a gallery
    // named twice starts from what its first element saved.
    const GalleryVersionsRead versions;
    // The writer reads a handed-over gallery while the next ones are built;
    // nothing else can see this tree until it is deposited.
    CatalogueWrites writes;
    doc.EnterElement();
    while (doc.FindElement(u"gallery")) {
        const std::u16string gn = doc.GetAttribute(u"gn");
        GalleryNode* gallery = FindGalleryOfRun(root, JoinPath(root->Path(), gn));
        if (!gallery || gallery == root) continue;
        ClassVersions old;
        if (!ahead.Take(*gallery, old)) {
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
        const auto saved = update.galleryVersions.find(gallery->name.str());
        GalleryHighest highest(gallery->name.str(), saved != update.galleryVersions.end()
                                                        ? saved->second
                                                        : versions.Of(gallery->name.str()));
        ReadFullGallery(update, doc, gallery, old, highest, &writes);
        // Every class of a gallery read whole is fresh.
        writes.Add(*gallery, StaleClasses{});
        update.fetchTicks[gallery->name.str()] = gallery->refreshTick;
    }
    writes.Finish();
    return update;
}

// An empty update that answers the request.
TreeUpdate UpdateFor(const TreeRequest& request) {
    TreeUpdate update;
    update.kind = request.kind;
    update.gallery = request.gallery;
    update.classPath = request.classPath;
    update.createIfMissing = request.createIfMissing;
    return update;
}

TreeUpdate RunGalleryFull(const TreeRequest& request) {
    TreeUpdate update = UpdateFor(request);
    update.scratch = ScratchRoot(request.rootName, request.rootPath);
    GalleryNode* gallery = AttachBare(*update.scratch, NewGalleryNode(*update.scratch, request.gallery));
    MarkupDocument doc;
    update.usable = FetchReply(u"/gallery/g_all?gallery_name=" + request.gallery, doc) &&
                    doc.GetAttribute(u"gn") == request.gallery;
    if (!update.usable) {
        if (!request.hadClasses) (void)ReadCatalogueInto(*update.scratch, request.gallery);
        return update;
    }
    update.tick = GetTickCount();
    update.boutique = doc.GetAttribute(u"gv") == u"1";
    gallery->boutique = update.boutique;
    GalleryHighest highest(request.gallery);
    ReadFullGallery(update, doc, gallery, request.oldVersions, highest);
    update.fetchTicks[gallery->name.str()] = update.tick;
    return update;
}

TreeUpdate RunClassSummary(const TreeRequest& request) {
    TreeUpdate update = UpdateFor(request);
    MarkupDocument doc;
    if (!FetchReply(u"/gallery/g_cs_s?gallery_name=" + request.gallery, doc)) return update;
    if (doc.GetAttribute(u"gn") != request.gallery) return update;
    update.usable = true;
    update.boutique = doc.GetAttribute(u"gv") == u"1";
    const std::u16string galleryPath = JoinPath(request.rootPath, request.gallery);
    update.scratch.reset(new GalleryNode(request.rootName, galleryPath, request.gallery, kKindDir, false, false, 0));
    GalleryNode* gallery = update.scratch.get();
    GalleryHighest highest(request.gallery);
    doc.EnterElement();
    while (doc.FindElement(u"item")) {
        const std::u16string cs = doc.GetAttribute(u"cs");
        auto* cls = new GalleryNode(request.gallery, JoinPath(galleryPath, cs), cs, kKindDir, false, false, 0);
        cls->version = ToInt(doc.GetAttribute(u"ver"));
        AttachBare(*gallery, cls);
        highest.Note(cls->version);
    }
    doc.LeaveElement();
    highest.Save(update);
    update.tick = GetTickCount();
    return update;
}

TreeUpdate RunClassItems(const TreeRequest& request) {
    TreeUpdate update = UpdateFor(request);
    MarkupDocument doc;
    if (!FetchReply(u"/gallery/g_cs?gallery_name=" + request.gallery + u"&cs=" + request.className, doc)) return update;
    update.usable = true;
    update.remoteBase = doc.GetAttribute(u"b_u");
    update.version = ToInt(doc.GetAttribute(u"ver"));
    update.scratch.reset(
        new GalleryNode(request.gallery, request.classPath, request.className, kKindDir, false, false, 0));
    update.scratch->remoteBase = update.remoteBase;
    ReadBlocks(doc, u"item", update.scratch.get(), false);
    update.freshClasses.push_back(request.classPath);
    // A refetched class discards its downloaded blocks.
    if (DirectoryExists(request.classPath)) RemoveDirectoryTree(request.classPath);
    return update;
}

}  // namespace

void BuildFirstTree(GalleryStore& store, bool cataloguesFirst) {
    store.syncBusy.store(1);
    bool shown = false;
    if (cataloguesFirst) {
        TreeUpdate early = ComposeCatalogueTree();
        shown = early.scratch && !early.scratch->dirChildren.empty();
        if (shown) DepositTreeUpdate(store, std::move(early));
    }
    TreeUpdate update = ComposeFirstTree(shown);
    if (update.scratch) DepositTreeUpdate(store, std::move(update));
    // Cleared only once the tree waits for the owner, so that "busy or
    // waiting" never looks idle in between.
    store.syncBusy.store(0);
}

bool StartFirstTree(GalleryStore& store) {
    int32_t idle = 0;
    // A run already under way will deliver the newest Show.xml's tree or be
    // followed by the next request of the user.
    if (!store.syncBusy.compare_exchange_strong(idle, 1)) return true;
    // At a cold start the catalogues on disk fill the panel while the service answers.
    const bool cataloguesFirst = store.root == nullptr;
    if (StartDetachedThread([&store, cataloguesFirst] { BuildFirstTree(store, cataloguesFirst); })) return true;
    store.syncBusy.store(0);
    return false;
}

std::optional<TreeRequest> PrepareGalleryFull(const GalleryStore& store, std::u16string_view name,
                                              bool createIfMissing) {
    if (!store.root) return std::nullopt;
    const GalleryNode* gallery = FindGallery(store, name);
    if (!gallery && !createIfMissing) return std::nullopt;
    TreeRequest request;
    request.kind = TreeUpdateKind::GalleryFull;
    request.rootName = store.root->name;
    request.rootPath = store.root->Path();
    request.gallery = std::u16string(name);
    request.createIfMissing = createIfMissing;
    if (gallery) {
        for (const GalleryNode* cls : gallery->dirChildren) {
            if (!cls) continue;
            request.oldVersions[cls->name.str()] = cls->version;
            request.hadClasses = true;
        }
    }
    return request;
}

std::optional<TreeRequest> PrepareClassSummary(const GalleryStore& store, std::u16string_view name) {
    const GalleryNode* gallery = FindGallery(store, name);
    if (!gallery || TicksSince(gallery->refreshTick) <= kGalleryFreshMs) return std::nullopt;
    TreeRequest request;
    request.kind = TreeUpdateKind::ClassSummary;
    request.rootName = store.root->name;
    request.rootPath = store.root->Path();
    request.gallery = std::u16string(name);
    return request;
}

std::optional<TreeRequest> PrepareClassItems(const GalleryStore& store, std::u16string_view path) {
    if (!store.root) return std::nullopt;
    const GalleryNode* cls = FindNodeByPath(store.root, path);
    if (!cls || IsFile(*cls) || !cls->parent || !cls->parent->parent) return std::nullopt;
    TreeRequest request;
    request.kind = TreeUpdateKind::ClassItems;
    request.rootName = store.root->name;
    request.rootPath = store.root->Path();
    request.gallery = cls->parent->name;
    request.className = cls->name;
    request.classPath = cls->Path();
    return request;
}

TreeUpdate RunTreeRequest(const TreeRequest& request) {
    switch (request.kind) {
        case TreeUpdateKind::GalleryFull: return RunGalleryFull(request);
        case TreeUpdateKind::ClassSummary: return RunClassSummary(request);
        case TreeUpdateKind::ClassItems: return RunClassItems(request);
        case TreeUpdateKind::FirstTree: break;
    }
    return ComposeFirstTree();
}

bool StartTreeRequest(GalleryStore& store, TreeRequest request) {
    return StartDetachedThread(
        [&store, request = std::move(request)] { DepositTreeUpdate(store, RunTreeRequest(request)); });
}

bool FetchGalleryFull(GalleryStore& store, std::u16string_view name, bool createIfMissing) {
    const std::optional<TreeRequest> request = PrepareGalleryFull(store, name, createIfMissing);
    if (!request) return false;
    TreeUpdate update = RunTreeRequest(*request);
    return ApplyTreeUpdate(store, update).ok;
}

void RefreshClassSummary(GalleryStore& store, std::u16string_view name) {
    const std::optional<TreeRequest> request = PrepareClassSummary(store, name);
    if (!request) return;
    TreeUpdate update = RunTreeRequest(*request);
    (void)ApplyTreeUpdate(store, update);
}

bool ClassIsStale(const GalleryStore& store, std::u16string_view path) {
    return store.staleClasses.count(std::u16string(path)) != 0;
}

void OpenClass(GalleryStore& store, std::u16string_view path) {
    if (!store.root || !FindNodeByPath(store.root, path)) return;
    if (ClassIsStale(store, path)) FetchClassItems(store, path);
}

void FetchClassItems(GalleryStore& store, std::u16string_view path) {
    const std::optional<TreeRequest> request = PrepareClassItems(store, path);
    if (!request) return;
    TreeUpdate update = RunTreeRequest(*request);
    (void)ApplyTreeUpdate(store, update);
}

}  // namespace marrowfin
