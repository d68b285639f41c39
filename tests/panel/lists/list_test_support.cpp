#include "list_test_support.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/QTest>

#include "platform/qt/window_message_event.h"

namespace marrowfin::test {

std::vector<Recorded> RecordingOwner::Take() {
    QCoreApplication::processEvents();
    std::vector<Recorded> out;
    out.swap(messages);
    return out;
}

bool RecordingOwner::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* m = static_cast<WindowMessageEvent*>(event);
        messages.push_back({m->Message(), m->WParam(), m->LParam()});
        return true;
    }
    return QWidget::event(event);
}

void ClickAt(QWidget* widget, QPoint pos, Qt::MouseButton button) {
    QWidget* top = widget->window();
    QTest::mouseClick(top->windowHandle(), button, {}, widget->mapTo(top, pos));
    QCoreApplication::processEvents();
}

void DoubleClickAt(QWidget* widget, QPoint pos) {
    QWidget* top = widget->window();
    QTest::mouseDClick(top->windowHandle(), Qt::LeftButton, {}, widget->mapTo(top, pos));
    QCoreApplication::processEvents();
}

void WheelAt(QWidget* widget, QPoint pos, int delta) {
    QWheelEvent wheel(QPointF(pos), QPointF(widget->mapToGlobal(pos)), QPoint(), QPoint(0, delta), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &wheel);
    QCoreApplication::processEvents();
}

void Pump(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

bool ShowAndWait(QWidget* window) {
    window->show();
    const bool exposed = QTest::qWaitForWindowExposed(window);
    QCoreApplication::processEvents();
    return exposed;
}

bool Differs(const QImage& a, const QImage& b, const QRect& area) {
    const QRect r = area.intersected(a.rect()).intersected(b.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y)) return true;
    return false;
}

bool SameBlock(const QImage& a, const QRect& area, const QImage& b, QPoint atB) {
    if (!a.rect().contains(area) || !b.rect().contains(QRect(atB, area.size()))) return false;
    return a.copy(area) == b.copy(QRect(atB, area.size()));
}

}  // namespace marrowfin::test
