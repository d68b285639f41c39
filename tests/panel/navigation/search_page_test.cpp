// The search page with result rows in their states, compared with its
// pictures at two rates; and the hot word row: clicks reported by id, at most
// 32 words, its buttons taken again on a rebuild, no word past the right
// margin (the row on the page is seen in the navigation's pictures).
#include "panel/dialog/hot_word_bar.h"
#include "panel/preview/dwg_preview.h"
#include "panel_world.h"
#include "skin/skin_button.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

int Shown(const HotWordBar& bar) {
    const std::vector<CSkinButton*> buttons = bar.Buttons();
    return int(std::count_if(buttons.begin(), buttons.end(), [](CSkinButton* b) { return b->isVisible(); }));
}

}  // namespace

TEST(SearchPage, ResultRowsInEveryStateAtTwoRates) {
    ParkMouse();
    QApplication::setCursorFlashTime(0);  // the caret stands still
    const QString drawing = QString::fromStdString(SharedDir() + "/testdata/dwg/bmp8_ac1015.dwg");
    for (const float rate : {1.0f, 1.5f}) {
        PanelWorld w;
        w.MakePanel(true, rate);
        CBrindleDlg& p = *w.panel;
        g_defaultHotWord = QStringLiteral("门窗");
        w.ClickButton(2158);
        // The rows of a search for "门": every state, a boutique row, a real thumbnail, "使用" of
        // the first row under the mouse; the bar as the rows overflow. No file to fetch or read.
        auto row = [&](int state, const char* name) {
            return BlockRow{.name = QString::fromUtf8(name), .klass = QStringLiteral("建筑"),
                            .subclass = QStringLiteral("门窗..平开门"), .url = {}, .path = drawing + QStringLiteral(".gone"),
                            .thumbnail = {}, .thumbnailTried = true, .prefetch = false, .state = state, .percent = 40};
        };
        p.m_serverRows = {row(RowFresh, "平开门M1021.dwg"), row(RowCollected, "双开门.dwg"), row(RowDownloading, "推拉门.dwg"),
                          row(RowFailed, "旋转门.dwg"),     row(RowRemote, "卷帘门.dwg"),   row(RowFetched, "折叠门.dwg"),
                          row(RowFresh, "门套.dwg"),        row(RowFresh, "门槛.dwg")};
        p.m_serverRows[0].path = drawing;
        p.m_serverRows[0].thumbnail = LoadDwgPreview(drawing);
        p.m_serverRows[1].boutique = true;
        p.m_searchUntouched = false;
        SendWindowMessage(p.Handle(), MsgPanelCommand, 16, 0);
        p.m_searchList->SetSearchKey(QStringLiteral("门"));
        MoveTo(p.m_searchList, p.m_searchList->RowRect(0).topLeft() + ScaleBox(660, 25, 0, 0).topLeft());
        EXPECT_EQ(p.m_searchList->HotZone(), 2);
        Pump(30);
        EXPECT_TRUE(MatchesReference(p.grab().toImage(), "panel/navigation", rate == 1.0f ? "search_rows_1.0" : "search_rows_1.5"));
        MoveAway(&p);
    }
    g_defaultHotWord.clear();
}

TEST(HotWordBar, ReportsClicksByIdKeepsAtMost32ReusesItsButtonsAndKeepsToTheMargin) {
    SetSkinRateForTest(1.0f);
    QWidget panel;
    panel.resize(ScaleUnits(755), ScaleUnits(454));
    std::vector<int> clicked;
    auto* bar = new HotWordBar(&panel, [&](int id) { clicked.push_back(id); });
    std::vector<QString> words = {QStringLiteral("默认")};
    for (int i = 0; i < 39; ++i) words.push_back(QStringLiteral("热词%1").arg(i));
    words.push_back(QString(12, QChar(u'长')));  // would end past the margin on its line
    bar->Build(words, panel.width());
    bar->SetShown(true);
    ASSERT_TRUE(ShowExposed(&panel));
    EXPECT_TRUE(bar->Buttons().size() == 33 && bar->Button(4032) && !bar->Button(4033));
    for (CSkinButton* b : bar->Buttons()) EXPECT_LE(b->geometry().right(), panel.width() - ScaleUnits(11)) << b->text().toStdString();
    // The label is plain and answers nothing; a word reports its id.
    Click(bar->Button(4000), bar->Button(4000)->rect().center());
    Click(bar->Button(4002), bar->Button(4002)->rect().center());
    EXPECT_EQ(clicked, std::vector<int>{4002});

    // Fewer words: the first buttons are taken again with the new captions, hidden; the rest go.
    words = {QStringLiteral("默认"), QStringLiteral("短"), QStringLiteral("词")};
    CSkinButton* first = bar->Button(4001);
    bar->Build(words, panel.width());
    EXPECT_TRUE(bar->Buttons().size() == 3 && bar->Button(4001) == first && first->text() == QStringLiteral("短") &&
                Shown(*bar) == 0);
    bar->SetShown(true);
    Pump(QApplication::doubleClickInterval() + 50);
    Click(first, first->rect().center());
    EXPECT_EQ(clicked, (std::vector<int>{4002, 4001}));
    // The default word alone makes no row.
    bar->Build({QStringLiteral("默认")}, panel.width());
    EXPECT_TRUE(bar->Buttons().empty());
}
