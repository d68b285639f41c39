#pragma once
// CModifyFolderDlg: renames a folder of the user's collection (mode 0) or a
// block in one (mode 1). The service renames first; the panel then renames
// the directory or file and applies the block entries the service returned.

#include <vector>

#include "collection/collection_folders.h"
#include "collection_dialogs/name_dlg.h"

namespace marrowfin {

class CModifyFolderDlg : public CNameDlg {
    Q_OBJECT
public:
    enum Mode { RenameFolderMode = 0, RenameBlockMode = 1 };

    // `parentPath` holds the folder or the block; `name` is the folder's name
    // or the block's file name (".dwg" included); `isFolder` picks the label.
    CModifyFolderDlg(QWidget* parent, std::u16string token, const CollectionFolderMap& folders,
                     std::u16string parentPath, std::u16string name, int mode, bool isFolder = true);

    int m_mode = RenameFolderMode;
    bool m_isFolder = true;

    // After Accepted in mode 1: the folder and the entries that replace the
    // block of m_oldName there.
    std::u16string m_blockFolder;
    std::vector<CollectedBlock> m_renamedBlocks;
    // In mode 1: removes the old entry from its folder in `map`, appends the new ones.
    void ApplyTo(CollectionFolderMap& map) const;

protected:
    void OnOk() override;
    QString Label() const override;
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;

private:
    void OnFolderRenamed(const CollectionReply& reply);
    void OnBlockRenamed(const BlockListReply& reply);

    std::u16string m_token;
    CollectionFolderMap m_folders;
};

}  // namespace marrowfin
