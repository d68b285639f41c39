#include "collection_dialogs/collectiondlg.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>

#include "collection/name_rule.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

// The worker answers, each posted with its reply as the payload.
constexpr uint32_t MsgFoldersRead = 0x0C10;
constexpr uint32_t MsgDefaultFolderMade = 0x0C11;
constexpr uint32_t MsgUploaded = 0x0C12;
constexpr uint32_t MsgUploadedForced = 0x0C13;

}  // namespace

CCollectiondlg::CCollectiondlg(QWidget* parent, std::u16string name, std::u16string path, const QImage& thumbnail,
                               std::u16string token)
    : CBlockFolderDlg(
          parent,
          BodyLook{QStringLiteral("收藏图块"), QStringLiteral("收藏到：Ombrel>我的收藏>"), QStringLiteral("收藏"), 45},
          std::move(name), std::move(path), thumbnail),
      m_token(std::move(token)) {
    m_edit->setText(QString::fromStdU16String(m_name));
}

void CCollectiondlg::Open() {
    open();
    const std::u16string token = m_token;
    if (!Request<FolderListReply>(MsgFoldersRead, [token] { return FetchFolderNames(token); }))
        OnFoldersRead(FolderListReply{});
}

void CCollectiondlg::CancelAfterTip(const CollectionMessage& shown) {
    ShowTip(shown, [this](int) { reject(); });
}

void CCollectiondlg::OnFoldersRead(const FolderListReply& reply) {
    SetWaiting(false);
    if (!reply.delivered) {
        CancelAfterTip(MessageForReply(CollectionRoad::CollectDialogOpen, reply));
        return;
    }
    const FolderListDocument& document = reply.document;
    if (document.shape == DocumentShape::NoRoot ||
        (document.shape == DocumentShape::Root && document.folders.empty())) {
        const std::u16string token = m_token;
        if (!Request<FolderListReply>(MsgDefaultFolderMade, [token] { return AddFolder(token, kDefaultFolderName); }))
            OnDefaultFolderMade(FolderListReply{});
        return;
    }
    // An empty or unparsable text leaves the list empty; the dialog goes on.
    std::vector<std::u16string> names;
    for (const ListedFolder& folder : document.folders) {
        if (!m_folderIds.contains(folder.name)) names.push_back(folder.name);
        m_folderIds.emplace(folder.name, folder.id);
    }
    SetFolders(names);
}

void CCollectiondlg::OnDefaultFolderMade(const FolderListReply& reply) {
    SetWaiting(false);
    if (!reply.delivered) {
        CancelAfterTip(MessageForReply(CollectionRoad::CollectDialogOpen, reply));
        return;
    }
    // The new folder's id stands in the reply when it is the folder list;
    // without it the upload names no folder, which the service takes as the first.
    for (const ListedFolder& folder : reply.document.folders)
        if (folder.name == kDefaultFolderName) m_folderIds.emplace(folder.name, folder.id);
    SetFolders({std::u16string(kDefaultFolderName)});
}

void CCollectiondlg::OnOk() {
    std::u16string typed = m_edit->text().toStdU16String();
    m_badName = !NamePassesRule(typed, NameUse::CollectedBlock);
    update(ScaleRect(164, 38, 380, 58));

    QString fileName = QString::fromStdU16String(typed).toLower();
    if (!fileName.endsWith(QStringLiteral(".dwg"))) fileName += QStringLiteral(".dwg");
    const QString temporary = QDir(QDir::tempPath()).filePath(fileName);
    m_tempPath = temporary.toStdU16String();

    const QString source = QString::fromStdU16String(m_path);
    if (QFile::exists(temporary)) (void)QFile::remove(temporary);  // the copy replaces an older one
    if (source.isEmpty() || !QFile::copy(source, temporary)) {
        reject();
        return;
    }
    Upload(false);
}

void CCollectiondlg::Upload(bool force) {
    const auto id = m_folderIds.find(m_folder);
    const std::u16string folderId = id == m_folderIds.end() ? std::u16string() : id->second;
    const std::u16string token = m_token;
    const std::u16string file = m_tempPath;
    const CollectForce how = force ? CollectForce::Replace : CollectForce::Ask;
    if (!Request<CollectionReply>(force ? MsgUploadedForced : MsgUploaded, [token, folderId, file, how] {
            return CollectBlockFile(token, folderId, file, how);
        }))
        OnUploaded(CollectionReply{}, force);
}

void CCollectiondlg::OnUploaded(const CollectionReply& reply, bool force) {
    SetWaiting(false);
    if (reply.Is(u"1")) {
        m_landed = true;
        accept();
        return;
    }
    const CollectionMessage shown =
        MessageForReply(force ? CollectionRoad::CollectDialogReplace : CollectionRoad::CollectDialogUpload, reply);
    if (shown.kind != CollectionMessage::Tip) {
        accept();  // any other word: the dialog ends as done, without the success prompt
        return;
    }
    if (!reply.delivered || reply.Is(u"3")) {
        CancelAfterTip(shown);
        return;
    }
    // "2": a block of that name lies in the folder.
    ShowTip(shown, [this](int answer) {
        if (answer == 1) Upload(true);
        else accept();
    });
}

void CCollectiondlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                     MessagePayload* payload) {
    switch (message) {
        case MsgFoldersRead:
            if (auto* reply = PayloadValue<FolderListReply>(payload)) OnFoldersRead(*reply);
            return;
        case MsgDefaultFolderMade:
            if (auto* reply = PayloadValue<FolderListReply>(payload)) OnDefaultFolderMade(*reply);
            return;
        case MsgUploaded:
        case MsgUploadedForced:
            if (auto* reply = PayloadValue<CollectionReply>(payload)) OnUploaded(*reply, message == MsgUploadedForced);
            return;
        default: CBlockFolderDlg::OnWindowMessage(message, wParam, lParam, payload);
    }
}

}  // namespace marrowfin
