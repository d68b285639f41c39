#include "demo_options.h"

#include <QDir>

namespace marrowfin::demo {

QString DemoUsage() {
    return QStringLiteral(
        "usage: marrowfin-demo [--library PATH] [--tour DIR [--short]] [--sample DIR]\n"
        "                      [--rate-label TEXT] [--step-timeout MS]\n"
        "  --library PATH     libmarrowfin.so to load (default: the build folder's)\n"
        "  --tour DIR         run the scripted walk, write tour.log and screenshots into DIR\n"
        "  --short            the walk without the optional steps (for tests)\n"
        "  --sample DIR       the service's data folder: gallery names for the walk\n"
        "  --rate-label TEXT  names the screenshots of this run (default 1.0)\n"
        "  --step-timeout MS  how long a step of the walk may wait (default 15000)\n"
        "  --inspect PNG...   print size and colours of pictures; 1 when one is blank\n"
        "exit codes: 0 fine, 1 a step of the walk failed, 2 bad command line,\n"
        "            3 the library cannot be loaded or lacks exports\n");
}

ParsedOptions ParseDemoOptions(const QStringList& arguments, const QString& programDir) {
    ParsedOptions parsed;
    DemoOptions& o = parsed.options;
    o.library = QDir(programDir).absoluteFilePath(QStringLiteral("../../libmarrowfin.so"));
    o.library = QDir::cleanPath(o.library);
    o.rateLabel = QStringLiteral("1.0");

    auto fail = [&parsed](const QString& text) {
        parsed.error = text;
        return parsed;
    };
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& arg = arguments[i];
        auto value = [&](QString& out) {
            if (i + 1 >= arguments.size() || arguments[i + 1].isEmpty()) return false;
            out = arguments[++i];
            return true;
        };
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            parsed.help = true;
        } else if (arg == QLatin1String("--library")) {
            if (!value(o.library)) return fail(QStringLiteral("--library needs a path"));
        } else if (arg == QLatin1String("--tour")) {
            if (!value(o.tourDir)) return fail(QStringLiteral("--tour needs a folder"));
        } else if (arg == QLatin1String("--sample")) {
            if (!value(o.sampleDir)) return fail(QStringLiteral("--sample needs a folder"));
        } else if (arg == QLatin1String("--rate-label")) {
            if (!value(o.rateLabel)) return fail(QStringLiteral("--rate-label needs a text"));
            if (o.rateLabel.contains(QLatin1Char('/'))) return fail(QStringLiteral("--rate-label must not hold a '/'"));
        } else if (arg == QLatin1String("--step-timeout")) {
            QString text;
            bool ok = false;
            if (value(text)) o.stepTimeoutMs = text.toInt(&ok);
            if (!ok || o.stepTimeoutMs < 100 || o.stepTimeoutMs > 600000)
                return fail(QStringLiteral("--step-timeout needs milliseconds between 100 and 600000"));
        } else if (arg == QLatin1String("--short")) {
            o.shortTour = true;
        } else {
            return fail(QStringLiteral("unknown argument: %1").arg(arg));
        }
    }
    if (o.shortTour && o.tourDir.isEmpty()) return fail(QStringLiteral("--short belongs to --tour"));
    return parsed;
}

}  // namespace marrowfin::demo
