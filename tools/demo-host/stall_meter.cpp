#include "stall_meter.h"

#include <algorithm>

namespace marrowfin::demo {

StallMeter::StallMeter(QObject* parent) : QObject(parent) {
    // Precise: a coarse timer may fire up to 5 % late, which would read as a stall.
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(kPeriodMs);
    connect(&m_timer, &QTimer::timeout, this, &StallMeter::Tick);
}

void StallMeter::BeginStage(const QString& name) {
    m_stages.push_back(Stage{name});
    if (!m_timer.isActive()) {
        m_clock.start();
        m_ownWorkMs = 0;
        m_timer.start();
    }
}

void StallMeter::Stop() { m_timer.stop(); }

void StallMeter::Tick() { NoteGap(m_clock.restart()); }

void StallMeter::NoteGap(qint64 gapMs) {
    if (m_stages.empty()) return;
    // A gap belongs to the stage that was current when it ended: a step's
    // action blocks inside the step, so its gap ends there.
    const qint64 gap = std::max<qint64>(0, gapMs - m_ownWorkMs);
    m_ownWorkMs = 0;
    Stage& stage = m_stages.back();
    ++stage.ticks;
    stage.longestGapMs = std::max(stage.longestGapMs, gap);
    if (gap >= kLongGapMs) ++stage.longGaps;
}

QString StallMeter::Table() const {
    int width = 5;
    for (const Stage& s : m_stages) width = std::max(width, static_cast<int>(s.name.size()));
    QString out = QStringLiteral("%1  %2  %3\n")
                      .arg(QStringLiteral("stage"), -width)
                      .arg(QStringLiteral("longest stall ms"), 16)
                      .arg(QStringLiteral("stalls >= %1 ms").arg(kLongGapMs), 16);
    qint64 worst = 0;
    QString worstName;
    for (const Stage& s : m_stages) {
        out += QStringLiteral("%1  %2  %3\n").arg(s.name, -width).arg(s.longestGapMs, 16).arg(s.longGaps, 16);
        if (s.longestGapMs > worst) {
            worst = s.longestGapMs;
            worstName = s.name;
        }
    }
    out += QStringLiteral("longest of all: %1 ms (%2); a turning loop ticks every %3 ms\n")
               .arg(worst)
               .arg(worstName.isEmpty() ? QStringLiteral("-") : worstName)
               .arg(kPeriodMs);
    return out;
}

}  // namespace marrowfin::demo
