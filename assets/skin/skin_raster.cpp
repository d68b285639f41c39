// Rasterises the skin's vector sources into the BrindleSkin folder(s) at build
// time: skin_raster <pictures.txt> <source dir> <output dir>...
#include <QFile>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>
#include <cstdio>

namespace {

bool Render(const QString& svg, const QString& out, int width, int height, const QStringList& folders) {
    QSvgRenderer renderer(svg);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "skin_raster: cannot read %s\n", qPrintable(svg));
        return false;
    }
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setRenderHint(QPainter::TextAntialiasing, true);
        renderer.render(&painter, QRectF(0, 0, width, height));
    }
    for (const QString& folder : folders) {
        const QString path = folder + QLatin1Char('/') + out + QStringLiteral(".png");
        if (!image.save(path, "PNG")) {
            std::fprintf(stderr, "skin_raster: cannot write %s\n", qPrintable(path));
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "usage: skin_raster <pictures.txt> <source dir> <output dir>...\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");  // text in the sources needs fonts, not a display
    QGuiApplication app(argc, argv);
    const QString list = QString::fromLocal8Bit(argv[1]);
    const QString sourceDir = QString::fromLocal8Bit(argv[2]);
    QStringList folders;
    for (int i = 3; i < argc; ++i) {
        folders << QString::fromLocal8Bit(argv[i]);
        if (!QDir().mkpath(folders.last())) {
            std::fprintf(stderr, "skin_raster: cannot make %s\n", argv[i]);
            return 1;
        }
    }
    QFile file(list);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        std::fprintf(stderr, "skin_raster: cannot read %s\n", argv[1]);
        return 1;
    }
    static const double kBuckets[4] = {1.0, 1.5, 2.5, 3.5};
    QTextStream in(&file);
    int made = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) continue;
        const QStringList f = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (f.size() < 5) {
            std::fprintf(stderr, "skin_raster: bad line: %s\n", qPrintable(line));
            return 1;
        }
        const QString svg = sourceDir + QLatin1Char('/') + f[0];
        const int w = f[2].toInt(), h = f[3].toInt();
        bool ok = true;
        if (f[4] == QLatin1String("buckets")) {
            for (int b = 0; b < 4 && ok; ++b)
                ok = Render(svg, f[1] + QStringLiteral("_%1").arg(b + 1), static_cast<int>(w * kBuckets[b]),
                            static_cast<int>(h * kBuckets[b]), folders);
        } else if (f[4] == QLatin1String("icon")) {
            for (int i = 5; i < f.size() && ok; ++i)
                ok = Render(svg, f[1] + QLatin1Char('_') + f[i], f[i].toInt(), f[i].toInt(), folders);
        } else {
            ok = Render(svg, f[1], w, h, folders);
        }
        if (!ok) return 1;
        ++made;
    }
    return made > 0 ? 0 : 1;
}
