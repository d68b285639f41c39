#include <QPainter>

#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_layers.h"
#include "panel/paint/panel_painter.h"
#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

struct EmptyCollection {
    int syncStatus;
    int cellX;
    const char16_t* text;
};

// The collection's empty states by m_nav.syncStatus; -2 and unknown values draw nothing.
constexpr EmptyCollection kEmptyCollection[] = {
    {-1, 70, u"收藏为空"},
    {0, 552, u"本地收藏与云端不一致，是否同步替换云端数据？"},
    {1, 434, u"加载中，请稍候..."},
    {2, 434, u"同步中，请稍候..."},
    {3, 364, u"加载失败，请连接网络后重试"},
    {4, 364, u"同步失败，请连接网络后重试"},
};

void PaintEmptyTable(QPainter& painter, const QSize& client, const PanelPaintState& state) {
    namespace c = panel_colours;
    const QFont& font = Font(SkinFont::Normal);
    const QPoint none;
    if (state.classIndex == 0) {
        DrawSquareCell(painter, none, 353, 169, 70, 0, 0, 70);
        PlaceText(painter, ScaleRect(322, 240, 454, 269), QStringLiteral("最近使用为空"), font, c::GreyText(),
                  Place::Centre);
        return;
    }
    if (state.classIndex == 1) {
        for (const EmptyCollection& e : kEmptyCollection) {
            if (e.syncStatus != state.syncStatus) continue;
            DrawSquareCell(painter, none, 352, 158, 70, e.cellX, 0, 70);
            const int left = ScaleUnits(19), top = ScaleUnits(228);
            const QRect text(left, top, client.width() - left, ScaleUnits(248) - top);
            PlaceText(painter, text, QString::fromUtf16(e.text), font, c::GreyText(), Place::Centre);
            return;
        }
        return;
    }
    if (state.classIndex < 2) return;  // nothing chosen yet
    if (state.emptySubclassOpened) {
        DrawSquareCell(painter, none, 352, 158, 70, 210, 0, 70);
        PlaceText(painter, ScaleRect(352, 233, 422, 253), QStringLiteral("暂无图块"), font, c::GreyText(),
                  Place::Centre);
    } else {
        PlaceText(painter, ScaleRect(352, 233, 422, 253), QStringLiteral("常用为空"), font, c::GreyText(),
                  Place::Centre);
    }
}

}  // namespace

void PaintBrowseLayer(QPainter& painter, const QSize& client, const PanelPaintState& state) {
    namespace c = panel_colours;
    DrawFrame(painter, ScaleRect(13, 78, 127, 101), 2, c::Accent(), c::SearchBoxFill());
    DrawSquareCell(painter, QPoint(), 36, 82, 14, 28, 72, 14);
    PlaceText(painter, ScaleRect(54, 78, 121, 101), QStringLiteral("全库搜索"), Font(SkinFont::Bold), c::Accent(),
              Place::Ellipsis);

    if (state.itemCount != 0 && state.classIndex == 0) {
        PlaceText(painter, ScaleRect(144, 42, 204, 62), ToQString(kRecentText), Font(SkinFont::Bold), c::Accent(),
                  Place::Left);
        painter.fillRect(ScaleBox(137, 62, 63, 2), c::Accent());
    }
    if (state.itemCount == 0) PaintEmptyTable(painter, client, state);
}

}  // namespace marrowfin
