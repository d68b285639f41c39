#pragma once
// The common body of the collect and move dialogs: a block's picture and
// name, and a painted field naming the folder it goes to, whose list is a
// hidden ShareSelComboBox. Both outline their fields while the pointer is
// over them.

#include <QImage>

#include "collection_dialogs/collection_dialog_frame.h"

class QLineEdit;

namespace marrowfin {

class ShareSelComboBox;

class CBlockFolderDlg : public CCollectionDialogFrame {
    Q_OBJECT
public:
    // Control ids, for the tests and the panel alike.
    enum { IdNameEdit = 1001, IdFolderCombo = 1002, IdOk = 1003, IdCancel = 1004, IdClose = 1005 };

    std::u16string m_name;  // the block's name, given by the caller
    std::u16string m_path;  // its local path, given by the caller
    std::u16string m_folder;  // the folder chosen
    bool m_badName = false;  // the name failed the name rule

    ShareSelComboBox* FolderCombo() const { return m_combo; }
    QLineEdit* NameEdit() const { return m_edit; }
    QRect FolderRect() const { return m_folderRect; }
    bool HoverFolder() const { return m_hoverFolder; }
    bool HoverName() const { return m_hoverName; }

protected:
    struct BodyLook {
        QString title;
        QString pathLabel;  // "收藏到：…" or "移动到：…"
        QString okCaption;
        int buttonRowFromBottom = 45;
    };
    CBlockFolderDlg(QWidget* parent, const BodyLook& look, std::u16string name, std::u16string path,
                    const QImage& thumbnail);

    virtual void OnOk() = 0;
    // Fills the combo; `m_folder` takes the first row.
    void SetFolders(const std::vector<std::u16string>& names);

    void PaintBody(QPainter& painter) override;
    void OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                         MessagePayload* payload) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

    QLineEdit* m_edit = nullptr;
    ShareSelComboBox* m_combo = nullptr;

private:
    void UpdateHover(const QPoint& at);

    BodyLook m_body;
    QImage m_thumbnail;
    QRect m_folderRect;
    QRect m_nameRect;
    bool m_hoverFolder = false;
    bool m_hoverName = false;
};

}  // namespace marrowfin
