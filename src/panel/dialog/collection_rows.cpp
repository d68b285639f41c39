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
    auto* rows = dynamic_cast<CollectionRowsPayload*>(payload.get());
    switch (m_search.TakeCollectionRows(generation, m_nav.page, rows ? &rows->value : nullptr)) {
        case CollectionRowsTaken::Dropped: return;
        case CollectionRowsTaken::Filter: FilterCollectionRows(); return;
        case CollectionRowsTaken::Wait: update(); return;
    }
}

}  // namespace marrowfin
