#pragma once
// Real mouse and key events to widgets, delivered through their window as the
// platform delivers them, so that enter, leave, hover and focus follow.

#include <QPoint>
#include <Qt>

class QWidget;

namespace marrowfin::test {

// Parks the pointer, shows the window and waits until it is exposed.
bool ShowExposed(QWidget* window);
// A press and a release, then what they posted is delivered.
void Click(QWidget* widget, QPoint at, Qt::MouseButton button = Qt::LeftButton);
// These leave what they posted waiting for the event loop.
void DoubleClick(QWidget* widget, QPoint at);
void Press(QWidget* widget, QPoint at, Qt::MouseButton button = Qt::LeftButton);
void Release(QWidget* widget, QPoint at, Qt::MouseButton button = Qt::LeftButton);
// Moves the pointer over `widget` at `at`; leaves whatever it was over before.
void MoveTo(QWidget* widget, QPoint at);
// Moves the pointer to the window's far corner, off every child in it.
void MoveAway(QWidget* window);
// One wheel turn of `notches` (positive: away from the user) at `at`.
void Wheel(QWidget* widget, QPoint at, int notches);
void Key(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Puts the pointer in the screen's far corner, away from the next window.
void ParkMouse();

}  // namespace marrowfin::test
