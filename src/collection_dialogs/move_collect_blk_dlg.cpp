#include "collection_dialogs/move_collect_blk_dlg.h"

#include <QFile>
#include <QLineEdit>

#include "platform/paths.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgMoved = 0x0C20;

}  // namespace

CMoveCollectBlkDlg::CMoveCollectBlkDlg(QWidget* parent, std::u16string name, std::u16string path,
                                       const QImage& thumbnail, std::u16string token, CollectionFolderMap folders)
    : CBlockFolderDlg(
          parent,
          BodyLook{QStringLiteral("移动图块"), QStringLiteral("移动到：Ombrel>我的收藏>"), QStringLiteral("移动"), 42},
          std::move(name), std::move(path), thumbnail),
      m_token(std::move(token)), m_folders(std::move(folders)) {
    m_fromFolder = std::u16string(LastComponent(ParentOf(m_path)));
    m_edit->setText(QString::fromStdU16String(m_name).remove(QStringLiteral(".dwg")));
    std::vector<std::u16string> names;
    for (const auto& [id, folder] : m_folders)
        if (folder.name != m_fromFolder) names.push_back(folder.name);
    SetFolders(names);
}

void CMoveCollectBlkDlg::Open() { open(); }

void CMoveCollectBlkDlg::OnOk() { Move(false); }

void CMoveCollectBlkDlg::Move(bool force) {
    const std::u16string token = m_token;
    const std::u16string blockId = BlockIdByNames(m_folders, m_fromFolder, m_name);
    const std::u16string fromId = FolderIdByName(m_folders, m_fromFolder);
    const std::u16string toId = FolderIdByName(m_folders, m_folder);
    if (!Request<CollectionReply>(MsgMoved, [=] { return MoveCollectedBlock(token, fromId, toId, blockId, force); }))
        OnMoved(CollectionReply{});
}

void CMoveCollectBlkDlg::OnMoved(const CollectionReply& reply) {
    SetWaiting(false);
    if (reply.Is(u"success")) {
        // A file of the block's name in the target's directory is stale: the
        // folder's next opening fetches the moved one.
        m_path =
            std::u16string(ParentOf(ParentOf(m_path))) + u"/" + m_folder + u"/" + std::u16string(LastComponent(m_path));
        const QString target = QString::fromStdU16String(m_path);
        if (QFile::exists(target)) (void)QFile::remove(target);
        accept();
        return;
    }
    const CollectionMessage shown = MessageForReply(CollectionRoad::MoveBlockDialog, reply);
    if (shown.kind != CollectionMessage::Tip) {
        reject();
        return;
    }
    ShowTip(shown, [this](int answer) {
        if (answer == 1) Move(true);
        else reject();
    });
}

void CMoveCollectBlkDlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                         MessagePayload* payload) {
    if (message == MsgMoved) {
        if (auto* reply = PayloadValue<CollectionReply>(payload)) OnMoved(*reply);
        return;
    }
    CBlockFolderDlg::OnWindowMessage(message, wParam, lParam, payload);
}

}  // namespace marrowfin
