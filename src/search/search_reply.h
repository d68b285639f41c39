#pragma once
// The service's answer to a search: `root` with `nom`, `ver` elements naming
// class versions of the search cache, then one `item` per hit.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "search/search_hit.h"

namespace marrowfin {

struct SearchItem {
    std::u16string filename, classify, subclass, url;
    int32_t size = 0;
    bool boutique = false;  // gv="1"
};

struct SearchReply {
    bool hasRoot = false;  // a document without root is a good answer with no hits
    bool prefetch = true;  // false when root's nom is "0"
    std::vector<std::pair<std::u16string, int>> versions;  // non-empty class names with their t
    std::vector<SearchItem> items;
};

// False for an empty or unparsable text (a failed request); true otherwise.
bool ParseSearchReply(std::u16string_view text, SearchReply& out);

// The row of one item: the store's own copy when it exists (collected or
// fresh), else the search cache's (collected or fetched), else remote with
// the cache's path. `collected` holds the paths collected in this run.
SearchHit HitForItem(const SearchItem& item, const std::u16string& root, bool prefetch,
                     const std::map<std::u16string, int>& collected);

}  // namespace marrowfin
