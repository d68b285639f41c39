#pragma once
// Deleting a collection folder: the question "确定要删除该收藏夹所有图块么？",
// then the request on a panel worker, and a tip when it fails. The service
// drops the folder with its blocks; the panel goes back to the collection's
// root on success and its directory goes at the next reload.

#include <QObject>
#include <QPointer>
#include <functional>
#include <string>

#include "skin/pop_tip_dlg.h"

class QWidget;

namespace marrowfin {

class CDeleteFolderRun : public QObject {
    Q_OBJECT
public:
    // Called once at the end; `deleted` when the service answered "success".
    using Done = std::function<void(bool deleted)>;

    // Asks over `parent` and returns at once; the run deletes itself after `done`.
    static CDeleteFolderRun* Start(QWidget* parent, std::u16string token, std::u16string folderId, Done done);

    CPopTipDlg* CurrentTip() const { return m_tip.data(); }

protected:
    bool event(QEvent* event) override;

private:
    CDeleteFolderRun(QWidget* parent, std::u16string token, std::u16string folderId, Done done);
    void Delete();
    void Finish(bool deleted);

    QWidget* m_parent = nullptr;
    std::u16string m_token;
    std::u16string m_folderId;
    Done m_done;
    QPointer<CPopTipDlg> m_tip;
};

}  // namespace marrowfin
