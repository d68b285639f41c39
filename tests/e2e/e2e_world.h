#pragma once
// The world of the end-to-end programs: a fresh home, the stand-in service
// with a sample library, a host main window registered with the library, and
// the host's event loop passing every event through GaDllPretanslateMsg.
// The library is reached through its exported functions only.

#include <QImage>
#include <QString>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "recording_host.h"
#include "service_handle.h"
#include "support/temp_home.h"

namespace marrowfin::test {

struct E2eWorld {
    std::unique_ptr<TempHome> home;
    service::ServiceHandle service;
    std::vector<std::u16string> galleries;  // of the sample, in the service's order
    RecordingHost* host = nullptr;          // the main window
    uint64_t hostHandle = 0;
};

// Made once per program: `rate` goes into the profile before any panel exists;
// the first `shown` galleries are added to the shown list before FirstSynchro.
E2eWorld& World();
void MakeWorld(float rate, int shown);
void EndWorld();

// The panel's widget (found among the application's widgets), or null.
QWidget* FindPanel();
// A child of the panel by class name (e.g. "marrowfin::CClassListCtrl"), or a
// button by its caption.
QWidget* FindChild(QWidget* panel, const char* className);
QWidget* FindButton(QWidget* panel, const QString& caption);

// Requests for galleries the service has answered so far (the tree's rebuilds).
long TreeRequests();

// Runs until the first synchronisation has left the store folder's catalogues.
bool WaitForFirstTree(int ms);

// The panel, made by `show` and given time for its first class list when
// this process has none yet (CTest runs each case in its own process), shown.
QWidget* ShownPanel();

// Renders the panel to <program folder>/rendered/<name>.png and answers the image.
QImage RenderPanel(QWidget* panel, const QString& name);
// Clicks row `row` of the panel's class list with the mouse.
void ClickClassRow(QWidget* panel, int row);

// A host key event through the library's pre-translate export.
int PreTranslateKey(QObject* receiver, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                    bool release = false);

}  // namespace marrowfin::test
