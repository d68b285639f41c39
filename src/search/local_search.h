#pragma once
// Searches over the blocks already in the store. Both read the gallery tree,
// so they run on the thread that owns it (the panel's).

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "search/search_hit.h"

namespace marrowfin {

struct GalleryNode;

// The fallback when the service cannot be reached: every block whose name
// holds `text` (case folded), without the recent list and the common-use
// entries, that has a parent and a grandparent and whose file exists. Rows
// are collected when the grandparent is "我的收藏" or the path is in
// `collected`, else fresh. `nodes` gets each hit's node, in the rows' order.
std::vector<SearchHit> LocalBlockSearch(GalleryNode* root, std::u16string_view text,
                                        const std::map<std::u16string, int>& collected,
                                        std::vector<GalleryNode*>* nodes = nullptr);

// The blocks of the old local collection (<root>/我的收藏) whose name holds
// `text`, common-use entries left out, as collected rows in found order: they
// head a service search's rows.
std::vector<SearchHit> OldCollectionHits(GalleryNode* root, std::u16string_view text);

}  // namespace marrowfin
