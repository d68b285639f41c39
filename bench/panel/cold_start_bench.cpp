// The panel's cold start as a host does it: the first tree is started and
// the panel made and shown at once, with 101 galleries of catalogues on disk.
// Measured from there to the first paint of the filled class column, without
// a network and with the service answering 500 ms late. The peer, in the same
// run, is a plain window with a list of as many rows, shown and painted.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QVBoxLayout>
#include <chrono>

#include "bench_library.h"
#include "fault_switches.h"
#include "net/download_queue.h"
#include "net/gallery_sync.h"
#include "panel/classes/panel_workers.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/lists/class_list_ctrl.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "service_handle.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/tree_update.h"

using namespace marrowfin;

namespace {

constexpr int kGalleries = 101;
constexpr int kClassRows = kGalleries + 2;  // the recent list and the collections first

// 101 galleries of 30 classes of 100 blocks, their catalogues written by one
// synchronisation with the service; the service stays for the slow variant.
struct ColdLibrary {
    service::ServiceHandle svc;
    ColdLibrary() {
        bench::UseFreshHome();
        WriteOptionString(u"Rate", u"1");
        const std::string data = bench::KeepUntilExit(bench::WriteLinkedLibrary(kGalleries, 30, 100, 2048));
        svc = service::StartService(data, 0);
        WriteOptionString(u"ServiceBase", Utf8ToUtf16(svc.baseUrl()));
        for (int g = 0; g < kGalleries; ++g) AddGalleryToShowList(Utf8ToUtf16(bench::GalleryName(g)));
        BuildFirstTree(GalleryStore::Instance());
        AdoptTreeUpdates(GalleryStore::Instance());
        FreeStoreTree();
    }
    ~ColdLibrary() { svc.stop(); }
    static ColdLibrary& Get() {
        static ColdLibrary library;
        return library;
    }
    static void FreeStoreTree() {
        GalleryStore& store = GalleryStore::Instance();
        (void)WaitForDownloadWorkers(std::chrono::seconds(30));
        (void)WaitForReleases();
        if (store.root) DestroySubtree(store.root);
        delete store.root;
        store.root = nullptr;
    }
};

// Notes the first paint of a widget once `filled` holds.
class FilledPaint : public QObject {
public:
    FilledPaint(QWidget* widget, std::function<bool()> filled) : m_filled(std::move(filled)) {
        widget->installEventFilter(this);
    }
    bool seen = false;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && !seen && m_filled()) seen = true;
        return false;
    }

private:
    std::function<bool()> m_filled;
};

double WaitMs(const QElapsedTimer& clock, const FilledPaint& paint) {
    while (!paint.seen && clock.elapsed() < 20000) QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

double PanelStartMs() {
    QElapsedTimer clock;
    clock.start();
    (void)StartFirstTree(GalleryStore::Instance());
    auto panel = std::make_unique<CBrindleDlg>();
    panel->Create(nullptr);
    CClassListCtrl* list = panel->m_classList;
    FilledPaint paint(list, [list] { return list->GetItemCount() >= kClassRows && list->isVisible(); });
    panel->ShowPanel();
    const double ms = WaitMs(clock, paint);
    panel->hide();
    panel.reset();
    (void)WaitForPanelWorkers(std::chrono::seconds(30));
    ColdLibrary::FreeStoreTree();
    return ms;
}

double PeerStartMs() {
    QElapsedTimer clock;
    clock.start();
    QWidget window;
    window.resize(755, 454);
    auto* list = new QListWidget(&window);
    list->setGeometry(0, 0, 130, 454);
    for (int i = 0; i < kClassRows; ++i) list->addItem(QString::fromStdString(bench::GalleryName(i)));
    FilledPaint paint(list->viewport(), [] { return true; });
    window.show();
    return WaitMs(clock, paint);
}

// latencyMs < 0: no service at all.
void ColdStart(benchmark::State& state, int latencyMs) {
    ColdLibrary& lib = ColdLibrary::Get();
    if (latencyMs < 0) {
        WriteOptionString(u"ServiceBase", u"http://127.0.0.1:9");
    } else {
        WriteOptionString(u"ServiceBase", Utf8ToUtf16(lib.svc.baseUrl()));
        service::Fault slow;
        slow.latencyMs = latencyMs;
        lib.svc.faults().set("*", slow);
    }
    double panelMs = 0, peerMs = 0;
    for (auto _ : state) {
        const double panel = PanelStartMs();
        const double peer = PeerStartMs();
        state.SetIterationTime(panel / 1e3);
        panelMs += panel;
        peerMs += peer;
    }
    lib.svc.faults().clearAll();
    const double n = static_cast<double>(state.iterations());
    state.counters["show_to_filled_ms"] = panelMs / n;
    state.counters["peer_ms"] = peerMs / n;
    state.counters["over_peer"] = panelMs / peerMs;
    state.counters["goal_ms"] = 300;
}

void BM_ColdStart_Offline(benchmark::State& state) { ColdStart(state, -1); }
void BM_ColdStart_Service500ms(benchmark::State& state) { ColdStart(state, 500); }

}  // namespace

BENCHMARK(BM_ColdStart_Offline)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ColdStart_Service500ms)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
