// marrowfin-demo: a small CAD-like host for the block gallery. It loads
// libmarrowfin.so at run time, shows a drawing sheet, passes its input
// through the panel and answers the panel's requests. With --tour it walks
// through the gallery by itself and writes screenshots.

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTimer>
#include <cstdio>

#include "demo_options.h"
#include "demo_tour.h"
#include "gallery_library.h"
#include "host_window.h"
#include "panel_input_filter.h"
#include "sample_galleries.h"

using namespace marrowfin::demo;

namespace {

// --inspect FILE...: size and colours of screenshots, for scripts that must
// tell a real picture from a blank one without an image tool.
int Inspect(const QStringList& files) {
    int bad = 0;
    for (const QString& file : files) {
        QImage image(file);
        const int colours = DistinctColours(image);
        std::printf("%s %d %d %d\n", qPrintable(file), image.width(), image.height(), colours);
        if (image.isNull() || colours < 3) ++bad;
    }
    return bad == 0 ? ExitOk : ExitTourFailed;
}

QString ProgramDir() {
    // The folder of /proc/self/exe: where the build put the program.
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
}

}  // namespace

int main(int argc, char** argv) {
    // The command line is read before any window system is needed, so that
    // a wrong line is told plainly even without a display.
    QStringList arguments;
    for (int i = 1; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
    if (!arguments.isEmpty() && arguments.first() == QLatin1String("--inspect")) return Inspect(arguments.mid(1));

    const ParsedOptions parsed = ParseDemoOptions(arguments, ProgramDir());
    if (parsed.help) {
        std::fputs(qPrintable(DemoUsage()), stdout);
        return ExitOk;
    }
    if (!parsed.error.isEmpty()) {
        std::fprintf(stderr, "marrowfin-demo: %s\n%s", qPrintable(parsed.error), qPrintable(DemoUsage()));
        return ExitUsage;
    }
    const DemoOptions& options = parsed.options;
    QApplication app(argc, argv);

    QStringList galleries;
    if (!options.sampleDir.isEmpty()) {
        QString error;
        galleries = ReadSampleGalleries(options.sampleDir, &error);
        if (galleries.isEmpty()) {
            std::fprintf(stderr, "marrowfin-demo: %s\n", qPrintable(error));
            return ExitUsage;
        }
    }

    GalleryLibrary library;
    if (!library.Load(options.library)) {
        std::fprintf(stderr, "marrowfin-demo: %s\n", qPrintable(library.error()));
        return ExitLibrary;
    }
    const GalleryExports& gallery = library.exports();

    HostWindow window(gallery, galleries);
    auto* filter = new PanelInputFilter([&gallery](MarrowfinMsg* m) { return gallery.GaDllPretanslateMsg(m); }, &app);
    app.installEventFilter(filter);

    // The order a host keeps: the main window first, then the first
    // synchronisation, long before the user opens the gallery. The galleries
    // of the sample are picked for a fresh profile (a no-op once listed).
    gallery.MarrowfinSetMainWindow(&window);
    for (const QString& name : galleries) gallery.AddMoreGallery(name.toStdU16String().c_str());
    gallery.FirstSynchro();
    window.show();
    // The library draws its pictures from BrindleSkin/ beside the host's
    // program; without it the panel still works but looks bare.
    if (!QFileInfo(ProgramDir() + QStringLiteral("/BrindleSkin")).isDir()) {
        const QString warning =
            QStringLiteral("No BrindleSkin folder beside %1: the gallery is drawn without its pictures")
                .arg(ProgramDir());
        std::fprintf(stderr, "marrowfin-demo: %s\n", qPrintable(warning));
        window.ShowStatus(warning);
    }

    if (options.tourDir.isEmpty()) return app.exec();

    DemoTour tour(gallery, &window, options, galleries);
    int exitCode = ExitTourFailed;
    QObject::connect(&tour, &DemoTour::finished, &app, [&exitCode](int code) {
        exitCode = code;
        QCoreApplication::quit();
    });
    QTimer::singleShot(0, &tour, &DemoTour::Start);
    app.exec();
    return exitCode;
}
