#include "collection_dialogs/modify_folder_dlg.h"

#include <QLineEdit>

#include "collection/name_rule.h"
#include "platform/paths.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgFolderRenamed = 0x0C40;
constexpr uint32_t MsgBlockRenamed = 0x0C41;

bool EndsWithDwg(const std::u16string& name) {
    return QString::fromStdU16String(name).endsWith(QStringLiteral(".dwg"), Qt::CaseInsensitive);
}

}  // namespace

CModifyFolderDlg::CModifyFolderDlg(QWidget* parent, std::u16string token, const CollectionFolderMap& folders,
                                   std::u16string parentPath, std::u16string name, int mode, bool isFolder)
    : CNameDlg(parent,
               NameLook{QStringLiteral("重命名"), QStringLiteral("重命名"), QStringLiteral("更改名称失败，请重试")},
               std::move(parentPath), std::move(name)),
      m_mode(mode), m_isFolder(isFolder), m_token(std::move(token)), m_folders(folders) {
    // A block's name is edited without its extension, which m_oldName keeps.
    QString shown = QString::fromStdU16String(m_name);
    if (m_mode == RenameBlockMode) shown.chop(std::min<qsizetype>(4, shown.size()));
    m_edit->setText(shown);
    m_edit->selectAll();
}

QString CModifyFolderDlg::Label() const { return m_isFolder ? QStringLiteral("文件夹名：") : QStringLiteral("图块名"); }

void CModifyFolderDlg::OnOk() {
    m_name = TypedName();
    if (m_name.empty()) return;
    if (m_mode == RenameBlockMode && !EndsWithDwg(m_name)) m_name += u".dwg";
    // An unchanged name needs no request.
    if (m_name == m_oldName) {
        reject();
        return;
    }
    if (!NamePassesRule(m_mode == RenameBlockMode ? m_name.substr(0, m_name.size() - 4) : m_name, NameUse::TypedName)) {
        Refuse(BadCharacters);
        return;
    }
    const std::u16string token = m_token;
    const std::u16string name = m_name;
    if (m_mode == RenameFolderMode) {
        const std::u16string folderId = FolderIdByName(m_folders, m_oldName);
        if (!Request<CollectionReply>(MsgFolderRenamed, [=] { return RenameFolder(token, folderId, name); }))
            OnFolderRenamed(CollectionReply{});
        return;
    }
    m_blockFolder = std::u16string(LastComponent(m_parentPath));
    const std::u16string folderId = FolderIdByName(m_folders, m_blockFolder);
    const std::u16string blockId = BlockIdByNames(m_folders, m_blockFolder, m_oldName);
    if (!Request<BlockListReply>(MsgBlockRenamed, [=] { return RenameCollectedBlock(token, folderId, blockId, name); }))
        OnBlockRenamed(BlockListReply{});
}

void CModifyFolderDlg::OnFolderRenamed(const CollectionReply& reply) {
    SetWaiting(false);
    if (!reply.delivered) return;  // the user may press again
    const CollectionMessage shown = MessageForReply(CollectionRoad::RenameFolderDialog, reply);
    if (shown.kind == CollectionMessage::DialogLine) {
        Refuse(reply.Is(u"favorites is exist") ? NameTaken : ServiceRefused);
        return;
    }
    accept();
}

void CModifyFolderDlg::OnBlockRenamed(const BlockListReply& reply) {
    SetWaiting(false);
    if (!reply.delivered || reply.text.empty()) return;
    if (reply.document.shape == DocumentShape::Unparsable) {
        if (MessageForReply(CollectionRoad::RenameBlockDialog, reply).kind == CollectionMessage::DialogLine)
            Refuse(NameTaken);
        return;
    }
    if (reply.document.shape == DocumentShape::NoRoot) {
        reject();
        return;
    }
    m_renamedBlocks.clear();
    for (const ListedBlock& listed : reply.document.blocks)
        m_renamedBlocks.push_back(
            CollectedBlock{listed.id, listed.filename, listed.url, listed.info, m_parentPath + u"/" + listed.filename});
    accept();
}

void CModifyFolderDlg::ApplyTo(CollectionFolderMap& map) const {
    if (m_mode != RenameBlockMode) return;
    for (auto& [id, folder] : map) {
        if (folder.name != m_blockFolder) continue;
        std::erase_if(folder.blocks, [this](const CollectedBlock& block) { return block.filename == m_oldName; });
        folder.blocks.insert(folder.blocks.end(), m_renamedBlocks.begin(), m_renamedBlocks.end());
        return;
    }
}

void CModifyFolderDlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                       MessagePayload* payload) {
    if (message == MsgFolderRenamed) {
        if (auto* reply = PayloadValue<CollectionReply>(payload)) OnFolderRenamed(*reply);
        return;
    }
    if (message == MsgBlockRenamed) {
        if (auto* reply = PayloadValue<BlockListReply>(payload)) OnBlockRenamed(*reply);
        return;
    }
    CNameDlg::OnWindowMessage(message, wParam, lParam, payload);
}

}  // namespace marrowfin
