#include "panel_input_filter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

namespace marrowfin::demo {

PanelInputFilter::PanelInputFilter(PreTranslate preTranslate, QObject* parent)
    : QObject(parent), m_preTranslate(std::move(preTranslate)) {}

bool PanelInputFilter::IsPassedType(QEvent::Type type) {
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::MouseMove:
        case QEvent::Wheel: return true;
        default: return false;
    }
}

PanelInputFilter::Delivery PanelInputFilter::Describe(QObject* receiver, QEvent* event) {
    Delivery d;
    d.receiver = receiver;
    d.event = event;
    d.type = event->type();
    if (auto* input = dynamic_cast<QInputEvent*>(event)) {
        d.timestamp = input->timestamp();
        d.modifiers = static_cast<int>(input->modifiers());
    }
    if (auto* key = dynamic_cast<QKeyEvent*>(event)) {
        d.key = key->key();
    } else if (auto* pointer = dynamic_cast<QSinglePointEvent*>(event)) {
        d.globalPos = pointer->globalPosition();
    }
    return d;
}

bool PanelInputFilter::IsPropagationOf(const Delivery& next) const {
    // Qt hands the same event (keys) or a copy with the same time, place and
    // key (mouse, wheel) to the parent of the widget that had it last.
    if (!m_last.receiver || next.type != m_last.type || next.timestamp != m_last.timestamp || next.key != m_last.key ||
        next.modifiers != m_last.modifiers || next.globalPos != m_last.globalPos)
        return false;
    auto* child = qobject_cast<QWidget*>(m_last.receiver.data());
    auto* candidate = qobject_cast<QWidget*>(next.receiver.data());
    if (!child || !candidate || child == candidate) return false;
    if (next.type == QEvent::KeyPress || next.type == QEvent::KeyRelease) {
        if (next.event != m_last.event) return false;
    }
    return candidate->isAncestorOf(child);
}

bool PanelInputFilter::eventFilter(QObject* watched, QEvent* event) {
    if (!IsPassedType(event->type())) return false;
    // The window-level delivery precedes the widget's and carries a
    // different event object; the widget's one is the message a host loop
    // would see.
    if (!watched->isWidgetType()) return false;
    Delivery next = Describe(watched, event);
    if (IsPropagationOf(next)) {
        // Already answered at the first delivery; keep the answer, so that
        // a consumed event does not surface at a parent either.
        m_last.receiver = watched;
        m_last.event = event;
        return m_last.consumed;
    }
    MarrowfinMsg message{watched, event};
    const int answer = m_preTranslate ? m_preTranslate(&message) : 0;
    ++m_passed;
    next.consumed = answer == 1;
    m_last = next;
    if (next.consumed) ++m_swallowed;
    return next.consumed;
}

}  // namespace marrowfin::demo
