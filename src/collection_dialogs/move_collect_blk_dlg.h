#pragma once
// CMoveCollectBlkDlg: moves a collected block to another folder of the
// user's collection. The folders come from the panel's map, without a
// request; the one the block lies in is never offered.

#include "collection/collection_folders.h"
#include "collection_dialogs/block_folder_dlg.h"

namespace marrowfin {

class CMoveCollectBlkDlg : public CBlockFolderDlg {
    Q_OBJECT
public:
    // `name` (the file name, ".dwg" included) and `path` of the block, its
    // preview, the user's token and the panel's folders.
    CMoveCollectBlkDlg(QWidget* parent, std::u16string name, std::u16string path, const QImage& thumbnail,
                       std::u16string token, CollectionFolderMap folders);

    // Shows the dialog modal to its parent; finished() reports Accepted once
    // the service moved the block. `m_path` is then the block's path in the
    // new folder, `m_folder` that folder's name.
    void Open();

    std::u16string m_fromFolder;  // the directory the block lies in

protected:
    void OnOk() override;
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;

private:
    void Move(bool force);
    void OnMoved(const CollectionReply& reply);

    std::u16string m_token;
    CollectionFolderMap m_folders;
};

}  // namespace marrowfin
