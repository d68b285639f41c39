#pragma once
// Helpers of the window tests: real mouse events, rendering to PNG under the
// build folder, and colour probes.

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <QWidget>

namespace marrowfin::test {

// The folder the PNGs go to: <test program's folder>/rendered, made on demand.
QString RenderFolder();
QImage Grab(QWidget* widget);
// Saves under RenderFolder(); answers the path.
QString SavePng(const QImage& image, const QString& name);
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
