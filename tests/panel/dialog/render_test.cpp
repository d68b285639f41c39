// The start page rendered offscreen at two rates, saved as PNG beside the
// test program (rendered/panel_start_<rate>.png) for a look by eye.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QImage>

#include "panel/dialog/hot_words.h"
#include "panel_world.h"
#include "platform/window_messages.h"
#include "skin/skin_button.h"
#include "skin/skin_messages.h"
#include "skin/skin_scale.h"

using namespace marrowfin;
using namespace marrowfin::test;

namespace {

QString RenderFolder() {
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/rendered");
    QDir().mkpath(folder);
    return folder;
}

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

void RenderStartPage(float rate, const char* name) {
    SCOPED_TRACE(name);
    WorldOptions options;
    options.rate = rate;
    PanelWorld world(options);
    CBrindleDlg& panel = world.panel();
    panel.ShowPanel();
    Pump(1000);  // the first class-list tick and the class switch it schedules
    const QImage image = panel.grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(image.size(), QSize(static_cast<int>(755 * rate), static_cast<int>(454 * rate)));
    ASSERT_TRUE(image.save(RenderFolder() + QLatin1Char('/') + QLatin1String(name), "PNG"));

    // The outer frame, the title band and the white client: the paint was called.
    EXPECT_TRUE(Near(image.pixelColor(0, image.height() / 2), QColor(0x00, 0x82, 0xF0)));
    EXPECT_TRUE(Near(image.pixelColor(image.width() / 3, 5), QColor(0xF2, 0xF3, 0xF5)));
    // The close button is drawn at its place in the title band (not the band colour all over).
    const QRect close = panel.Button(1000)->geometry();
    EXPECT_TRUE(DrawnOver(image, close, QColor(0xF2, 0xF3, 0xF5)));
}

}  // namespace

TEST(PanelRender, SyncPromptOfTheCollections) {
    PanelWorld world;
    CBrindleDlg& panel = world.panel();
    panel.ShowPanel();
    Pump(1000);
    panel.m_classIndex = 1;
    panel.m_itemCount = 0;
    SendWindowMessage(panel.Handle(), MsgPanelEvent, 5, 0);
    Pump(100);
    const QImage image = panel.grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_TRUE(image.save(RenderFolder() + QStringLiteral("/panel_sync_prompt_1.0.png"), "PNG"));
    for (int id : {2155, 2156}) {
        ASSERT_TRUE(panel.Button(id)->isVisible()) << id;
        EXPECT_TRUE(DrawnOver(image, panel.Button(id)->geometry(), Qt::white)) << id;
    }
    EXPECT_FALSE(panel.Button(2157)->isVisible());
    EXPECT_FALSE(panel.Button(2150)->isVisible());
}

TEST(PanelRender, StartPageAtRateOne) { RenderStartPage(1.0f, "panel_start_1.0.png"); }

TEST(PanelRender, StartPageAtRateOneAndAHalf) { RenderStartPage(1.5f, "panel_start_1.5.png"); }

TEST(PanelRender, SearchPageShowsTheDefaultHotWord) {
    PanelWorld world;
    CBrindleDlg& panel = world.panel();
    panel.ShowPanel();
    Pump(1000);
    panel.GoToPage(PageSearch);
    ASSERT_EQ(panel.m_page, PageSearch);
    const QString before = g_defaultHotWord;
    // Right of the edit's caret, left of the search button, inside the box's frame.
    const QRect word = ScaleRect(52, 40, 630, 64).adjusted(0, 4, 0, -4);

    g_defaultHotWord.clear();
    const QImage plain = panel.grab().toImage().convertToFormat(QImage::Format_RGB32);
    g_defaultHotWord = QStringLiteral("法兰阀门");
    const QImage image = panel.grab().toImage().convertToFormat(QImage::Format_RGB32);
    g_defaultHotWord = before;
    ASSERT_TRUE(image.save(RenderFolder() + QStringLiteral("/panel_search_1.0.png"), "PNG"));

    EXPECT_FALSE(DrawnOver(plain, word, Qt::white));
    EXPECT_TRUE(DrawnOver(image, word, Qt::white));
}
