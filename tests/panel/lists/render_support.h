#pragma once
// Helpers of the list tests (still to move to marrowfin_qtsupport): real mouse events, rendering to PNG under the
// build folder, and colour probes.

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

#include <vector>

namespace marrowfin::test {

// The folder the PNGs go to: <test program's folder>/rendered, made on demand.
QString RenderFolder();
QImage Grab(QWidget* widget);
// Saves under RenderFolder(); answers the path.
QString SavePng(const QImage& image, const QString& name);
// Saves as "<stem>_rate_<rate with one decimal>.png".
QString SaveRatePng(const QImage& image, const QString& stem, float rate);
// The pictures in a row (or a column), `gap` pixels apart and from the edge.
QImage Strip(const std::vector<QImage>& images, Qt::Orientation orientation, int gap, const QColor& ground);
// Parks the pointer, shows the window and waits until it is exposed.
bool ShowExposed(QWidget* window);
// Whether some pixel in `area` is within `tolerance` of `colour` in each channel.
bool ContainsColour(const QImage& image, const QRect& area, const QColor& colour, int tolerance = 0);
QColor PixelAt(const QImage& image, int x, int y);
// Loads the sheet of the current bucket from beside the test program.
void UseRate(float rate);
// Sends real mouse moves to `widget` (through its window) so enter/leave fire.
void MoveMouseTo(QWidget* widget, QPoint pos);
void MoveMouseAway(QWidget* window);
// Puts the pointer in the screen's far corner, away from the next window.
void ParkMouse();

}  // namespace marrowfin::test
