#include "list_world.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "panel/model/panel_messages.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "support/event_pump.h"
#include "support/test_paths.h"
#include "support/widget_input.h"

namespace marrowfin::test {

void UseRate(float rate) {
    SetSkinRateForTest(rate);
    LoadSkinSheet();
}

GridWorld::GridWorld(const std::vector<Make>& kinds, float rate) {
    for (size_t i = 0; i < kinds.size(); ++i) {
        paths.push_back(dir.filePath(QString::asprintf("b%03zu.dwg", i)).toStdU16String());
        Write(i, kinds[i]);
    }
    UseRate(rate);
    window.resize(ScaleUnits(640), ScaleUnits(360));
    view = new CDWGListView(&window);
    view->setGeometry(ScaleBox(0, 0, 617, 343));
}

bool GridWorld::Show() {
    view->SetPaths(paths);
    if (!ShowExposed(&window)) return false;
    Repaint();
    return true;
}

void GridWorld::Write(size_t item, Make kind) {
    static const std::string dwg = SharedDir() + "/testdata/dwg/";
    static const std::string bytes[] = {ReadBytes(dwg + "bmp8_ac1015.dwg"), ReadBytes(dwg + "png_ac1027.dwg"),
                                        ReadBytes(dwg + "no_preview_ac1009.dwg"), std::string(600, 'x'), {}};
    ASSERT_GT(bytes[0].size(), 4096u) << "test drawings not found";
    if (kind != Make::Missing) WriteBytes(QString::fromStdU16String(paths[item]).toStdString(), bytes[int(kind)]);
}

std::vector<int> GridWorld::Missing() {
    std::vector<int> out;
    for (const RecordedMessage& r : posted.Take()) {
        if (r.message == MsgPanelEvent && r.wParam == 0) {
            out.push_back(int(r.lParam));
        } else {
            commands.push_back(r);
        }
    }
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

void GridWorld::Repaint() {
    view->repaint();
    EXPECT_TRUE(Settle()) << "previews still pending";
    view->repaint();
}

bool GridWorld::Settle() { return PumpUntil([this] { return !view->PreviewsPending(); }, 10000); }

}  // namespace marrowfin::test
