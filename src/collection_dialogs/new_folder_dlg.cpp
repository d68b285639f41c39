#include "collection_dialogs/new_folder_dlg.h"

#include <QLineEdit>

#include "collection/name_rule.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgFolderAdded = 0x0C30;

}  // namespace

CNewFolderDlg::CNewFolderDlg(QWidget* parent, std::u16string token, std::u16string mirrorDir,
                             const CollectionFolderMap& folders)
    : CNameDlg(parent,
               NameLook{QStringLiteral("新建文件夹"), QStringLiteral("新建"), QStringLiteral("新建文件夹失败，请重试")},
               std::move(mirrorDir), DefaultFolderName(folders)),
      m_token(std::move(token)) {
    m_edit->setText(QString::fromStdU16String(m_name));
    m_edit->selectAll();
}

void CNewFolderDlg::OnOk() {
    m_name = TypedName();
    if (m_name.empty()) return;
    if (!NamePassesRule(m_name, NameUse::TypedName)) {
        Refuse(BadCharacters);
        return;
    }
    const std::u16string token = m_token;
    const std::u16string name = m_name;
    if (!Request<FolderListReply>(MsgFolderAdded, [token, name] { return AddFolder(token, name); }))
        OnAdded(FolderListReply{});
}

void CNewFolderDlg::OnAdded(const FolderListReply& reply) {
    SetWaiting(false);
    // A lost or empty reply leaves the dialog as it is: the user may press again.
    if (!reply.delivered || reply.text.empty()) return;
    const CollectionMessage shown = MessageForReply(CollectionRoad::NewFolderDialog, reply);
    if (shown.kind == CollectionMessage::DialogLine) {
        Refuse(reply.Is(u"favorites is exist") ? NameTaken : ServiceRefused);
        return;
    }
    if (reply.document.shape == DocumentShape::Unparsable) return;
    m_folders.clear();
    for (const ListedFolder& listed : reply.document.folders)
        m_folders.push_back(CollectionFolder{listed.id, listed.name, m_parentPath + u"/" + listed.name, {}});
    accept();
}

void CNewFolderDlg::EnterInto(CollectionFolderMap& map) const {
    for (const CollectionFolder& folder : m_folders) map[folder.id] = folder;
}

void CNewFolderDlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                    MessagePayload* payload) {
    if (message == MsgFolderAdded) {
        if (auto* reply = PayloadValue<FolderListReply>(payload)) OnAdded(*reply);
        return;
    }
    CNameDlg::OnWindowMessage(message, wParam, lParam, payload);
}

}  // namespace marrowfin
