#pragma once
// CNewFolderDlg: makes a folder of the user's collection. The edit offers the
// first free "收藏夹N"; the service answers with the whole folder list, which
// the panel enters in its map.

#include <vector>

#include "collection/collection_folders.h"
#include "collection_dialogs/name_dlg.h"

namespace marrowfin {

class CNewFolderDlg : public CNameDlg {
    Q_OBJECT
public:
    // `mirrorDir` holds the folders' directories; `folders` is the panel's
    // map, for the default name.
    CNewFolderDlg(QWidget* parent, std::u16string token, std::u16string mirrorDir, const CollectionFolderMap& folders);

    // After Accepted: every folder of the service's list, each with its
    // directory and an empty block list.
    std::vector<CollectionFolder> m_folders;
    // Enters m_folders in `map`; a folder already there starts over empty.
    void EnterInto(CollectionFolderMap& map) const;

protected:
    void OnOk() override;
    QString Label() const override { return QStringLiteral("文件夹名："); }
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;

private:
    void OnAdded(const FolderListReply& reply);

    std::u16string m_token;
};

}  // namespace marrowfin
