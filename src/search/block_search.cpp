#include "search/block_search.h"

#include "net/http_transport.h"
#include "search/search_cache.h"
#include "search/search_reply.h"

namespace marrowfin {

std::u16string SearchRequestUrl(const std::u16string& text) {
    return ServiceBaseUrl() + u"/gallery/search_g?search_content=" + EscapeQueryValue(text) + u"&excepts=";
}

SearchOutcome RunBlockSearch(const std::u16string& root, const std::u16string& text,
                             const std::map<std::u16string, int>& collected, const std::function<bool()>& stillNewest) {
    SearchOutcome outcome;
    (void)EnsureSearchCache(root);  // a cache that cannot be made only means no row gets a file
    std::u16string reply;
    SearchReply parsed;
    // Empty form body, no token: a search is anonymous.
    if (!PostForm(SearchRequestUrl(text), u"", reply) || !ParseSearchReply(reply, parsed)) return outcome;
    if (!parsed.hasRoot) {
        outcome.kind = SearchOutcome::NoRoot;
        return outcome;
    }
    outcome.kind = SearchOutcome::Hits;
    RefreshSearchCacheVersions(root, parsed.versions);
    outcome.hits.reserve(parsed.items.size());
    for (const SearchItem& item : parsed.items) {
        SearchHit hit = HitForItem(item, root, parsed.prefetch, collected);
        if (!stillNewest()) break;
        outcome.hits.push_back(std::move(hit));
    }
    return outcome;
}

}  // namespace marrowfin
