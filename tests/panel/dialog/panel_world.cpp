#include "panel_world.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>

#include "net/download_queue.h"
#include "panel/dialog/host_requests.h"
#include "platform/profile.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "net/gallery_sync.h"
#include "support/live_service.h"

namespace marrowfin::test {

bool RecordingHost::event(QEvent* event) {
    if (event->type() == MarrowfinHostEventType) {
        auto* request = static_cast<MarrowfinHostEvent*>(event);
        records.push_back({request->message, request->wParam, request->lParam});
        if (request->message == MARROWFIN_GALLERY_HOST_REQUEST && request->wParam == MARROWFIN_REQUEST_CHANNEL)
            *reinterpret_cast<std::u16string*>(request->lParam) = channel;
        return true;
    }
    return QWidget::event(event);
}

void ResetGalleryStore() {
    GalleryStore& store = GalleryStore::Instance();
    WaitForDownloadWorkers(std::chrono::seconds(30));
    if (store.root) {
        DestroySubtree(store.root);
        delete store.root;
        store.root = nullptr;
    }
    store.staleClasses.clear();
    store.galleryVersions.clear();
    store.galleryFetchTicks.clear();
    store.syncBusy.store(0);
}

PanelWorld::PanelWorld(const WorldOptions& options) {
    ResetGalleryStore();
    const std::string& data = SampleLibrary();
    m_names = GalleryNames(data);
    m_service = StartLiveService(data);
    WriteOptionString(u"Rate", QString::number(options.rate).toStdU16String());
    if (options.listGallery && !m_names.empty()) AddGalleryToShowList(m_names[0]);
    if (options.firstSync) BuildFirstTree(GalleryStore::Instance());
    SetApplicationMainWindow(options.attachHost ? &m_host : nullptr);
    m_panel = std::make_unique<CBrindleDlg>();
    m_panel->showMode = options.mode;
    m_panel->Create(options.parentIsHost ? &m_host : nullptr);
}

PanelWorld::~PanelWorld() {
    m_panel.reset();
    SetApplicationMainWindow(nullptr);
    ResetGalleryStore();
}

namespace {

bool SendKey(CBrindleDlg& panel, QObject* receiver, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers) {
    QKeyEvent event(type, key, modifiers);
    const bool consumed = panel.PreTranslateMessage(receiver, &event);
    // An event the panel leaves goes on to its receiver, as the host's loop does.
    if (!consumed && receiver) QCoreApplication::sendEvent(receiver, &event);
    return consumed;
}

}  // namespace

bool PressKey(CBrindleDlg& panel, QObject* receiver, int key, Qt::KeyboardModifiers modifiers) {
    return SendKey(panel, receiver, QEvent::KeyPress, key, modifiers);
}

bool ReleaseKey(CBrindleDlg& panel, QObject* receiver, int key, Qt::KeyboardModifiers modifiers) {
    return SendKey(panel, receiver, QEvent::KeyRelease, key, modifiers);
}

void ClickPanel(CBrindleDlg& panel, QPoint at) {
    const QPointF local(at);
    const QPointF global(panel.mapToGlobal(at));
    QMouseEvent press(QEvent::MouseButtonPress, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &release);
}

void Pump(int ms) {
    QElapsedTimer clock;
    clock.start();
    do {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    } while (clock.elapsed() < ms);
}

}  // namespace marrowfin::test
