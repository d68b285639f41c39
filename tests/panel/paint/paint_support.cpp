#include "paint_support.h"

#include <QCoreApplication>
#include <QDir>
#include <QPainter>
#include <cstdlib>

#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin::test {

bool UsePaintRate(float rate) {
    SetSkinRateForTest(rate);
    MakeSkinFonts(rate);
    return LoadSkinSheet();
}

QImage PaintInto(const QSize& size, const std::function<void(QPainter&)>& paint, QColor ground) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    paint(painter);
    return image;
}

QImage TextAlone(const QSize& size, const QRect& rect, const QString& text, SkinFont font, const QColor& colour,
                 int flags) {
    return PaintInto(size, [&](QPainter& p) {
        p.setFont(Font(font));
        p.setPen(colour);
        p.drawText(rect, flags, text);
    });
}

QImage Stacked(const std::vector<QImage>& images, int columns, int gap) {
    const QSize one = images.front().size();
    const int rows = (int(images.size()) + columns - 1) / columns;
    return PaintInto(
        QSize(columns * one.width() + (columns - 1) * gap, rows * one.height()),
        [&](QPainter& p) {
            for (size_t i = 0; i < images.size(); ++i)
                p.drawImage(int(i % columns) * (one.width() + gap), int(i / columns) * one.height(), images[i]);
        },
        Qt::lightGray);
}

QSize PanelClient() { return QSize(ScaleUnits(755), ScaleUnits(454)); }

int CountColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance) {
    const QRect clipped = area.intersected(image.rect());
    int count = 0;
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        for (int x = clipped.left(); x <= clipped.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - colour.red()) <= tolerance && std::abs(c.green() - colour.green()) <= tolerance &&
                std::abs(c.blue() - colour.blue()) <= tolerance)
                ++count;
        }
    }
    return count;
}

bool HasColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance) {
    return CountColour(image, area, colour, tolerance) > 0;
}

int CountNot(const QImage& image, const QRect& area, const QColor& ground) {
    return area.intersected(image.rect()).width() * area.intersected(image.rect()).height() -
           CountColour(image, area, ground);
}

bool SameIn(const QImage& a, const QImage& b, const QRect& area) {
    const QRect clipped = area.intersected(a.rect()).intersected(b.rect());
    for (int y = clipped.top(); y <= clipped.bottom(); ++y)
        for (int x = clipped.left(); x <= clipped.right(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y)) return false;
    return true;
}

QColor At(const QImage& image, int x, int y) { return image.pixelColor(x, y); }

void ExpectPixels(const QImage& image, std::initializer_list<Probe> probes) {
    for (const Probe& p : probes) EXPECT_EQ(At(image, p.x, p.y), p.colour) << "at " << p.x << "," << p.y;
}

QString SavePng(const QImage& image, const QString& name) {
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/rendered/paint");
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name;
    image.save(path, "PNG");
    return path;
}

}  // namespace marrowfin::test
