// The highlight rule: where the text is cut and which pieces turn accent.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "paint_support.h"
#include "panel/paint/highlight_text.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"

namespace marrowfin::test {
namespace {

TEST(HighlightRule, CutsTheTextAtEveryExactOccurrence) {
    struct Case {
        const char *text, *key, *pieces;  // pieces joined by '|'
    };
    const Case cases[] = {
        {"abcab", "ab", "ab|c|ab"},
        {"x阀门y阀门", "阀门", "x|阀门|y|阀门"},
        {"aaa", "aa", "aa|a"},   // no overlap: the scan resumes behind each key
        {"ABab", "ab", "AB|ab"},  // exact comparison: another case is not the key
        {"共12条结果", "", "共12条结果"},
        {"共12条结果", "7", "共12条结果"},
        {"", "a", ""},  // an empty text gives no piece
        {"ab", "ab", "ab"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.text);
        EXPECT_EQ(SplitAtKey(QString::fromUtf8(k.text), QString::fromUtf8(k.key)),
                  QString::fromUtf8(k.pieces).split(QLatin1Char('|'), Qt::SkipEmptyParts));
    }
}

TEST(HighlightRule, PaintsOnlyTheKeyPiecesInAccent) {
    ASSERT_TRUE(UsePaintRate(1.0f));
    const QFontMetrics metrics(Font(SkinFont::Normal));
    const QRect rect(10, 0, 380, 30);
    const QSize size(400, 30);
    auto draw = [&](const QString& text, const QString& key) {
        return PaintInto(size, [&](QPainter& p) { DrawHighlighted(p, text, key, rect, c::Text()); });
    };

    // The number of "共12条结果" is accent, and only where it stands.
    const QImage count = draw(QStringLiteral("共12条结果"), QStringLiteral("12"));
    const int keyLeft = rect.left() + metrics.horizontalAdvance(QStringLiteral("共"));
    const int keyRight = rect.left() + metrics.horizontalAdvance(QStringLiteral("共12"));
    EXPECT_GT(CountColour(count, QRect(keyLeft, 0, keyRight - keyLeft, 30), c::Accent(), 40), 0);
    EXPECT_EQ(CountColour(count, QRect(0, 0, keyLeft - 1, 30), c::Accent(), 40), 0);
    EXPECT_EQ(CountColour(count, QRect(keyRight + 2, 0, 400, 30), c::Accent(), 40), 0);
    EXPECT_GT(CountColour(count, QRect(keyRight, 0, 400, 30), c::Text(), 8), 0);
    EXPECT_GT(CountColour(count, QRect(0, 0, keyLeft, 30), c::Text(), 8), 0);

    // Cut into pieces, the text stands where it would stand whole.
    const QImage whole = TextAlone(size, rect, QStringLiteral("共12条结果"), SkinFont::Normal, c::Text());
    // Glyphs may land on another sub-pixel phase, never further than one pixel off.
    auto ink = [](const QImage& img, int x, int y) {
        return x >= 0 && x < img.width() && img.pixel(x, y) != 0xffffffffu;
    };
    int misplaced = 0, inked = 0;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 400; ++x) {
            if (!ink(count, x, y)) continue;
            ++inked;
            misplaced += !(ink(whole, x - 1, y) || ink(whole, x, y) || ink(whole, x + 1, y));
        }
    }
    EXPECT_GT(inked, 100);
    EXPECT_EQ(misplaced, 0);
    SavePng(Stacked({count, whole}), QStringLiteral("highlight_pieces_whole.png"));

    // An empty key, or one not in the text, leaves all of it in the given colour.
    for (const QString& key : {QString(), QStringLiteral("7")})
        EXPECT_EQ(CountColour(draw(QStringLiteral("共12条结果"), key), QRect(0, 0, 400, 30), c::Accent(), 40), 0);
    // Both occurrences turn accent, the dash between them does not.
    const QImage twice = draw(QStringLiteral("阀门-阀门"), QStringLiteral("阀门"));
    const int dashLeft = rect.left() + metrics.horizontalAdvance(QStringLiteral("阀门"));
    const int dashRight = rect.left() + metrics.horizontalAdvance(QStringLiteral("阀门-"));
    EXPECT_GT(CountColour(twice, QRect(0, 0, dashLeft, 30), c::Accent(), 40), 0);
    EXPECT_GT(CountColour(twice, QRect(dashRight, 0, 400, 30), c::Accent(), 40), 0);
    EXPECT_EQ(CountColour(twice, QRect(dashLeft + 1, 0, dashRight - dashLeft - 2, 30), c::Accent(), 40), 0);

    // A long text stops at the rectangle's right edge.
    const QRect narrow(10, 0, 60, 30);
    const QImage cut = PaintInto(size, [&](QPainter& p) {
        DrawHighlighted(p, QStringLiteral("很长很长很长很长的名字"), QStringLiteral("长"), narrow, c::Text());
    });
    EXPECT_GT(CountNot(cut, narrow, Qt::white), 0);
    EXPECT_EQ(CountNot(cut, QRect(narrow.right() + 1, 0, 400, 30), Qt::white), 0);
}

}  // namespace
}  // namespace marrowfin::test
