#pragma once
// Operations on the gallery tree. Walks skip null slots, which a rebuild may
// leave for a moment. Paths compare exactly; only the name filters fold case.

#include <string>
#include <string_view>
#include <vector>

#include "store/gallery_node.h"

namespace marrowfin {

struct GalleryStore;

bool IsFile(const GalleryNode& node);
bool IsRoot(const GalleryNode& node);

// Attaches `node` under `parent` by its kind, at the end or (atFront) first,
// the others keeping their order. A gallery (a dir owned by the root's name)
// first gets its common-use list from <path>/CommonUse.xml. False for a null node.
bool AddChild(GalleryNode* parent, GalleryNode* node, bool atFront);
// Takes the first child with the same name out of the array of the child's
// kind; nothing is freed. False when there is no such entry.
bool RemoveChild(GalleryNode* parent, const GalleryNode* child);

// Depth-first over dir children only, the node itself first.
GalleryNode* FindNodeByPath(GalleryNode* node, std::u16string_view path);
// A block by path, never a common-use entry; from the root with
// skipRootFiles set, never a recent entry either.
GalleryNode* FindBlockByPath(GalleryNode* node, std::u16string_view path, bool skipRootFiles);
// Blocks whose name contains `text`, case folded, in walk order (files first).
void FilterBlocks(GalleryNode* node, std::u16string_view text, std::vector<GalleryNode*>& out);
// As FilterBlocks, but the root's own files (the recent list) are left out,
// and a file node given directly is tested only if it is a common-use entry.
void FilterBlocksFromTop(GalleryNode* node, std::u16string_view text, std::vector<GalleryNode*>& out);

// Renames in memory only; the files on disk are the caller's business.
void RenameNode(GalleryNode* node, std::u16string_view newName);
// Frees everything below the node and releases its strings; the caller frees the node.
void DestroySubtree(GalleryNode* node);

// A gallery rebuilt in place: its children go, its path, name and boutique
// flag stay, so that pointers to the gallery survive.
void ClearChildren(GalleryNode* gallery);
// A gallery's classes put into the server's order. Each candidate whose name
// matches an old class is replaced by the old node (keeping its blocks), and
// the class is marked stale when the candidate's version is newer; a new name
// attaches the candidate and marks it stale. Old classes the server no longer
// lists are freed. Takes ownership of the candidates.
void RebuildClassList(GalleryStore& store, GalleryNode* gallery, std::vector<GalleryNode*> candidates);

}  // namespace marrowfin
