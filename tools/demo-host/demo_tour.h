#pragma once
// The scripted walk through the gallery for runs without a person: each step
// drives the host or the panel as a user would (exports, orders, synthesized
// mouse events), waits for what it should bring about, and is logged with a
// time into tour.log; screenshots go beside the log.

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "demo_options.h"
#include "gallery_library.h"
#include "stall_meter.h"

class QWidget;

namespace marrowfin::demo {

class HostWindow;

// The panel's top-level window (caption "Ombrel_Panel"), or null.
QWidget* FindPanelWidget();
// The first child of `panel` whose class is named `className` (with or
// without namespace), or null.
QWidget* FindPanelChild(QWidget* panel, const char* className);
// A picture is blank when it is null or (nearly) one colour.
int DistinctColours(const QImage& image, int stopAt = 64);
// Sends a press and release (and a double-click when asked) at `pos` of `widget`.
void ClickAt(QWidget* widget, QPoint pos, bool doubleClick = false);

class DemoTour : public QObject {
    Q_OBJECT
public:
    DemoTour(const GalleryExports& exports, HostWindow* host, DemoOptions options, QStringList galleries,
             QObject* parent = nullptr);
    ~DemoTour() override { m_done->store(true); }

    // Opens the log and begins; `finished` follows with the exit code.
    void Start();
    int failures() const { return m_failures; }
    QStringList shots() const { return m_shots; }

signals:
    void finished(int exitCode);

private:
    struct Step {
        QString name;
        std::function<bool(QString& why)> act;  // false: the step failed at once
        std::function<bool()> done;  // null: done after `settleMs`
        int settleMs = 0;  // quiet time after `done` holds
        QString shot;  // screenshot of the panel; empty: none
        bool shotHost = false;  // screenshot of the whole host instead
        std::function<bool(QString& why)> check = nullptr;  // after settling, before the shot
    };

    void BuildSteps();
    void AddCollectionSteps(int settle, int netSettle);
    void ArmWatchdog();
    void Poll();
    void BeginStep();
    void EndStep(bool ok, const QString& why);
    void Finish();
    void HandleModal();
    bool PanelVisible() const;
    // Takes the picture and saves it; the time it takes is the tour's own.
    bool Shoot(const QString& name, const std::function<QImage()>& take);
    QImage DesktopImage() const;
    void Log(const QString& text);

    const GalleryExports& m_exports;
    QPointer<HostWindow> m_host;
    DemoOptions m_options;
    QStringList m_galleries;
    std::vector<Step> m_steps;
    size_t m_current = 0;
    enum class Phase { Acting, Waiting, Settling } m_phase = Phase::Acting;
    QElapsedTimer m_stepClock, m_settleClock, m_tourClock;
    QTimer m_poll;
    StallMeter m_stalls;  // the longest stall of the event loop, per step
    QFile m_log;
    bool m_inAction = false;
    int m_failures = 0;
    int m_shotNumber = 0;
    QStringList m_shots;
    int m_insertTries = 0;
    int m_insertedBefore = 0;  // insertion requests before the result row's use
    QElapsedTimer m_useClock;  // since the last double click on the result row
    qint64 m_lastTry = 0;
    int m_feedbackSeen = 0;
    bool m_feedbackSent = false;
    qint64 m_feedbackShownAt = -1;
    bool m_acceptSignIn = false;
    bool m_stepAnswersModals = false;  // the collection steps press the dialogs' own buttons
    int m_signInAsked = 0;
    // Shared with the watchdog thread, which may outlive the tour object.
    std::shared_ptr<std::atomic<bool>> m_done = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace marrowfin::demo
