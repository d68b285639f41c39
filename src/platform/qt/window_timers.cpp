#include "platform/qt/window_timers.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>
#include <map>

#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"

namespace marrowfin {

namespace {

// The table lives on the windows themselves: a QObject child per window holds
// its timers, so they die with the window and no entry outlives it.
class TimerTable final : public QObject {
public:
    explicit TimerTable(QObject* window) : QObject(window) { setObjectName(QStringLiteral("mf_timer_table")); }
    std::map<std::uintptr_t, QTimer*> timers;
};

TimerTable* TableOf(QObject* window, bool create) {
    for (QObject* child : window->children()) {
        if (child->objectName() == QLatin1String("mf_timer_table")) return static_cast<TimerTable*>(child);
    }
    return create ? new TimerTable(window) : nullptr;
}

}  // namespace

bool SetTimer(WindowHandle window, std::uintptr_t id, unsigned intervalMs) {
    QObject* target = ObjectOf(window);
    if (!target) return false;
    TimerTable* table = TableOf(target, true);
    auto it = table->timers.find(id);
    if (it != table->timers.end()) {
        it->second->stop();  // may be the timer whose handler restarts it
        it->second->deleteLater();
        table->timers.erase(it);
    }
    auto* timer = new QTimer(table);
    timer->setInterval(static_cast<int>(intervalMs));
    QObject::connect(timer, &QTimer::timeout, target, [window, id] {
        QObject* receiver = ObjectOf(window);
        if (!receiver) return;
        WindowMessageEvent tick(WindowMessage{WM_TIMER_MESSAGE, id, 0, nullptr});
        QCoreApplication::sendEvent(receiver, &tick);
    });
    table->timers.emplace(id, timer);
    timer->start();
    return true;
}

bool KillTimer(WindowHandle window, std::uintptr_t id) {
    QObject* target = ObjectOf(window);
    if (!target) return false;
    TimerTable* table = TableOf(target, false);
    if (!table) return false;
    auto it = table->timers.find(id);
    if (it == table->timers.end()) return false;
    // The handler of this very timer may be running: let Qt delete it later.
    it->second->stop();
    it->second->deleteLater();
    table->timers.erase(it);
    return true;
}

bool IsTimerRunning(WindowHandle window, std::uintptr_t id) {
    QObject* target = ObjectOf(window);
    if (!target) return false;
    TimerTable* table = TableOf(target, false);
    return table && table->timers.count(id) != 0;
}

}  // namespace marrowfin
