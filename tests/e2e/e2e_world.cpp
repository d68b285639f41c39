#include "e2e_world.h"

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QtTest/QTest>
#include <filesystem>

#include "support/live_service.h"
#include "marrowfin/marrowfin.h"
#include <QAbstractButton>
#include "platform/profile.h"
#include "request_counters.h"

namespace marrowfin::test {

namespace {

// The host's loop: every event of every object is offered to the panel first.
class HostLoopFilter final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        MarrowfinMsg message{watched, event};
        return GaDllPretanslateMsg(&message) == 1;
    }
};

E2eWorld*& WorldSlot() {
    static E2eWorld* world = nullptr;
    return world;
}

}  // namespace

E2eWorld& World() { return *WorldSlot(); }

void MakeWorld(float rate, int shown) {
    auto* world = new E2eWorld;
    WorldSlot() = world;
    world->home = std::make_unique<TempHome>();
    const std::string& data = SampleLibrary();
    world->service = StartLiveService(data);
    world->galleries = GalleryNames(data);
    WriteOptionString(u"Rate", QString::number(rate).toStdU16String());
    for (int i = 0; i < shown && i < static_cast<int>(world->galleries.size()); ++i)
        AddMoreGallery(world->galleries[i].c_str());
    world->host = new RecordingHost;
    world->host->setWindowTitle(QStringLiteral("host"));
    world->host->resize(320, 200);
    world->host->show();
    MarrowfinSetMainWindow(world->host);
    world->hostHandle = MarrowfinWindowOf(world->host);
    // Owned by the application, which outlives every case of the program.
    qApp->installEventFilter(new HostLoopFilter(qApp));
    FirstSynchro();
}

void EndWorld() {
    E2eWorld* world = WorldSlot();
    if (!world) return;
    // The panel and the host window stay until the process ends, as in a host.
    world->service.stop();
    world->home.reset();
}

QWidget* FindPanel() {
    for (QWidget* w : QApplication::allWidgets())
        if (qstrcmp(w->metaObject()->className(), "marrowfin::CBrindleDlg") == 0) return w;
    return nullptr;
}

QWidget* FindChild(QWidget* panel, const char* className) {
    if (!panel) return nullptr;
    for (QWidget* w : panel->findChildren<QWidget*>())
        if (qstrcmp(w->metaObject()->className(), className) == 0) return w;
    return nullptr;
}

QWidget* FindButton(QWidget* panel, const QString& caption) {
    if (!panel) return nullptr;
    for (QAbstractButton* b : panel->findChildren<QAbstractButton*>())
        if (b->text() == caption && b->isVisible()) return b;
    return nullptr;
}

long TreeRequests() {
    service::RequestCounters& counters = World().service.counters();
    return counters.get("/gallery/g_all_s").count + counters.get("/gallery/g_all").count;
}

bool WaitForFirstTree(int ms) {
    const std::filesystem::path root = World().home->documentsDir() + "/Orsolen";
    return SpinUntil(
        [&] {
            for (const auto& g : World().galleries) {
                const std::string name = QString::fromStdU16String(g).toStdString();
                if (std::filesystem::exists(root / name / (name + ".xdb"))) return true;
            }
            return false;
        },
        ms);
}

QWidget* ShownPanel() {
    if (!FindPanel()) {
        if (!WaitForFirstTree(15000)) return nullptr;
        show();
        Spin(700);  // the first class list comes with a 250 ms timer
    }
    show();
    return FindPanel();
}

QImage RenderPanel(QWidget* panel, const QString& name) {
    QCoreApplication::processEvents();
    const QImage image = panel->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/rendered");
    QDir().mkpath(folder);
    image.save(folder + QLatin1Char('/') + name + QStringLiteral(".png"), "PNG");
    return image;
}

void ClickClassRow(QWidget* panel, int row) {
    QWidget* list = FindChild(panel, "marrowfin::CClassListCtrl");
    if (!list) return;
    // Rows are 28 units plus one pixel; the scale is the panel's width over 755 units.
    const double rate = panel->width() / 755.0;
    const int rowHeight = static_cast<int>(28 * rate) + 1;
    QTest::mouseClick(list, Qt::LeftButton, Qt::NoModifier, QPoint(list->width() / 3, row * rowHeight + rowHeight / 2));
    QCoreApplication::processEvents();
}

int PreTranslateKey(QObject* receiver, int key, Qt::KeyboardModifiers modifiers, bool release) {
    QKeyEvent event(release ? QEvent::KeyRelease : QEvent::KeyPress, key, modifiers);
    MarrowfinMsg message{receiver, &event};
    return GaDllPretanslateMsg(&message);
}

}  // namespace marrowfin::test
