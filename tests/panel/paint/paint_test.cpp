// The panel's painting at both rates: the browse and search layers with their
// empty and waiting states, the status line and result rows in every state, as
// sheets of scenes compared against reference pictures (class rows are seen in
// the class column's own); and its arithmetic as values: where a highlighted
// text is cut, the row's name and class line, a squeezed window.

#include <QFontMetrics>
#include <QPainter>

#include "panel/model/block_row.h"
#include "panel/model/panel_page.h"
#include "panel/paint/highlight_text.h"
#include "panel/paint/panel_draw.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_test_util.h"
#include "support/reference_picture.h"

namespace marrowfin::test {
namespace {

using Scene = std::function<void(QPainter&)>;

QImage Painted(const QSize& size, const Scene& paint, QColor ground = Qt::white) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(ground);
    QPainter p(&image);
    paint(p);
    return image;
}

// The scenes side by side in `columns`, each `size` on its own magenta ground
// (anything painted outside its rectangle shows against it), 8 pixels apart.
QImage Sheet(const QSize& size, const std::vector<Scene>& scenes, int columns) {
    const int rows = (int(scenes.size()) + columns - 1) / columns;
    QImage sheet(columns * (size.width() + 8), rows * (size.height() + 8), QImage::Format_RGB32);
    sheet.fill(Qt::lightGray);
    for (size_t i = 0; i < scenes.size(); ++i) {
        QPainter(&sheet).drawImage(int(i % columns) * (size.width() + 8), int(i / columns) * (size.height() + 8),
                                   Painted(size, scenes[i], QColor(0xFF, 0x00, 0xFF)));
    }
    return sheet;
}

class PaintScenes : public ::testing::TestWithParam<float> {
protected:
    void SetUp() override {
        UseRate(GetParam());
        ASSERT_TRUE(LoadSkinSheet());
    }
    std::string At(const char* name) const { return name + std::string(GetParam() == 1.0f ? "_1.0" : "_1.5"); }
};
INSTANTIATE_TEST_SUITE_P(Rates, PaintScenes, ::testing::Values(1.0f, 1.5f));

PanelPaintState Browse(int classIndex, int itemCount, int syncStatus = -1) {
    return {
        .page = classIndex == 1 ? PageCollection : PageBrowse, .classIndex = classIndex, .itemCount = itemCount, .syncStatus = syncStatus};
}

PanelPaintState Search(int page, int searchState, int rows, bool ended = false, bool untouched = false) {
    return {.page = page,
            .searchUntouched = untouched,
            .searchState = searchState,
            .rowCount = rows,
            .searchEnded = ended,
            .defaultHotWord = QStringLiteral("门窗")};
}

std::vector<Scene> Panels(const std::vector<PanelPaintState>& states) {
    std::vector<Scene> out;
    const QSize client(ScaleUnits(755), ScaleUnits(454));
    for (const PanelPaintState& s : states) out.push_back([s, client](QPainter& p) { PaintPanel(p, client, s); });
    return out;
}

TEST_P(PaintScenes, BrowseLayerInEveryState) {
    PanelPaintState opened = Browse(3, 0);
    opened.emptySubclassOpened = true;
    // Recent with items (heading and bar), recent empty, the collection in each
    // sync status (-2 and unknown ones show nothing), an opened empty subclass,
    // an empty common list, and no class chosen yet.
    const QImage sheet =
        Sheet(QSize(ScaleUnits(755), ScaleUnits(454)),
              Panels({Browse(0, 4), Browse(0, 0), Browse(1, 0, -1), Browse(1, 0, 0), Browse(1, 0, 1), Browse(1, 0, 2), Browse(1, 0, 3),
                      Browse(1, 0, 4), Browse(1, 0, -2), Browse(1, 0, 7), opened, Browse(3, 0), Browse(-1, 0), Browse(2, 5)}),
              4);
    EXPECT_TRUE(MatchesReference(sheet, "panel/paint", At("browse_layer")));
}

TEST_P(PaintScenes, SearchLayerAndStatusLine) {
    std::vector<PanelPaintState> states;
    // Untouched (-1), idle, loading, network down, nothing found, an unknown state.
    for (int page : {int(PageSearch), int(PageCollectionSearch)})
        for (int state : {-1, 0, 1, 2, 3, 9}) states.push_back(Search(page, std::max(state, 0), 0, false, state < 0));
    // Rows: the hint, the default word on the search page only, the count once ended (none for a
    // search not yet made).
    for (const PanelPaintState& s : {Search(PageSearch, 0, 12), Search(PageSearch, 3, 0, true), Search(PageSearch, 3, 0, true, true),
                                     Search(PageCollectionSearch, 0, 23), Search(PageSearch, 1, 40)})
        states.push_back(s);
    states.push_back({.page = PageBrowse,
                      .classIndex = 2,
                      .itemCount = 7,
                      .selectedName = QStringLiteral("平开门M1021"),
                      .rowCount = 3,
                      .searchEnded = true});
    const QImage sheet = Sheet(QSize(ScaleUnits(755), ScaleUnits(454)), Panels(states), 3);
    EXPECT_TRUE(MatchesReference(sheet, "panel/paint", At("search_layer")));
}

TEST_P(PaintScenes, ResultRowsInEveryState) {
    // Each row: its state (a state with a file on disk shows placeholder A, else B), its look, and a change.
    std::vector<std::pair<BlockRow, SearchRowLook>> rows;
    auto add = [&](int state, SearchRowLook look = {}, const std::function<void(BlockRow&)>& change = {}) {
        BlockRow row{.name = QStringLiteral("平开门M1021.dwg"),
                     .klass = QStringLiteral("建筑"),
                     .subclass = QStringLiteral("门窗..平开门"),
                     .url = {},
                     .path = QStringLiteral("/x/block.dwg"),
                     .thumbnail = {},
                     .prefetch = false,
                     .state = state,
                     .percent = 40};
        if (change) change(row);
        rows.push_back({row, look});
    };
    // The states as such, a thumbnail, the key and the mouse on "使用" are seen on the search page.
    add(RowDownloading, {}, [](BlockRow& r) { r.prefetch = true; });
    add(RowDownloading, {.hoverButton = 2, .key = {}}, [](BlockRow& r) { r.prefetch = true; });
    for (int percent : {-20, 3, 50, 100, 180}) add(RowDownloading, {}, [=](BlockRow& r) { r.percent = percent; });
    add(RowFresh, {.hoverButton = 1, .key = {}});
    add(RowCollected, {.hoverLink = true, .key = {}});
    add(RowFresh, {.selected = true, .key = {}});
    add(RowFailed, {.selected = true, .key = QStringLiteral("门")}, [](BlockRow& r) { r.boutique = true; });
    add(RowCollected, {}, [](BlockRow& r) { r.name = QString(60, QChar(0x95E8)); });
    add(RowCollected, {},
        [](BlockRow& r) { r.name = QStringLiteral("plan.dw"), r.subclass = QStringLiteral("a..b..c"); });  // not ".dwg": kept whole
    const QRect item(4, 6, ScaleUnits(740), ScaleUnits(60) + 1);
    std::vector<Scene> scenes;
    for (const auto& [row, look] : rows)
        scenes.push_back([&, row, look](QPainter& p) {
            p.fillRect(item, Qt::white);
            DrawSearchRow(p, item, row, look);
        });
    const QImage sheet = Sheet(QSize(ScaleUnits(740) + 12, ScaleUnits(60) + 14), scenes, 2);
    EXPECT_TRUE(MatchesReference(sheet, "panel/paint", At("result_rows")));
}

TEST(HighlightRule, CutsAtEveryExactOccurrence) {
    const std::tuple<const char*, const char*, const char*> cases[] = {{"abcab", "ab", "ab|c|ab"},
                                                                       {"x阀门y阀门", "阀门", "x|阀门|y|阀门"},
                                                                       {"aaa", "aa", "aa|a"},  // no overlap: the scan resumes
                                                                                               // behind each key
                                                                       {"ABab", "ab", "AB|ab"},  // exact comparison
                                                                       {"共12条结果", "", "共12条结果"},
                                                                       {"共12条结果", "7", "共12条结果"},
                                                                       {"", "a", ""},
                                                                       {"ab", "ab", "ab"}};
    for (const auto& [text, key, pieces] : cases)
        EXPECT_EQ(SplitAtKey(QString::fromUtf8(text), QString::fromUtf8(key)),
                  QString::fromUtf8(pieces).split(QLatin1Char('|'), Qt::SkipEmptyParts))
            << text;
}

TEST(ResultRowRules, NameAndClassLine) {
    // Only a trailing ".dwg", in any case, goes; four characters or fewer stay whole (plain names and
    // ".DWG" are in the lists' pictures).
    const std::pair<const char*, const char*> names[] = {
        {"a.Dwg", "a"}, {".dwg", ".dwg"}, {"plan.dwg.bak", "plan.dwg.bak"}, {"x.dwg.dwg", "x.dwg"}};
    for (const auto& [name, shown] : names) EXPECT_EQ(RowDisplayName(QString::fromUtf8(name)), QString::fromUtf8(shown)) << name;
    // The class, then the subclass behind its first ".." (one without is in the search list's picture).
    const std::pair<const char*, const char*> lines[] = {{"a..b..c", "建筑>b..c"}, {"门窗..", "建筑>"}, {"", "建筑>"}};
    BlockRow row;
    row.klass = QStringLiteral("建筑");
    for (const auto& [subclass, line] : lines) {
        row.subclass = QString::fromUtf8(subclass);
        EXPECT_EQ(RowClassLine(row), QString::fromUtf8(line)) << subclass;
    }
    // The row answers the width of the class line it drew, in the rate's font: the list's link ends there.
    UseRate(1.5f);
    row.subclass = QStringLiteral("门窗..平开门");
    int width = 0;
    Painted(QSize(ScaleUnits(760), ScaleUnits(70)),
            [&](QPainter& p) { width = DrawSearchRow(p, QRect(0, 0, ScaleUnits(740), ScaleUnits(61)), row, {}); });
    EXPECT_EQ(width, QFontMetrics(Font(SkinFont::Normal)).horizontalAdvance(QStringLiteral("建筑>平开门")));
}

TEST(PanelPaintRules, ASqueezedWindowGetsItsFrameAndPaintsNothingOutsideItAndTheHintMovesLeft) {
    UseRate(1.0f);
    const auto nothing = [](QPainter&) {};
    QImage tiny = Painted(
        QSize(6, 6), [](QPainter& p) { PaintPanel(p, QSize(3, 3), {}); }, Qt::black);
    EXPECT_NE(tiny.pixelColor(1, 1), QColor(Qt::black));
    QPainter(&tiny).fillRect(0, 0, 3, 3, Qt::black);
    EXPECT_EQ(tiny, Painted(QSize(6, 6), nothing, Qt::black));
    EXPECT_EQ(Painted(
                  QSize(4, 4), [](QPainter& p) { PaintPanel(p, QSize(0, 0), {}); }, Qt::black),
              Painted(QSize(4, 4), nothing, Qt::black));
    // The double-click hint stands at 588 units where it fits; a window too narrow for it moves it left, never past 530.
    auto hintLeft = [](int width) { return DoubleClickHintRect(QSize(width, ScaleUnits(454))).left(); };
    EXPECT_EQ(std::make_pair(hintLeft(2000), hintLeft(300)), std::make_pair(ScaleUnits(588), ScaleUnits(530)));
}

}  // namespace
}  // namespace marrowfin::test
