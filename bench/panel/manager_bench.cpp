// Opening the class manager over a table of 300 classes in 20 kinds, as the
// panel's thread pays for it (the window built, laid out and painted once),
// beside building the same number of plain push buttons in a window of the
// same size and painting it; and one wheel step of the scrolled catalogue
// with its repaint.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPushButton>
#include <QTemporaryDir>
#include <cstdlib>

#include "picker/gallery_type_dlg.h"
#include "picker/sel_class_dlg.h"
#include "platform/paths.h"
#include "skin/scroll_bar_rv.h"
#include "skin/skin_scale.h"

namespace {

using namespace marrowfin;

constexpr int kKinds = 20;
constexpr int kClassesPerKind = 15;  // 300 in all

// Four boutique kinds and sixteen general ones; the first general kind,
// the one that opens, also lists every general class, as "全部" does.
ClassTable BigTable() {
    ClassTable table;
    for (int k = 0; k < kKinds; ++k) {
        const bool boutique = k < 4;
        KindMap& kinds = boutique ? table.boutiqueKinds : table.generalKinds;
        std::vector<ClassItem>& items = kinds[KindKey(k + 1, u"分类" + QString::number(k).toStdU16String())];
        for (int c = 0; c < kClassesPerKind; ++c) {
            const std::u16string name = u"图库" + QString::number(k * kClassesPerKind + c).toStdU16String();
            items.push_back({name, u"1", name + u"说明", boutique ? u"1" : u"0"});
        }
    }
    auto& all = table.generalKinds[KindKey(0, u"全部")];
    for (const auto& [key, items] : table.generalKinds)
        if (key != KindKey(0, u"全部")) all.insert(all.end(), items.begin(), items.end());
    return table;
}

struct Home {
    QTemporaryDir dir;
    Home() {
        setenv("HOME", dir.path().toUtf8().constData(), 1);
        setenv("XDG_CONFIG_HOME", (dir.path() + "/config").toUtf8().constData(), 1);
        ResetPathCachesForTest();
    }
};

double OpenManagerMs(QWidget& panel, ClassTable& table, QImage& frame) {
    QElapsedTimer clock;
    clock.start();
    auto* manager = new CSelClassDlg(&panel, table);
    manager->Open();
    manager->render(&frame);
    const double ms = clock.nsecsElapsed() / 1e6;
    delete manager;
    return ms;
}

double PlainButtonsMs(int count, QImage& frame) {
    QElapsedTimer clock;
    clock.start();
    QWidget window;
    window.resize(ScaleUnits(980), ScaleUnits(710));
    for (int i = 0; i < count; ++i) {
        auto* button = new QPushButton(QString::number(i), &window);
        button->setGeometry(ScaleUnits(30 + 233 * (i % 4)), ScaleUnits(100 + 46 * (i / 4 % 12)), ScaleUnits(225),
                            ScaleUnits(38));
    }
    window.show();
    window.render(&frame);
    return clock.nsecsElapsed() / 1e6;
}

void BM_ManagerOpen300Classes(benchmark::State& state) {
    Home home;
    ClassTable table = BigTable();
    QWidget panel;
    QImage frame(ScaleUnits(980), ScaleUnits(710), QImage::Format_RGB32);
    double open = 0, plain = 0;
    int classes = 0;
    for (auto _ : state) {
        const double ms = OpenManagerMs(panel, table, frame);
        state.SetIterationTime(ms / 1000);
        open += ms;
        state.PauseTiming();
        plain += PlainButtonsMs(300, frame);
        state.ResumeTiming();
    }
    for (const auto& [key, items] : table.generalKinds) classes += key == KindKey(0, u"全部") ? 0 : int(items.size());
    for (const auto& [key, items] : table.boutiqueKinds) classes += int(items.size());
    state.counters["classes"] = classes;
    state.counters["open_ms"] = open / state.iterations();
    state.counters["plain_300_buttons_ms"] = plain / state.iterations();
    state.counters["ratio_to_plain"] = open / plain;
}
BENCHMARK(BM_ManagerOpen300Classes)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// One wheel step through the catalogue of the kind with every general class,
// down to the end and back, each step painted.
void BM_ManagerWheelStep(benchmark::State& state) {
    Home home;
    ClassTable table = BigTable();
    QWidget panel;
    QImage frame(ScaleUnits(980), ScaleUnits(710), QImage::Format_RGB32);
    CSelClassDlg manager(&panel, table);
    manager.Open();
    QCoreApplication::processEvents();
    CScrollBarRv* bar = manager.ScrollBar();
    bool down = true;
    int steps = 0;
    for (auto _ : state) {
        const int before = bar->Info().nPos;
        if (down) bar->LineDown();
        else bar->LineUp();
        QCoreApplication::processEvents();  // the bar's post reaches the manager, which scrolls
        manager.render(&frame);
        if (bar->Info().nPos == before) down = !down;
        ++steps;
    }
    state.counters["content_px"] = manager.Picker()->m_contentHeight;
    state.counters["range_px"] = bar->Info().nMax;
}
BENCHMARK(BM_ManagerWheelStep)->Unit(benchmark::kMicrosecond);

}  // namespace
