#pragma once
// The common body of the new-folder and rename dialogs: a label, one edit in
// a rounded box, and a red line under the title when the name was refused,
// which the next change of the text clears. Enter in the edit acts as OK.

#include "collection_dialogs/collection_dialog_frame.h"

class QLineEdit;

namespace marrowfin {

class CNameDlg : public CCollectionDialogFrame {
    Q_OBJECT
public:
    enum { IdClose = 2000, IdOk = 2001, IdCancel = 2002, IdEdit = 2010 };
    // What the line under the title says.
    enum Error { NoError = 0, NameTaken = 1, BadCharacters = 2, ServiceRefused = 3 };

    std::u16string m_parentPath;  // the directory that holds the folder or file
    std::u16string m_name;  // in: the default or old name; out: the name typed
    std::u16string m_oldName;  // m_name at the start
    int m_error = NoError;

    QLineEdit* NameEdit() const { return m_edit; }
    // Shows the dialog modal to its parent; finished() reports the end.
    void Open() { open(); }

protected:
    struct NameLook {
        QString title;
        QString okCaption;
        QString failureLine;  // the text of ServiceRefused
    };
    CNameDlg(QWidget* parent, const NameLook& look, std::u16string parentPath, std::u16string name);

    // The stripped text of the edit; empty means nothing happens.
    std::u16string TypedName() const;
    // Shows `error` under the title.
    void Refuse(int error);
    virtual void OnOk() = 0;
    virtual QString Label() const = 0;

    void PaintBody(QPainter& painter) override;

    QLineEdit* m_edit = nullptr;

private:
    NameLook m_nameLook;
};

}  // namespace marrowfin
