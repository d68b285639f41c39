// The start page at two rates, the sync prompt of the collections and the
// search page, rendered offscreen and saved as PNG beside the test program
// (rendered/panel_*.png) for a look by eye.

#include <gtest/gtest.h>

#include "panel/dialog/hot_words.h"
#include "panel_world.h"
#include "platform/window_messages.h"
#include "skin/skin_messages.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

bool Near(QColor a, QColor b, int tolerance = 8) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

bool DrawnOver(const QImage& image, const QRect& area, QColor background) {
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (!Near(image.pixelColor(x, y), background, 20)) return true;
    return false;
}

QImage Shot(CBrindleDlg& panel) { return panel.grab().toImage().convertToFormat(QImage::Format_RGB32); }

void SaveShot(const QImage& image, const char* name) {
    ASSERT_TRUE(image.save(RenderFolder() + QLatin1Char('/') + QLatin1String(name), "PNG"));
}

// Shows the panel and checks its start page: the outer frame, the title band
// and the close button drawn at its place (the paint was called).
void CheckStartPage(CBrindleDlg& panel, float rate, const char* name) {
    SCOPED_TRACE(name);
    panel.ShowPanel();
    Pump(1000);  // the first class-list tick and the class switch it schedules
    const QImage image = Shot(panel);
    ASSERT_EQ(image.size(), QSize(static_cast<int>(755 * rate), static_cast<int>(454 * rate)));
    SaveShot(image, name);
    EXPECT_TRUE(Near(image.pixelColor(0, image.height() / 2), QColor(0x00, 0x82, 0xF0)));
    EXPECT_TRUE(Near(image.pixelColor(image.width() / 3, 5), QColor(0xF2, 0xF3, 0xF5)));
    EXPECT_TRUE(DrawnOver(image, panel.Button(1000)->geometry(), QColor(0xF2, 0xF3, 0xF5)));
}

}  // namespace

TEST(PanelRender, StartPageSyncPromptAndSearchPageAtRateOne) {
    SampleWorld world;
    CBrindleDlg& panel = *world.panel;
    CheckStartPage(panel, 1.0f, "panel_start_1.0.png");
    {
        SCOPED_TRACE("the sync prompt of the collections");
        const int classIndex = panel.m_classIndex;
        panel.m_classIndex = 1;
        panel.m_itemCount = 0;
        SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, 0);
        Pump(100);
        const QImage image = Shot(panel);
        SaveShot(image, "panel_sync_prompt_1.0.png");
        for (int id : {2155, 2156}) {
            ASSERT_TRUE(panel.Button(id)->isVisible()) << id;
            EXPECT_TRUE(DrawnOver(image, panel.Button(id)->geometry(), Qt::white)) << id;
        }
        EXPECT_FALSE(panel.Button(2157)->isVisible());
        EXPECT_FALSE(panel.Button(2150)->isVisible());
        SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, 1);  // in step again: the prompt goes
        Pump();
        panel.m_classIndex = classIndex;
    }
    {
        SCOPED_TRACE("the search page with the default hot word");
        panel.GoToPage(PageSearch);
        ASSERT_EQ(panel.m_page, PageSearch);
        const QString before = g_defaultHotWord;
        // Right of the edit's caret, left of the search button, inside the box's frame.
        const QRect word = ScaleRect(52, 40, 630, 64).adjusted(0, 4, 0, -4);
        g_defaultHotWord.clear();
        const QImage plain = Shot(panel);
        g_defaultHotWord = QStringLiteral("法兰阀门");
        const QImage image = Shot(panel);
        g_defaultHotWord = before;
        SaveShot(image, "panel_search_1.0.png");
        EXPECT_FALSE(DrawnOver(plain, word, Qt::white));
        EXPECT_TRUE(DrawnOver(image, word, Qt::white));
    }
}

TEST(PanelRender, StartPageAtRateOneAndAHalf) {
    SampleWorld world({.rate = 1.5f});
    CheckStartPage(*world.panel, 1.5f, "panel_start_1.5.png");
}
