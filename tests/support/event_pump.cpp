#include "event_pump.h"

#include <QCoreApplication>
#include <QElapsedTimer>

namespace marrowfin::test {

bool PumpUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer t;
    for (t.start(); !done(); QCoreApplication::processEvents(QEventLoop::AllEvents, 5))
        if (t.elapsed() >= timeoutMs) return false;
    return true;
}

void Pump(int ms) {
    PumpUntil([] { return false; }, ms);
}

}  // namespace marrowfin::test
