#pragma once
// One search run against the service, made on a worker: the request, the
// reply, the cache's versions and the hits. The caller passes a test of
// whether its run is still the newest; a run that is not stages nothing more.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "search/search_hit.h"

namespace marrowfin {

// ServiceBaseUrl() + "/gallery/search_g?search_content=<text>&excepts=", the
// text as typed but for the marks that would cut the value short (% & + = # ;),
// escaped; the transport escapes what a URL cannot carry.
std::u16string SearchRequestUrl(const std::u16string& text);

struct SearchOutcome {
    enum Kind {
        Failed,  // no answer, an empty one or one that does not parse
        NoRoot,  // an answer without root: no hits, and the old collection is not searched
        Hits,  // `hits` in the service's order (possibly none)
    };
    Kind kind = Failed;
    std::vector<SearchHit> hits;
};

// Runs the request for `text` under the store root `root` (creates the
// cache, applies the reply's class versions, builds the hits). `stillNewest`
// is asked before each hit is staged; once false, no more are.
SearchOutcome RunBlockSearch(const std::u16string& root, const std::u16string& text,
                             const std::map<std::u16string, int>& collected, const std::function<bool()>& stillNewest);

}  // namespace marrowfin
