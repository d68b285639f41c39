#include "panel/dialog/collection_rows.h"

#include "collection/collection_calls.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/classes/panel_workers.h"
#include "platform/product_texts.h"
#include "platform/files.h"
#include "platform/qt/qt_text.h"
#include "search/search_cache.h"

namespace marrowfin {

std::vector<BlockRow> CollectionRows(const FolderListDocument& document, const std::u16string& mirror) {
    std::vector<BlockRow> rows;
    for (const ListedFolder& folder : document.folders) {
        for (const ListedBlock& block : folder.blocks) {
            // A name that would reach outside the mirror is no row.
            if (!IsSafePathSegment(block.info) || !IsSafePathSegment(block.filename)) continue;
            BlockRow row;
            row.name = ToQString(block.filename);
            row.klass = ToQString(kCollectionText);
            row.subclass = ToQString(block.info);
            row.url = ToQString(block.url);
            row.size = block.size;
            row.boutique = block.boutique;
            const std::u16string file = mirror + u"/" + block.info + u"/" + block.filename;
            row.path = ToQString(file);
            row.state = FileExists(file) ? RowCollected : RowRemote;
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

void StartCollectionRowsFetch(WindowHandle panel, std::uintptr_t generation, std::u16string token,
                              std::u16string mirror) {
    StartPanelWorker([panel, generation, token = std::move(token), mirror = std::move(mirror)] {
        const FolderListReply reply = FetchCollection(token, true);
        std::vector<BlockRow> rows;
        if (reply.delivered) rows = CollectionRows(reply.document, mirror);
        // A panel that is gone frees the rows with the message.
        (void)PostWindowMessage(panel, MsgCollectionRows, generation, 0,
                                std::make_unique<CollectionRowsPayload>(std::move(rows)));
    });
}

// ---- the panel's side --------------------------------------------------------

void CBrindleDlg::OnCollectionRows(std::uintptr_t generation, std::unique_ptr<MessagePayload> payload) {
    // An older load, or a page the user has left: the rows go with the message.
    if (generation != m_collectionRowsGeneration || !m_collectionRowsPending || m_nav.page != PageCollectionSearch)
        return;
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
