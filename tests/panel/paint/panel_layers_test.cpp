// The whole panel: frame, bands, title, the browse and search layers and the
// status line, at two rates, probed at pixels and compared against pictures
// of the expected text or cell alone.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "paint_support.h"
#include "panel/model/panel_page.h"
#include "panel/paint/panel_layers.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin::test {
namespace {

PAINT_AT_TWO_RATES(PanelPainting);

const QColor kWhite(Qt::white);

QImage Panel(const PanelPaintState& state) {
    return PaintInto(PanelClient(), [&](QPainter& p) { PaintPanel(p, PanelClient(), state); });
}

// The grey text of an empty state alone, centred in `rect`.
QImage GreyTextAlone(const char* text, const QRect& rect) {
    return TextAlone(PanelClient(), rect, QString::fromUtf8(text), SkinFont::Normal, c::GreyText(),
                     Qt::AlignHCenter | Qt::AlignVCenter | Qt::TextDontClip);
}

// A square skin cell alone, on `ground`.
QImage CellAlone(const QRect& box, int cellX, int cellY, int size, QColor ground = Qt::white) {
    return PaintInto(
        PanelClient(), [&](QPainter& p) { DrawSheetCell(p, box, cellX, cellY, size, size); }, ground);
}

// The band of rows a line of text covers, about the middle of `rect`.
QRect TextBand(const QRect& rect) {
    const int h = std::max(rect.height(), QFontMetrics(Font(SkinFont::Normal)).height()) + 4;
    return QRect(rect.left(), rect.center().y() - h / 2, rect.width(), h);
}

PanelPaintState Browse(int classIndex, int itemCount, int syncStatus = -1) {
    PanelPaintState s;
    s.page = classIndex == 1 ? PageCollection : PageBrowse;
    s.classIndex = classIndex;
    s.itemCount = itemCount;
    s.syncStatus = syncStatus;
    return s;
}

PanelPaintState Search(int page, int searchState, int rows, bool ended = false) {
    PanelPaintState s;
    s.page = page;
    s.searchState = searchState;
    s.rowCount = rows;
    s.searchEnded = ended;
    return s;
}

TEST_P(PanelPainting, FrameBandsTitleAndSeparator) {
    const QImage img = Panel(Browse(2, 5));
    const int w = img.width(), h = img.height(), band = ScaleUnits(29), mid = w / 2, sx = ScaleUnits(722);
    ExpectPixels(img, {
        // The one-pixel frame on all four sides, and white just inside it below the band.
        {0, 0, c::OuterFrame()}, {w - 1, 0, c::OuterFrame()}, {0, h / 2, c::OuterFrame()},
        {w - 1, h / 2, c::OuterFrame()}, {mid, h - 1, c::OuterFrame()}, {1, h / 2, kWhite},
        // Title band from y 1, 29 units high; status band ending one pixel above the bottom.
        {1, 1, c::Band()}, {mid, band, c::Band()}, {mid, band + 1, kWhite}, {mid, h - 2, c::Band()},
        {mid, h - 1 - band, c::Band()}, {mid, h - 2 - band, kWhite}, {w - 2, h - 2, c::Band()},
        // The separator at 722 from 9 to 21, one pixel wide.
        {sx, ScaleUnits(9), c::Separator()}, {sx, ScaleUnits(21), c::Separator()},
        {sx, ScaleUnits(9) - 1, c::Band()}, {sx, ScaleUnits(21) + 1, c::Band()},
        {sx - 1, ScaleUnits(15), c::Band()}, {sx + 1, ScaleUnits(15), c::Band()},
    });
    // "Ombrel" in the text colour from 11; the shortcut hint from 75.
    const QFontMetrics metrics(Font(SkinFont::Normal));
    const int titleRight = ScaleUnits(11) + metrics.horizontalAdvance(QStringLiteral("Ombrel"));
    EXPECT_TRUE(HasColour(img, QRect(ScaleUnits(11), 0, titleRight - ScaleUnits(11), band), c::Text(), 6));
    EXPECT_EQ(CountNot(img, QRect(2, 2, ScaleUnits(11) - 3, band - 2), c::Band()), 0);
    EXPECT_TRUE(HasColour(img, ScaleRect(75, 0, 210, 30).intersected(QRect(titleRight + 2, 0, w, h)),
                          c::TitleHint(), 6));
    // The hint is wider than its rectangle and is shown whole, not cut at 210.
    const int hintRight = ScaleUnits(75) + metrics.horizontalAdvance(QStringLiteral("（快捷开关：Ctrl+Tab）"));
    int lastInk = 0;
    for (int x = ScaleUnits(75); x < sx - 1; ++x)
        if (CountNot(img, QRect(x, 2, 1, band - 2), c::Band()) > 0) lastInk = x;
    EXPECT_GE(lastInk, hintRight - metrics.horizontalAdvance(QStringLiteral("）")));
    EXPECT_LE(lastInk, hintRight + 1);
    if (hintRight > ScaleUnits(210) + metrics.horizontalAdvance(QStringLiteral("）"))) {
        EXPECT_GT(lastInk, ScaleUnits(210));
    }
    EXPECT_EQ(CountNot(img, QRect(hintRight + 2, 2, sx - hintRight - 3, band - 2), c::Band()), 0);
    SavePng(img, QStringLiteral("panel_frame_%1.png").arg(rate()));

    // A window squeezed to almost nothing still gets its frame, and nothing outside it.
    const QImage tiny = PaintInto(
        QSize(600, 400), [](QPainter& p) { PaintPanel(p, QSize(3, 3), Browse(0, 0)); }, Qt::black);
    EXPECT_EQ(CountNot(tiny, tiny.rect(), Qt::black), 9);
    ExpectPixels(tiny, {{0, 0, c::OuterFrame()}, {2, 2, c::OuterFrame()}, {1, 1, c::Band()},
                        {3, 0, QColor(Qt::black)}, {0, 3, QColor(Qt::black)}});
    const QImage none = PaintInto(
        QSize(4, 4), [](QPainter& p) { PaintPanel(p, QSize(0, 0), Browse(0, 0)); }, Qt::black);
    EXPECT_EQ(CountNot(none, none.rect(), Qt::black), 0);
}

TEST_P(PanelPainting, BrowseBoxHeadingAndAccentBar) {
    const QImage recent = Panel(Browse(0, 4));
    const QRect box = ScaleRect(13, 78, 127, 101);
    const int y = box.center().y(), x = box.center().x();
    // A two-pixel accent frame inside the box, then the box fill.
    ExpectPixels(recent, {{box.left() - 1, y, kWhite}, {box.left(), y, c::Accent()},
                          {box.left() + 1, y, c::Accent()}, {box.left() + 2, y, c::SearchBoxFill()},
                          {box.right(), y, c::Accent()}, {box.right() - 2, y, c::SearchBoxFill()},
                          {box.right() + 1, y, kWhite}, {x, box.top(), c::Accent()},
                          {x, box.top() - 1, kWhite}, {x, box.bottom(), c::Accent()}});
    // The magnifier cell at 36, 82, and "全库搜索" in bold accent.
    const QRect icon = ScaleBox(36, 82, 14, 14);
    EXPECT_TRUE(SameIn(recent, CellAlone(icon, 28, 72, 14, c::SearchBoxFill()), icon));
    EXPECT_GT(CountNot(recent, icon, c::SearchBoxFill()), 0);
    EXPECT_TRUE(HasColour(recent, ScaleRect(54, 78, 121, 101).adjusted(0, 3, 0, -3), c::Accent()));

    // "最近使用" and its bar only on row 0 with items.
    const QRect bar = ScaleBox(137, 62, 63, 2);
    const QRect heading = ScaleRect(144, 42, 204, 62);
    EXPECT_EQ(CountColour(recent, bar, c::Accent()), bar.width() * bar.height());
    EXPECT_EQ(CountColour(recent, bar.adjusted(-1, -1, 1, 1), c::Accent()), bar.width() * bar.height());
    EXPECT_TRUE(HasColour(recent, heading, c::Accent()));
    for (const PanelPaintState& s : {Browse(0, 0), Browse(2, 4), Browse(1, 4)}) {
        SCOPED_TRACE(testing::Message() << s.classIndex << "/" << s.itemCount);
        const QImage img = Panel(s);
        EXPECT_EQ(CountColour(img, bar, c::Accent(), 60), 0);
        EXPECT_EQ(CountColour(img, heading, c::Accent(), 60), 0);
    }
    SavePng(recent, QStringLiteral("browse_recent_items_%1.png").arg(rate()));
}

TEST_P(PanelPainting, EachEmptyBrowseStatePicksItsPictureAndText) {
    struct Case {
        PanelPaintState state;
        int cellX;  // -1: no picture
        QRect picture, text;
        const char *words, *png;
    };
    PanelPaintState opened = Browse(3, 0);
    opened.emptySubclassOpened = true;
    const QRect collection = ScaleBox(352, 158, 70, 70), collectionText = ScaleRect(19, 228, 755, 248);
    const QRect classText = ScaleRect(352, 233, 422, 253);
    const Case cases[] = {
        {Browse(0, 0), 0, ScaleBox(353, 169, 70, 70), ScaleRect(322, 240, 454, 269), "最近使用为空", "recent_empty"},
        {Browse(1, 0, -1), 70, collection, collectionText, "收藏为空", "collection_empty"},
        {Browse(1, 0, 0), 552, collection, collectionText, "本地收藏与云端不一致，是否同步替换云端数据？",
         "collection_differs"},
        {Browse(1, 0, 1), 434, collection, collectionText, "加载中，请稍候...", "collection_loading"},
        {Browse(1, 0, 2), 434, collection, collectionText, "同步中，请稍候...", "collection_syncing"},
        {Browse(1, 0, 3), 364, collection, collectionText, "加载失败，请连接网络后重试", "collection_load_failed"},
        {Browse(1, 0, 4), 364, collection, collectionText, "同步失败，请连接网络后重试", "collection_sync_failed"},
        {opened, 210, collection, classText, "暂无图块", "class_opened_empty"},
        {Browse(3, 0), -1, QRect(), classText, "常用为空", "class_common_empty"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.png);
        const QImage img = Panel(k.state);
        const QRect textArea = TextBand(k.text).intersected(QRect(1, 0, img.width() - 2, img.height()));
        EXPECT_TRUE(SameIn(img, GreyTextAlone(k.words, k.text), textArea));
        EXPECT_TRUE(HasColour(img, textArea, c::GreyText(), 6));
        if (k.cellX >= 0) {
            EXPECT_TRUE(SameIn(img, CellAlone(k.picture, k.cellX, 0, 70), k.picture));
            EXPECT_GT(CountNot(img, k.picture, Qt::white), k.picture.width() * k.picture.height() / 20);
        } else {
            EXPECT_EQ(CountNot(img, ScaleRect(190, 110, 580, 230), Qt::white), 0);
        }
        // Nothing else in the empty-collection area but the picture and the text.
        QImage rest = img;
        {
            QPainter p(&rest);
            p.fillRect(textArea, Qt::white);
            p.fillRect(k.picture, Qt::white);
        }
        EXPECT_EQ(CountNot(rest, ScaleRect(190, 110, 580, 300), Qt::white), 0);
        if (firstRate()) SavePng(img, QStringLiteral("browse_%1.png").arg(QLatin1String(k.png)));
    }
    // No state to show: -2, an unknown status, or no class chosen yet.
    for (const PanelPaintState& s : {Browse(1, 0, -2), Browse(1, 0, 7), Browse(-1, 0)}) {
        SCOPED_TRACE(testing::Message() << s.classIndex << "/" << s.syncStatus);
        const QImage img = Panel(s);
        EXPECT_EQ(CountNot(img, ScaleRect(190, 110, 580, 300), Qt::white), 0);
        EXPECT_EQ(CountNot(img, ScaleRect(130, 100, 755, 420).adjusted(0, 0, -2, 0), Qt::white), 0);
        if (firstRate() && s.syncStatus == -2) SavePng(img, QStringLiteral("browse_collection_hidden.png"));
    }
}

TEST_P(PanelPainting, SearchLayerBoxEmptyStatesHintAndDefaultWord) {
    const QRect text = ScaleRect(280, 250, 495, 262);
    const QRect picture = ScaleBox(354, 169, 70, 70);
    const QRect hint = ScaleRect(510, 427, 745, 447);
    const QRect table = ScaleRect(190, 110, 580, 300);
    struct Case {
        int state;
        bool untouched;
        int cellX;
        const char *text, *png;
    };
    const Case cases[] = {
        {0, true, 140, "搜索图块", "search_untouched"},
        {0, false, 140, "未找到匹配的图块", "search_idle_none"},
        {1, false, 434, "图块加载中，请稍候", "search_loading"},
        {2, false, 364, "网络中断，请检查后重试", "search_network_down"},
        {3, false, 140, "未找到匹配的图块", "search_nothing_found"},
    };
    for (int page : {int(PageSearch), int(PageCollectionSearch)}) {
        for (const Case& k : cases) {
            SCOPED_TRACE(k.png);
            PanelPaintState s = Search(page, k.state, 0);
            s.searchUntouched = k.untouched;
            s.defaultHotWord = QStringLiteral("门窗");
            const QImage img = Panel(s);
            EXPECT_TRUE(SameIn(img, GreyTextAlone(k.text, text), TextBand(text)));
            EXPECT_TRUE(HasColour(img, TextBand(text), c::GreyText(), 6));
            EXPECT_TRUE(SameIn(img, CellAlone(picture, k.cellX, 0, 70), picture));
            EXPECT_EQ(CountColour(img, hint, c::Accent(), 60), 0);
            if (firstRate() && page == PageSearch) SavePng(img, QStringLiteral("%1.png").arg(k.png));
        }
    }

    // The box: a two-pixel accent frame with the magnifier at 19, 46, and no fill.
    PanelPaintState withRows = Search(PageSearch, 0, 12);
    withRows.defaultHotWord = QStringLiteral("门窗");
    const QImage img = Panel(withRows);
    const QRect box = ScaleRect(12, 40, 686, 64);
    const int y = box.center().y(), x = box.center().x();
    ExpectPixels(img, {{box.left(), y, c::Accent()}, {box.left() + 1, y, c::Accent()},
                       {box.left() + 2, y, kWhite}, {box.right() - 1, y, c::Accent()},
                       {box.right() + 1, y, kWhite}, {x, box.bottom(), c::Accent()},
                       {x, box.bottom() - 2, kWhite}});
    const QRect icon = ScaleBox(19, 46, 14, 14);
    EXPECT_TRUE(SameIn(img, CellAlone(icon, 28, 72, 14), icon));
    // Rows: the hint on the right of the status line, no empty state.
    EXPECT_TRUE(HasColour(img, hint, c::Accent()));
    // Right-aligned at 745 and wider than its rectangle at some rates: it reaches left, whole.
    const int hintLeft = hint.left() + hint.width() - QFontMetrics(Font(SkinFont::Normal))
                                                          .horizontalAdvance(QStringLiteral("提示：收藏下载的图块，下次快速找到"));
    const int free = ScaleUnits(300);
    EXPECT_EQ(CountColour(img, QRect(free, hint.top(), hintLeft - 2 - free, hint.height()), c::Accent(), 60), 0);
    EXPECT_TRUE(HasColour(img, QRect(hintLeft, hint.top(), ScaleUnits(20), hint.height()), c::Accent()));
    EXPECT_EQ(CountNot(img, table, Qt::white), 0);
    // The default word from 30 units into the box, in the placeholder grey, on the search page only.
    const QRect word = ScaleRect(42, 40, 686, 64).adjusted(0, 2, -2, -2);
    EXPECT_TRUE(HasColour(img, word, c::Placeholder(), 4));
    EXPECT_EQ(CountNot(img, ScaleRect(34, 40, 42, 64).adjusted(0, 2, 0, -2), Qt::white), 0);
    SavePng(img, QStringLiteral("search_rows_%1.png").arg(rate()));
    withRows.page = PageCollectionSearch;
    EXPECT_EQ(CountNot(Panel(withRows), word, Qt::white), 0);
    // An unknown search state shows no picture and no text.
    EXPECT_EQ(CountNot(Panel(Search(PageSearch, 9, 0)), table, Qt::white), 0);
}

TEST_P(PanelPainting, StatusLineNameOrCount) {
    const QRect count = ScaleRect(10, 427, 160, 447);
    const QRect hint = ScaleRect(588, 427, 750, 447);

    // A selected block: the double-click hint, "名称：" and the name.
    PanelPaintState selected = Browse(2, 7);
    selected.selectedName = QStringLiteral("平开门M1021");
    const QImage named = Panel(selected);
    EXPECT_TRUE(HasColour(named, hint, c::Accent()));
    // The hint is whole and inside the frame: as many accent pixels as the hint drawn alone.
    const QString hintText = QStringLiteral("注：双击缩略图快速插入图块");
    const int hintWidth = QFontMetrics(Font(SkinFont::Bold)).horizontalAdvance(hintText);
    const QImage hintAlone = TextAlone(QSize(hintWidth + 20, hint.height() + 20), QRect(10, 10, hintWidth, hint.height()),
                                       hintText, SkinFont::Bold, c::Accent());
    const QRect band(ScaleUnits(530), hint.top() - 4, named.width() - ScaleUnits(530), hint.height() + 8);
    EXPECT_EQ(CountColour(named, band, c::Accent()), CountColour(hintAlone, hintAlone.rect(), c::Accent()));
    EXPECT_EQ(CountNot(named, QRect(named.width() - 3, hint.top(), 2, hint.height()), c::Band()), 0);
    const QRect placed = DoubleClickHintRect(PanelClient());
    if (ScaleUnits(588) + hintWidth <= named.width() - 1 - ScaleUnits(5)) {
        EXPECT_EQ(placed.left(), ScaleUnits(588));  // where it fits, it stays
    } else {
        EXPECT_EQ(placed.left() + hintWidth, named.width() - 1 - ScaleUnits(5));
    }
    EXPECT_TRUE(HasColour(named, ScaleRect(10, 427, 49, 447), c::Text(), 6));
    EXPECT_TRUE(HasColour(named, ScaleRect(49, 427, 530, 447), c::Text(), 6));
    EXPECT_EQ(CountColour(named, count, c::Accent(), 60), 0);
    SavePng(named, QStringLiteral("status_selected_%1.png").arg(rate()));

    // The count: only when the search has ended, also for no rows; the number is accent.
    const PanelPaintState ended = Search(PageSearch, 3, 0, true);
    const QImage zero = Panel(ended);
    EXPECT_TRUE(ShowsResultCount(ended));
    // Glyph strokes are sampled with the text probes' tolerance: at rate 1 a
    // thin stroke may never cover a whole pixel.
    EXPECT_TRUE(HasColour(zero, count, c::Accent(), 6));
    EXPECT_TRUE(HasColour(zero, count, c::Text(), 6));
    PanelPaintState fresh = ended;
    fresh.searchUntouched = true;
    PanelPaintState endedWithName = ended;
    endedWithName.selectedName = QStringLiteral("阀门");
    EXPECT_FALSE(ShowsResultCount(endedWithName));
    EXPECT_EQ(CountColour(Panel(endedWithName), count, c::Accent(), 60), 0);
    // Pages without a search never count.
    PanelPaintState browse = Browse(2, 7);
    browse.rowCount = 3;
    browse.searchEnded = true;
    EXPECT_FALSE(ShowsResultCount(browse));
    // Running searches, a fresh one, a collection search without rows (it has no
    // "ended" of its own) and a browse page leave the count's place empty.
    for (const PanelPaintState& s :
         {Search(PageSearch, 1, 0), Search(PageSearch, 1, 40), fresh, Search(PageCollectionSearch, 0, 0), browse}) {
        SCOPED_TRACE(testing::Message() << s.page << "/" << s.searchState << "/" << s.rowCount);
        EXPECT_EQ(CountNot(Panel(s), count, c::Band()), 0);
    }
    // The collection search counts when it has rows.
    const QImage collection = Panel(Search(PageCollectionSearch, 0, 23));
    EXPECT_TRUE(HasColour(collection, count, c::Accent()));

    // "共23条结果": the accent lies just where "23" stands.
    const QFontMetrics metrics(Font(SkinFont::Normal));
    const int keyLeft = count.left() + metrics.horizontalAdvance(QStringLiteral("共"));
    const int keyRight = count.left() + metrics.horizontalAdvance(QStringLiteral("共23"));
    const QRect beforeKey(count.left(), count.top(), keyLeft - count.left() - 1, count.height());
    EXPECT_EQ(CountColour(collection, beforeKey, c::Accent(), 60), 0);
    EXPECT_EQ(CountColour(collection, QRect(keyRight + 2, count.top(), count.width(), count.height()), c::Accent(), 60),
              0);
    SavePng(zero, QStringLiteral("status_count_zero_%1.png").arg(rate()));
    SavePng(collection, QStringLiteral("status_collection_count_%1.png").arg(rate()));
}

}  // namespace
}  // namespace marrowfin::test
