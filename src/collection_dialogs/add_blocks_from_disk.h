#pragma once
// Adding drawings from the disk to a collection folder: the file dialog
// "添加图块", then one upload per chosen file on a panel worker. A file the
// service took is copied into the folder's directory; one it refused with
// "3" gets a tip; other answers and lost requests pass without a word.

#include <QFileDialog>
#include <QObject>
#include <QPointer>
#include <functional>
#include <string>
#include <vector>

#include "collection/collection_messages.h"
#include "skin/pop_tip_dlg.h"

class QWidget;

namespace marrowfin {

class CAddBlocksFromDisk : public QObject {
    Q_OBJECT
public:
    // The id of a folder by its name; empty when the panel knows none.
    using FolderIdLookup = std::function<std::u16string(const std::u16string& folderName)>;
    // Called once at the end; `changed` when a file landed in the folder.
    using Done = std::function<void(bool changed)>;

    // Opens the file dialog over `parent` for the folder at `folderPath`
    // (its last component names the folder) and returns at once. The run
    // deletes itself after `done`.
    static CAddBlocksFromDisk* Start(QWidget* parent, std::u16string token, std::u16string folderPath,
                                     FolderIdLookup folderIdOf, Done done);

    QFileDialog* FileDialog() const { return m_files.data(); }
    CPopTipDlg* CurrentTip() const { return m_tip.data(); }

protected:
    bool event(QEvent* event) override;

private:
    CAddBlocksFromDisk(QWidget* parent, std::u16string token, std::u16string folderPath, FolderIdLookup folderIdOf,
                       Done done);
    void Upload(const QStringList& files);
    // Shows the tips of the refused files from `next` on, one after another, then ends.
    void ShowRefusals(size_t next);
    void Finish();

    QWidget* m_parent = nullptr;
    std::u16string m_token;
    std::u16string m_folderPath;
    FolderIdLookup m_folderIdOf;
    Done m_done;
    bool m_changed = false;
    std::vector<CollectionMessage> m_tips;
    QPointer<QFileDialog> m_files;
    QPointer<CPopTipDlg> m_tip;
};

}  // namespace marrowfin
