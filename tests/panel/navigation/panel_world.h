#pragma once
// A panel over a tree of the test's own: a fresh home, galleries, classes and
// blocks made by hand (folders on disk where the panel looks), the panel made
// and shown offscreen, and helpers that click, wait and render.

#include <QImage>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "panel/dialog/brindle_dlg.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "support/temp_home.h"

class QWidget;

namespace marrowfin::test {

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

class PanelWorld {
public:
    // `offline` points the service at a closed loopback port so that no
    // request leaves the machine; tests with the stand-in service pass false
    // and start it before making the panel.
    explicit PanelWorld(bool offline = true);
    ~PanelWorld();

    TempHome home;
    OwnedStore store;
    std::unique_ptr<CBrindleDlg> panel;

    GalleryNode* root();
    GalleryNode* AddGallery(const GallerySpec& spec);
    // A class named `name` under `gallery` with `blocks` blocks.
    GalleryNode* AddClass(GalleryNode* gallery, const std::u16string& name, int blocks);
    void AddRecent(const std::u16string& path);
    // The collections of `user`: node "我的收藏" at <root>/<user>_收藏 with folders.
    GalleryNode* AddCollections(int user, const std::vector<std::u16string>& folders, int blocksPerFolder);

    // Makes, shows and starts the panel over this store: waits for the first
    // class list (the recent list opened) unless `waitForStart` is false.
    void MakePanel(bool waitForStart = true, float rate = 1.0f);

    // Real clicks.
    void ClickClassRow(int row);
    void ClickButton(int id);
    // Waits until the class switch timer has run and nothing is pending.
    bool WaitForSwitch(int timeoutMs = 3000);
    int RowOf(const std::u16string& text) const;
    int VisibleSubclassButtons() const;
    bool Shown(QWidget* widget) const;
    bool ButtonShown(int id) const;

    // Renders the panel into <build>/rendered-navigation/<name>.png.
    QImage Render(const QString& name);
};

// Processes events until `done` or the time is up; answers `done()`.
bool PumpUntil(const std::function<bool()>& done, int timeoutMs);
// Processes events for a while.
void Pump(int ms);
QString RenderFolder();

}  // namespace marrowfin::test
