#pragma once
// The three parts that PaintPanel lays over the frame and bands.

#include <QSize>

class QPainter;

namespace marrowfin {

struct PanelPaintState;

// The "全库搜索" box, the "最近使用" heading and the empty states of the table.
void PaintBrowseLayer(QPainter& painter, const QSize& client, const PanelPaintState& state);
// The search box, the hint line, the empty states and the default word.
void PaintSearchLayer(QPainter& painter, const QSize& client, const PanelPaintState& state);
// The selected block's name, or the count of a search.
void PaintStatusLine(QPainter& painter, const QSize& client, const PanelPaintState& state);

// Whether the status line shows the count "共%d条结果" for this state.
bool ShowsResultCount(const PanelPaintState& state);

}  // namespace marrowfin
