// Class rows: icon cell by row, boutique and selection; fonts and colours by
// hover, selection and boutique; the ellipsis.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "paint_support.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin::test {
namespace {

PAINT_AT_TWO_RATES(ClassRow);

QRect Item() { return QRect(3, 4, ScaleUnits(112), ScaleUnits(28) + 1); }
QSize Canvas() { return QSize(ScaleUnits(112) + 8, ScaleUnits(28) + 10); }

QImage DrawRow(int row, const QString& text, bool boutique, bool selected, bool hover) {
    return PaintInto(
        Canvas(), [&](QPainter& p) { DrawClassRow(p, Item(), row, text, boutique, selected, hover); }, kGround);
}

TEST_P(ClassRow, IconCellByRowBoutiqueAndSelection) {
    struct Case {
        int row;
        bool boutique, selected;
        int cellX;
    };
    const Case cases[] = {{0, false, false, 0},  {0, false, true, 16}, {0, true, true, 16},   {1, false, false, 32},
                          {1, false, true, 48},  {1, true, true, 48},  {2, false, false, 96}, {2, false, true, 112},
                          {4, false, false, 96}, {4, true, false, 352}, {4, true, true, 368}, {5, true, false, 352},
                          {5, true, true, 368}};
    const QRect icon = ScaleBox(5, 7, 16, 16).translated(Item().topLeft());
    for (const Case& k : cases) {
        SCOPED_TRACE(testing::Message() << k.row << k.boutique << k.selected);
        EXPECT_EQ(ClassRowIconX(k.row, k.boutique, k.selected), k.cellX);
        const QImage img = DrawRow(k.row, QStringLiteral("建筑"), k.boutique, k.selected, false);
        const QImage alone = PaintInto(Canvas(), [&](QPainter& p) { DrawSheetCell(p, icon, k.cellX, 88, 16, 16); });
        EXPECT_TRUE(SameIn(img, alone, icon));
        EXPECT_GT(CountNot(img, icon, Qt::white), 0);
    }
}

TEST_P(ClassRow, FontAndColourByHoverSelectionAndBoutique) {
    const QRect item = Item();
    const QRect text(item.left() + ScaleUnits(28), item.top(), item.width() - ScaleUnits(28), item.height());
    const QString name = QStringLiteral("给排水");
    const QImage normal = DrawRow(3, name, false, false, false);
    const QImage hover = DrawRow(3, name, false, false, true);
    const QImage selected = DrawRow(3, name, false, true, false);
    const QImage selectedHover = DrawRow(3, name, false, true, true);
    const QImage boutique = DrawRow(3, name, true, false, false);
    const QImage boutiqueSelected = DrawRow(3, name, true, true, false);

    // Plain: class text colour, nothing accent.
    EXPECT_TRUE(HasColour(normal, text, c::ClassText(), 6));
    EXPECT_FALSE(HasColour(normal, text, c::Accent(), 60));
    // The mouse on it: bold, same colour.
    EXPECT_FALSE(SameIn(normal, hover, text));
    EXPECT_TRUE(HasColour(hover, text, c::ClassText(), 6));
    EXPECT_FALSE(HasColour(hover, text, c::Accent(), 60));
    EXPECT_GT(CountNot(hover, text, Qt::white), CountNot(normal, text, Qt::white));
    // Selected: bold accent; the mouse changes nothing more.
    EXPECT_TRUE(HasColour(selected, text, c::Accent()));
    EXPECT_FALSE(HasColour(selected, text, c::ClassText(), 6));
    EXPECT_TRUE(SameIn(selected, selectedHover, item));
    // Boutique: plain until selected, then gold.
    EXPECT_TRUE(SameIn(normal, boutique, text));
    EXPECT_TRUE(HasColour(boutiqueSelected, text, c::Boutique()));
    EXPECT_FALSE(HasColour(boutiqueSelected, text, c::Accent(), 60));
    // The row is white and stays in its rectangle.
    EXPECT_EQ(At(normal, item.right() - 1, item.top() + 1), QColor(Qt::white));
    EXPECT_EQ(At(normal, item.left() - 1, item.center().y()), kGround);
    EXPECT_EQ(At(normal, item.right() + 1, item.center().y()), kGround);
    EXPECT_EQ(At(normal, item.center().x(), item.bottom() + 1), kGround);

    // A long name ends in an ellipsis inside the row.
    const QString longText = QStringLiteral("建筑给排水暖通电气结构园林景观");
    const QImage longName = DrawRow(3, longText, false, true, false);
    EXPECT_EQ(At(longName, item.right() + 1, item.center().y()), kGround);
    const QString elided = QFontMetrics(Font(SkinFont::Bold)).elidedText(longText, Qt::ElideRight, text.width());
    EXPECT_TRUE(SameIn(longName, TextAlone(Canvas(), text, elided, SkinFont::Bold, c::Accent()), text));
    if (!firstRate()) return;
    const QImage sheet = Stacked({normal, hover, selected, boutiqueSelected,
                                  DrawRow(0, QStringLiteral("最近使用"), false, true, false),
                                  DrawRow(1, QStringLiteral("我的收藏"), false, false, true),
                                  DrawRow(6, QStringLiteral("精品图库"), true, false, false), longName},
                                 2, 10);
    SavePng(sheet, QStringLiteral("class_rows.png"));
}

}  // namespace
}  // namespace marrowfin::test
