#include "collection_dialogs/delete_folder_run.h"

#include "collection/collection_calls.h"
#include "collection_dialogs/collection_tip.h"
#include "panel/classes/panel_workers.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"

namespace marrowfin {

namespace {

constexpr uint32_t MsgFolderDeleted = 0x0C60;

}  // namespace

CDeleteFolderRun::CDeleteFolderRun(QWidget* parent, std::u16string token, std::u16string folderId, Done done)
    : QObject(parent), m_parent(parent), m_token(std::move(token)), m_folderId(std::move(folderId)),
      m_done(std::move(done)) {}

CDeleteFolderRun* CDeleteFolderRun::Start(QWidget* parent, std::u16string token, std::u16string folderId, Done done) {
    auto* run = new CDeleteFolderRun(parent, std::move(token), std::move(folderId), std::move(done));
    CollectionMessage question;
    question.kind = CollectionMessage::Tip;
    question.title = u"删除文件夹";
    question.text = u"确定要删除该收藏夹所有图块么？";
    question.accept = u"删除";
    question.decline = u"取消";
    run->m_tip = OpenCollectionTip(parent, question, run, [run](int answer) {
        if (answer == 1) run->Delete();
        else run->Finish(false);
    });
    return run;
}

void CDeleteFolderRun::Delete() {
    const WindowHandle self = HandleOf(this);
    const std::u16string token = m_token;
    const std::u16string folderId = m_folderId;
    const bool started = StartPanelWorker([self, token, folderId] {
        // A run gone by now has a dead handle: the answer is dropped with its message.
        (void)PostWindowMessage(self, MsgFolderDeleted, 0, 0,
                                std::make_unique<OwnedValue<CollectionReply>>(DeleteFolder(token, folderId)));
    });
    if (!started)
        (void)PostWindowMessage(self, MsgFolderDeleted, 0, 0,
                                std::make_unique<OwnedValue<CollectionReply>>(CollectionReply{}));
}

bool CDeleteFolderRun::event(QEvent* event) {
    if (event->type() != WindowMessageEvent::EventType()) return QObject::event(event);
    auto* message = static_cast<WindowMessageEvent*>(event);
    auto* reply = dynamic_cast<OwnedValue<CollectionReply>*>(message->Payload());
    if (message->Message() != MsgFolderDeleted || !reply) return true;
    if (reply->value.Is(u"success")) {
        Finish(true);
        return true;
    }
    // Nothing changed: the tip says why, then the run ends.
    m_tip = OpenCollectionTip(m_parent, MessageForReply(CollectionRoad::FolderDeletion, reply->value), this,
                              [this](int) { Finish(false); });
    return true;
}

void CDeleteFolderRun::Finish(bool deleted) {
    if (m_done) m_done(deleted);
    m_done = nullptr;
    deleteLater();
}

}  // namespace marrowfin
