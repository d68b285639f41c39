#pragma once
// CCollectiondlg: puts a block into one of the user's collection folders.
// It reads the folders as it opens (making "收藏夹1" for a user without one),
// and on "收藏" uploads a temporary copy of the block under its lower-cased
// name, asking before it replaces a block of that name.

#include <map>

#include "collection_dialogs/block_folder_dlg.h"

namespace marrowfin {

class CCollectiondlg : public CBlockFolderDlg {
    Q_OBJECT
public:
    // `name` and `path` of the block, its preview (null: the placeholder),
    // the user's token.
    CCollectiondlg(QWidget* parent, std::u16string name, std::u16string path, const QImage& thumbnail,
                   std::u16string token);

    // Shows the dialog modal to its parent and reads the folders; the end
    // comes by finished(): Accepted when the upload went through (or was
    // declined as a replacement), Rejected otherwise.
    void Open();

    bool m_landed = false;  // the service took the block ("1")
    std::map<std::u16string, std::u16string> m_folderIds;  // folder name -> id
    // The temporary copy that was uploaded; it stays where it is.
    std::u16string TemporaryCopy() const { return m_tempPath; }

protected:
    void OnOk() override;
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;

private:
    void OnFoldersRead(const FolderListReply& reply);
    void OnDefaultFolderMade(const FolderListReply& reply);
    void Upload(bool force);
    void OnUploaded(const CollectionReply& reply, bool force);
    void CancelAfterTip(const CollectionMessage& shown);

    std::u16string m_token;
    std::u16string m_tempPath;
};

}  // namespace marrowfin
