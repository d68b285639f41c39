#pragma once
// Small drawing helpers shared by the skin's painters.

#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>

class QPainter;

namespace marrowfin {

enum class TextPlace { Left, Centre, Right };

// One line, vertically centred in `rect`, optionally cut with an end ellipsis.
void DrawTextLine(QPainter& painter, const QRect& rect, const QString& text, const QFont& font, const QColor& colour,
                  TextPlace place, bool ellipsis);
// A filled rectangle with a one-pixel outline inside `rect`.
void DrawOutlinedRect(QPainter& painter, const QRect& rect, const QColor& pen, const QColor& brush);
// A smoothed round rectangle of `rect` with corner radius `radius` pixels; a
// null pen colour draws no outline.
void DrawRoundRect(QPainter& painter, const QRect& rect, qreal radius, const QColor& pen, const QColor& brush);

}  // namespace marrowfin
