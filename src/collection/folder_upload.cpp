#include "collection/folder_upload.h"

#include <vector>

#include "collection/collection_calls.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace marrowfin {

namespace {

bool EndsInDwg(std::u16string_view name) {
    return name.size() >= 3 && ToLowerFold(name.substr(name.size() - 3)) == u"dwg";
}

}  // namespace

bool UploadFolderBlocks(std::u16string_view folder, const FolderIdsByName& folderIds, std::u16string_view token) {
    const std::u16string here(folder);
    const auto id = folderIds.find(FileNameOf(here));
    const std::u16string folderId = id == folderIds.end() ? std::u16string() : id->second;
    for (const FolderEntry& entry : ListFolder(here)) {
        const std::u16string path = here + u"/" + entry.name;
        if (entry.kind == FolderEntry::Directory) {
            if (!UploadFolderBlocks(path, folderIds, token)) return false;
        } else if (entry.kind == FolderEntry::File && EndsInDwg(entry.name)) {
            // Regular files only: a pipe under a drawing's name would hold the walk for ever.
            const CollectionReply reply = CollectBlockFile(token, folderId, path, CollectForce::Synchronise);
            if (!reply.delivered || reply.text == u"3") return false;
        }
    }
    return true;
}

}  // namespace marrowfin
