#include "demo_tour.h"
#include "sample_galleries.h"

#include <QApplication>
#include <QDateTime>
#include <QAbstractButton>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QSet>
#include <QWindow>
#include <QtTest/QTest>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "drawing_sheet.h"
#include "feedback_dialog.h"
#include "host_window.h"
#include "sign_in_dialog.h"

namespace marrowfin::demo {

namespace {

constexpr int kPollMs = 50;
const char kPanelTitle[] = "Ombrel_Panel";

bool ClassIs(const QObject* object, const char* className) {
    const QByteArray name = object->metaObject()->className();
    return name == className || name.endsWith(QByteArray("::") + className);
}

}  // namespace

QWidget* FindPanelWidget() {
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->windowTitle() == QLatin1String(kPanelTitle)) return w;
    }
    return nullptr;
}

QWidget* FindPanelChild(QWidget* panel, const char* className) {
    if (!panel) return nullptr;
    for (QWidget* w : panel->findChildren<QWidget*>()) {
        if (ClassIs(w, className)) return w;
    }
    return nullptr;
}

int DistinctColours(const QImage& image, int stopAt) {
    if (image.isNull()) return 0;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    QSet<QRgb> seen;
    // Every pixel of a small shot, a sampling grid of a large one.
    const int step = rgb.width() * rgb.height() > 400000 ? 3 : 1;
    for (int y = 0; y < rgb.height(); y += step) {
        const QRgb* line = reinterpret_cast<const QRgb*>(rgb.constScanLine(y));
        for (int x = 0; x < rgb.width(); x += step) {
            seen.insert(line[x]);
            if (seen.size() >= stopAt) return static_cast<int>(seen.size());
        }
    }
    return static_cast<int>(seen.size());
}

namespace {

void RightClickAt(QWidget* widget, QPoint pos) {
    QWidget* top = widget->window();
    QWindow* window = top->windowHandle();
    const QPoint inWindow = widget->mapTo(top, pos);
    if (!window) return;
    QTest::mouseMove(window, inWindow);
    QTest::mouseClick(window, Qt::RightButton, Qt::NoModifier, inWindow);
    QCoreApplication::processEvents();
}

// A shown top-level window of that class, or null.
QWidget* ShownWindow(const char* className) {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && ClassIs(w, className)) return w;
    return nullptr;
}

// Clicks the shown and enabled button of that caption in `window`.
bool PressCaption(QWidget* window, const QString& caption) {
    for (QAbstractButton* b : window ? window->findChildren<QAbstractButton*>() : QList<QAbstractButton*>()) {
        if (b->text() == caption && b->isVisible() && b->isEnabled()) {
            ClickAt(b, b->rect().center());
            return true;
        }
    }
    return false;
}

// Clicks the entry `text` of the open context menu.
bool ChooseMenuEntry(const QString& text) {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu) return false;
    for (QAction* action : menu->actions()) {
        if (action->text() != text || !action->isEnabled()) continue;
        ClickAt(menu, menu->actionGeometry(action).center());
        return true;
    }
    return false;
}

}  // namespace

void ClickAt(QWidget* widget, QPoint pos, bool doubleClick) {
    // Through the window, as the platform delivers them, so that the widget
    // under the point (and any event filter) sees a real click.
    QWidget* top = widget->window();
    QWindow* window = top->windowHandle();
    const QPoint inWindow = widget->mapTo(top, pos);
    if (!window) return;
    QTest::mouseMove(window, inWindow);
    if (doubleClick) {
        QTest::mouseDClick(window, Qt::LeftButton, Qt::NoModifier, inWindow);
    } else {
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, inWindow);
    }
    QCoreApplication::processEvents();
}

DemoTour::DemoTour(const GalleryExports& exports, HostWindow* host, DemoOptions options, QStringList galleries,
                   QObject* parent)
    : QObject(parent), m_exports(exports), m_host(host), m_options(std::move(options)),
      m_galleries(std::move(galleries)) {
    connect(m_host, &HostWindow::panelSpoke, this,
            [this](const QString& line) { Log(QStringLiteral("panel -> host: ") + line); });
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &DemoTour::Poll);
}

void DemoTour::Log(const QString& text) {
    const QString line = QStringLiteral("%1 +%2ms [rate %3] %4\n")
                             .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs))
                             .arg(m_tourClock.isValid() ? m_tourClock.elapsed() : 0, 6)
                             .arg(m_options.rateLabel, text);
    if (m_log.isOpen()) {
        m_log.write(line.toUtf8());
        m_log.flush();
    }
    fputs(line.toUtf8().constData(), stdout);
    fflush(stdout);
}

bool DemoTour::PanelVisible() const {
    QWidget* panel = FindPanelWidget();
    return m_exports.GetGallery() != 0 && panel && panel->isVisible();
}

QImage DemoTour::DesktopImage() const {
    // The host and the floating panel as they stand on the screen.
    QWidget* panel = FindPanelWidget();
    QRect area = m_host->frameGeometry();
    if (panel && panel->isVisible()) area = area.united(panel->geometry());
    QImage canvas(area.size(), QImage::Format_RGB32);
    canvas.fill(QColor(0x3a, 0x4a, 0x5a));
    QPainter p(&canvas);
    p.drawPixmap(m_host->geometry().topLeft() - area.topLeft(), m_host->grab());
    if (panel && panel->isVisible()) p.drawPixmap(panel->geometry().topLeft() - area.topLeft(), panel->grab());
    return canvas;
}

bool DemoTour::Shoot(const QString& name, const std::function<QImage()>& take) {
    QElapsedTimer own;
    own.start();
    const QImage image = take();
    const QString file = QStringLiteral("%1/%2-%3-%4.png")
                             .arg(m_options.tourDir)
                             .arg(++m_shotNumber, 2, 10, QLatin1Char('0'))
                             .arg(name, m_options.rateLabel);
    const int colours = DistinctColours(image);
    const bool saved = !image.isNull() && image.save(file, "PNG");
    m_stalls.AddOwnWork(own.elapsed());
    if (!saved) {
        Log(QStringLiteral("shot %1 FAILED: could not save").arg(file));
        return false;
    }
    m_shots << file;
    Log(QStringLiteral("shot %1 (%2x%3, %4 colours)")
            .arg(file)
            .arg(image.width())
            .arg(image.height())
            .arg(colours >= 64 ? QStringLiteral("64+") : QString::number(colours)));
    if (colours < 3) {
        Log(QStringLiteral("shot %1 is blank").arg(file));
        return false;
    }
    return true;
}

// The tour's script in the order it runs: long, as a script is, and read
// from top to bottom; the collection steps have their own function.
void DemoTour::BuildSteps() {
    const int settle = m_options.shortTour ? 800 : 1500;
    const int netSettle = m_options.shortTour ? 1500 : 3000;
    auto panel = [] { return FindPanelWidget(); };

    m_steps.push_back({QStringLiteral("start"),
                       [this](QString& why) {
                           if (!m_host->isVisible()) {
                               why = QStringLiteral("the host window is not shown");
                               return false;
                           }
                           return true;
                       },
                       nullptr, 300, QString(), true});

    m_steps.push_back({QStringLiteral("show"),
                       [this](QString&) {
                           m_exports.show();
                           return true;
                       },
                       [this] { return PanelVisible(); }, settle, QStringLiteral("panel"), false,
                       [this](QString& why) {
                           // The host tells the gallery's windows from its own by asking.
                           if (!m_exports.IsDLLHwnd(m_exports.GetGallery())) {
                               why = QStringLiteral("IsDLLHwnd does not know the panel's own handle");
                               return false;
                           }
                           if (m_exports.IsDLLHwnd(m_exports.MarrowfinWindowOf(m_host.data()))) {
                               why = QStringLiteral("IsDLLHwnd takes the host window for the gallery's");
                               return false;
                           }
                           return true;
                       }});

    m_steps.push_back({QStringLiteral("open-gallery"),
                       [this, panel](QString& why) {
                           if (!m_galleries.isEmpty()) {
                               const QString location = QStringLiteral("\\") + m_galleries.first();
                               Log(QStringLiteral("ShowGallery(%1)").arg(location));
                               m_exports.ShowGallery(location.toStdU16String().c_str(), u"");
                               return true;
                           }
                           // No names given: click the third row of the class
                           // list (the first gallery), 28 units plus a pixel each.
                           QWidget* list = FindPanelChild(panel(), "CClassListCtrl");
                           if (!list) {
                               why = QStringLiteral("no class list in the panel");
                               return false;
                           }
                           const double rate = panel()->width() / 755.0;
                           const int row = static_cast<int>(28 * rate) + 1;
                           Log(QStringLiteral("clicking row 2 of the class list (row height %1)").arg(row));
                           ClickAt(list, QPoint(list->width() / 2, row * 2 + row / 2));
                           return true;
                       },
                       [this] { return PanelVisible(); }, netSettle, QStringLiteral("gallery")});

    {
        // Double-click a thumbnail until the host is asked to insert
        // it (the first click may only start its download), then place it.
        m_steps.push_back({QStringLiteral("insert-block"),
                           [this, panel](QString& why) {
                               if (!FindPanelChild(panel(), "CDWGListView")) {
                                   why = QStringLiteral("no thumbnail list in the panel");
                                   return false;
                               }
                               m_insertTries = 0;
                               m_lastTry = 0;
                               return true;
                           },
                           [this, panel] {
                               if (m_host->sheet()->HasPending()) return true;
                               QWidget* list = FindPanelChild(panel(), "CDWGListView");
                               if (!list || m_stepClock.elapsed() - m_lastTry < 1200) return false;
                               m_lastTry = m_stepClock.elapsed();
                               ++m_insertTries;
                               const double rate = panel()->width() / 755.0;
                               // The second cell (148 by 112 units each): the first
                               // may be the class's advertising tile.
                               Log(QStringLiteral("double-click on the second thumbnail (try %1)").arg(m_insertTries));
                               ClickAt(list, QPoint(static_cast<int>((148 + 74) * rate), static_cast<int>(40 * rate)),
                                       true);
                               return m_host->sheet()->HasPending();
                           },
                           300, QStringLiteral("insert")});
        m_steps.push_back(
            {QStringLiteral("place-block"),
             [this](QString& why) {
                 DrawingSheet* sheet = m_host->sheet();
                 if (!sheet->HasPending()) {
                     why = QStringLiteral("no block waits to be placed: the panel asked for no insertion");
                     return false;
                 }
                 const size_t before = sheet->blocks().size();
                 // A free corner of the sheet, where the floating panel
                 // does not hide the block in the screenshot.
                 QPoint at(180, 140);
                 QWidget* p = FindPanelWidget();
                 const int w = sheet->width(), h = sheet->height();
                 for (QPoint corner :
                      {QPoint(40, 40), QPoint(w - 180, 40), QPoint(40, h - 140), QPoint(w - 180, h - 140)}) {
                     const QRect area(sheet->mapToGlobal(corner),
                                      QSize(DrawingSheet::kBlockSide + 20, DrawingSheet::kBlockSide));
                     if (!p || !p->isVisible() || !p->frameGeometry().intersects(area)) {
                         at = corner;
                         break;
                     }
                 }
                 ClickAt(sheet, at);
                 // Nowhere free (a large scale): the user drags the panel
                 // aside to see the drawing.
                 if (p && p->isVisible() &&
                     p->frameGeometry().intersects(
                         QRect(sheet->mapToGlobal(at), QSize(DrawingSheet::kBlockSide, DrawingSheet::kBlockSide)))) {
                     p->move(m_host->frameGeometry().right() + 8, m_host->frameGeometry().top());
                     Log(QStringLiteral("moved the panel beside the host"));
                 }
                 if (sheet->blocks().size() != before + 1) {
                     why = QStringLiteral("the click did not place the block");
                     return false;
                 }
                 Log(QStringLiteral("placed %1").arg(sheet->blocks().back().path));
                 return true;
             },
             nullptr, 200, QString(), true});
    }

    m_steps.push_back({QStringLiteral("recent"),
                       [panel](QString& why) {
                           QWidget* list = FindPanelChild(panel(), "CClassListCtrl");
                           if (!list) {
                               why = QStringLiteral("no class list in the panel");
                               return false;
                           }
                           const double rate = panel()->width() / 755.0;
                           const int row = static_cast<int>(28 * rate) + 1;
                           ClickAt(list, QPoint(list->width() / 2, row / 2));
                           return true;
                       },
                       nullptr, settle, QStringLiteral("recent")});

    {
        // The class manager, as the host's "pick galleries" opens it: shown
        // above the panel, photographed, then closed by its close button.
        auto manager = [] {
            for (QWidget* w : QApplication::topLevelWidgets())
                if (w->isVisible() && QByteArray(w->metaObject()->className()).endsWith("CSelClassDlg")) return w;
            return static_cast<QWidget*>(nullptr);
        };
        m_steps.push_back(
            {QStringLiteral("class-manager"),
             [this, manager](QString& why) {
                 m_exports.ShowBoutiqueGallery();
                 QWidget* window = manager();
                 if (!window) {
                     why = QStringLiteral("ShowBoutiqueGallery opened no class manager");
                     return false;
                 }
                 window->setProperty("tourSeen", true);  // this step answers it, not the modal watcher
                 return true;
             },
             [manager] { return manager() != nullptr; }, settle, QString(), false,
             [this, manager](QString& why) {
                 QWidget* window = manager();
                 if (!window || !Shoot(QStringLiteral("manager"), [window] { return window->grab().toImage(); })) {
                     why = QStringLiteral("no picture of the class manager");
                     return false;
                 }
                 // The sort selector drops below its button; looked at, it is folded again.
                 if (PressCaption(window, QStringLiteral("排序∨"))) {
                     QApplication::processEvents();
                     if (QWidget* sorts = ShownWindow("CGalSortSelDlg"))
                         (void)Shoot(QStringLiteral("sort-selector"), [sorts] { return sorts->grab().toImage(); });
                     (void)PressCaption(window, QStringLiteral("排序∧"));
                 }
                 // The close button: 16 units square, 24 from the right, 7 from the top.
                 const double rate = window->width() / 980.0;
                 ClickAt(window, QPoint(window->width() - static_cast<int>(16 * rate), static_cast<int>(15 * rate)));
                 return true;
             }});
        m_steps.push_back({QStringLiteral("class-manager-closed"), [](QString&) { return true; },
                           [manager] { return manager() == nullptr; }, 300, QString()});
    }

    m_steps.push_back({QStringLiteral("collections-signed-out"),
                       [this](QString& why) {
                           const uint64_t handle = m_exports.GetGallery();
                           if (!handle) {
                               why = QStringLiteral("no panel");
                               return false;
                           }
                           m_host->setUserId(0);
                           m_exports.MarrowfinSendPanelControl(handle, MARROWFIN_CONTROL_SIGNED_OUT, 0);
                           m_exports.MarrowfinSendPanelControl(handle, MARROWFIN_CONTROL_OPEN_COLLECTIONS, 0);
                           return true;
                       },
                       nullptr, settle + 500, QStringLiteral("collections")});

    if (!m_options.shortTour) {
        // The same entry again, and this time the user signs in through the
        // host's dialog: the panel asks for the number, then for the token.
        m_steps.push_back({QStringLiteral("collections-sign-in"),
                           [this](QString& why) {
                               const uint64_t handle = m_exports.GetGallery();
                               if (!handle) {
                                   why = QStringLiteral("no panel");
                                   return false;
                               }
                               m_acceptSignIn = true;
                               m_signInAsked = m_host->requestsSeen(MARROWFIN_REQUEST_SIGN_IN);
                               m_exports.MarrowfinSendPanelControl(handle, MARROWFIN_CONTROL_OPEN_COLLECTIONS, 0);
                               return true;
                           },
                           [this] {
                               return m_host->requestsSeen(MARROWFIN_REQUEST_SIGN_IN) > m_signInAsked &&
                                      m_host->requestsSeen(MARROWFIN_REQUEST_TOKEN) > 0 && PanelVisible();
                           },
                           netSettle, QStringLiteral("collections-after-sign-in")});

        // The host hands over the demo user and its token in one order, as a
        // host does after its own sign-in; the collections come from the service.
        m_steps.push_back(
            {QStringLiteral("collections-signed-in"),
             [this](QString& why) {
                 const uint64_t handle = m_exports.GetGallery();
                 if (!handle) {
                     why = QStringLiteral("no panel");
                     return false;
                 }
                 m_host->setUserId(kDemoUser);
                 const QString both = QStringLiteral("%1&^&%2").arg(kDemoUser).arg(TokenForUser(kDemoUser));
                 m_exports.MarrowfinSendCopyData(handle, MARROWFIN_COPY_USER_AND_TOKEN, both.toStdU16String().c_str());
                 m_exports.MarrowfinSendPanelControl(handle, MARROWFIN_CONTROL_OPEN_COLLECTIONS, 0);
                 return true;
             },
             nullptr, netSettle, QStringLiteral("collections-signed-in")});

        // "搜索收藏": the page that lists the collection's blocks from the
        // service; then "返回" to the collections.
        auto pressButton = [panel](const QString& text, QString& why) {
            for (QAbstractButton* b : panel() ? panel()->findChildren<QAbstractButton*>() : QList<QAbstractButton*>()) {
                if (b->text() == text && b->isVisible() && b->isEnabled()) {
                    ClickAt(b, b->rect().center());
                    return true;
                }
            }
            why = QStringLiteral("no visible button \"%1\" in the panel").arg(text);
            return false;
        };
        m_steps.push_back({QStringLiteral("collection-search"),
                           [pressButton](QString& why) { return pressButton(QStringLiteral("搜索收藏"), why); },
                           [this] { return PanelVisible(); }, netSettle, QStringLiteral("collection-search")});
        m_steps.push_back({QStringLiteral("collection-search-back"),
                           [pressButton](QString& why) { return pressButton(QStringLiteral("返回"), why); },
                           [this] { return PanelVisible(); }, settle, QString()});
        AddCollectionSteps(settle, netSettle);
    }

    // Words the service finds: class names of the sample library.
    const QStringList classes = ReadSampleClasses(m_options.sampleDir);
    const QString hostWord = classes.value(0, QStringLiteral("门"));
    const QString typedWord = classes.value(1, hostWord);
    m_steps.push_back({QStringLiteral("search"),
                       [this, hostWord](QString&) {
                           m_exports.SearchBrindleRes(hostWord.toStdU16String().c_str(), u"");
                           return true;
                       },
                       [this] { return PanelVisible(); }, netSettle, QStringLiteral("search")});

    // Typing into the panel's search box goes through the host's input
    // filter: letters reach the box, Enter and Escape are the panel's (the
    // filter swallows them, so the box never sees Enter and the panel stays).
    m_steps.push_back({QStringLiteral("type-search"),
                       [this, panel, typedWord](QString& why) {
                           QLineEdit* edit =
                               panel() ? panel()->findChild<QLineEdit*>(QStringLiteral("searchEdit")) : nullptr;
                           if (!edit || !edit->isVisible()) {
                               why = QStringLiteral("no visible search box in the panel");
                               return false;
                           }
                           int returns = 0;
                           auto counter = connect(edit, &QLineEdit::returnPressed, this, [&returns] { ++returns; });
                           ClickAt(edit, QPoint(edit->width() / 2, edit->height() / 2));
                           edit->clear();
                           // keyClicks takes ASCII only; the word goes as typed text.
                           QTest::sendKeyEvent(QTest::Click, edit, Qt::Key_unknown, typedWord, Qt::NoModifier);
                           QTest::keyClick(edit, Qt::Key_Return);
                           QTest::keyClick(edit, Qt::Key_Escape);
                           disconnect(counter);
                           Log(QStringLiteral("typed into the search box: \"%1\", Enter reached the box %2 times")
                                   .arg(edit->text())
                                   .arg(returns));
                           if (returns != 0) {
                               why = QStringLiteral("Enter went past the panel to the search box");
                               return false;
                           }
                           if (edit->text() != typedWord) {
                               why = QStringLiteral("the typed text did not reach the search box");
                               return false;
                           }
                           return true;
                       },
                       [this] { return PanelVisible(); }, netSettle, QStringLiteral("search-typed")});

    // A result row is used: a double click on its picture fetches the block
    // when it is not on the disk yet, and the next one asks the host to insert
    // it; the panel hides, and the host waits for a click on its sheet.
    m_steps.push_back({QStringLiteral("search-use"),
                       [this](QString&) {
                           m_insertedBefore = m_host->requestsSeen(MARROWFIN_REQUEST_INSERT);
                           m_useClock.invalidate();
                           return true;
                       },
                       [this] {
                           if (m_host->requestsSeen(MARROWFIN_REQUEST_INSERT) > m_insertedBefore) return true;
                           QWidget* p = FindPanelWidget();
                           QWidget* list = nullptr;
                           for (QWidget* w : p ? p->findChildren<QWidget*>() : QList<QWidget*>())
                               if (qstrcmp(w->metaObject()->className(), "marrowfin::CSearchListCtrl") == 0) list = w;
                           if (!list || !list->isVisible()) return false;
                           if (!m_useClock.isValid() || m_useClock.elapsed() > 1000) {
                               if (m_useClock.isValid())
                                   Log(QStringLiteral("the first result row is not on the disk yet: asked again"));
                               ClickAt(list, QPoint(40, 30), true);
                               m_useClock.start();
                           }
                           return false;
                       },
                       settle, QString(), true});
    m_steps.push_back({QStringLiteral("panel-again"),
                       [this](QString&) {
                           m_exports.show();
                           return true;
                       },
                       [this] { return PanelVisible(); }, settle, QString()});

    // The panel's feedback button asks the host for its form and waits,
    // hidden; the form must take input while the panel waits, and sending it
    // ends the wait. The host then shows the panel again.
    m_steps.push_back(
        {QStringLiteral("feedback"),
         [this, panel](QString& why) {
             QAbstractButton* button = nullptr;
             for (QAbstractButton* b : panel() ? panel()->findChildren<QAbstractButton*>() : QList<QAbstractButton*>())
                 if (b->text() == QStringLiteral("反馈") && b->isVisible()) button = b;
             if (!button) {
                 why = QStringLiteral("no visible button \"反馈\" in the panel");
                 return false;
             }
             m_feedbackSeen = m_host->noticesSeen(MARROWFIN_NOTICE_FEEDBACK);
             m_feedbackSent = false;
             m_feedbackShownAt = -1;
             // Clicked from the loop, not from here: the panel's wait
             // runs a loop of its own inside the click, and the walk
             // goes on within it.
             QPointer<QAbstractButton> target = button;
             QTimer::singleShot(0, this, [target] {
                 if (target) ClickAt(target, target->rect().center());
             });
             return true;
         },
         [this] {
             // Sending may delete the form under our feet.
             QPointer<FeedbackDialog> form = m_host->findChild<FeedbackDialog*>();
             if (!m_feedbackSent) {
                 if (m_host->noticesSeen(MARROWFIN_NOTICE_FEEDBACK) == m_feedbackSeen || !form || !form->isVisible())
                     return false;
                 // Let the new window be exposed before clicking into it.
                 if (!form->windowHandle() || !form->windowHandle()->isExposed()) return false;
                 if (m_feedbackShownAt < 0) m_feedbackShownAt = m_stepClock.elapsed();
                 if (m_stepClock.elapsed() - m_feedbackShownAt < 300) return false;
                 (void)Shoot(QStringLiteral("feedback-form"), [&form] { return form->grab().toImage(); });
                 // Through the window system, where a modal wait would block it.
                 ClickAt(form->textField(), QPoint(10, 10));
                 QTest::keyClicks(form->textField(), QStringLiteral("More doors, please."));
                 const QString typed = form->textField()->toPlainText();
                 QPushButton* send = form->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
                 ClickAt(send, send->rect().center());
                 m_feedbackSent = true;
                 Log(QStringLiteral("feedback typed (\"%1\") and sent; the form is %2")
                         .arg(typed,
                              form && form->isVisible() ? QStringLiteral("still open") : QStringLiteral("closed")));
                 return false;
             }
             if (form && form->isVisible()) return false;  // the click did not get through
             // The wait is over when the panel is enabled again; it
             // stays hidden until the host shows it.
             QWidget* p = FindPanelWidget();
             return p && p->isEnabled();
         },
         settle, QStringLiteral("after-feedback"), false,
         [this](QString&) {
             m_exports.show();
             return true;
         }});

    m_steps.push_back({QStringLiteral("host-window"), [](QString&) { return true; }, nullptr, 100, QString(), true});

    m_steps.push_back({QStringLiteral("close"),
                       [this](QString& why) {
                           const uint64_t before = m_exports.GetGallery();
                           m_exports.CloseGallery();
                           QCoreApplication::processEvents();
                           if (m_exports.GetGallery() != before) {
                               why = QStringLiteral("the panel's handle changed on close");
                               return false;
                           }
                           QWidget* p = FindPanelWidget();
                           if (p && p->isVisible()) {
                               why = QStringLiteral("the panel is still visible after CloseGallery");
                               return false;
                           }
                           return true;
                       },
                       nullptr, 100, QString()});
}

// The collection part of the script, in the order it runs.
void DemoTour::AddCollectionSteps(int settle, int netSettle) {
    // Each step is a row of moves made one after another as the panel gets
    // there, at a user's pace; a move is tried at each poll until it could be made.
    using Moves = std::vector<std::function<bool()>>;
    auto walk = [this](Moves moves) {
        auto next = std::make_shared<size_t>(0);
        auto last = std::make_shared<qint64>(0);
        return std::pair<std::function<bool(QString&)>, std::function<bool()>>{
            [this, next, last](QString&) {
                *next = 0;
                *last = -10000;
                m_lastTry = -10000;
                m_stepAnswersModals = true;
                return true;
            },
            [this, next, last, moves = std::move(moves)] {
                if (*next < moves.size() && m_stepClock.elapsed() - *last >= 500 && moves[*next]()) {
                    Log(QStringLiteral("move %1 of %2 made").arg(*next + 1).arg(moves.size()));
                    ++*next;
                    *last = m_stepClock.elapsed();
                }
                if (*next < moves.size()) return false;
                m_stepAnswersModals = false;
                return true;
            }};
    };
    auto rate = [] { return FindPanelWidget() ? FindPanelWidget()->width() / 755.0 : 1.0; };
    // Right-clicks the cell (column 0 or 1 of the first row) until its menu is open.
    auto menuOnCell = [this, rate](int column) {
        return [this, rate, column] {
            if (qobject_cast<QMenu*>(QApplication::activePopupWidget())) return true;
            QWidget* list = FindPanelChild(FindPanelWidget(), "CDWGListView");
            if (!list || !list->isVisible() || m_stepClock.elapsed() - m_lastTry < 1000) return false;
            m_lastTry = m_stepClock.elapsed();
            RightClickAt(list, QPoint(static_cast<int>((74 + 148 * column) * rate()), static_cast<int>(40 * rate())));
            return qobject_cast<QMenu*>(QApplication::activePopupWidget()) != nullptr;
        };
    };
    auto entry = [](const QString& text) { return [text] { return ChooseMenuEntry(text); }; };
    auto press = [](const char* window, const QString& caption) {
        return [window, caption] { return PressCaption(ShownWindow(window), caption); };
    };
    // Presses `caption` in the tip that says so; a tip asking whether to
    // replace a block of the same name is answered "替换" on the way.
    auto tip = [](const QString& caption) {
        return [caption] {
            QWidget* shown = ShownWindow("CPopTipDlg");
            if (PressCaption(shown, QStringLiteral("替换"))) return false;
            return PressCaption(shown, caption);
        };
    };
    auto gone = [](const char* window) { return [window] { return ShownWindow(window) == nullptr; }; };
    auto panelPress = [](const QString& caption) {
        return [caption] { return PressCaption(FindPanelWidget(), caption); };
    };
    // Types `text` over the dialog's edit as an input method would, then Enter.
    auto retype = [](const char* window, const QString& text) {
        return [window, text] {
            QWidget* dialog = ShownWindow(window);
            auto* edit = dialog ? dialog->findChild<QLineEdit*>() : nullptr;
            if (!edit || !edit->isVisible()) return false;
            edit->selectAll();
            QTest::sendKeyEvent(QTest::Click, edit, Qt::Key_unknown, text, Qt::NoModifier);
            QTest::keyClick(edit, Qt::Key_Return);
            return true;
        };
    };

    // Photographs the shown window of that class once it no longer waits for
    // the service (no button of it disabled), or the open menu.
    auto shoot = [this](const char* window, const QString& name, bool waitForButtons = true) {
        return [this, window, name, waitForButtons] {
            QWidget* shown = ShownWindow(window);
            if (!shown) return false;
            for (QAbstractButton* button : shown->findChildren<QAbstractButton*>())
                if (waitForButtons && button->isVisible() && !button->isEnabled()) return false;
            return Shoot(name, [shown] { return shown->grab().toImage(); });
        };
    };
    auto shootMenu = [this](const QString& name) {
        return [this, name] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            return menu && Shoot(name, [menu] { return menu->grab().toImage(); });
        };
    };

    // A block of the first gallery goes into the collection through the
    // thumbnail's menu; "查看收藏" then opens the folder that holds it.
    auto collect = walk(
        {[this] {
             if (!m_galleries.isEmpty())
                 m_exports.ShowGallery((QStringLiteral("\\") + m_galleries.first()).toStdU16String().c_str(), u"");
             return true;
         },
         menuOnCell(1), shootMenu(QStringLiteral("gallery-menu")), entry(QStringLiteral("收藏图块")),
         shoot("CCollectiondlg", QStringLiteral("collect-dialog")), press("CCollectiondlg", QStringLiteral("收藏")),
         shoot("CPopTipDlg", QStringLiteral("collected-tip")), tip(QStringLiteral("查看收藏")), gone("CPopTipDlg")});
    m_steps.push_back({QStringLiteral("collect-block"), collect.first, collect.second, netSettle,
                       QStringLiteral("collection-collected")});
    // A second folder, for the move; then back to the first one.
    auto folder =
        walk({panelPress(QStringLiteral("新建文件夹")), shoot("CNewFolderDlg", QStringLiteral("new-folder-dialog")),
              press("CNewFolderDlg", QStringLiteral("新建")), gone("CNewFolderDlg"),
              [] { return PressCaption(FindPanelWidget(), QStringLiteral("收藏夹2")); },
              [] { return PressCaption(FindPanelWidget(), QStringLiteral("收藏夹1")); }});
    m_steps.push_back({QStringLiteral("new-folder"), folder.first, folder.second, netSettle, QString()});
    auto rename = walk({menuOnCell(0), shootMenu(QStringLiteral("collection-menu")), entry(QStringLiteral("重命名")),
                        shoot("CModifyFolderDlg", QStringLiteral("rename-dialog")),
                        retype("CModifyFolderDlg", QStringLiteral("我的门")), gone("CModifyFolderDlg")});
    m_steps.push_back(
        {QStringLiteral("rename-block"), rename.first, rename.second, settle, QStringLiteral("collection-renamed")});
    auto move =
        walk({menuOnCell(0), entry(QStringLiteral("移动")), shoot("CMoveCollectBlkDlg", QStringLiteral("move-dialog")),
              press("CMoveCollectBlkDlg", QStringLiteral("移动")),
              [tip] { return !ShownWindow("CMoveCollectBlkDlg") || (tip(QString())(), false); }});
    m_steps.push_back(
        {QStringLiteral("move-block"), move.first, move.second, netSettle, QStringLiteral("collection-moved")});
    // "分享收藏" opens the share dialog; it is looked at and closed unshared.
    auto share =
        walk({panelPress(QStringLiteral("分享收藏")), shoot("CShareDWGblockDlg", QStringLiteral("share-dialog")),
              press("CShareDWGblockDlg", QStringLiteral("取消")), gone("CShareDWGblockDlg")});
    m_steps.push_back({QStringLiteral("share-dialog"), share.first, share.second, settle, QString()});
    // "添加图块" opens the file dialog for drawings; it is looked at and cancelled.
    auto addFiles =
        walk({panelPress(QStringLiteral("添加图块")), shoot("QFileDialog", QStringLiteral("add-blocks-dialog"), false),
              [] {
                  auto* dialog = qobject_cast<QDialog*>(ShownWindow("QFileDialog"));
                  if (dialog) dialog->reject();
                  return dialog != nullptr;
              },
              gone("QFileDialog")});
    m_steps.push_back({QStringLiteral("add-blocks-dialog"), addFiles.first, addFiles.second, settle, QString()});
    // The folder that took the block goes again, so that the next walk
    // against the same service starts from the same folders.
    auto drop = walk({panelPress(QStringLiteral("删除文件夹")), tip(QStringLiteral("删除")), gone("CPopTipDlg")});
    m_steps.push_back({QStringLiteral("delete-folder"), drop.first, drop.second, netSettle, QString()});
}

void DemoTour::ArmWatchdog() {
    // A step that never returns (a call blocked outside any event loop)
    // would keep the tour from ending: past every step's time limit the
    // process ends with a failure, whatever the main thread is doing.
    const qint64 limitMs = static_cast<qint64>(m_steps.size()) * (m_options.stepTimeoutMs + 5000) + 10000;
    const std::string log = (m_options.tourDir + QStringLiteral("/tour.log")).toStdString();
    std::thread([limitMs, log, done = m_done] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
        while (std::chrono::steady_clock::now() < end) {
            if (done->load()) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        if (done->load()) return;
        if (FILE* f = std::fopen(log.c_str(), "a")) {
            std::fprintf(f, "tour stuck: no end after %lld ms; step FAILED, giving up\n",
                         static_cast<long long>(limitMs));
            std::fclose(f);
        }
        std::fprintf(stderr, "marrowfin-demo: the tour is stuck; giving up after %lld ms\n",
                     static_cast<long long>(limitMs));
        std::_Exit(ExitTourFailed);
    }).detach();
}

void DemoTour::Start() {
    m_tourClock.start();
    QDir().mkpath(m_options.tourDir);
    m_log.setFileName(m_options.tourDir + QStringLiteral("/tour.log"));
    if (!m_log.open(QIODevice::WriteOnly | QIODevice::Append)) {
        fprintf(stderr, "marrowfin-demo: cannot write %s\n", qPrintable(m_log.fileName()));
        QTimer::singleShot(0, this, [this] { emit finished(ExitTourFailed); });
        return;
    }
    Log(QStringLiteral("tour begins%1")
            .arg(m_galleries.isEmpty() ? QString()
                                       : QStringLiteral(", galleries: ") + m_galleries.join(QStringLiteral(", "))));
    BuildSteps();
    ArmWatchdog();
    m_current = 0;
    m_phase = Phase::Acting;
    m_poll.start();
}

void DemoTour::HandleModal() {
    // Sign-in and tip boxes run their own loops: shoot them and answer them
    // as a user who declines (or, where the step wants it, signs in), so
    // that the walk goes on.
    QWidget* modal = QApplication::activeModalWidget();
    auto* dialog = qobject_cast<QDialog*>(modal);
    if (!dialog || !dialog->isVisible() || dialog->property("tourSeen").toBool() || m_stepAnswersModals) return;
    dialog->setProperty("tourSeen", true);
    const bool signIn = qobject_cast<SignInDialog*>(dialog) != nullptr;
    Log(QStringLiteral("a modal window came up: %1 \"%2\"")
            .arg(QString::fromLatin1(dialog->metaObject()->className()), dialog->windowTitle()));
    const bool accept = signIn && m_acceptSignIn;
    QTimer::singleShot(300, dialog, [this, dialog, signIn, accept] {
        (void)Shoot(signIn ? QStringLiteral("sign-in") : QStringLiteral("modal"),
                    [dialog] { return dialog->grab().toImage(); });
        if (accept) {
            Log(QStringLiteral("signing in as the user the dialog offers"));
            dialog->accept();
            return;
        }
        Log(signIn ? QStringLiteral("sign-in cancelled, the user stays signed out")
                   : QStringLiteral("modal window closed"));
        dialog->reject();
    });
}

void DemoTour::Poll() {
    HandleModal();
    if (m_inAction || m_current >= m_steps.size()) return;
    Step& step = m_steps[m_current];
    switch (m_phase) {
        case Phase::Acting: BeginStep(); return;
        case Phase::Waiting:
            if (step.done && !step.done()) {
                if (m_stepClock.elapsed() > m_options.stepTimeoutMs)
                    EndStep(false, QStringLiteral("timed out after %1 ms").arg(m_options.stepTimeoutMs));
                return;
            }
            m_phase = Phase::Settling;
            m_settleClock.start();
            return;
        case Phase::Settling:
            if (m_settleClock.elapsed() < step.settleMs) return;
            {
                bool ok = true;
                QString why;
                if (step.check && !step.check(why)) {
                    EndStep(false, why);
                    return;
                }
                if (step.shotHost) {
                    ok = Shoot(step.name == QLatin1String("start") ? QStringLiteral("host") : step.name,
                               [this] { return DesktopImage(); });
                } else if (!step.shot.isEmpty()) {
                    QWidget* panel = FindPanelWidget();
                    if (!panel || !panel->isVisible()) {
                        ok = false;
                        why = QStringLiteral("the panel is not visible for its screenshot");
                    } else {
                        ok = Shoot(step.shot, [panel] { return panel->grab().toImage(); });
                    }
                }
                if (!ok && why.isEmpty()) why = QStringLiteral("screenshot failed");
                EndStep(ok, why);
            }
            return;
    }
}

void DemoTour::BeginStep() {
    Step& step = m_steps[m_current];
    Log(QStringLiteral("step %1/%2 %3").arg(m_current + 1).arg(m_steps.size()).arg(step.name));
    m_stepClock.start();
    m_stalls.BeginStage(step.name);
    m_acceptSignIn = false;  // only the step that asks for it signs in
    QString why;
    m_inAction = true;
    const bool ok = step.act(why);
    m_inAction = false;
    if (!ok) {
        EndStep(false, why);
        return;
    }
    m_phase = Phase::Waiting;
}

void DemoTour::EndStep(bool ok, const QString& why) {
    const Step& step = m_steps[m_current];
    m_stepAnswersModals = false;
    const qint64 stall = m_stalls.stages().empty() ? 0 : m_stalls.stages().back().longestGapMs;
    if (ok) {
        Log(QStringLiteral("step %1 ok (%2 ms, longest stall %3 ms)")
                .arg(step.name)
                .arg(m_stepClock.elapsed())
                .arg(stall));
    } else {
        ++m_failures;
        Log(QStringLiteral("step %1 FAILED: %2 (longest stall %3 ms)").arg(step.name, why).arg(stall));
    }
    ++m_current;
    m_phase = Phase::Acting;
    if (m_current >= m_steps.size()) Finish();
}

void DemoTour::Finish() {
    m_poll.stop();
    m_stalls.Stop();
    m_done->store(true);
    Log(QStringLiteral("stalls of the event loop, per step:"));
    for (const QString& line : m_stalls.Table().split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        Log(QStringLiteral("  ") + line);
    Log(QStringLiteral("tour ends: %1 steps ran, %2 ok, %3 failed, %4 screenshots")
            .arg(m_steps.size())
            .arg(m_steps.size() - static_cast<size_t>(m_failures))
            .arg(m_failures)
            .arg(m_shots.size()));
    m_log.close();
    emit finished(m_failures == 0 ? ExitOk : ExitTourFailed);
}

}  // namespace marrowfin::demo
