#pragma once
// The file-by-file way of handing the old collection over, taken when the
// folder cannot be packed: every drawing is collected on its own.

#include <map>
#include <string>
#include <string_view>

namespace marrowfin {

// Folder name -> folder id, as get_u_f names the user's folders.
using FolderIdsByName = std::map<std::u16string, std::u16string>;

// Walks `folder` depth first in listing order and collects each file whose
// name ends in "dwg" (any case) into the folder named like the directory it
// lies in (an empty id when the service has none of that name, which the
// service takes for the user's first folder). A failed request or the reply
// "3" ends the walk with false; other replies go on.
bool UploadFolderBlocks(std::u16string_view folder, const FolderIdsByName& folderIds, std::u16string_view token);

}  // namespace marrowfin
