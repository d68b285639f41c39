#include "grid_world.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <chrono>
#include <thread>

#include "panel/model/panel_messages.h"
#include "render_support.h"
#include "skin/skin_scale.h"
#include "support/test_paths.h"

namespace marrowfin::test {

std::string Drawing(const char* name) { return ReadBytes(SharedDir() + "/testdata/dwg/" + name); }

std::string BytesOf(Make kind) {
    static const std::string bytes[] = {Drawing("bmp8_ac1015.dwg"), Drawing("png_ac1027.dwg"),
                                        Drawing("no_preview_ac1009.dwg"), std::string(600, 'x'), {}};
    return bytes[int(kind)];
}

GridWorld::GridWorld(const std::vector<Make>& kinds, float rate) {
    EXPECT_GT(BytesOf(Make::Preview).size(), 4096u) << "test drawings not found";
    for (size_t i = 0; i < kinds.size(); ++i) {
        paths.push_back(dir.filePath(QString::asprintf("b%03zu.dwg", i)).toStdU16String());
        Write(i, kinds[i]);
    }
    UseRate(rate);
    owner.resize(ScaleUnits(640), ScaleUnits(360));
    view = new CDWGListView(&owner);
    view->setGeometry(ScaleBox(0, 0, 617, 343));
}

bool GridWorld::Show() {
    view->SetPaths(paths);
    if (!ShowAndWait(&owner)) return false;
    Repaint();
    return true;
}

void GridWorld::Write(size_t item, Make kind) {
    if (kind != Make::Missing) WriteBytes(QString::fromStdU16String(paths[item]).toStdString(), BytesOf(kind));
}

std::vector<int> GridWorld::Missing() {
    std::vector<int> out;
    for (const Recorded& r : owner.Take())
        if (r.message == MsgPanelEvent && r.wParam == 0) out.push_back(static_cast<int>(r.lParam));
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

std::vector<Recorded> GridWorld::Commands() {
    std::vector<Recorded> out = owner.Take();
    std::erase_if(out, [](const Recorded& r) { return r.message == MsgPanelEvent && r.wParam == 0; });
    return out;
}

void GridWorld::Repaint() {
    view->repaint();
    EXPECT_TRUE(Settle()) << "previews still pending";
    view->repaint();
}

bool GridWorld::Settle(int timeoutMs) {
    return PumpUntil([this] { return !view->PreviewsPending(); }, timeoutMs);
}

bool PumpUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents();
        // Leaves the cores to the loader's workers.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    QCoreApplication::processEvents();
    return true;
}

}  // namespace marrowfin::test
