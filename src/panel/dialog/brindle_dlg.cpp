#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/search_road.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLineEdit>
#include <QPainter>
#include <QScreen>

#include <unordered_map>

#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "net/http_stack.h"
#include "panel/classes/class_table_refresh.h"
#include "panel/classes/panel_workers.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/collection_rows.h"
#include "panel/dialog/download_progress.h"
#include "panel/dialog/host_requests.h"
#include "panel/dialog/hot_words.h"
#include "panel/model/panel_numbers.h"
#include "panel/dialog/start_up.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/paint/panel_painter.h"
#include "picker/sel_class_dlg.h"
#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "skin/pop_tip_dlg.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/tree_update.h"
#include "store/store_paths.h"

namespace marrowfin {

CBrindleDlg::CBrindleDlg() : QWidget(nullptr) {}

// Child widgets go with the window; rows hold their thumbnails by value.
CBrindleDlg::~CBrindleDlg() {
    // The children outlive this part of the object: the edit's last focus-out
    // must not reach handlers that read the panel's fields.
    delete m_searchEdit;
    m_searchEdit = nullptr;
    // An open manager goes first, while the panel it hands top-most back to is whole.
    delete m_manager.data();
}

bool CBrindleDlg::Create(QWidget* parent) {
    if (m_created) return false;
    m_created = true;
    m_parent = parent;
    Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
    if (parent) flags |= Qt::Tool;
    setParent(parent, flags);
    InstallQtWindowSystem();
    (void)HandleOf(this);  // registered now, so that timers and posts reach the window from the first step
    OnInitDialog();
    return true;
}

WindowHandle CBrindleDlg::Handle() { return HandleOf(this); }

void CBrindleDlg::ShowPanel() { show(); }

void CBrindleDlg::HidePanel() {
    m_tabDown = false;  // its release goes elsewhere once the panel is hidden
    m_dragging = false;
    hide();
}

bool CBrindleDlg::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        message->result = OnMessage(message->Message(), message->WParam(), message->LParam(), message->TakePayload());
        return true;
    }
    if (DragEvent(event)) return true;
    return QWidget::event(event);
}

std::intptr_t CBrindleDlg::OnMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t lParam,
                                     std::unique_ptr<MessagePayload> payload) {
    switch (message) {
        case WM_TIMER_MESSAGE: OnTimer(wParam); return 0;
        case MsgPanelCommand: OnPanelCommand(wParam, lParam); return 0;
        case MsgPanelEvent: OnPanelEvent(wParam, lParam, std::move(payload)); return 0;
        case GalleryPanelControl: return OnPanelControl(wParam, lParam);
        case WM_COPYDATA_MESSAGE:
            // A null record goes to the default handling, which answers 0.
            if (lParam == 0) return 0;
            return OnCopyData(reinterpret_cast<const CopyDataStruct*>(lParam));
        case MsgProgress: (void)ShowDownloadProgress(*this, wParam, lParam); return 0;
        case MsgClassTableRefresh: OnClassTableRefresh(wParam, std::move(payload)); return 0;
        case MsgTreeUpdate: OnTreeUpdate(); return 0;
        case MsgSearchOutcome: OnSearchOutcome(static_cast<int>(wParam), std::move(payload)); return 0;
        case MsgAdTiles: AdoptAdTiles(*this, std::move(payload)); return 0;
        case MsgCollectionRows: OnCollectionRows(wParam, std::move(payload)); return 0;
        case MsgWorkerAnswer:
            if (auto* answer = dynamic_cast<WorkerAnswer*>(payload.get())) answer->deliver();
            return 0;
        case MsgFileReady:
            // The store's queue hands over the path; it is freed on return.
            if (auto* path = dynamic_cast<OwnedText*>(payload.get())) ThumbFileReady(*this, path->value);
            return 0;
        default: return 0;
    }
}

void CBrindleDlg::OnInitDialog() {
    // The window icon, from the skin folder's drawn icon at several sizes.
    QIcon icon;
    for (const char* stem : {"panel_icon_16", "panel_icon_32", "panel_icon_48", "panel_icon_128"}) {
        const QImage& picture = SkinPicture(QString::fromLatin1(stem), false);
        if (!picture.isNull()) icon.addPixmap(QPixmap::fromImage(picture));
    }
    if (!icon.isNull()) setWindowIcon(icon);

    // 2, 3. Scale, fonts and the skin sheet; a missing sheet only leaves the pictures out.
    InitSkinScaleFromScreen();
    (void)LoadSkinSheet();

    // The class table.
    StartUpClassTable(*this);

    // Size, place and caption.
    resize(ScaleUnits(755), ScaleUnits(454));
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect desk = screen->availableGeometry();
        move(desk.left() + (desk.width() - width()) / 2, desk.top() + (desk.height() - height()) / 2);
    }
    setWindowTitle(QStringLiteral("Ombrel_Panel"));

    // Tool tips are Qt's own; the controls in the table's order.
    CreateControls();
    WireThumbList(*this);

    // The first tree: taken now if it came, else its arrival (MsgTreeUpdate)
    // continues the start, and the panel stays usable meanwhile.
    m_store = &GalleryStore::Instance();
    SetTreeNotifyWindow(Handle());
    (void)AdoptTreeUpdates(*m_store);
    m_treeWaiting = m_store->syncBusy.load() != 0;

    // No Show.xml yet: the user has picked no gallery. The panel starts
    // with the empty tree while the manager is open; its end reloads the store.
    if (!FileExists(ShowListPath())) {
        RebuildTree();
        (void)RunClassManager([this](int, bool wantSearch) {
            RebuildTree();
            if (wantSearch) GoToPage(PageSearch);
        });
    }

    // The host's main window and its channel text.
    hostWindow = HandleOf(ApplicationMainWindow());
    std::u16string channel;
    if (hostWindow != 0) SendHostRequest(hostWindow, MARROWFIN_REQUEST_CHANNEL, &channel);
    m_hostChannel = channel;

    // The cached tiles, and their refresh on a worker with the channel text.
    StartAdTiles(*this);

    // The hourly class-table refresh and the first build of the class list.
    SetTimer(Handle(), kTimerHourlyRefresh, kHourlyRefreshMs);
    KillTimer(Handle(), kTimerBuildClassList);
    if (m_nav.page != PageSearch) SetTimer(Handle(), kTimerBuildClassList, kFirstClassListMs);

    // "UpdateShow" leaves the panel hidden, ready for the host.
    if (showMode == u"UpdateShow") HidePanel();
}

void CBrindleDlg::RebuildTree() {
    if (!m_store) return;
    if (!StartFirstTree(*m_store)) return;  // no worker: the tree in hand stays
    m_treeWaiting = true;
}

void CBrindleDlg::OnTreeUpdate() {
    if (!m_store) return;
    for (const TreeChange& change : AdoptTreeUpdates(*m_store)) {
        switch (change.kind) {
            case TreeUpdateKind::FirstTree:
                m_treeWaiting = false;
                // The class list is rebuilt from the new galleries and the class reopened.
                SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
                break;
            case TreeUpdateKind::GalleryFull:
                if (!m_routeGallery.empty() && change.gallery == m_routeGallery) {
                    // A route's class has come: the column lists it and the class
                    // opens, unless the user has gone elsewhere meanwhile.
                    m_routeGallery.clear();
                    if (m_nav.curClassPath == m_routeTarget) SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
                    break;
                }
                if (!m_galleryFetchPending) break;
                m_galleryFetchPending = false;
                if (CSkinButton* download = Button(ControlId::DownloadGallery)) download->setEnabled(true);
                if (!change.ok) {
                    CPopTipDlg tip(this);
                    tip.Configure(ToQString(kProductTitle), false, ToQString(kGalleryFetchFailed), QString(),
                                  QStringLiteral("确定"), QString());
                    (void)tip.DoModal();  // one button: the answer changes nothing
                }
                SetTimer(Handle(), kTimerBuildClassList, kClassListMs);
                break;
            case TreeUpdateKind::ClassSummary:
                if (change.gallery != m_nav.summaryPending) break;
                m_nav.summaryPending.clear();
                // Still on that gallery: its classes are shown now, fetched or not.
                if (m_classList && m_nav.classIndex >= 2 &&
                    m_classList->GetItemText(m_nav.classIndex).toStdU16String() == change.gallery)
                    ShowGalleryClasses(m_nav.classIndex, m_store->root->Path() + u"/" + change.gallery);
                break;
            case TreeUpdateKind::ClassItems:
                if (change.classPath != m_nav.itemsPending) break;
                m_nav.itemsPending.clear();
                if (m_nav.curClassPath == change.classPath && OpenedSubclass())
                    ListSubclass(OpenedSubclass(), change.classPath);
                break;
        }
    }
    RelistNodes();
}

void CBrindleDlg::RelistNodes() {
    if (!m_store) return;
    // The local hits are made anew by the next search.
    if (!m_search.localHits.Valid(*m_store)) m_search.localHits.Reset(*m_store);
    if (m_nav.listNodes.Valid(*m_store)) return;
    m_nav.listNodes.Reset(*m_store);
    if (!m_store->root || !m_pThumbList || m_nav.curClassPath.empty()) return;
    GalleryNode* container = FindNodeByPath(m_store->root, m_nav.curClassPath);
    if (!container) return;
    std::unordered_map<std::u16string, GalleryNode*> byPath;
    for (GalleryNode* child : container->fileChildren)
        if (child) byPath.emplace(child->Path(), child);
    for (int item = 0; item < m_pThumbList->GetItemCount(); ++item) {
        const auto it = byPath.find(std::u16string(m_pThumbList->GetPath(item)));
        m_nav.listNodes.Add(it == byPath.end() ? nullptr : it->second);
    }
}

void CBrindleDlg::paintEvent(QPaintEvent* event) {
    (void)event;
    QPainter painter(this);
    PanelPaintState state;
    state.page = m_nav.page;
    state.classIndex = m_nav.classIndex;
    state.itemCount = m_nav.itemCount;
    state.syncStatus = m_nav.syncStatus;
    state.emptySubclassOpened = m_nav.emptySubclassOpened;
    state.selectedName = m_nav.selectedName;
    state.searchUntouched = m_search.searchUntouched;
    state.searchState = m_search.searchState;
    state.rowCount = static_cast<int>(m_search.rows.size());
    state.defaultHotWord = g_defaultHotWord;
    state.searchEnded = SearchEnded();
    PaintPanel(painter, size(), state);
}

}  // namespace marrowfin
