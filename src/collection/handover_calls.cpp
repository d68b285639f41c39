#include "collection/handover_calls.h"

#include <string>

#include "net/http_transport.h"

namespace marrowfin {

namespace {

CollectionReply Post(std::u16string_view path, std::u16string_view token, std::u16string_view more = {}) {
    CollectionReply reply;
    std::u16string url = ServiceBaseUrl() + u"/gallery/";
    url += path;
    url += u"?usertoken=";
    url += token;
    url += more;
    reply.delivered = PostForm(url, u"", reply.text);
    return reply;
}

}  // namespace

CollectionReply FetchSyncStatus(std::u16string_view token) { return Post(u"lfstatu", token); }

int QuerySyncStatus(std::u16string_view token) {
    const CollectionReply reply = FetchSyncStatus(token);
    if (!reply.delivered) return SyncUnreachable;
    return reply.text == u"1" ? SyncWorking : SyncIdle;
}

CollectionReply AnnounceOldFolders(std::u16string_view token, std::u16string_view folderNames) {
    // Folder names are the user's own: escaped so that one holding '&' or '+' arrives whole.
    return Post(u"lfsync", token, u"&fs=" + EscapeQueryValue(folderNames));
}

CollectionReply UploadCollectionArchive(std::u16string_view archivePath) {
    CollectionReply reply;
    reply.delivered = UploadFile(ServiceBaseUrl() + u"/gallery/lfupload", u"", archivePath, reply.text, 0);
    return reply;
}

void EndCollectionTransfer(std::u16string_view token) { (void)Post(u"lfupload_end", token); }

}  // namespace marrowfin
