#pragma once
// Helpers of the painting tests: images to paint into, colour probes and
// PNGs written under the build folder.

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <functional>

class QPainter;

namespace marrowfin::test {

// Sets the rate, its fonts and loads the sheet of its bucket from beside
// the test program; false when the sheet is missing.
bool UsePaintRate(float rate);
// A white RGB32 image of the given size with `paint` run on it.
QImage PaintInto(const QSize& size, const std::function<void(QPainter&)>& paint, QColor ground = Qt::white);
// The client size of the panel at the current rate.
QSize PanelClient();
// Number of pixels in `area` within `tolerance` of `colour` in each channel.
int CountColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance = 0);
bool HasColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance = 0);
// Pixels in `area` that are not `ground`.
int CountNot(const QImage& image, const QRect& area, const QColor& ground);
// Whether two images agree in every pixel of `area`.
bool SameIn(const QImage& a, const QImage& b, const QRect& area);
QColor At(const QImage& image, int x, int y);
// Writes <test program's folder>/rendered/paint/<name>.
QString SavePng(const QImage& image, const QString& name);

}  // namespace marrowfin::test
