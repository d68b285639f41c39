// The main of the panel's Qt benchmarks: an offscreen application at Rate 1.0.

#include <benchmark/benchmark.h>

#include <QApplication>

#include "skin/skin_scale.h"

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    marrowfin::SetSkinRateForTest(1.0f);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
