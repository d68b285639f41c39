#pragma once
// The lists of the list tests, each on a plain window that records what they
// post: the thumbnail grid at the panel's size over a folder of drawings made
// to order (b000.dwg and so on), and the rate the lists draw at.

#include <QTemporaryDir>
#include <QWidget>
#include <string>
#include <vector>

#include "panel/lists/dwg_list_view.h"
#include "support/message_recorder.h"

namespace marrowfin::test {

// Sets the rate and loads its sheet from beside the test program.
void UseRate(float rate);

struct ListOwner {
    QWidget window;
    MessageRecorder posted{&window, /*consume*/ true};
};

enum class Make { Preview, PngPreview, NoPreview, Cut, Missing };

struct GridWorld : ListOwner {
    QTemporaryDir dir;
    std::vector<std::u16string> paths;
    CDWGListView* view;

    explicit GridWorld(const std::vector<Make>& kinds, float rate = 1.0f);
    // Hands the paths over, shows the grid and lets its previews come in.
    bool Show();
    void Write(size_t item, Make kind);
    // The items whose missing files were reported, each once, ascending; the
    // other messages stay in `commands`.
    std::vector<int> Missing();
    std::vector<RecordedMessage> commands;
    // Paints, waits for the previews this asked for, and paints what they brought.
    void Repaint();
    bool Settle();
};

}  // namespace marrowfin::test
