#include "collection_dialogs/add_blocks_from_disk.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

#include "collection/collection_messages.h"
#include "collection_dialogs/collection_tip.h"
#include "panel/classes/panel_workers.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgFilesUploaded = 0x0C50;

// What the worker did: how many files landed, and the tip of each refused one.
struct UploadOutcome {
    int landed = 0;
    std::vector<CollectionMessage> tips;
};

}  // namespace

CAddBlocksFromDisk::CAddBlocksFromDisk(QWidget* parent, std::u16string token, std::u16string folderPath,
                                       FolderIdLookup folderIdOf, Done done)
    : QObject(parent), m_parent(parent), m_token(std::move(token)), m_folderPath(std::move(folderPath)),
      m_folderIdOf(std::move(folderIdOf)), m_done(std::move(done)) {}

CAddBlocksFromDisk* CAddBlocksFromDisk::Start(QWidget* parent, std::u16string token, std::u16string folderPath,
                                              FolderIdLookup folderIdOf, Done done) {
    auto* run =
        new CAddBlocksFromDisk(parent, std::move(token), std::move(folderPath), std::move(folderIdOf), std::move(done));
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
                const CollectionMessage shown = MessageForReply(CollectionRoad::AddFromDisk, reply);
                if (shown.kind == CollectionMessage::Tip) outcome.tips.push_back(shown);
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
    m_tips = std::move(outcome->value.tips);
    ShowRefusals(0);
    return true;
}

void CAddBlocksFromDisk::ShowRefusals(size_t next) {
    if (next >= m_tips.size()) {
        Finish();
        return;
    }
    m_tip = OpenCollectionTip(m_parent, m_tips[next], this, [this, next](int) { ShowRefusals(next + 1); });
}

void CAddBlocksFromDisk::Finish() {
    if (m_done) m_done(m_changed);
    m_done = nullptr;
    deleteLater();
}

}  // namespace marrowfin
