#pragma once
// The host's part of the panel's keyboard and mouse handling: every input
// event of the application goes through GaDllPretanslateMsg once, before it
// is dispatched, and an event the panel consumed is not dispatched.
//
// An application event filter sees an event again at each parent while Qt
// propagates it upwards (a key press the focus widget ignores, a wheel the
// child does not take), and for mouse moves a fresh copy per parent. Those
// later deliveries are the same user event, so only the first one is passed.

#include <QEvent>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <functional>

#include "marrowfin/marrowfin.h"

namespace marrowfin::demo {

class PanelInputFilter : public QObject {
    Q_OBJECT
public:
    using PreTranslate = std::function<int(MarrowfinMsg*)>;

    explicit PanelInputFilter(PreTranslate preTranslate, QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

    // Whether this filter passes events of the type at all.
    static bool IsPassedType(QEvent::Type type);

    int passed() const { return m_passed; }
    int swallowed() const { return m_swallowed; }

private:
    // What tells a propagated delivery from a new event of the same kind.
    struct Delivery {
        QPointer<QObject> receiver;
        QEvent* event = nullptr;
        QEvent::Type type = QEvent::None;
        quint64 timestamp = 0;
        QPointF globalPos;
        int key = 0;
        int modifiers = 0;
        bool consumed = false;
    };
    static Delivery Describe(QObject* receiver, QEvent* event);
    bool IsPropagationOf(const Delivery& next) const;

    PreTranslate m_preTranslate;
    Delivery m_last;
    int m_passed = 0;
    int m_swallowed = 0;
};

}  // namespace marrowfin::demo
