#include "widget_input.h"

#include <QApplication>
#include <QCursor>
#include <QPointer>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>
#include <QtTest/QTest>

namespace marrowfin::test {

bool ShowExposed(QWidget* window) {
    ParkMouse();
    window->show();
    return QTest::qWaitForWindowExposed(window);
}

void Click(QWidget* widget, QPoint at, Qt::MouseButton button) {
    QTest::mouseClick(widget, button, {}, at);
    QCoreApplication::processEvents();
}

void DoubleClick(QWidget* widget, QPoint at) {
    QTest::mouseDClick(widget, Qt::LeftButton, {}, at);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, at);  // the button comes up again
}

void Press(QWidget* widget, QPoint at, Qt::MouseButton button) { QTest::mousePress(widget, button, {}, at); }

void Release(QWidget* widget, QPoint at, Qt::MouseButton button) { QTest::mouseRelease(widget, button, {}, at); }

void MoveTo(QWidget* widget, QPoint at) {
    QWidget* top = widget->window();
    // The first move into a new window only enters the window: step in at its
    // corner first so that the real move reaches the child under it.
    static QPointer<QWindow> lastWindow;
    if (lastWindow != top->windowHandle()) {
        lastWindow = top->windowHandle();
        QTest::mouseMove(lastWindow, QPoint(1, 1));  // (0, 0) would mean the centre
    }
    QTest::mouseMove(top->windowHandle(), widget->mapTo(top, at));
    QCoreApplication::processEvents();
}

void MoveAway(QWidget* window) { MoveTo(window, QPoint(window->width() - 1, window->height() - 1)); }

void Wheel(QWidget* widget, QPoint at, int notches) {
    QWheelEvent wheel(QPointF(at), widget->mapToGlobal(QPointF(at)), QPoint(), QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &wheel);
    QCoreApplication::processEvents();
}

void Key(QWidget* widget, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(widget, key, modifiers);
    QCoreApplication::processEvents();
}

void ParkMouse() {
    QCursor::setPos(QPoint(799, 599));
    QCoreApplication::processEvents();
}

}  // namespace marrowfin::test
