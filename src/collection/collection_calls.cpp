#include "collection/collection_calls.h"

#include "net/http_transport.h"

namespace marrowfin {

namespace {

// ServiceBaseUrl() + "/gallery/" + path + query, the query's pieces joined as given.
std::u16string CallUrl(std::u16string_view path, std::initializer_list<std::u16string_view> query) {
    std::u16string url = ServiceBaseUrl() + u"/gallery/";
    url += path;
    for (std::u16string_view piece : query) url += piece;
    return url;
}

CollectionReply Post(const std::u16string& url) {
    CollectionReply reply;
    // An empty form body: everything the service needs stands in the query.
    reply.delivered = PostForm(url, u"", reply.text);
    return reply;
}

FolderListReply PostForFolders(const std::u16string& url) {
    FolderListReply reply;
    static_cast<CollectionReply&>(reply) = Post(url);
    reply.document = ParseFolderList(reply.text);
    return reply;
}

BlockListReply PostForBlocks(const std::u16string& url) {
    BlockListReply reply;
    static_cast<CollectionReply&>(reply) = Post(url);
    reply.document = ParseBlockList(reply.text);
    return reply;
}

std::u16string_view ForceWord(CollectForce force) {
    switch (force) {
        case CollectForce::Ask: return u"0";
        case CollectForce::Replace: return u"1";
        case CollectForce::FromDisk: return u"true";
        case CollectForce::Synchronise: return u"false";
    }
    return u"0";
}

}  // namespace

FolderListReply FetchFolderNames(std::u16string_view token) {
    return PostForFolders(CallUrl(u"get_u_f", {u"?usertoken=", token}));
}

FolderListReply FetchCollection(std::u16string_view token, bool withBlocks) {
    return PostForFolders(
        CallUrl(u"get_u_collect", {u"?type=client&usertoken=", token, u"&kind=dwg", withBlocks ? u"&needdwg=1" : u""}));
}

FolderListReply AddFolder(std::u16string_view token, std::u16string_view name) {
    const std::u16string escaped = EscapeQueryValue(name);
    return PostForFolders(
        CallUrl(u"favorite", {u"?type=client&usertoken=", token, u"&operate=add&favorites=", escaped}));
}

CollectionReply RenameFolder(std::u16string_view token, std::u16string_view folderId, std::u16string_view newName) {
    const std::u16string escaped = EscapeQueryValue(newName);
    return Post(CallUrl(u"favorite", {u"?type=client&usertoken=", token, u"&operate=update&favorites_id=", folderId,
                                      u"&newname=", escaped}));
}

CollectionReply DeleteFolder(std::u16string_view token, std::u16string_view folderId) {
    return Post(
        CallUrl(u"favorite", {u"?type=client&usertoken=", token, u"&favorites_id=", folderId, u"&operate=del"}));
}

BlockListReply FetchFolderBlocks(std::u16string_view token, std::u16string_view folderId) {
    return PostForBlocks(CallUrl(u"favorite_dwgs", {u"?type=client&usertoken=", token, u"&favorites_id=", folderId}));
}

CollectionReply DeleteCollectedBlock(std::u16string_view token, std::u16string_view folderId,
                                     std::u16string_view blockId) {
    return Post(CallUrl(u"dwg_collect", {u"?type=client&usertoken=", token, u"&operate=del&favorites_id=", folderId,
                                         u"&dwg_id=", blockId}));
}

CollectionReply CollectBlockFile(std::u16string_view token, std::u16string_view folderId, std::u16string_view localPath,
                                 CollectForce force, WindowHandle progressWindow) {
    CollectionReply reply;
    const std::u16string url =
        CallUrl(u"dwg_collectu", {u"?usertoken=", token, u"&favorites_id=", folderId, u"&force=", ForceWord(force)});
    // The form carries an empty parent_dir beside the file.
    reply.delivered = UploadFile(url, u"", localPath, reply.text, progressWindow);
    return reply;
}

CollectionReply MoveCollectedBlock(std::u16string_view token, std::u16string_view fromFolderId,
                                   std::u16string_view toFolderId, std::u16string_view blockId, bool force) {
    return Post(CallUrl(u"mvff", {u"?type=client&usertoken=", token, u"&ofid=", fromFolderId, u"&favorites_id=",
                                  toFolderId, u"&dwg_id=", blockId, u"&force=", force ? u"1" : u"0"}));
}

BlockListReply RenameCollectedBlock(std::u16string_view token, std::u16string_view folderId,
                                    std::u16string_view blockId, std::u16string_view newName) {
    const std::u16string escaped = EscapeQueryValue(newName);
    return PostForBlocks(CallUrl(u"cdwgrn", {u"?type=client&usertoken=", token, u"&favorites_id=", folderId,
                                             u"&dwg_id=", blockId, u"&newname=", escaped}));
}

CollectionReply ShareCollection(std::u16string_view token) { return Post(CallUrl(u"sharef", {u"?usertoken=", token})); }

}  // namespace marrowfin
