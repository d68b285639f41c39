#include <QPainter>

#include "panel/model/panel_page.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_layers.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

// The picture cell and text of an empty result list; false for states that show nothing.
bool EmptySearchLook(const PanelPaintState& state, int* cellX, QString* text) {
    switch (state.searchState) {
        case 0:
            *cellX = 140;
            *text = state.searchUntouched ? QStringLiteral("搜索图块") : QStringLiteral("未找到匹配的图块");
            return true;
        case 1:
            *cellX = 434;
            *text = QStringLiteral("图块加载中，请稍候");
            return true;
        case 2:
            *cellX = 364;
            *text = QStringLiteral("网络中断，请检查后重试");
            return true;
        case 3:
            *cellX = 140;
            *text = QStringLiteral("未找到匹配的图块");
            return true;
        default: return false;
    }
}

}  // namespace

void PaintSearchLayer(QPainter& painter, const QSize&, const PanelPaintState& state) {
    namespace c = panel_colours;
    DrawFrame(painter, ScaleRect(12, 40, 686, 64), 2, c::Accent());
    DrawSquareCell(painter, QPoint(), 19, 46, 14, 28, 72, 14);

    if (state.rowCount != 0) {
        PlaceText(painter, ScaleRect(510, 427, 745, 447), QStringLiteral("提示：收藏下载的图块，下次快速找到"),
                  Font(SkinFont::Normal), c::Accent(), Place::Right);
    } else {
        int cellX = 0;
        QString text;
        if (EmptySearchLook(state, &cellX, &text)) {
            DrawSquareCell(painter, QPoint(), 354, 169, 70, cellX, 0, 70);
            PlaceText(painter, ScaleRect(280, 250, 495, 262), text, Font(SkinFont::Normal), c::GreyText(),
                      Place::Centre);
        }
    }

    // The edit is three units wide while empty, so this word shows through until the user types.
    if (state.page == PageSearch)
        PlaceText(painter, ScaleRect(12 + 30, 40, 686, 64), state.defaultHotWord, Font(SkinFont::Normal),
                  c::Placeholder(), Place::Left);
}

}  // namespace marrowfin
