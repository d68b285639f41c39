// The painting's arithmetic: where a highlighted text is cut and where its
// pieces stand, the row's name, class line and progress width, where the
// status line's hint fits, when the count shows, and a squeezed window.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "panel/model/block_row.h"
#include "panel/model/panel_page.h"
#include "panel/paint/highlight_text.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_layers.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin::test {
namespace {

void UseRate(float rate) {
    SetSkinRateForTest(rate);
    MakeSkinFonts(rate);
}

QImage Painted(const QSize& size, const std::function<void(QPainter&)>& paint, QColor ground = Qt::white) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(ground);
    QPainter p(&image);
    paint(p);
    return image;
}

TEST(HighlightRule, CutsAtEveryExactOccurrenceAndKeepsThePiecesInPlace) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"abcab", "ab", "ab|c|ab"},  {"x阀门y阀门", "阀门", "x|阀门|y|阀门"},
        {"aaa", "aa", "aa|a"},       // no overlap: the scan resumes behind each key
        {"ABab", "ab", "AB|ab"},     // exact comparison
        {"共12条结果", "", "共12条结果"}, {"共12条结果", "7", "共12条结果"}, {"", "a", ""}, {"ab", "ab", "ab"}};
    for (const auto& [text, key, pieces] : cases)
        EXPECT_EQ(SplitAtKey(QString::fromUtf8(text), QString::fromUtf8(key)),
                  QString::fromUtf8(pieces).split(QLatin1Char('|'), Qt::SkipEmptyParts))
            << text;

    // Cut into pieces, the text stands where it would stand whole (within a
    // pixel: glyphs may land on another sub-pixel phase), and stops at the edge.
    UseRate(1.0f);
    const QRect rect(10, 0, 380, 30);
    const QString text = QStringLiteral("共12条结果");
    const QImage cut = Painted(QSize(400, 30), [&](QPainter& p) {
        DrawHighlighted(p, text, QStringLiteral("12"), rect, panel_colours::Text());
    });
    const QImage whole = Painted(QSize(400, 30), [&](QPainter& p) {
        p.setFont(Font(SkinFont::Normal));
        p.setPen(panel_colours::Text());
        p.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, text);
    });
    auto ink = [](const QImage& img, int x, int y) { return x >= 0 && x < img.width() && img.pixel(x, y) != 0xffffffffu; };
    int misplaced = 0, inked = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 400; ++x)
            if (ink(cut, x, y)) {
                ++inked;
                misplaced += !(ink(whole, x - 1, y) || ink(whole, x, y) || ink(whole, x + 1, y));
            }
    EXPECT_GT(inked, 100);
    EXPECT_EQ(misplaced, 0);
    const QImage narrow = Painted(QSize(400, 30), [](QPainter& p) {
        DrawHighlighted(p, QStringLiteral("很长很长很长很长的名字"), QStringLiteral("长"), QRect(10, 0, 60, 30),
                        panel_colours::Text());
    });
    EXPECT_EQ(narrow.copy(71, 0, 329, 30), Painted(QSize(329, 30), [](QPainter&) {}));
}

TEST(ResultRowRules, NameClassLineAndProgressWidth) {
    // Only a trailing ".dwg", in any case, goes; four characters or fewer stay whole.
    const std::pair<const char*, const char*> names[] = {
        {"阀门.dwg", "阀门"}, {"a.DWG", "a"},  {"a.Dwg", "a"},     {".dwg", ".dwg"},
        {"阀门", "阀门"},     {"plan.dwg.bak", "plan.dwg.bak"},   {"plan.dw", "plan.dw"}, {"x.dwg.dwg", "x.dwg"}};
    for (const auto& [name, shown] : names)
        EXPECT_EQ(RowDisplayName(QString::fromUtf8(name)), QString::fromUtf8(shown)) << name;
    // The class, then the subclass behind its first "..".
    const std::pair<const char*, const char*> lines[] = {
        {"门窗..平开门", "建筑>平开门"}, {"a..b..c", "建筑>b..c"}, {"门窗", "建筑>门窗"}, {"门窗..", "建筑>"}, {"", "建筑>"}};
    BlockRow row;
    row.klass = QStringLiteral("建筑");
    for (const auto& [subclass, line] : lines) {
        row.subclass = QString::fromUtf8(subclass);
        EXPECT_EQ(RowClassLine(row), QString::fromUtf8(line)) << subclass;
    }
    // Never shorter than 8 units, never longer than the track.
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        const int least = ScaleUnits(8);
        for (auto [percent, expected] : {std::pair{3, least}, {50, 50}, {100, 100}, {0, least}, {-20, least}, {180, 100}})
            EXPECT_EQ(RowProgressWidth(100, percent), expected) << rate << " " << percent;
        EXPECT_EQ(RowProgressWidth(0, 50), 0);
        // The row answers the width of the class line it drew: the list's link ends there.
        row.subclass = QStringLiteral("门窗..平开门");
        row.name = QStringLiteral("门.dwg");
        int width = 0;
        Painted(QSize(ScaleUnits(760), ScaleUnits(70)), [&](QPainter& p) {
            width = DrawSearchRow(p, QRect(0, 0, ScaleUnits(740), ScaleUnits(61)), row, {});
        });
        EXPECT_EQ(width, QFontMetrics(Font(SkinFont::Normal)).horizontalAdvance(QStringLiteral("建筑>平开门")));
    }
}

TEST(StatusLineRules, HintPlaceCountAndASqueezedWindow) {
    // The double-click hint stays at 588 units where it fits, else it ends 5 units inside the frame.
    for (float rate : {1.0f, 1.5f}) {
        UseRate(rate);
        const int hint = QFontMetrics(Font(SkinFont::Bold)).horizontalAdvance(QStringLiteral("注：双击缩略图快速插入图块"));
        for (int width : {ScaleUnits(755), ScaleUnits(588) + hint + ScaleUnits(5) + 1, ScaleUnits(620), 300}) {
            const QRect placed = DoubleClickHintRect(QSize(width, ScaleUnits(454)));
            const int fitted = width - 1 - ScaleUnits(5) - hint;
            EXPECT_EQ(placed.left(), std::max(ScaleUnits(530), std::min(ScaleUnits(588), fitted))) << rate << " " << width;
        }
    }
    // The count: on search pages once ended (the collection search whenever it has rows), never beside a name.
    PanelPaintState s;
    const std::tuple<int, int, int, bool, bool, bool> cases[] = {
        // page, search state, rows, ended, untouched, shows
        {PageSearch, 3, 0, true, false, true},   {PageSearch, 1, 40, false, false, false},
        {PageSearch, 3, 0, true, true, false},   {PageCollectionSearch, 0, 23, false, false, true},
        {PageCollectionSearch, 0, 0, false, false, false}, {PageBrowse, 0, 3, true, false, false}};
    for (const auto& [page, state, rows, ended, untouched, shows] : cases) {
        s.page = page;
        s.searchState = state;
        s.rowCount = rows;
        s.searchEnded = ended;
        s.searchUntouched = untouched;
        EXPECT_EQ(ShowsResultCount(s), shows) << page << "/" << state << "/" << rows;
    }
    s = {};
    s.page = PageSearch;
    s.searchEnded = true;
    s.selectedName = QStringLiteral("阀门");
    EXPECT_FALSE(ShowsResultCount(s));

    // A window squeezed to almost nothing gets its frame and paints nothing outside it.
    UseRate(1.0f);
    const QImage tiny = Painted(QSize(6, 6), [](QPainter& p) { PaintPanel(p, QSize(3, 3), {}); }, Qt::black);
    EXPECT_EQ(tiny.pixelColor(0, 0), panel_colours::OuterFrame());
    EXPECT_EQ(tiny.pixelColor(1, 1), panel_colours::Band());
    EXPECT_EQ(tiny.copy(3, 0, 3, 6), Painted(QSize(3, 6), [](QPainter&) {}, Qt::black));
    EXPECT_EQ(tiny.copy(0, 3, 6, 3), Painted(QSize(6, 3), [](QPainter&) {}, Qt::black));
    const QImage none = Painted(QSize(4, 4), [](QPainter& p) { PaintPanel(p, QSize(0, 0), {}); }, Qt::black);
    EXPECT_EQ(none, Painted(QSize(4, 4), [](QPainter&) {}, Qt::black));
}

}  // namespace
}  // namespace marrowfin::test
