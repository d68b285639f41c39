// The hot word row on its own (the row on the search page is seen in the
// navigation's pictures): clicks reported by id, at most 32 words, no word
// past the right margin, its buttons taken again by a rebuild.
#include "panel/dialog/hot_word_bar.h"
#include "panel_world.h"
#include "skin/skin_button.h"

using namespace marrowfin;
using namespace marrowfin::test;

TEST(HotWordBar, ReportsClicksByIdKeepsAtMost32ReusesItsButtonsAndKeepsToTheMargin) {
    SetSkinRateForTest(1.0f);
    QWidget panel;
    panel.resize(ScaleUnits(755), ScaleUnits(454));
    std::vector<int> clicked;
    auto* bar = new HotWordBar(&panel, [&](int id) { clicked.push_back(id); });
    std::vector<QString> words;
    for (int i = 0; i < 41; ++i) words.push_back(QStringLiteral("热词%1").arg(i));
    words[32] = QString(12, QChar(u'长'));  // the last one made, long enough to reach past the margin
    bar->Build(words, panel.width());
    bar->SetShown(true);
    ASSERT_TRUE(ShowExposed(&panel));
    EXPECT_TRUE(bar->Buttons().size() == 33 && bar->Button(4032) && !bar->Button(4033));
    for (CSkinButton* b : bar->Buttons()) EXPECT_LE(b->geometry().right(), panel.width() - ScaleUnits(11));
    // The label answers nothing; a word reports its id.
    for (int id : {4000, 4002}) Click(bar->Button(id), bar->Button(id)->rect().center());
    EXPECT_EQ(clicked, std::vector<int>{4002});

    // Fewer words: the first buttons are taken again with the new captions, hidden; the rest go.
    CSkinButton* first = bar->Button(4001);
    bar->Build({QStringLiteral("默认"), QStringLiteral("短"), QStringLiteral("词")}, panel.width());
    EXPECT_TRUE(bar->Buttons().size() == 3 && bar->Button(4001) == first && first->text() == QStringLiteral("短") && !first->isVisible());
    // The default word alone makes no row.
    bar->Build({QStringLiteral("默认")}, panel.width());
    EXPECT_TRUE(bar->Buttons().empty());
}
