#include "collection/collection_messages.h"

#include "platform/product_texts.h"

namespace marrowfin {

namespace {

CollectionMessage Line(CollectionMessage::Kind kind, std::u16string text) {
    CollectionMessage m;
    m.kind = kind;
    m.text = std::move(text);
    return m;
}

CollectionMessage Tip(std::u16string title, std::u16string text, std::u16string second = {},
                      std::u16string accept = u"确定", std::u16string decline = {}) {
    return {CollectionMessage::Tip, std::move(title),  std::move(text),
            std::move(second),      std::move(accept), std::move(decline)};
}

const char16_t kLoadFailed[] = u"加载失败，请连接网络后重试";
const char16_t kNameTaken[] = u"已有此文件，请修改";
const char16_t kNetworkTrouble[] = u"网络异常，请检查网络后重试";
const char16_t kSameName[] = u"此位置包含同名图块";

}  // namespace

CollectionMessage MessageForReply(CollectionRoad road, const CollectionReply& reply) {
    const bool lost = !reply.delivered;
    switch (road) {
        case CollectionRoad::LoadCollection:
            // "empty" is a good answer: the caller makes the default folder.
            if (lost || (!reply.Is(u"empty") && ParseFolderList(reply.text).shape == DocumentShape::Unparsable))
                return Line(CollectionMessage::StatusLine, kLoadFailed);
            break;
        case CollectionRoad::LoadDefaultFolder:
            if (lost) return Line(CollectionMessage::StatusLine, kLoadFailed);
            break;
        case CollectionRoad::CheckOldCollection:
            if (lost) return Tip(kProductTitle, u"收藏失败", u"请先连接网络，然后重试");
            break;
        case CollectionRoad::CollectDialogOpen:
            if (lost) return Tip(kCollectTitle, kNetworkTrouble);
            break;
        case CollectionRoad::NewFolderDialog:
        case CollectionRoad::RenameFolderDialog:
            if (reply.Is(u"favorites is exist")) return Line(CollectionMessage::DialogLine, kNameTaken);
            if (reply.Is(u"error"))
                return Line(CollectionMessage::DialogLine, road == CollectionRoad::NewFolderDialog
                                                               ? u"新建文件夹失败，请重试"
                                                               : u"更改名称失败，请重试");
            break;
        case CollectionRoad::FolderDeletion:
            if (lost) return Tip(u"删除文件夹", u"删除失败，请检查网络");
            if (!reply.Is(u"success")) return Tip(u"删除文件夹", u"删除失败，请重试");
            break;
        case CollectionRoad::BlockDeletion:
            if (lost) return Tip(u"删除图块", u"删除失败", u"请检查网络后重试");
            if (!reply.Is(u"success")) return Tip(u"删除图块", u"删除失败，请重试");
            break;
        case CollectionRoad::CollectDialogUpload:
            if (lost) return Tip(kCollectTitle, kNetworkTrouble);
            if (reply.Is(u"2")) return Tip(kCollectTitle, kSameName, u"是否替换", u"替换", u"取消");
            if (reply.Is(u"3")) return Tip(kCollectTitle, u"图块收藏失败，请重试。");
            break;
        case CollectionRoad::CollectDialogReplace: break;  // with force 1 no reply is looked at
        case CollectionRoad::AddFromDisk:
            if (reply.Is(u"3")) return Tip(kProductTitle, u"收藏失败，然后重试");
            break;
        case CollectionRoad::MoveBlockDialog:
            if (reply.Is(u"filename is exist"))
                return Tip(u"移动图块", kSameName, u"是否要替换？", u"替换", u"取消移动");
            break;
        case CollectionRoad::RenameBlockDialog:
            if (reply.Is(u"file is not exist") || reply.Is(u"filename is exist"))
                return Line(CollectionMessage::DialogLine, kNameTaken);
            break;
    }
    return {};
}

}  // namespace marrowfin
