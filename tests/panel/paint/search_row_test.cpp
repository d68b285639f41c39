// Result rows: thumbnail, name, class line, buttons by state, progress bar,
// failure, crown, hover and selection, at two rates.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>
#include <QTemporaryDir>

#include "paint_support.h"
#include "panel/model/block_row.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_painter.h"
#include "panel/preview/fit_thumbnail.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "support/test_paths.h"

namespace marrowfin::test {
namespace {

PAINT_AT_TWO_RATES(SearchRowPainting);

// The list's item rectangle, placed off the canvas corner.
QRect Item() { return QRect(4, 6, ScaleUnits(740), ScaleUnits(60) + 1); }
QSize Canvas() { return QSize(ScaleUnits(740) + 12, ScaleUnits(60) + 14); }
// The row's corner: the item inset by 5 pixels on the left.
QPoint Corner() { return Item().topLeft() + QPoint(5, 0); }
QRect RowRect(int l, int t, int r, int b) { return ScaleRect(l, t, r, b).translated(Corner()); }

BlockRow Row(int state) {
    BlockRow row;
    row.name = QStringLiteral("平开门M1021.dwg");
    row.klass = QStringLiteral("建筑");
    row.subclass = QStringLiteral("门窗..平开门");
    row.state = state;
    row.prefetch = false;
    row.percent = 40;
    return row;
}

QImage DrawRow(const BlockRow& row, const SearchRowLook& look = {}, int* width = nullptr) {
    return PaintInto(
        Canvas(),
        [&](QPainter& p) {
            const int w = DrawSearchRow(p, Item(), row, look);
            if (width) *width = w;
        },
        kGround);
}

// The first x at or after `from` on row `y` that is not accent-like, scanning right.
int AccentRunEnd(const QImage& img, int from, int y) {
    int x = from;
    while (x < img.width()) {
        const QColor p = img.pixelColor(x, y);
        // Closer to the accent than to the grey track.
        if (p.blue() - p.red() < 60) break;
        ++x;
    }
    return x;
}

TEST(SearchRowText, NameAndClassLineRules) {
    // Only a trailing ".dwg", in any case, goes; four characters or fewer stay whole, even ".dwg" itself.
    const std::pair<const char*, const char*> names[] = {
        {"阀门.dwg", "阀门"},         {"a.DWG", "a"},           {"a.Dwg", "a"},           {".dwg", ".dwg"},
        {"阀门", "阀门"},             {"plan.dwg.bak", "plan.dwg.bak"}, {"plan.dw", "plan.dw"}, {"x.dwg.dwg", "x.dwg"}};
    for (const auto& [name, shown] : names)
        EXPECT_EQ(RowDisplayName(QString::fromUtf8(name)), QString::fromUtf8(shown)) << name;

    // The class, then the subclass behind its first "..".
    const std::pair<const char*, const char*> lines[] = {
        {"门窗..平开门", "建筑>平开门"}, {"a..b..c", "建筑>b..c"}, {"门窗", "建筑>门窗"}, {"门窗..", "建筑>"}, {"", "建筑>"}};
    for (const auto& [subclass, line] : lines) {
        BlockRow row;
        row.klass = QStringLiteral("建筑");
        row.subclass = QString::fromUtf8(subclass);
        EXPECT_EQ(RowClassLine(row), QString::fromUtf8(line)) << subclass;
    }
}

TEST_P(SearchRowPainting, ProgressBarWidthFollowsThePercentWithinBounds) {
    const QRect bar = RowRect(589, 24, 680, 32);
    const int track = bar.width();
    const int y = bar.center().y();
    // Never shorter than 8 units, never longer than the track.
    const int least = ScaleUnits(8);
    for (auto [percent, expected] : {std::pair{3, least}, {50, track / 2}, {100, track}, {0, least}, {-20, least},
                                     {180, track}}) {
        SCOPED_TRACE(percent);
        BlockRow row = Row(RowDownloading);
        row.percent = percent;
        const QImage img = DrawRow(row);
        EXPECT_EQ(RowProgressWidth(track, percent), expected);
        const int drawn = AccentRunEnd(img, bar.left(), y) - bar.left();
        EXPECT_NEAR(drawn, expected, 1);
        if (expected < track) {
            EXPECT_EQ(At(img, bar.left() + expected + 2, y), c::ProgressTrack());
        }
        // Nothing of the bar outside its rectangle; "正在下载" in front of it.
        EXPECT_EQ(CountColour(img, QRect(bar.right() + 2, bar.top(), 20, bar.height()), c::ProgressTrack(), 10), 0);
        // "正在下载" stands before the bar and never runs under it.
        const QRect text = RowRect(480, 18, 589, 38);
        EXPECT_TRUE(HasColour(img, text, c::Text(), 6));
        int lastInk = 0;
        for (int x = text.left(); x < bar.left() + ScaleUnits(8); ++x)
            if (HasColour(img, QRect(x, bar.top() - ScaleUnits(8), 1, bar.height() + ScaleUnits(16)), c::Text(), 40))
                lastInk = x;
        EXPECT_GT(lastInk, text.left());
        EXPECT_LT(lastInk, bar.left());
        if (firstRate() && (percent == 3 || percent == 50 || percent == 100))
            SavePng(img, QStringLiteral("row_downloading_%1.png").arg(percent));
    }
    EXPECT_EQ(RowProgressWidth(0, 50), 0);
}

TEST_P(SearchRowPainting, ButtonsByStateAndHover) {
    const QRect collect = RowRect(570, 17, 630, 41);
    const QRect use = RowRect(640, 17, 700, 41);
    const QRect usePrefetch = RowRect(620, 17, 680, 41);
    auto inside = [](const QRect& r) { return QPoint(r.left() + 2, r.top() + 2); };
    auto hasButton = [&](const QImage& img, const QRect& r) {
        return At(img, r.left(), r.center().y()) == c::GreyText() &&
               At(img, r.right(), r.center().y()) == c::GreyText() &&
               At(img, inside(r).x(), inside(r).y()) == c::Band() && HasColour(img, r, c::Text(), 6);
    };
    auto blank = [&](const QImage& img, const QRect& r) { return CountNot(img, r, Qt::white) == 0; };

    // "收藏" only while the block is not collected; "使用" always.
    for (int state : {int(RowFresh), int(RowFetched), int(RowCollected), int(RowRemote)}) {
        SCOPED_TRACE(state);
        const QImage img = DrawRow(Row(state));
        if (state == RowFresh || state == RowFetched) {
            EXPECT_TRUE(hasButton(img, collect));
        } else {
            EXPECT_TRUE(blank(img, collect));
        }
        EXPECT_TRUE(hasButton(img, use));
        if (firstRate()) SavePng(img, QStringLiteral("row_state_%1.png").arg(state));
    }
    BlockRow prefetching = Row(RowDownloading);
    prefetching.prefetch = true;
    const QImage pre = DrawRow(prefetching);
    EXPECT_TRUE(hasButton(pre, usePrefetch));
    EXPECT_TRUE(blank(pre, QRect(usePrefetch.right() + 1, use.top(), use.right() - usePrefetch.right(), use.height())));
    EXPECT_TRUE(blank(pre, RowRect(539, 17, 619, 41)));
    if (firstRate()) SavePng(pre, QStringLiteral("row_state_2_prefetch.png"));

    // Failure: the red mark at 555, 24 and the text; no buttons.
    const QImage failed = DrawRow(Row(RowFailed));
    const QRect mark = ScaleBox(555, 24, 14, 14).translated(Corner());
    const QImage markAlone = PaintInto(Canvas(), [&](QPainter& p) { DrawSheetCell(p, mark, 172, 72, 14, 14); });
    EXPECT_TRUE(SameIn(failed, markAlone, mark));
    EXPECT_GT(CountNot(failed, mark, Qt::white), 0);
    EXPECT_TRUE(HasColour(failed, RowRect(573, 20, 735, 40), c::Text(), 6));
    EXPECT_FALSE(HasColour(failed, RowRect(560, 10, 735, 50), c::Band()));
    if (firstRate()) SavePng(failed, QStringLiteral("row_state_3.png"));

    // The mouse on "收藏": accent pen, light blue fill, accent text; "使用" stays plain.
    const QImage hover = DrawRow(Row(RowFresh), {.hoverButton = 1, .key = {}});
    EXPECT_EQ(At(hover, collect.left(), collect.center().y()), c::Accent());
    EXPECT_EQ(At(hover, inside(collect).x(), inside(collect).y()), c::HoverButtonFill());
    EXPECT_TRUE(HasColour(hover, collect.adjusted(1, 1, -1, -1), c::Accent()));
    EXPECT_FALSE(HasColour(hover, collect.adjusted(1, 1, -1, -1), c::Text(), 6));
    EXPECT_TRUE(hasButton(hover, use));
    const SearchRowLook onUse{.hoverButton = 2, .key = {}};
    const QImage hoverUse = DrawRow(Row(RowFresh), onUse);
    EXPECT_TRUE(hasButton(hoverUse, collect));
    EXPECT_EQ(At(hoverUse, use.right(), use.center().y()), c::Accent());
    EXPECT_EQ(At(DrawRow(prefetching, onUse), usePrefetch.left(), usePrefetch.center().y()), c::Accent());
    if (firstRate()) SavePng(hover, QStringLiteral("row_hover_collect.png"));

    // Every state on one sheet, to look at.
    BlockRow downloading = Row(RowDownloading);
    downloading.percent = 3;
    BlockRow boutiqueFailed = Row(RowFailed);
    boutiqueFailed.boutique = true;
    const QImage sheet = Stacked({DrawRow(Row(RowFresh)), DrawRow(Row(RowCollected)), pre, DrawRow(downloading), failed,
                                  DrawRow(Row(RowFetched)), DrawRow(Row(RowRemote), onUse), hover,
                                  DrawRow(boutiqueFailed, {.selected = true, .key = QStringLiteral("门")})});
    SavePng(sheet, QStringLiteral("rows_all_%1.png").arg(rate()));
}

TEST_P(SearchRowPainting, NameClassLineAndLinkHover) {
    const QRect name = RowRect(100, 10, 420, 30);
    const QRect line = RowRect(100, 30, 420, 50);

    // ".dwg" is dropped from the name; a name without it is kept whole.
    BlockRow plan = Row(RowCollected);
    plan.name = QStringLiteral("plan.dwg");
    BlockRow bare = plan;
    bare.name = QStringLiteral("plan");
    BlockRow shortened = plan;
    shortened.name = QStringLiteral("plan.dw");
    EXPECT_TRUE(SameIn(DrawRow(plan), DrawRow(bare), name));
    EXPECT_FALSE(SameIn(DrawRow(shortened), DrawRow(bare), name));

    // The key turns accent in the name and in the class line.
    int width = 0;
    const QImage keyed = DrawRow(Row(RowCollected), {.key = QStringLiteral("门")}, &width);
    EXPECT_TRUE(HasColour(keyed, name, c::Accent(), 6));
    EXPECT_TRUE(HasColour(keyed, name, c::Text(), 6));
    EXPECT_TRUE(HasColour(keyed, line, c::Accent(), 6));
    EXPECT_TRUE(HasColour(keyed, line, c::GreyText(), 6));
    // The answered width is that of the drawn class line.
    const QFontMetrics metrics(Font(SkinFont::Normal));
    EXPECT_EQ(width, metrics.horizontalAdvance(QStringLiteral("建筑>平开门")));
    int lastInk = line.left();
    for (int x = line.left(); x <= line.right(); ++x)
        if (CountNot(keyed, QRect(x, line.top(), 1, line.height()), Qt::white) > 0) lastInk = x;
    EXPECT_LE(lastInk, line.left() + width + 1);
    EXPECT_GE(lastInk, line.left() + width - ScaleUnits(6));

    // Without a key nothing is accent; with the mouse on the link the whole line is.
    const QImage plain = DrawRow(Row(RowCollected));
    EXPECT_FALSE(HasColour(plain, name.united(line), c::Accent(), 60));
    const QImage linked = DrawRow(Row(RowCollected), {.hoverLink = true, .key = {}});
    EXPECT_TRUE(HasColour(linked, line, c::Accent()));
    EXPECT_FALSE(HasColour(linked, line, c::GreyText(), 6));
    EXPECT_FALSE(HasColour(linked, name, c::Accent(), 60));
    if (firstRate()) {
        SavePng(keyed, QStringLiteral("row_key.png"));
        SavePng(linked, QStringLiteral("row_link_hover.png"));
    }

    // A long name stops at 420 units: nothing between it and the buttons.
    BlockRow longName = Row(RowCollected);
    longName.name = QString(60, QChar(0x95E8));
    const QImage cut = DrawRow(longName);
    EXPECT_GT(CountNot(cut, name, Qt::white), 0);
    EXPECT_EQ(CountNot(cut, RowRect(421, 0, 635, 60), Qt::white), 0);
}

TEST_P(SearchRowPainting, ThumbnailPlaceholdersCrownSelectionAndBounds) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString onDisk = dir.filePath(QStringLiteral("block.dwg"));
    WriteBytes(onDisk.toStdString(), std::string(2048, 'x'));
    const QRect thumb(Corner(), QSize(ScaleUnits(90), ScaleUnits(60)));
    auto fitted = [&](const QImage& picture) {
        const QImage f = FitThumbnail(picture, ScaleUnits(90), ScaleUnits(60), Rate());
        return PaintInto(Canvas(), [&](QPainter& p) { p.drawImage(Corner(), f); });
    };

    // The row's own preview when it has one.
    BlockRow own = Row(RowCollected);
    QImage red(200, 100, QImage::Format_RGB32);
    red.fill(Qt::red);
    own.thumbnail = red;
    own.path = onDisk;
    const QImage withOwn = DrawRow(own);
    EXPECT_TRUE(SameIn(withOwn, fitted(red), thumb));
    EXPECT_TRUE(HasColour(withOwn, thumb, Qt::red));

    // Else placeholder A for a file on disk, B for one still to come.
    ASSERT_FALSE(SkinPicture(QStringLiteral("placeholder_a"), true).isNull());
    ASSERT_FALSE(SkinPicture(QStringLiteral("placeholder_b"), true).isNull());
    BlockRow local = Row(RowFresh);
    local.path = onDisk;
    BlockRow remote = Row(RowRemote);
    remote.path = dir.filePath(QStringLiteral("missing.dwg"));
    const QImage a = DrawRow(local);
    const QImage b = DrawRow(remote);
    EXPECT_TRUE(SameIn(a, fitted(SkinPicture(QStringLiteral("placeholder_a"), true)), thumb));
    EXPECT_TRUE(SameIn(b, fitted(SkinPicture(QStringLiteral("placeholder_b"), true)), thumb));
    EXPECT_FALSE(SameIn(a, b, thumb));

    // The crown of a boutique row at 5, 6, size 16, over the thumbnail and nowhere else.
    BlockRow boutique = local;
    boutique.boutique = true;
    const QImage crowned = DrawRow(boutique);
    const QRect crown = ScaleBox(5, 6, 16, 16).translated(Corner());
    EXPECT_FALSE(SameIn(crowned, a, crown));
    for (const QRect& rest : {QRect(0, 0, Canvas().width(), crown.top()), QRect(0, 0, crown.left(), Canvas().height()),
                              QRect(crown.right() + 1, 0, Canvas().width(), Canvas().height()),
                              QRect(0, crown.bottom() + 1, Canvas().width(), Canvas().height())})
        EXPECT_TRUE(SameIn(crowned, a, rest));
    EXPECT_TRUE(HasColour(crowned, crown, c::Boutique(), 40));

    // Selection fills with the band; the row keeps 5 pixels off each side of the item.
    const QImage selected = DrawRow(local, {.selected = true, .key = {}});
    const QPoint empty = RowRect(450, 2, 460, 8).topLeft();
    EXPECT_EQ(At(selected, empty.x(), empty.y()), c::Band());
    EXPECT_EQ(At(a, empty.x(), empty.y()), QColor(Qt::white));
    const QRect item = Item();
    for (const QImage* img : {&a, &selected, &crowned}) {
        const int y = item.center().y(), x = item.center().x();
        ExpectPixels(*img, {{item.left() + 4, y, kGround}, {item.right() - 4, y, kGround},
                            {x, item.top() - 1, kGround}, {x, item.bottom() + 1, kGround}});
        EXPECT_NE(At(*img, item.left() + 5, y), kGround);
        EXPECT_NE(At(*img, item.right() - 5, y), kGround);
    }
    if (firstRate()) {
        SavePng(selected, QStringLiteral("row_selected.png"));
        SavePng(crowned, QStringLiteral("row_boutique.png"));
        SavePng(withOwn, QStringLiteral("row_own_thumbnail.png"));
        SavePng(b, QStringLiteral("row_placeholder_b.png"));
    }
}

}  // namespace
}  // namespace marrowfin::test
