#include "panel/classes/class_table_refresh.h"

#include "markup/markup_document.h"
#include "net/http_transport.h"
#include "panel/classes/class_table.h"
#include "panel/classes/class_table_reader.h"
#include "panel/classes/panel_workers.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/threads.h"
#include "store/store_paths.h"

namespace marrowfin {

std::u16string SortWord(int32_t galDefSort) {
    switch (galDefSort) {
        case 0: return u"def";
        case 1: return u"hot";
        case 2: return u"new";
        default: return {};
    }
}

std::u16string FetchClassTable() {
    const std::u16string url =
        ServiceBaseUrl() + u"/gallery/selpageinfo?sort=" + SortWord(GetOptionInt(u"GalDefSort", 0));
    std::u16string reply;
    if (!PostForm(url, u"", reply)) return {};
    return reply;
}

std::u16string FetchHotWords() {
    std::u16string reply;
    if (!PostForm(ServiceBaseUrl() + u"/gallery/gethotwords", u"", reply)) return {};
    return reply;
}

std::vector<std::u16string> ParseHotWords(std::u16string_view reply) {
    std::vector<std::u16string> words;
    MarkupDocument doc;
    if (reply.empty() || !doc.SetText(reply)) return words;
    while (doc.FindElement(u"root")) {
        std::vector<std::u16string> offered;
        doc.EnterElement();
        while (doc.FindElement()) {
            const std::u16string tag = doc.GetTagName();
            if (tag == u"default") {
                words.push_back(doc.GetElementText());
            } else if (tag == u"hot_words") {
                doc.EnterElement();
                while (doc.FindElement(u"item")) offered.push_back(doc.GetElementText());
                doc.LeaveElement();
            }
        }
        doc.LeaveElement();
        words.insert(words.end(), offered.begin(), offered.end());
    }
    return words;
}

void RunClassTableRefresh(WindowHandle panel) {
    // Only local strings and the cached file until the panel is told: the
    // tables themselves are read again on the panel's thread.
    const std::u16string table = FetchClassTable();
    MarkupDocument doc;
    if (!table.empty() && doc.SetText(table) && doc.FindElement(u"root")) (void)SaveClassTable(doc);
    (void)PostWindowMessage(panel, MsgClassTableRefresh, ClassTableCached, 0);

    std::vector<std::u16string> words = ParseHotWords(FetchHotWords());
    if (words.empty()) return;  // the panel keeps the words it has
    (void)PostWindowMessage(panel, MsgClassTableRefresh, HotWordsFetched, 0,
                            std::make_unique<HotWordsPayload>(std::move(words)));
}

void StartClassTableRefresh(WindowHandle panel) {
    if (StartPanelWorker([panel] { RunClassTableRefresh(panel); })) return;
    // No thread to be had: as after a failed request, the panel reapplies
    // the table it has and keeps its words.
    (void)PostWindowMessage(panel, MsgClassTableRefresh, ClassTableCached, 0);
}

}  // namespace marrowfin
