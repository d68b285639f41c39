#pragma once
// One panel on a fresh home, with the stand-in service and a recording host
// window: what the tests of the panel window start from.

#include <QPoint>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "marrowfin/marrowfin.h"
#include "panel/dialog/brindle_dlg.h"
#include "service_handle.h"
#include "support/temp_home.h"

class QKeyEvent;

namespace marrowfin::test {

// The host's main window: records every request and notice; answers request
// 7 with `channel`.
class RecordingHost : public QWidget {
public:
    struct Record {
        uint32_t message;
        uintptr_t wParam;
        intptr_t lParam;
    };
    std::vector<Record> records;
    std::u16string channel = u"频道-7";

protected:
    bool event(QEvent* event) override;
};

struct WorldOptions {
    float rate = 1.0f;
    bool listGallery = true;     // Show.xml names the sample's first gallery
    bool firstSync = true;       // the host ran FirstSynchro before showing
    bool attachHost = true;      // the host named its main window
    std::u16string mode;         // showMode before Create
    bool parentIsHost = false;   // the panel is a tool window of the host
};

class PanelWorld {
public:
    explicit PanelWorld(const WorldOptions& options = {});
    ~PanelWorld();

    CBrindleDlg& panel() { return *m_panel; }
    RecordingHost& host() { return m_host; }
    const TempHome& home() const { return m_home; }
    service::ServiceHandle& service() { return m_service; }
    const std::vector<std::u16string>& galleries() const { return m_names; }

private:
    TempHome m_home;
    std::vector<std::u16string> m_names;
    service::ServiceHandle m_service;
    RecordingHost m_host;
    std::unique_ptr<CBrindleDlg> m_panel;
};

// Frees the process-wide store's tree, so that a test starts with none.
void ResetGalleryStore();

// Events as the host's loop hands them to GaDllPretanslateMsg.
bool PressKey(CBrindleDlg& panel, QObject* receiver, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
bool ReleaseKey(CBrindleDlg& panel, QObject* receiver, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// A real left click on the panel's background at a pixel point.
void ClickPanel(CBrindleDlg& panel, QPoint at);
// Lets posted events and zero timers run.
void Pump(int ms = 0);

}  // namespace marrowfin::test
