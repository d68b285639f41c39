#include "panel/dialog/collection_rows.h"

#include "markup/markup_document.h"
#include "net/http_transport.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/classes/panel_workers.h"
#include "platform/files.h"

namespace marrowfin {

namespace {

QString Q(const std::u16string& text) { return QString::fromStdU16String(text); }

}  // namespace

std::vector<BlockRow> ParseCollectionRows(std::u16string_view reply, const std::u16string& mirror) {
    std::vector<BlockRow> rows;
    MarkupDocument doc;
    (void)doc.SetText(reply);  // a text that does not parse has no root below
    if (!doc.FindElement(u"root")) return rows;
    doc.EnterElement();
    while (doc.FindElement(u"favorites")) {
        while (doc.FindChildElement(u"dwg")) {
            BlockRow row;
            const std::u16string name = doc.GetChildAttribute(u"filename");
            const std::u16string info = doc.GetChildAttribute(u"dwg_info");
            row.name = Q(name);
            row.klass = QStringLiteral("我的收藏");
            row.subclass = Q(info);
            row.url = Q(doc.GetChildAttribute(u"dwg_url"));
            row.size = Q(doc.GetChildAttribute(u"size")).toInt();
            row.boutique = doc.GetChildAttribute(u"gv") == u"1";
            row.thumbnailTried = false;
            row.prefetch = true;
            const std::u16string file = mirror + u"/" + info + u"/" + name;
            row.path = Q(file);
            row.state = FileExists(file) ? RowCollected : RowRemote;
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

void StartCollectionRowsFetch(WindowHandle panel, std::uintptr_t generation, std::u16string url,
                              std::u16string mirror) {
    StartPanelWorker([panel, generation, url = std::move(url), mirror = std::move(mirror)] {
        std::u16string reply;
        std::vector<BlockRow> rows;
        if (PostForm(url, u"", reply)) rows = ParseCollectionRows(reply, mirror);
        // A panel that is gone frees the rows with the message.
        (void)PostWindowMessage(panel, MsgCollectionRows, generation, 0,
                                std::make_unique<CollectionRowsPayload>(std::move(rows)));
    });
}

// ---- the panel's side --------------------------------------------------------

void CBrindleDlg::OnCollectionRows(std::uintptr_t generation, std::unique_ptr<MessagePayload> payload) {
    // An older load, or a page the user has left: the rows go with the message.
    if (generation != m_collectionRowsGeneration || !m_collectionRowsPending || m_page != PageCollectionSearch) return;
    m_collectionRowsPending = false;
    m_searchState = 0;
    if (auto* rows = dynamic_cast<CollectionRowsPayload*>(payload.get())) m_collectionRows = std::move(rows->value);
    // A filter asked for while the rows were on their way runs now; else the
    // page leaves its waiting state.
    if (!m_lastSearch.isEmpty()) {
        FilterCollectionRows();
    } else {
        update();
    }
}

void CBrindleDlg::ForgetCollectionRows() {
    ++m_collectionRowsGeneration;
    if (!m_collectionRowsPending) return;
    m_collectionRowsPending = false;
    m_searchState = 0;  // as a load that brought nothing would have left it
}

}  // namespace marrowfin
