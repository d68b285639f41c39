#pragma once
// Drawing steps shared by the panel's painters: placed text lines, frames and
// skin cells, all taking pixel rectangles already scaled by the caller.

#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>

class QPainter;

namespace marrowfin {

// Left, centred, right: one line, vertically centred. Ellipsis: left with an
// end ellipsis when the text is wider than the rectangle.
enum class Place { Left, Centre, Right, Ellipsis };

// Draws one line placed by `rect`; a text larger than the rectangle is not
// cut (the painter's clip still holds).
void PlaceText(QPainter& painter, const QRect& rect, const QString& text, const QFont& font, const QColor& colour,
               Place place);

// A frame `width` pixels wide lying inside `rect`; `fill` (when valid) fills
// what is inside the frame.
void DrawFrame(QPainter& painter, const QRect& rect, int width, const QColor& pen, const QColor& fill = QColor());

// A skin cell of the sheet (x, y, size in sheet units) drawn square into the
// box at left, top with `size` base units.
void DrawSquareCell(QPainter& painter, const QPoint& origin, int left, int top, int size, int cellX, int cellY,
                    int cellSize);

// A button of a result row: one-pixel outline and a centred caption, in the
// hover colours when the mouse is on it.
void DrawRowButton(QPainter& painter, const QRect& rect, const QString& caption, bool hover);

// The progress bar of a downloading row: a round track and, from its left, an
// accent bar for `percent`, at least 8 units and at most the track.
void DrawRowProgress(QPainter& painter, const QRect& rect, int percent);
// The width in pixels of the accent part of that bar.
int RowProgressWidth(int trackWidth, int percent);

}  // namespace marrowfin
