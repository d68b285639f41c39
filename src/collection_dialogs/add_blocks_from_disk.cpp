#include "collection_dialogs/add_blocks_from_disk.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include "collection/collection_calls.h"
#include "panel/classes/panel_workers.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "skin/pop_tip_dlg.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgFilesUploaded = 0x0C50;

// What the worker did: how many files landed and how many were refused.
struct UploadOutcome {
    int landed = 0;
    int refused = 0;
};

}  // namespace

CAddBlocksFromDisk::CAddBlocksFromDisk(QWidget* parent, std::u16string token, std::u16string folderPath,
                                       FolderIdLookup folderIdOf, Done done)
    : QObject(parent), m_parent(parent), m_token(std::move(token)), m_folderPath(std::move(folderPath)),
      m_folderIdOf(std::move(folderIdOf)), m_done(std::move(done)) {}

CAddBlocksFromDisk* CAddBlocksFromDisk::Start(QWidget* parent, std::u16string token, std::u16string folderPath,
                                              FolderIdLookup folderIdOf, Done done) {
    auto* run = new CAddBlocksFromDisk(parent, std::move(token), std::move(folderPath), std::move(folderIdOf),
                                       std::move(done));
    auto* files = new QFileDialog(parent, QStringLiteral("添加图块"));
    files->setOption(QFileDialog::DontUseNativeDialog);
    files->setAttribute(Qt::WA_DeleteOnClose);
    files->setFileMode(QFileDialog::ExistingFiles);
    files->setAcceptMode(QFileDialog::AcceptOpen);
    files->setNameFilter(QStringLiteral("图纸(*.DWG *.dwg)"));
    run->m_files = files;
    connect(files, &QFileDialog::filesSelected, run, &CAddBlocksFromDisk::Upload);
    connect(files, &QDialog::rejected, run, &CAddBlocksFromDisk::Finish);
    files->open();
    return run;
}

void CAddBlocksFromDisk::Upload(const QStringList& chosen) {
    const QString folder = QString::fromStdU16String(m_folderPath);
    const std::u16string folderName = QFileInfo(folder).fileName().toStdU16String();
    const std::u16string folderId = m_folderIdOf ? m_folderIdOf(folderName) : std::u16string();
    std::vector<std::u16string> files;
    for (const QString& file : chosen) files.push_back(file.toStdU16String());
    const WindowHandle self = HandleOf(this);
    const std::u16string token = m_token;
    const bool started = StartPanelWorker([self, token, folderId, folder, files] {
        UploadOutcome outcome;
        // A folder the panel has no id for takes no file.
        if (!folderId.empty()) {
            for (const std::u16string& file : files) {
                const CollectionReply reply = CollectBlockFile(token, folderId, file, CollectForce::FromDisk);
                if (reply.Is(u"3")) ++outcome.refused;
                if (!reply.Is(u"1")) continue;
                const QString source = QString::fromStdU16String(file);
                const QString target = folder + u'/' + QFileInfo(source).fileName();
                // The service has the block: the local copy follows, replacing an older one.
                if (QFile::exists(target)) (void)QFile::remove(target);
                if (QFile::copy(source, target)) ++outcome.landed;
            }
        }
        (void)PostWindowMessage(self, MsgFilesUploaded, 0, 0, std::make_unique<OwnedValue<UploadOutcome>>(outcome));
    });
    if (!started) Finish();
}

bool CAddBlocksFromDisk::event(QEvent* event) {
    if (event->type() != WindowMessageEvent::EventType()) return QObject::event(event);
    auto* message = static_cast<WindowMessageEvent*>(event);
    auto* outcome = dynamic_cast<OwnedValue<UploadOutcome>*>(message->Payload());
    if (message->Message() != MsgFilesUploaded || !outcome) return true;
    m_changed = outcome->value.landed > 0;
    ShowRefusals(outcome->value.refused);
    return true;
}

void CAddBlocksFromDisk::ShowRefusals(int left) {
    if (left <= 0) {
        Finish();
        return;
    }
    auto* tip = new CPopTipDlg(m_parent);
    tip->setAttribute(Qt::WA_DeleteOnClose);
    tip->setWindowModality(Qt::WindowModal);
    tip->Configure(QStringLiteral("Ombrel"), false, QStringLiteral("收藏失败，然后重试"), QString(),
                   QStringLiteral("确定"), QString());
    tip->OnInitDialog();
    connect(tip, &QDialog::finished, this, [this, tip, left] {
        tip->close();
        ShowRefusals(left - 1);
    });
    m_tip = tip;
    tip->open();
}

void CAddBlocksFromDisk::Finish() {
    if (m_done) m_done(m_changed);
    m_done = nullptr;
    deleteLater();
}

}  // namespace marrowfin
