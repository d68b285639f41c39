// Class rows: icon cell by row, boutique and selection; fonts and colours by
// hover, selection and boutique; the ellipsis.
#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPainter>

#include "paint_support.h"
#include "panel/paint/panel_colours.h"
#include "panel/paint/panel_painter.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {
namespace {

using test::At;
using test::CountNot;
using test::HasColour;
namespace c = panel_colours;

const QColor kGround(0xFF, 0x00, 0xFF);

QRect Item() { return QRect(3, 4, ScaleUnits(112), ScaleUnits(28) + 1); }
QSize Canvas() { return QSize(ScaleUnits(112) + 8, ScaleUnits(28) + 10); }
QRect TextArea() {
    const QRect item = Item();
    return QRect(item.left() + ScaleUnits(28), item.top(), item.width() - ScaleUnits(28), item.height());
}

QImage DrawRow(int row, const QString& text, bool boutique, bool selected, bool hover) {
    return test::PaintInto(
        Canvas(), [&](QPainter& p) { DrawClassRow(p, Item(), row, text, boutique, selected, hover); }, kGround);
}

TEST(ClassRow, IconCellByRowBoutiqueAndSelection) {
    EXPECT_EQ(ClassRowIconX(0, false, false), 0);
    EXPECT_EQ(ClassRowIconX(0, true, true), 16);
    EXPECT_EQ(ClassRowIconX(1, false, false), 32);
    EXPECT_EQ(ClassRowIconX(1, true, true), 48);
    EXPECT_EQ(ClassRowIconX(5, true, false), 352);
    EXPECT_EQ(ClassRowIconX(5, true, true), 368);
    EXPECT_EQ(ClassRowIconX(2, false, false), 96);
    EXPECT_EQ(ClassRowIconX(2, false, true), 112);

    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        ASSERT_TRUE(test::UsePaintRate(rate));
        const QRect icon = ScaleBox(5, 7, 16, 16).translated(Item().topLeft());
        struct Case {
            int row;
            bool boutique, selected;
            int cellX;
        };
        for (const Case& k : {Case{0, false, false, 0}, Case{0, false, true, 16}, Case{1, false, true, 48},
                              Case{4, true, false, 352}, Case{4, true, true, 368}, Case{4, false, false, 96}}) {
            const QImage img = DrawRow(k.row, QStringLiteral("建筑"), k.boutique, k.selected, false);
            const QImage alone = test::PaintInto(Canvas(), [&](QPainter& p) { DrawSheetCell(p, icon, k.cellX, 88, 16, 16); });
            EXPECT_TRUE(test::SameIn(img, alone, icon)) << k.row << k.boutique << k.selected;
            EXPECT_GT(CountNot(img, icon, Qt::white), 0);
        }
    }
}

TEST(ClassRow, FontAndColourByHoverSelectionAndBoutique) {
    for (float rate : {1.0f, 1.5f}) {
        SCOPED_TRACE(rate);
        ASSERT_TRUE(test::UsePaintRate(rate));
        const QRect text = TextArea();
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
        EXPECT_FALSE(test::SameIn(normal, hover, text));
        EXPECT_TRUE(HasColour(hover, text, c::ClassText(), 6));
        EXPECT_FALSE(HasColour(hover, text, c::Accent(), 60));
        EXPECT_GT(CountNot(hover, text, Qt::white), CountNot(normal, text, Qt::white));
        // Selected: bold accent; the mouse changes nothing more.
        EXPECT_TRUE(HasColour(selected, text, c::Accent()));
        EXPECT_FALSE(HasColour(selected, text, c::ClassText(), 6));
        EXPECT_TRUE(test::SameIn(selected, selectedHover, Item()));
        // Boutique: plain until selected, then gold.
        EXPECT_TRUE(test::SameIn(normal, boutique, text));
        EXPECT_TRUE(HasColour(boutiqueSelected, text, c::Boutique()));
        EXPECT_FALSE(HasColour(boutiqueSelected, text, c::Accent(), 60));
        // The row is white and stays in its rectangle.
        const QRect item = Item();
        EXPECT_EQ(At(normal, item.right() - 1, item.top() + 1), QColor(Qt::white));
        EXPECT_EQ(At(normal, item.left() - 1, item.center().y()), kGround);
        EXPECT_EQ(At(normal, item.right() + 1, item.center().y()), kGround);
        EXPECT_EQ(At(normal, item.center().x(), item.bottom() + 1), kGround);

        // A long name ends in an ellipsis inside the row.
        const QImage longName = DrawRow(3, QStringLiteral("建筑给排水暖通电气结构园林景观"), false, true, false);
        EXPECT_EQ(At(longName, item.right() + 1, item.center().y()), kGround);
        const QImage elided = test::PaintInto(Canvas(), [&](QPainter& p) {
            p.setFont(Font(SkinFont::Bold));
            p.setPen(c::Accent());
            p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                       QFontMetrics(Font(SkinFont::Bold))
                           .elidedText(QStringLiteral("建筑给排水暖通电气结构园林景观"), Qt::ElideRight, text.width()));
        });
        EXPECT_TRUE(test::SameIn(longName, elided, text));
        if (rate == 1.0f) {
            QImage sheet(Canvas().width() * 2 + 10, Canvas().height() * 4, QImage::Format_RGB32);
            sheet.fill(Qt::lightGray);
            QPainter p(&sheet);
            const QImage all[] = {normal,       hover,     selected,         boutiqueSelected,
                                  DrawRow(0, QStringLiteral("最近使用"), false, true, false),
                                  DrawRow(1, QStringLiteral("我的收藏"), false, false, true),
                                  DrawRow(6, QStringLiteral("精品图库"), true, false, false), longName};
            for (int i = 0; i < 8; ++i)
                p.drawImage((i % 2) * (Canvas().width() + 10), (i / 2) * Canvas().height(), all[i]);
            p.end();
            test::SavePng(sheet, QStringLiteral("class_rows.png"));
        }
    }
}

}  // namespace
}  // namespace marrowfin
