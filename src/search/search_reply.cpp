#include "search/search_reply.h"

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "search/search_cache.h"

namespace marrowfin {

bool ParseSearchReply(std::u16string_view text, SearchReply& out) {
    out = SearchReply{};
    if (text.empty()) return false;
    MarkupDocument doc;
    if (!doc.SetText(text)) return false;
    if (!doc.FindElement(u"root")) return true;
    out.hasRoot = true;
    out.prefetch = doc.GetAttribute(u"nom") != u"0";
    while (doc.FindChildElement()) {
        const std::u16string tag = doc.GetChildTagName();
        if (tag == u"ver") {
            std::u16string name = doc.GetChildText();
            if (!name.empty()) out.versions.emplace_back(std::move(name), ParseProfileInt(doc.GetChildAttribute(u"t")));
        } else if (tag == u"item") {
            SearchItem item;
            item.filename = doc.GetChildAttribute(u"filename");
            item.classify = doc.GetChildAttribute(u"classify");
            item.subclass = doc.GetChildAttribute(u"subclass");
            item.url = doc.GetChildAttribute(u"download_url");
            item.size = ParseProfileInt(doc.GetChildAttribute(u"size"));
            item.boutique = doc.GetChildAttribute(u"gv") == u"1";
            // A hit whose names would put its file outside the store is no hit.
            if (IsSafePathSegment(item.filename) && IsSafePathSegment(item.classify) &&
                IsSafePathSegment(item.subclass))
                out.items.push_back(std::move(item));
        }
    }
    return true;
}

SearchHit HitForItem(const SearchItem& item, const std::u16string& root, bool prefetch,
                     const std::map<std::u16string, int>& collected) {
    SearchHit hit;
    hit.name = item.filename;
    hit.klass = item.classify;
    hit.subclass = item.subclass;
    hit.url = item.url;
    hit.size = item.size;
    hit.boutique = item.boutique;
    hit.prefetch = prefetch;
    const std::u16string tail = u"/" + item.classify + u"/" + item.subclass + u"/" + item.filename;
    const std::u16string stored = root + tail;
    if (FileExists(stored)) {
        hit.path = stored;
        hit.state = collected.count(stored) ? RowCollected : RowFresh;
        return hit;
    }
    hit.path = root + u"/search" + tail;
    if (FileExists(hit.path)) hit.state = collected.count(hit.path) ? RowCollected : RowFetched;
    else hit.state = RowRemote;
    return hit;
}

}  // namespace marrowfin
