#include "host_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QInputDialog>
#include <QListWidget>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

#include "drawing_sheet.h"
#include "feedback_dialog.h"
#include "panel/preview/dwg_preview.h"
#include "sign_in_dialog.h"

namespace marrowfin::demo {

namespace {

std::u16string U16(const QString& text) { return text.toStdU16String(); }

QString ModeOfRequest(uintptr_t code) {
    if (code == MARROWFIN_REQUEST_INSERT_YL) return QStringLiteral("YL");
    if (code == MARROWFIN_REQUEST_INSERT_PMMC) return QStringLiteral("PMMC");
    return {};
}

}  // namespace

HostWindow::HostWindow(const GalleryExports& exports, QStringList galleries, QWidget* parent)
    : QMainWindow(parent), m_exports(exports), m_galleries(std::move(galleries)) {
    setWindowTitle(QStringLiteral("Marrowfin demo host"));
    m_sheet = new DrawingSheet(this);
    m_sheet->setObjectName(QStringLiteral("sheet"));
    setCentralWidget(m_sheet);

    m_inserted = new QListWidget(this);
    m_inserted->setObjectName(QStringLiteral("inserted"));
    auto* dock = new QDockWidget(QStringLiteral("Inserted blocks"), this);
    dock->setObjectName(QStringLiteral("insertedDock"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(m_inserted);
    addDockWidget(Qt::RightDockWidgetArea, dock);

    BuildToolbar();
    BuildPanelMenu();
    connect(m_sheet, &DrawingSheet::blockPlaced, this, [this](int index) {
        const PlacedBlock& b = m_sheet->blocks()[static_cast<size_t>(index)];
        QString line = b.name;
        if (!b.mode.isEmpty()) line += QStringLiteral("  [%1]").arg(b.mode);
        // A host may treat blocks of boutique galleries differently; the
        // demo only marks them.
        if (m_exports.IsBlkBoutique(U16(b.path).c_str())) line += QStringLiteral("  ★");
        auto* item = new QListWidgetItem(line, m_inserted);
        item->setToolTip(b.path);
        if (!b.preview.isNull())
            item->setIcon(
                QIcon(QPixmap::fromImage(b.preview.scaled(48, 32, Qt::KeepAspectRatio, Qt::SmoothTransformation))));
        ShowStatus(QStringLiteral("Placed %1 at %2, %3").arg(b.name).arg(b.at.x()).arg(b.at.y()));
    });
    statusBar()->setObjectName(QStringLiteral("status"));
    ShowStatus(QStringLiteral("Ready"));
    resize(1100, 720);
}

QAction* HostWindow::action(const QString& objectName) const { return findChild<QAction*>(objectName); }

int HostWindow::noticesSeen(int code) const { return code >= 0 && code < 17 ? m_notices[code] : 0; }
int HostWindow::requestsSeen(int code) const { return code >= 0 && code < 9 ? m_requests[code] : 0; }

uint64_t HostWindow::PanelHandle() const { return m_exports.GetGallery ? m_exports.GetGallery() : 0; }

void HostWindow::ShowStatus(const QString& text) {
    m_lastStatus = text;
    statusBar()->showMessage(text);
}

void HostWindow::BuildToolbar() {
    QToolBar* bar = addToolBar(QStringLiteral("Gallery"));
    bar->setObjectName(QStringLiteral("toolbar"));
    bar->setMovable(false);
    auto add = [this, bar](const QString& name, const QString& text, std::function<void()> run) {
        QAction* a = bar->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, [run = std::move(run)] { run(); });
    };
    add(QStringLiteral("gallery"), QStringLiteral("Gallery"), [this] {
        m_exports.show();
        ShowStatus(QStringLiteral("Gallery shown"));
    });
    add(QStringLiteral("openClass"), QStringLiteral("Open class…"), [this] { OpenClassDialog(); });
    add(QStringLiteral("search"), QStringLiteral("Search…"), [this] { SearchDialog(); });
    add(QStringLiteral("hide"), QStringLiteral("Hide"), [this] {
        m_exports.HideGallery();
        ShowStatus(QStringLiteral("Gallery hidden"));
    });
    add(QStringLiteral("close"), QStringLiteral("Close"), [this] {
        m_exports.CloseGallery();
        ShowStatus(QStringLiteral("Gallery closed; its lists are saved"));
    });
}

void HostWindow::BuildPanelMenu() {
    m_panelMenu = menuBar()->addMenu(QStringLiteral("Panel"));
    m_panelMenu->setObjectName(QStringLiteral("panelMenu"));
    const char* orders[] = {"Open the collections entry",
                            "Attach to this window",
                            "Nothing",
                            "Hide if this is the host",
                            "Clear the mode if this is the host",
                            "Set the user…",
                            "The user signed out"};
    for (int code = 0; code <= 6; ++code) {
        QAction* a = m_panelMenu->addAction(QStringLiteral("%1  (%2)").arg(QString::fromUtf8(orders[code])).arg(code));
        a->setObjectName(QStringLiteral("control%1").arg(code));
        connect(a, &QAction::triggered, this, [this, code] { SendControl(static_cast<uintptr_t>(code)); });
    }
    m_panelMenu->addSeparator();
    QAction* reset = m_panelMenu->addAction(QStringLiteral("Open a class without showing…"));
    reset->setObjectName(QStringLiteral("resetClass"));
    connect(reset, &QAction::triggered, this, [this] {
        bool ok = false;
        const QString text = QInputDialog::getText(
            this, QStringLiteral("Open a class"), QStringLiteral("Class (我的收藏 for the collections):"),
            QLineEdit::Normal, m_galleries.isEmpty() ? QStringLiteral("我的收藏") : m_galleries.first(), &ok);
        if (!ok) return;
        m_exports.ResetClass(U16(text).c_str());
        ShowStatus(QStringLiteral("Class %1 set").arg(text));
    });
    QAction* pick = m_panelMenu->addAction(QStringLiteral("Pick galleries…"));
    pick->setObjectName(QStringLiteral("pickGalleries"));
    connect(pick, &QAction::triggered, this, [this] { m_exports.ShowBoutiqueGallery(); });
    QAction* more = m_panelMenu->addAction(QStringLiteral("Add a gallery…"));
    more->setObjectName(QStringLiteral("addGallery"));
    connect(more, &QAction::triggered, this, [this] {
        bool ok = false;
        const QString name = QInputDialog::getText(this, QStringLiteral("Add a gallery"),
                                                   QStringLiteral("Gallery name:"), QLineEdit::Normal, QString(), &ok);
        if (!ok || name.trimmed().isEmpty()) return;
        m_exports.AddMoreGallery(U16(name.trimmed()).c_str());
        ShowStatus(QStringLiteral("Gallery %1 added; the panel shows it at its next rebuild").arg(name.trimmed()));
    });
    m_panelMenu->addSeparator();
    const char* copies[] = {"Collections location…", "Location…", "Mode…", "Search…", "Token…", "User and token…"};
    for (int code = 411; code <= 416; ++code) {
        QAction* a =
            m_panelMenu->addAction(QStringLiteral("%1  (%2)").arg(QString::fromUtf8(copies[code - 411])).arg(code));
        a->setObjectName(QStringLiteral("copy%1").arg(code));
        connect(a, &QAction::triggered, this, [this, code] { SendCopyData(static_cast<uintptr_t>(code)); });
    }
}

QString HostWindow::FirstLocation() const {
    return m_galleries.isEmpty() ? QStringLiteral("\\") : QStringLiteral("\\") + m_galleries.first();
}

void HostWindow::OpenClassDialog() {
    bool ok = false;
    const QString location =
        QInputDialog::getText(this, QStringLiteral("Open class"), QStringLiteral("Location (\\gallery\\class):"),
                              QLineEdit::Normal, FirstLocation(), &ok);
    if (!ok) return;
    const QStringList modes{QStringLiteral("(ordinary)"), QStringLiteral("YL"), QStringLiteral("PMMC"),
                            QStringLiteral("UpdateShow")};
    QString mode =
        QInputDialog::getItem(this, QStringLiteral("Open class"), QStringLiteral("Mode:"), modes, 0, false, &ok);
    if (!ok) return;
    if (mode == modes.first()) mode.clear();
    m_exports.ShowGallery(U16(location).c_str(), U16(mode).c_str());
    ShowStatus(
        QStringLiteral("Opened %1%2").arg(location, mode.isEmpty() ? QString() : QStringLiteral(" in mode ") + mode));
}

void HostWindow::SearchDialog() {
    bool ok = false;
    const QString text =
        QInputDialog::getText(this, QStringLiteral("Search the gallery"), QStringLiteral("Search for:"),
                              QLineEdit::Normal, QStringLiteral("门"), &ok);
    if (!ok) return;
    m_exports.SearchBrindleRes(U16(text).c_str(), u"");
    ShowStatus(QStringLiteral("Searching for %1").arg(text));
}

void HostWindow::SendControl(uintptr_t code) {
    const uint64_t panel = PanelHandle();
    if (!panel) {
        ShowStatus(QStringLiteral("There is no panel yet: open the gallery first"));
        return;
    }
    intptr_t lParam = 0;
    if (code == MARROWFIN_CONTROL_ATTACH || code == MARROWFIN_CONTROL_HIDE || code == MARROWFIN_CONTROL_CLEAR_MODE) {
        lParam = static_cast<intptr_t>(m_exports.MarrowfinWindowOf(this));
    } else if (code == MARROWFIN_CONTROL_SET_USER) {
        bool ok = false;
        const int user = QInputDialog::getInt(this, QStringLiteral("Set the user"), QStringLiteral("User number:"),
                                              m_userId ? static_cast<int>(m_userId) : static_cast<int>(kDemoUser), -2,
                                              2147483647, 1, &ok);
        if (!ok) return;
        lParam = user;
    }
    m_exports.MarrowfinSendPanelControl(panel, code, lParam);
    ShowStatus(QStringLiteral("Sent panel order %1").arg(code));
}

void HostWindow::SendCopyData(uintptr_t code) {
    const uint64_t panel = PanelHandle();
    if (!panel) {
        ShowStatus(QStringLiteral("There is no panel yet: open the gallery first"));
        return;
    }
    QString suggestion;
    switch (code) {
        case MARROWFIN_COPY_COLLECTION_LOCATION: suggestion = QStringLiteral("\\我的收藏"); break;
        case MARROWFIN_COPY_LOCATION: suggestion = FirstLocation(); break;
        case MARROWFIN_COPY_MODE: suggestion = QStringLiteral("YL"); break;
        case MARROWFIN_COPY_SEARCH: suggestion = QStringLiteral("门"); break;
        case MARROWFIN_COPY_TOKEN: suggestion = TokenForUser(kDemoUser); break;
        default: suggestion = QStringLiteral("%1&^&%2").arg(kDemoUser).arg(TokenForUser(kDemoUser)); break;
    }
    bool ok = false;
    const QString text = QInputDialog::getText(this, QStringLiteral("Copy-data order %1").arg(code),
                                               QStringLiteral("Text:"), QLineEdit::Normal, suggestion, &ok);
    if (!ok) return;
    const intptr_t answer = m_exports.MarrowfinSendCopyData(panel, code, U16(text).c_str());
    ShowStatus(QStringLiteral("Sent copy-data order %1, answer %2").arg(code).arg(answer));
}

bool HostWindow::event(QEvent* event) {
    if (event->type() != MarrowfinHostEventType) return QMainWindow::event(event);
    auto* host = static_cast<MarrowfinHostEvent*>(event);
    if (host->message == MARROWFIN_GALLERY_HOST_REQUEST) {
        const bool answered = AnswerRequest(host->wParam, host->lParam, host);
        emit panelSpoke(QStringLiteral("request %1%2: %3")
                            .arg(host->wParam)
                            .arg(answered ? QString() : QStringLiteral(" (not answered)"), m_lastStatus));
    } else if (host->message == MARROWFIN_GALLERY_HOST_NOTICE) {
        AnswerNotice(host->lParam);
        emit panelSpoke(QStringLiteral("notice %1: %2").arg(host->lParam).arg(m_lastStatus));
    }
    return true;
}

bool HostWindow::AnswerRequest(uintptr_t code, intptr_t lParam, MarrowfinHostEvent* event) {
    if (code < 9) ++m_requests[code];
    switch (code) {
        case MARROWFIN_REQUEST_TOKEN: {
            auto* token = reinterpret_cast<std::u16string*>(lParam);
            if (token && m_userId > 1) *token = U16(TokenForUser(m_userId));
            ShowStatus(m_userId > 1 ? QStringLiteral("Token of user %1 handed over").arg(m_userId)
                                    : QStringLiteral("No user, no token"));
            return true;
        }
        case MARROWFIN_REQUEST_INSERT:
        case MARROWFIN_REQUEST_INSERT_YL:
        case MARROWFIN_REQUEST_INSERT_PMMC: {
            std::unique_ptr<std::u16string> path = event->TakeText();
            if (!path || path->empty()) {
                ShowStatus(QStringLiteral("The gallery asked to insert a block without a path"));
                return false;
            }
            InsertBlock(code, *path);
            return true;
        }
        case MARROWFIN_REQUEST_SIGN_IN: {
            auto* number = reinterpret_cast<uint32_t*>(lParam);
            SignInDialog dialog(this);
            if (dialog.exec() == QDialog::Accepted && dialog.userNumber() > 0) {
                m_userId = dialog.userNumber();
                if (number) *number = m_userId;
                ShowStatus(QStringLiteral("Signed in as %1").arg(m_userId));
            } else {
                ShowStatus(QStringLiteral("Sign-in cancelled"));
            }
            return true;
        }
        case MARROWFIN_REQUEST_PERMISSION: {
            auto* allowed = reinterpret_cast<int32_t*>(lParam);
            if (allowed) *allowed = 0;
            ShowStatus(QStringLiteral("Allowed collecting a boutique block of %1").arg(m_galleryAsked));
            return true;
        }
        case MARROWFIN_REQUEST_CHANNEL: {
            auto* channel = reinterpret_cast<std::u16string*>(lParam);
            if (channel) *channel = U16(m_channel);
            ShowStatus(QStringLiteral("Channel \"%1\" handed over").arg(m_channel));
            return true;
        }
        case MARROWFIN_REQUEST_GALLERY_NAME: {
            auto* name = reinterpret_cast<std::u16string*>(lParam);
            m_galleryAsked = name ? QString::fromStdU16String(*name) : QString();
            ShowStatus(QStringLiteral("The gallery concerned is %1").arg(m_galleryAsked));
            return true;
        }
        default: ShowStatus(QStringLiteral("Unknown gallery request %1").arg(code)); return false;
    }
}

void HostWindow::InsertBlock(uintptr_t code, const std::u16string& path16) {
    const QString path = QString::fromStdU16String(path16);
    PlacedBlock block;
    block.path = path;
    block.name = QFileInfo(path).completeBaseName();
    block.mode = ModeOfRequest(code);
    block.preview = LoadDwgPreview(path);
    m_sheet->SetPending(block);
    ShowStatus(QStringLiteral("Click on the sheet to place %1%2")
                   .arg(block.name, block.preview.isNull() ? QStringLiteral(" (no preview)") : QString()));
}

void HostWindow::AnswerNotice(intptr_t code) {
    if (code >= 0 && code < 17) ++m_notices[code];
    switch (code) {
        case MARROWFIN_NOTICE_FEEDBACK: {
            ShowStatus(QStringLiteral("The gallery asks for the feedback form"));
            if (m_feedback) {
                m_feedback->raise();
                return;
            }
            m_feedback = new FeedbackDialog(this);
            m_feedback->setAttribute(Qt::WA_DeleteOnClose);
            // Closing it, sent or not, ends the panel's wait: it waits for its
            // user number to change.
            connect(m_feedback, &QDialog::finished, this, [this](int result) {
                // Gone for good: a later notice opens a fresh form even before
                // this one is deleted.
                m_feedback = nullptr;
                const uint64_t panel = PanelHandle();
                const intptr_t user = m_userId > 0 ? static_cast<intptr_t>(m_userId) : -1;
                if (panel) m_exports.MarrowfinSendPanelControl(panel, MARROWFIN_CONTROL_SET_USER, user);
                ShowStatus(result == QDialog::Accepted ? QStringLiteral("Feedback sent")
                                                       : QStringLiteral("Feedback closed"));
            });
            m_feedback->show();
            return;
        }
        case MARROWFIN_NOTICE_FEEDBACK_WAITING:
            ShowStatus(QStringLiteral("The gallery still waits for the feedback form (%1)").arg(m_notices[code]));
            return;
        case MARROWFIN_NOTICE_STATISTICS: ShowStatus(QStringLiteral("The gallery asks for the statistics")); return;
        default: ShowStatus(QStringLiteral("Unknown gallery notice %1").arg(code)); return;
    }
}

void HostWindow::closeEvent(QCloseEvent* event) {
    // The lists are saved only by CloseGallery; a host calls it before it exits.
    if (m_exports.CloseGallery) m_exports.CloseGallery();
    QMainWindow::closeEvent(event);
}

}  // namespace marrowfin::demo
