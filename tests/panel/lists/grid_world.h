#pragma once
// The thumbnail grid of the list tests: a recording owner holding the grid at
// the panel's size, over a folder of drawings made to order (b000.dwg and so
// on), and the waits for its previews.

#include <QTemporaryDir>
#include <string>
#include <vector>

#include "list_test_support.h"
#include "panel/lists/dwg_list_view.h"

namespace marrowfin::test {

enum class Make { Preview, PngPreview, NoPreview, Cut, Missing };

// The bytes of a test drawing of ../shared/testdata/dwg.
std::string Drawing(const char* name);
// The bytes a Make writes; empty for Missing.
std::string BytesOf(Make kind);

struct GridWorld {
    QTemporaryDir dir;
    std::vector<std::u16string> paths;
    RecordingOwner owner;
    CDWGListView* view;

    explicit GridWorld(const std::vector<Make>& kinds, float rate = 1.0f);
    // Hands the paths over, shows the grid and lets its previews come in.
    bool Show();
    void Write(size_t item, Make kind);
    void Arrive(size_t item) { Write(item, Make::Preview); }
    // The items whose missing files were reported, each once, ascending.
    std::vector<int> Missing();
    // The other messages posted to the owner.
    std::vector<Recorded> Commands();
    // Paints now, waits until the previews this asked for are back, and
    // paints what they brought.
    void Repaint();
    bool Settle(int timeoutMs = 10000);
};

// Processes events until `done` or the time is up; answers `done()`.
bool PumpUntil(const std::function<bool()>& done, int timeoutMs = 10000);

}  // namespace marrowfin::test
