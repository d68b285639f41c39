#pragma once
// The worlds the panel's tests start from, each on a fresh home: the sample
// library from the stand-in service in the process-wide store, or a tree made
// by hand in the test's own store; and the clicks, keys and waits that drive
// the panel. It brings the headers the panel's tests share.

#include <QApplication>
#include <QLineEdit>
#include <QTimer>
#include <QtTest/QTest>

#include "fault_switches.h"
#include "net/gallery_sync.h"
#include "panel/dialog/hot_words.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/model/panel_numbers.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "panel/dialog/host_requests.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "platform/ticks.h"
#include "request_counters.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"
#include "store/gallery_tree.h"
#include "store/show_list.h"
#include "store/store_paths.h"
#include "support/event_pump.h"
#include "support/live_service.h"
#include "support/recording_host.h"
#include "support/reference_picture.h"
#include "support/temp_home.h"
#include "support/test_paths.h"
#include "support/widget_input.h"
#include "user_state.h"

namespace marrowfin::test {

// A panel on a fresh home, and real input to it.
class PanelHarness {
public:
    TempHome home;
    // The stand-in service and the names of the galleries it serves, when started.
    service::ServiceHandle service;
    std::vector<std::u16string> galleries;
    std::unique_ptr<CBrindleDlg> panel;

    // A click on a row of the class column; its posted command reaches the panel.
    void ClickClassRow(int row) {
        panel->m_classList->EnsureVisible(row);
        Click(panel->m_classList, panel->m_classList->RowRect(row).center());
    }
    // A click `laterMs` after the last one, as far as the damping clocks know.
    void ClickButton(int id, int laterMs = 0);
    // Waits until the class switch timer has run and nothing is pending.
    bool WaitForSwitch(int timeoutMs = 3000);
    // Clicks a row of the class column and waits for the switch.
    bool OpenRow(int row) {
        ClickClassRow(row);
        return WaitForSwitch();
    }
    // The host has signed in `user` with the token "token-<user>".
    void SignIn(int user) { panel->userId = user, panel->userToken = u"token-" + QString::number(user).toStdU16String(); }
    int RowOf(const std::u16string& text) const;
    int VisibleSubclassButtons() const {
        return int(std::count_if(panel->m_subclassBtns.begin(), panel->m_subclassBtns.end(), [this](QWidget* b) { return Shown(b); }));
    }
    bool Shown(QWidget* widget) const { return widget && widget->isVisibleTo(panel.get()); }
    // The captions of the subclass buttons shown, in order.
    std::vector<QString> FolderButtons() const {
        std::vector<QString> captions;
        for (CSubclassButton* button : panel->m_subclassBtns)
            if (Shown(button)) captions.push_back(button->text());
        return captions;
    }
    bool ButtonShown(int id) const { return Shown(panel->Button(id)); }

protected:
    // Starts the stand-in service on `library` and points the profile at it;
    // it serves no advertising tiles until the fault of /gallery/gad is cleared.
    void Serve(const std::string& library);
    // Hidden first, so that focus leaves the search edit while the panel is
    // still whole; then the panel's workers end against the service.
    void DestroyPanel();
};

struct WorldOptions {
    bool listGallery = true;  // Show.xml names the sample's first gallery
    bool firstSync = true;  // the host ran FirstSynchro before showing
    bool attachHost = true;  // the host named its main window
    bool parentIsHost = false;  // the panel is a tool window of the host
    // Runs once the service serves and Show.xml is written, before the first
    // tree and the panel: faults, more galleries.
    std::function<void(PanelHarness&)> beforeCreate = {};
};

// The sample library served by the stand-in service, the panel made (not
// shown) over the process-wide store with a recording host.
class SampleWorld : public PanelHarness {
public:
    explicit SampleWorld(const WorldOptions& options = {});
    ~SampleWorld();

    RecordingHost host;
};

// The test's own store; its tree goes with it.
struct OwnedStore : GalleryStore {
    ~OwnedStore();
};

struct GallerySpec {
    std::u16string name;
    int classes = 3;
    int blocksPerClass = 4;
    int commonEntries = 0;  // entries of its "常用" list
    bool boutique = false;
};

// A real drawing with a preview.
inline std::string Drawing() { return ReadBytes(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg"); }

// A tree of the test's own: galleries, classes and blocks made by hand, the
// panel made and shown offscreen by MakePanel.
class PanelWorld : public PanelHarness {
public:
    // Without a `library` the service is a closed loopback port, so that no
    // request leaves the machine; with one the stand-in service serves it.
    explicit PanelWorld(const std::string& library = {});
    ~PanelWorld();

    OwnedStore store;

    GalleryNode* root() { return store.root; }
    GalleryNode* AddGallery(const GallerySpec& spec);
    // A class named `name` under `gallery` with `blocks` blocks.
    GalleryNode* AddClass(GalleryNode* gallery, const std::u16string& name, int blocks);
    void AddRecent(const std::u16string& path);
    // The collections of `user` (token "token-<user>") on the stand-in
    // service: folders with blocks "<folder>_<n>.dwg". Without a library the
    // service is started to serve the collections alone. Returns the mirror.
    std::u16string AddCollections(int user, const std::vector<std::u16string>& folders, int blocksPerFolder);
    // Every block under `node` gets a file, as if downloaded.
    void WriteBlockFiles(const GalleryNode* node, const std::string& bytes = Drawing());
    // Uploads a real drawing into the user's folder as `name` through the
    // client's own call, so that the service also serves its file.
    void CollectDrawing(int user, const std::string& folder, const std::string& name);

    // Makes, shows and starts the panel over this store: waits for the first
    // class list (the recent list opened) unless `waitForStart` is false.
    void MakePanel(bool waitForStart = true, float rate = 1.0f);
};

// Answers the skin's message box whenever it comes up: notes it and presses
// its first button, or closes it.
struct TipWatcher : QTimer {
    explicit TipWatcher(bool accept = true);
    int seen = 0;
    QString okText;
    bool cancelShown = true;
};

// A double click on a cell of the thumbnail list, brought into view first.
inline void DoubleClickItem(CDWGListView* list, int item) {
    list->EnsureVisible(item);
    DoubleClick(list, list->IconRect(item).center());
    Pump(30);
}

// Frees the process-wide store's tree, so that a test starts with none.
void ResetGalleryStore();

}  // namespace marrowfin::test
