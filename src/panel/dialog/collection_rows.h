#pragma once
// The collection's blocks for the collection search page, read from the
// service on a worker. The rows come back to the panel in a posted message
// that owns them, tagged with the generation of the load that asked, so that
// the panel can drop an answer for a page the user has already left.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "panel/model/block_row.h"
#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"

namespace marrowfin {

using CollectionRowsPayload = OwnedValue<std::vector<BlockRow>>;

struct FolderListDocument;

// One row per block of each folder; `mirror` is the user's local collection
// folder, which tells collected from remote rows.
std::vector<BlockRow> CollectionRows(const FolderListDocument& document, const std::u16string& mirror);

// Posts the rows of the user's collection (`token`) to `panel` from a worker.
void StartCollectionRowsFetch(WindowHandle panel, std::uintptr_t generation, std::u16string token,
                              std::u16string mirror);

}  // namespace marrowfin
