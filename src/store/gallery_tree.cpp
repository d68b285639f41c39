#include "store/gallery_tree.h"

#include <algorithm>

#include "platform/text.h"
#include "store/gallery_store.h"
#include "store/usage_lists.h"

namespace marrowfin {

bool IsFile(const GalleryNode& node) { return node.kind == kKindFile; }

bool IsRoot(const GalleryNode& node) { return node.parent == nullptr && node.name == kRootName; }

bool AddChild(GalleryNode* parent, GalleryNode* node, bool atFront) {
    if (!node || !parent) return false;
    if (!IsFile(*node) && node->ownerName == kRootName) LoadCommonList(node);
    node->parent = parent;
    auto& children = IsFile(*node) ? parent->fileChildren : parent->dirChildren;
    children.push_back(node);
    if (atFront) std::rotate(children.begin(), children.end() - 1, children.end());
    return true;
}

bool RemoveChild(GalleryNode* parent, const GalleryNode* child) {
    if (!parent || !child) return false;
    auto& children = IsFile(*child) ? parent->fileChildren : parent->dirChildren;
    auto it = std::find_if(children.begin(), children.end(),
                           [&](const GalleryNode* n) { return n && n->name == child->name; });
    if (it == children.end()) return false;
    (*it)->parent = nullptr;
    children.erase(it);
    return true;
}

GalleryNode* FindNodeByPath(GalleryNode* node, std::u16string_view path) {
    if (!node) return nullptr;
    if (node->path == path) return node;
    for (GalleryNode* child : node->dirChildren)
        if (GalleryNode* hit = FindNodeByPath(child, path)) return hit;
    return nullptr;
}

namespace {

// Compared as views: the length is known at compile time, so a mismatch is
// usually decided by the size alone instead of a scan of the literal.
constexpr std::u16string_view kTagView{kCommonUseTag};

inline bool IsCommonUseEntry(const GalleryNode& n) { return std::u16string_view(n.ownerName) == kTagView; }

}  // namespace

GalleryNode* FindBlockByPath(GalleryNode* node, std::u16string_view path, bool skipRootFiles) {
    if (!node) return nullptr;
    if (node->path == path && !IsCommonUseEntry(*node)) return node;
    if (!(skipRootFiles && IsRoot(*node))) {
        const auto& files = node->fileChildren;
        const size_t count = files.size();
        for (size_t i = 0; i < count; ++i) {
            // The walk is bound by memory latency: ask early for the node a few
            // places ahead and for the name text of a nearer one.
            if (i + 8 < count && files[i + 8]) __builtin_prefetch(files[i + 8]);
            if (i + 4 < count && files[i + 4]) __builtin_prefetch(files[i + 4]->name.data());
            GalleryNode* child = files[i];
            if (!child) continue;
            // A leaf is tested here; the rare file with children goes the long way.
            if (child->fileChildren.empty() && child->dirChildren.empty()) {
                if (child->path == path && !IsCommonUseEntry(*child)) return child;
            } else if (GalleryNode* hit = FindBlockByPath(child, path, false)) {
                return hit;
            }
        }
    }
    for (GalleryNode* child : node->dirChildren)
        if (GalleryNode* hit = FindBlockByPath(child, path, false)) return hit;
    return nullptr;
}

namespace {

void FilterDir(const GalleryNode* node, std::u16string_view text, std::vector<GalleryNode*>& out, bool withFiles) {
    // Blocks are tested here rather than by a call each: a class holds many,
    // and the call would cost more than the test.
    if (withFiles) {
        const auto& files = node->fileChildren;
        const size_t count = files.size();
        for (size_t i = 0; i < count; ++i) {
            // The walk is bound by memory latency: ask early for the node a few
            // places ahead and for the name text of a nearer one.
            if (i + 8 < count && files[i + 8]) __builtin_prefetch(files[i + 8]);
            if (i + 4 < count && files[i + 4]) __builtin_prefetch(files[i + 4]->name.data());
            GalleryNode* child = files[i];
            if (child && !IsCommonUseEntry(*child) && ContainsFolded(child->name, text)) out.push_back(child);
        }
    }
    for (const GalleryNode* child : node->dirChildren)
        if (child) FilterDir(child, text, out, true);
}

}  // namespace

void FilterBlocks(GalleryNode* node, std::u16string_view text, std::vector<GalleryNode*>& out) {
    if (!node) return;
    if (IsFile(*node)) {
        if (!IsCommonUseEntry(*node) && ContainsFolded(node->name, text)) out.push_back(node);
        return;
    }
    FilterDir(node, text, out, true);
}

void FilterBlocksFromTop(GalleryNode* node, std::u16string_view text, std::vector<GalleryNode*>& out) {
    if (!node) return;
    if (IsFile(*node)) {
        if (IsCommonUseEntry(*node) && ContainsFolded(node->name, text)) out.push_back(node);
        return;
    }
    FilterDir(node, text, out, node->parent != nullptr);
}

void RenameNode(GalleryNode* node, std::u16string_view newName) {
    if (!node || IsRoot(*node) || !node->parent) return;
    const std::u16string& parentPath = node->parent->path;
    if (!IsFile(*node)) {
        node->name = std::u16string(newName);
        node->path = parentPath + u"/" + node->name;
        for (GalleryNode* child : node->fileChildren) {
            if (!child) continue;
            const size_t slash = child->path.find_last_of(u'/');
            const std::u16string last = slash == std::u16string::npos ? u"/" + child->path : child->path.substr(slash);
            child->path = node->path + last;
        }
        return;
    }
    const size_t slash = node->path.find_last_of(u'/');
    const size_t dot = node->path.find_last_of(u'.');
    if (slash == std::u16string::npos || dot == std::u16string::npos || dot < slash) return;
    const std::u16string extension = node->path.substr(dot);
    node->name = std::u16string(newName);
    node->path = parentPath + u"/" + node->name + extension;
}

void DestroySubtree(GalleryNode* node) {
    if (!node) return;
    for (auto* children : {&node->fileChildren, &node->dirChildren}) {
        auto& slots = *children;
        const size_t count = slots.size();
        for (size_t i = 0; i < count; ++i) {
            // Freeing a class's blocks is bound by memory latency: ask early
            // for the node a few places ahead and for the heads of the
            // strings of a nearer one, which free() reads.
            if (i + 8 < count && slots[i + 8]) __builtin_prefetch(slots[i + 8]);
            if (i + 4 < count && slots[i + 4]) {
                const GalleryNode* ahead = slots[i + 4];
                __builtin_prefetch(ahead->path.data());
                __builtin_prefetch(ahead->name.data());
                __builtin_prefetch(ahead->remoteBase.data());
            }
            GalleryNode* child = slots[i];
            if (!child) continue;
            // A leaf (every block) has nothing below it: deleting it frees its strings.
            if (!child->fileChildren.empty() || !child->dirChildren.empty()) DestroySubtree(child);
            delete child;
            slots[i] = nullptr;
        }
        slots.clear();
        slots.shrink_to_fit();
    }
    std::u16string().swap(node->ownerName);
    std::u16string().swap(node->name);
    std::u16string().swap(node->path);
    std::u16string().swap(node->kind);
    std::u16string().swap(node->remoteBase);
}

void ClearChildren(GalleryNode* gallery) {
    if (!gallery) return;
    for (auto* children : {&gallery->fileChildren, &gallery->dirChildren}) {
        for (GalleryNode*& child : *children) {
            SubtreeDeleter()(child);
            child = nullptr;
        }
        children->clear();
    }
}

void RebuildClassList(GalleryStore& store, GalleryNode* gallery, std::vector<GalleryNode*> candidates) {
    if (!gallery) {
        for (GalleryNode* c : candidates) SubtreeDeleter()(c);
        return;
    }
    std::vector<GalleryNode*> old;
    old.swap(gallery->dirChildren);
    for (GalleryNode* candidate : candidates) {
        if (!candidate) continue;
        auto match = std::find_if(old.begin(), old.end(),
                                  [&](const GalleryNode* n) { return n && n->name == candidate->name; });
        if (match != old.end()) {
            GalleryNode* kept = *match;
            old.erase(match);
            AddChild(gallery, kept, false);
            if (candidate->version > kept->version) store.staleClasses[candidate->path] = candidate->version;
            SubtreeDeleter()(candidate);
        } else {
            store.staleClasses[candidate->path] = candidate->version;
            AddChild(gallery, candidate, false);
        }
    }
    for (GalleryNode* gone : old) SubtreeDeleter()(gone);
}

}  // namespace marrowfin
