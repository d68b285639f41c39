#include <QFontMetrics>
#include <QPainter>

#include "panel/model/block_row.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_painter.h"
#include "panel/preview/fit_thumbnail.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

QString RowDisplayName(const QString& name) {
    static const QString kSuffix = QStringLiteral(".dwg");
    if (name.size() > kSuffix.size() && name.endsWith(kSuffix, Qt::CaseInsensitive)) return name.chopped(4);
    return name;
}

QString RowClassLine(const BlockRow& row) {
    const qsizetype dots = row.subclass.indexOf(QStringLiteral(".."));
    const QString tail = dots >= 0 ? row.subclass.mid(dots + 2) : row.subclass;
    return row.klass + QLatin1Char('>') + tail;
}

namespace {

// A rectangle of the row in base units, relative to the row's corner.
QRect RowRect(const QPoint& origin, int left, int top, int right, int bottom) {
    return ScaleRect(left, top, right, bottom).translated(origin);
}

const QImage& RowPicture(const BlockRow& row) {
    if (!row.thumbnail.isNull()) return row.thumbnail;
    // A file on disk without a preview gets A; one still to come gets B. The
    // state tells which, so painting never asks the disk.
    if (!row.path.isEmpty() && RowHasFile(row.state)) return SkinPicture(QStringLiteral("placeholder_a"), true);
    return SkinPicture(QStringLiteral("placeholder_b"), true);
}

void DrawRowState(QPainter& painter, const QPoint& o, const BlockRow& row, int hoverButton) {
    namespace c = panel_colours;
    const QString collect = QStringLiteral("收藏");
    const QString use = QStringLiteral("使用");
    switch (row.state) {
        case RowFresh:
        case RowFetched:
            DrawRowButton(painter, RowRect(o, 570, 17, 630, 41), collect, hoverButton == 1);
            DrawRowButton(painter, RowRect(o, 640, 17, 700, 41), use, hoverButton == 2);
            break;
        case RowCollected:
        case RowRemote: DrawRowButton(painter, RowRect(o, 640, 17, 700, 41), use, hoverButton == 2); break;
        case RowDownloading:
            if (row.prefetch) {
                DrawRowButton(painter, RowRect(o, 620, 17, 680, 41), use, hoverButton == 2);
            } else {
                const QRect bar = RowRect(o, 589, 24, 680, 32);
                const QString text = QStringLiteral("正在下载");
                QRect place = RowRect(o, 539, 18, 589, 38);
                // The text's 50 units hold it only in narrow faces: rather than
                // run under the bar it moves left, keeping a small gap.
                const int width = QFontMetrics(Font(SkinFont::Normal)).horizontalAdvance(text);
                const int latest = bar.left() - ScaleUnits(4) - width;
                if (place.left() > latest) place.moveLeft(latest);
                PlaceText(painter, place, text, Font(SkinFont::Normal), c::Text(), Place::Left);
                DrawRowProgress(painter, bar, row.percent);
            }
            break;
        case RowFailed:
            PlaceText(painter, RowRect(o, 573, 20, 796, 40), QStringLiteral("下载失败，检查网络"),
                      Font(SkinFont::Normal), c::Text(), Place::Left);
            DrawSquareCell(painter, o, 555, 24, 14, 172, 72, 14);
            break;
        default: break;
    }
}

}  // namespace

int DrawSearchRow(QPainter& painter, const QRect& item, const BlockRow& row, const SearchRowLook& look) {
    namespace c = panel_colours;
    const QRect area = item.adjusted(5, 0, -5, 0);
    if (area.isEmpty()) return 0;
    painter.save();
    // Nothing of a row may spill onto its neighbours.
    painter.setClipRect(area, Qt::IntersectClip);
    painter.fillRect(area, look.selected ? c::Band() : QColor(Qt::white));
    const QPoint o = area.topLeft();

    const QImage thumb = FitThumbnail(RowPicture(row), ScaleUnits(90), ScaleUnits(60), Rate());
    if (!thumb.isNull()) painter.drawImage(o, thumb);

    DrawHighlighted(painter, RowDisplayName(row.name), look.key, RowRect(o, 100, 10, 420, 30), c::Text());

    const QString line = RowClassLine(row);
    const int lineWidth = QFontMetrics(Font(SkinFont::Normal)).horizontalAdvance(line);
    // Under the mouse the whole line is the key, so all of it turns accent.
    DrawHighlighted(painter, line, look.hoverLink ? line : look.key, RowRect(o, 100, 30, 420, 50), c::GreyText());

    DrawRowState(painter, o, row, look.hoverButton);
    if (row.boutique) DrawSquareCell(painter, o, 5, 6, 16, 352, 88, 16);
    painter.restore();
    return lineWidth;
}

}  // namespace marrowfin
