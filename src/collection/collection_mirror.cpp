#include "collection/collection_mirror.h"

#include <set>

#include "collection/collection_calls.h"
#include "platform/files.h"

namespace marrowfin {

FolderListRead ReadFolderList(const FolderListRequest& request) {
    FolderListRead result;
    FolderListReply reply = FetchCollection(request.token, false);
    if (!reply.delivered) return result;
    if (reply.Is(u"empty")) {
        if (!AddFolder(request.token, kDefaultFolderName).delivered) return result;
        // The second read stands, whatever its fate.
        reply = FetchCollection(request.token, false);
        if (!reply.delivered) return result;
    }
    if (reply.document.shape == DocumentShape::Unparsable) {
        result.fate = CollectionReadFate::Unparsable;
        return result;
    }
    result.fate = CollectionReadFate::Read;

    if (request.wipeMirror && DirectoryExists(request.mirrorDir)) RemoveDirectoryTree(request.mirrorDir);
    (void)CreateDirectories(request.mirrorDir);
    std::set<std::u16string> ids;
    for (const ListedFolder& listed : reply.document.folders) {
        // The name becomes a directory: one that would reach outside the mirror is no folder.
        if (!IsSafePathSegment(listed.name)) continue;
        CollectionFolder folder{listed.id, listed.name, request.mirrorDir + u"/" + listed.name, {}};
        // A folder whose directory cannot be made still stands; its blocks wait for it.
        (void)CreateDirectories(folder.path);
        ids.insert(folder.id);
        result.folders.push_back(std::move(folder));
    }
    for (const auto& [id, path] : request.knownFolders) {
        if (ids.count(id)) continue;
        // A renamed folder keeps its id; only one that went leaves the disk.
        if (path.rfind(request.mirrorDir + u"/", 0) == 0) RemoveDirectoryTree(path);
    }
    return result;
}

FolderBlocksRead ReadFolderBlocks(const std::u16string& token, const CollectionFolder& folder,
                                  const std::vector<CollectedBlock>& oldBlocks) {
    FolderBlocksRead result;
    const BlockListReply reply = FetchFolderBlocks(token, folder.id);
    if (!reply.delivered) return result;
    if (reply.document.shape == DocumentShape::Unparsable) {
        result.fate = CollectionReadFate::Unparsable;
        return result;
    }
    result.fate = CollectionReadFate::Read;
    std::set<std::u16string> names;
    for (const ListedBlock& listed : reply.document.blocks) {
        if (!IsSafePathSegment(listed.filename)) continue;
        names.insert(listed.filename);
        result.blocks.push_back(
            {listed.id, listed.filename, listed.url, listed.info, folder.path + u"/" + listed.filename});
    }
    for (const CollectedBlock& old : oldBlocks)
        if (!names.count(old.filename) && IsSafePathSegment(old.filename))
            (void)RemoveFile(folder.path + u"/" + old.filename);
    return result;
}

}  // namespace marrowfin
