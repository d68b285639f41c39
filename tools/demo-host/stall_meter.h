#pragma once
// How long the user-interface thread stops turning: a fine timer on that
// thread notes the gap between its ticks, and the gaps are kept per stage
// (a step of the tour). A turning loop shows gaps near the timer's period;
// a call that blocks the thread shows as one long gap when it returns.

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <vector>

namespace marrowfin::demo {

class StallMeter : public QObject {
public:
    static constexpr int kPeriodMs = 10;
    static constexpr int kLongGapMs = 100;

    struct Stage {
        QString name;
        qint64 longestGapMs = 0;  // the longest gap between two ticks, own work taken out
        int longGaps = 0;  // gaps of kLongGapMs or more
        int ticks = 0;
    };

    explicit StallMeter(QObject* parent = nullptr);

    // Starts measuring into a new stage; the first call starts the timer.
    void BeginStage(const QString& name);
    void Stop();
    // Time the measuring program spent on its own work (screenshots) on the
    // thread: taken out of the gap it falls into, so that only the measured
    // code's stalls count.
    void AddOwnWork(qint64 ms) { m_ownWorkMs += ms; }
    // A gap as the timer would see it; the tick handler calls this.
    void NoteGap(qint64 gapMs);

    const std::vector<Stage>& stages() const { return m_stages; }
    // The stages as an aligned table with a header line and a closing line
    // for the longest gap of all.
    QString Table() const;

private:
    void Tick();

    QTimer m_timer;
    QElapsedTimer m_clock;
    std::vector<Stage> m_stages;
    qint64 m_ownWorkMs = 0;
};

}  // namespace marrowfin::demo
