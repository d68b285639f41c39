#include "store/gallery_tree.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"
#include "store/gallery_store.h"
#include "store/usage_lists.h"

namespace marrowfin {

bool IsFile(const GalleryNode& node) { return node.kind == NodeKind::File; }

bool IsRoot(const GalleryNode& node) { return node.parent == nullptr && node.name == kRootName; }

bool AddChild(GalleryNode* parent, GalleryNode* node, bool atFront) {
    if (!node || !parent) return false;
    if (!IsFile(*node) && node->OwnerName() == kRootName) LoadCommonList(node);
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
    // Off the tree, a block read in bulk keeps the path, owner and URL it had.
    if (!(*it)->HasOwnPath()) (*it)->SetPath((*it)->Path());
    (*it)->parent = nullptr;
    children.erase(it);
    return true;
}

GalleryNode* FindNodeByPath(GalleryNode* node, std::u16string_view path) {
    if (!node) return nullptr;
    if (node->PathIs(path)) return node;
    for (GalleryNode* child : node->dirChildren)
        if (GalleryNode* hit = FindNodeByPath(child, path)) return hit;
    return nullptr;
}

namespace {

// Compared as views: the length is known at compile time, so a mismatch is
// usually decided by the size alone instead of a scan of the literal.
constexpr std::u16string_view kTagView{kCommonUseTag};

inline bool IsCommonUseEntry(const GalleryNode& n) { return n.OwnerName() == kTagView; }

}  // namespace

GalleryNode* FindBlockByPath(GalleryNode* node, std::u16string_view path, bool skipRootFiles) {
    if (!node) return nullptr;
    if (node->PathIs(path) && !IsCommonUseEntry(*node)) return node;
    if (!(skipRootFiles && IsRoot(*node))) {
        // A block read in bulk has this node's path + "/" + its name: the
        // path is split once here, and such a block compares its name only.
        const std::u16string built = node->HasOwnPath() ? std::u16string() : node->Path();
        const std::u16string_view own = node->HasOwnPath() ? node->StoredPath() : std::u16string_view(built);
        const bool under = path.size() > own.size() && path[own.size()] == u'/' && path.starts_with(own);
        const std::u16string_view rest = under ? path.substr(own.size() + 1) : std::u16string_view();
        for (GalleryNode* child : node->fileChildren) {
            if (!child) continue;
            // A leaf is tested here; the rare file with children goes the long way.
            if (child->fileChildren.empty() && child->dirChildren.empty()) {
                const bool same = child->HasOwnPath() ? child->StoredPath() == path : under && child->name == rest;
                if (same && !IsCommonUseEntry(*child)) return child;
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
        for (GalleryNode* child : node->fileChildren)
            if (child && !IsCommonUseEntry(*child) && ContainsFolded(child->name, text)) out.push_back(child);
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
    const std::u16string parentPath = node->parent->Path();
    if (!IsFile(*node)) {
        node->name = newName;
        node->SetPath(parentPath + u"/" + node->name);
        const std::u16string path = node->Path();
        for (GalleryNode* child : node->fileChildren) {
            // A block read in bulk follows the new path by itself.
            if (!child || !child->HasOwnPath()) continue;
            const std::u16string_view old = child->StoredPath();
            const size_t slash = old.find_last_of(u'/');
            std::u16string moved = path;
            if (slash == std::u16string::npos) moved += u'/';
            moved += slash == std::u16string::npos ? old : old.substr(slash);
            child->SetPath(moved);
        }
        return;
    }
    const std::u16string path = node->Path();
    const size_t slash = path.find_last_of(u'/');
    const size_t dot = path.find_last_of(u'.');
    if (slash == std::u16string::npos || dot == std::u16string::npos || dot < slash) return;
    const std::u16string extension = path.substr(dot);
    // The path first: a block read in bulk keeps its URL from its old name.
    node->SetPath(parentPath + u"/" + std::u16string(newName) + extension);
    node->name = newName;
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
            if (i + 4 < count && slots[i + 4]) __builtin_prefetch(slots[i + 4]->name.data());
            GalleryNode* child = slots[i];
            if (!child) continue;
            // A leaf (every block) has nothing below it: deleting it frees its texts.
            if (!child->fileChildren.empty() || !child->dirChildren.empty()) DestroySubtree(child);
            delete child;
            slots[i] = nullptr;
        }
        slots.clear();
        slots.shrink_to_fit();
    }
    node->ReleaseTexts();
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
    std::vector<GalleryNode*> old = std::exchange(gallery->dirChildren, {});
    for (GalleryNode* candidate : candidates) {
        if (!candidate) continue;
        auto match =
            std::find_if(old.begin(), old.end(), [&](const GalleryNode* n) { return n && n->name == candidate->name; });
        if (match != old.end()) {
            GalleryNode* kept = *match;
            old.erase(match);
            AddChild(gallery, kept, false);
            if (candidate->version > kept->version) store.staleClasses[candidate->Path()] = candidate->version;
            SubtreeDeleter()(candidate);
        } else {
            store.staleClasses[candidate->Path()] = candidate->version;
            AddChild(gallery, candidate, false);
        }
    }
    for (GalleryNode* gone : old) SubtreeDeleter()(gone);
}

}  // namespace marrowfin
