#include "render_support.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDir>
#include <QPainter>
#include <QPointer>
#include <QWindow>
#include <QtTest/QTest>

#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin::test {

QString RenderFolder() {
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/rendered");
    QDir().mkpath(folder);
    return folder;
}

QImage Grab(QWidget* widget) { return widget->grab().toImage().convertToFormat(QImage::Format_RGB32); }

QString SavePng(const QImage& image, const QString& name) {
    const QString path = RenderFolder() + QLatin1Char('/') + name;
    image.save(path, "PNG");
    return path;
}

QString SaveRatePng(const QImage& image, const QString& stem, float rate) {
    return SavePng(image, stem + QStringLiteral("_rate_") + QString::number(rate, 'f', 1) + QStringLiteral(".png"));
}

QImage Strip(const std::vector<QImage>& images, Qt::Orientation orientation, int gap, const QColor& ground) {
    const bool across = orientation == Qt::Horizontal;
    int along = gap, thick = 0;
    for (const QImage& i : images) {
        along += (across ? i.width() : i.height()) + gap;
        thick = std::max(thick, across ? i.height() : i.width());
    }
    QImage out(across ? along : thick + 2 * gap, across ? thick + 2 * gap : along, QImage::Format_RGB32);
    out.fill(ground);
    QPainter p(&out);
    int at = gap;
    for (const QImage& i : images) {
        p.drawImage(across ? QPoint(at, gap) : QPoint(gap, at), i);
        at += (across ? i.width() : i.height()) + gap;
    }
    return out;
}

bool ShowExposed(QWidget* window) {
    ParkMouse();
    window->show();
    return QTest::qWaitForWindowExposed(window);
}

bool ContainsColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance) {
    const QRect clipped = area.intersected(image.rect());
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        for (int x = clipped.left(); x <= clipped.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - colour.red()) <= tolerance && std::abs(c.green() - colour.green()) <= tolerance &&
                std::abs(c.blue() - colour.blue()) <= tolerance)
                return true;
        }
    }
    return false;
}

QColor PixelAt(const QImage& image, int x, int y) { return image.pixelColor(x, y); }

void UseRate(float rate) {
    SetSkinRateForTest(rate);
    LoadSkinSheet();
}

void MoveMouseTo(QWidget* widget, QPoint pos) {
    // Through the window, as the platform delivers moves: enter and leave follow.
    QWidget* top = widget->window();
    // The first move into a new window only enters the window: step in at its
    // corner first so that the real move reaches the child under it.
    static QPointer<QWindow> lastWindow;
    if (lastWindow != top->windowHandle()) {
        lastWindow = top->windowHandle();
        QTest::mouseMove(lastWindow, QPoint(1, 1));  // (0, 0) would mean the centre
    }
    QTest::mouseMove(top->windowHandle(), widget->mapTo(top, pos));
    QCoreApplication::processEvents();
}

void ParkMouse() {
    QCursor::setPos(QPoint(799, 599));
    QCoreApplication::processEvents();
}

void MoveMouseAway(QWidget* window) {
    QTest::mouseMove(window, QPoint(window->width() - 1, window->height() - 1));
    QCoreApplication::processEvents();
}

}  // namespace marrowfin::test
