// What the pictures can't show: the scale rule and its buckets, the font
// heights, the text measure and a missing sheet; clicks and posts, hover and
// cursors, the scroll bars' zones and arithmetic, and the tip box's results.
#include <gtest/gtest.h>

#include <QPainter>
#include <QTimer>
#include <QtTest/QTest>

#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "skin/pop_tip_dlg.h"
#include "skin/scroll_bar_rv.h"
#include "skin/measure_text.h"
#include "skin/skin_fonts.h"
#include "skin/skin_messages.h"
#include "skin/subclass_button.h"
#include "skin/skin_test_util.h"
#include "support/event_pump.h"
#include "support/message_recorder.h"
#include "support/temp_home.h"
#include "support/widget_input.h"

namespace marrowfin {
namespace {

using test::RecordedMessage;

TEST(SkinScale, OptionScreenRuleBucketsTruncationFontsTextMeasureAndTheSheet) {
    // Option values: kept between 1.0 and 5.0, else 1.0; junk reads as 0; a leading number is read.
    // "-1": the screen rule, with no lower bound.
    const std::tuple<const char*, int, int, float> cases[] = {
        {"1.19", 800, 600, 1.19f}, {"0.5", 3840, 2160, 1.0f}, {"6", 800, 600, 1.0f},     {"5", 800, 600, 5.0f},
        {"abc", 3840, 2160, 1.0f}, {"1.5x", 800, 600, 1.5f},  {"-1", 1920, 1080, 1.28f}, {"-1", 1800, 1200, 1.0f},
        {"-1", 2560, 1440, 1.70f}, {"-1", 1900, 700, 0.87f},  {"-1", 1200, 1801, 0.8f}};
    for (const auto& [option, width, height, rate] : cases)
        EXPECT_FLOAT_EQ(RateFromOption(option, width, height), rate) << option << " " << width << "x" << height;
    // Buckets at their edges; 2.53 as a float widens to 2.5299999..., below the bound.
    const std::tuple<float, const char*, float> buckets[] = {
        {1.19f, "_1", 1.0f}, {1.2f, "_2", 1.5f},  {1.85f, "_2", 1.5f}, {1.86f, "_3", 2.5f},
        {2.53f, "_3", 2.5f}, {2.54f, "_4", 3.5f}, {5.0f, "_4", 3.5f},  {0.87f, "_1", 1.0f},
    };
    for (const auto& [rate, suffix, sheetScale] : buckets) {
        EXPECT_EQ(BucketForRate(rate).suffix, suffix) << rate;
        EXPECT_FLOAT_EQ(BucketForRate(rate).sheetScale, sheetScale) << rate;
    }

    test::TempHome home;
    // Option, screen, rate, suffix; no option written: "-1" and the screen rule.
    const std::tuple<const char16_t*, int, int, float, const char*> steps[] = {
        {nullptr, 1920, 1080, 1.28f, "_2"}, {u"5", 800, 600, 5.0f, "_4"}, {u"1.19", 3840, 2160, 1.19f, "_1"}};
    for (const auto& [option, width, height, rate, suffix] : steps) {
        ASSERT_TRUE(!option || WriteOptionString(u"Rate", option));
        InitSkinScale(width, height);
        EXPECT_FLOAT_EQ(Rate(), rate);
        EXPECT_EQ(SkinSuffix(), suffix);
    }
    // Each number truncates on its own, toward zero: edges 4, 7, 13, 16.
    SetSkinRateForTest(1.5f);
    EXPECT_EQ(std::make_pair(ScaleUnits(-7), ScaleRect(3, 5, 9, 11)), std::make_pair(-10, QRect(4, 7, 9, 9)));
    SetSkinRateForTest(1.28f);
    EXPECT_EQ(std::make_pair(ScaleUnits(755), SheetPixels(89)), std::make_pair(966, 133)) << "133.5 truncates";
    SetSkinRateForTest(1.0f);

    // The font heights follow the rate, and the face is a CJK one.
    const std::pair<float, int> heights[] = {{0.87f, 18}, {1.0f, 18}, {1.5f, 22},  {1.28f, 21},
                                             {1.99f, 26}, {2.0f, 26}, {2.56f, 36}, {5.0f, 80}};
    for (const auto& [rate, height] : heights) EXPECT_EQ(FontHeightForRate(rate), height) << rate;
    // The faces in their cells are in the pictures; underlining is not.
    EXPECT_TRUE(Font(SkinFont::Underlined).underline());
    // Without a CJK face every Chinese text of the module would be boxes (and the face in use is the pictures').
    ASSERT_TRUE(HasCjkFont()) << "no CJK font installed; family in use: " << SkinFontFamily().toStdString();

    // Text is measured by GBK byte classes. Text, one-byte and two-byte characters: full-width
    // brackets are two bytes, an emoji has no GBK form (one '?'), é is two bytes in GBK.
    const std::tuple<const char*, int, int> texts[] = {{"AB画图", 2, 2}, {"（）", 0, 2}, {"\xF0\x9F\x98\x80", 1, 0}, {"é", 0, 1}};
    for (const auto& [text, single, doubled] : texts) {
        const auto classes = CountGbkClasses(QString::fromUtf8(text));
        EXPECT_EQ(std::make_pair(classes.single, classes.doubled), std::make_pair(single, doubled)) << text;
    }
    // Every one-byte character counts as a D, whatever its own width.
    EXPECT_EQ(MeasureText(QStringLiteral("iii")), MeasureText(QStringLiteral("DDD")));
    const int atOne = MeasureText(QStringLiteral("图块"));
    SetSkinRateForTest(2.0f);
    EXPECT_GT(MeasureText(QStringLiteral("图块")), atOne) << "the font follows the rate";

    // The sheet is loaded by bucket; without one nothing is drawn.
    SetSkinRateForTest(1.0f);
    UnloadSkinSheetForTest();
    QImage target(20, 20, QImage::Format_ARGB32);
    target.fill(Qt::white);
    QPainter p(&target);
    DrawCell(p, QRect(0, 0, 20, 20), 0, 0, 10, 10);  // no sheet: nothing
    p.end();
    EXPECT_EQ(target.pixel(5, 5), qRgb(255, 255, 255));
    EXPECT_TRUE(!LoadSkinSheetFrom(QStringLiteral("/nonexistent/images_1.png")) && SkinSheet().isNull());
    // The real sheets the build rasterised lie beside this program (_1 and _2 are in the pictures).
    const QImage one(ModuleFolder() + "/BrindleSkin/images_1.png");
    EXPECT_EQ(QImage(ModuleFolder() + "/BrindleSkin/images_4.png").width(), static_cast<int>(one.width() * 3.5));
}

TEST(SkinButtons, HoverCursorAndTheTabsPosts) {
    test::UseRate(1.0f);
    QWidget window;
    test::MessageRecorder seen(&window, true);
    window.resize(240, 64);
    auto* b = new CSkinButton(&window);
    b->Create(QStringLiteral("确定"), true, QRect(20, 20, 80, 24), &window, 1);
    CSubclassButton* tabs[2];
    for (int i = 0; i < 2; ++i) {
        tabs[i] = new CSubclassButton(&window);
        tabs[i]->Create(QStringLiteral("家具..沙发"), true, QRect(104 + 70 * i, 20, 65, 24), &window, 2080 + i);
    }
    ASSERT_TRUE(test::ShowExposed(&window));
    // (Clicks reach every road of the panel; the hover's look is in the pictures.)
    test::MoveTo(b, QPoint(5, 5));
    EXPECT_EQ(std::make_tuple(b->hover, b->cursor().shape()), std::make_tuple(true, Qt::PointingHandCursor));
    test::MoveAway(&window);
    EXPECT_EQ(std::make_tuple(b->hover, b->cursor().shape()), std::make_tuple(false, Qt::ArrowCursor)) << "leaving clears the hover";
    // A tab's double click is posted to the parent, with the tab (a right click's menu of that
    // tab's folder: the panel's collection road).
    seen.Take();
    test::DoubleClick(tabs[1], QPoint(5, 5));
    EXPECT_TRUE(seen.records.empty()) << "posted, not sent";
    EXPECT_EQ(seen.Take(), (std::vector<RecordedMessage>{{MsgPanelCommand, 2u, static_cast<std::intptr_t>(HandleOf(tabs[1])), {}}}));
}

// A bar of `height` in a window that keeps the scroll messages.
struct Bar {
    QWidget owner;
    test::MessageRecorder sent{&owner, true};
    CScrollBarRv* bar = new CScrollBarRv;
    explicit Bar(int height, int nMin = 0, int nMax = 1000, int nPage = 100) {
        owner.resize(60, height + 20);
        bar->Create(&owner, QRect(20, 10, 12, height));
        bar->SetInfo(ScrollInfo{.nMin = nMin, .nMax = nMax, .nPage = nPage});
        EXPECT_TRUE(test::ShowExposed(&owner));
        QCoreApplication::processEvents();  // the posted size message makes the thumb
    }
    int Pos() const { return bar->Info().nPos; }
    size_t Sent() const { return sent.Of(WM_VSCROLL_MESSAGE).size(); }
    uintptr_t Last() const { return sent.Of(WM_VSCROLL_MESSAGE).back().wParam; }
};

TEST(ScrollBarRv, ZonesDragHeldZonesEdgeSizesAndRanges) {
    Bar f(300);  // the thumb's places at the ends and in the middle: the bars' picture
    // Click point, button, position after, code posted (-1: nothing posted).
    const std::tuple<int, Qt::MouseButton, int, int> steps[] = {{290, Qt::LeftButton, 180, SB_LINEDOWN},
                                                                {250, Qt::LeftButton, 279, SB_PAGEDOWN},
                                                                {60, Qt::LeftButton, 180, SB_PAGEUP},
                                                                {5, Qt::LeftButton, 0, SB_LINEUP},
                                                                {5, Qt::LeftButton, 0, -1},
                                                                {290, Qt::RightButton, 1000, SB_BOTTOM},
                                                                {5, Qt::RightButton, 0, SB_TOP}};
    for (const auto& [y, button, pos, code] : steps) {
        SCOPED_TRACE(y);
        const size_t before = f.Sent();
        test::Click(f.bar, QPoint(5, y), button);
        EXPECT_EQ(f.Pos(), pos);
        EXPECT_EQ(code < 0 ? f.Sent() : f.Last(), code < 0 ? before : static_cast<uintptr_t>(code))
            << "at the top nothing moves and nothing is sent";
    }
    EXPECT_EQ(ObjectOf(static_cast<WindowHandle>(f.sent.Of(WM_VSCROLL_MESSAGE)[0].lParam)), f.bar);
    for (int i = 0; i < 11; ++i) f.bar->LineDown();
    EXPECT_EQ(f.Pos(), 1000) << "line steps stop at the end exactly";

    // A drag tracks, a release sets, a held zone repeats.
    Bar d(300);
    const QPoint grip = d.bar->Thumb().center();
    test::Press(d.bar, grip);
    QTest::mouseMove(d.bar, grip + QPoint(0, 117));  // half the travel of 234
    QCoreApplication::processEvents();
    EXPECT_TRUE(d.bar->Dragging() && d.Last() == SB_THUMBTRACK && std::abs(d.Pos() - 500) <= 5) << d.Pos();
    QTest::mouseMove(d.bar, QPoint(5, 1000));  // far below: clamped
    QCoreApplication::processEvents();
    EXPECT_EQ(d.Pos(), 1000);
    test::Release(d.bar, grip + QPoint(0, 117));
    QCoreApplication::processEvents();
    EXPECT_TRUE(!d.bar->Dragging() && d.Last() == SB_THUMBPOSITION && std::abs(d.Pos() - 500) <= 5) << d.Pos();

    Bar g(300, 0, 100000, 100);
    test::Press(g.bar, QPoint(5, 290));
    test::Pump(450);
    EXPECT_EQ(g.Pos(), 180) << "a short hold is a single step";
    test::Pump(500);
    EXPECT_GT(g.Pos(), 180) << "the hold repeats after 600 ms";
    test::Release(g.bar, QPoint(5, 290));
    const int after = g.Pos();
    test::Pump(250);
    EXPECT_EQ(g.Pos(), after) << "release stops the repeat";

    // Edge sizes and ranges.
    EXPECT_EQ(Bar(300, 0, 1, 10).bar->ThumbLength(), 236) << "a range below the page";
    EXPECT_EQ(Bar(56).bar->ThumbLength(), 10) << "at least 10 above 55";
    {
        Bar f(55);  // too short for a thumb; the zones still work
        EXPECT_TRUE(f.bar->Thumb().isEmpty());
        test::Click(f.bar, QPoint(5, 50));
        EXPECT_EQ(f.Pos(), 180);
    }
    Bar e(300, 5, 5, 10);  // no range: hidden, and paint never divides by it
    EXPECT_FALSE(e.bar->isVisible());
    e.bar->SetInfo(ScrollInfo{.nMax = 400, .nPos = 200});
    EXPECT_FALSE(e.bar->isVisible()) << "the new state lands in message order";
    QCoreApplication::processEvents();
    EXPECT_TRUE(e.bar->isVisible() && e.Pos() == 200);
    // The thin list bar's span is in the pictures; the wheel over the panel's lists is the lists' test.
}

// Its two buttons answer 1 and 2 on every road of the collection's dialogs; Escape answers as
// the second.
TEST(PopTipDlg, EscapeAnswersAsTheSecondButton) {
    test::UseRate(1.0f);
    CPopTipDlg two;
    two.Configure(QStringLiteral("删除"), true, QStringLiteral("删除吗？"), QString(), QStringLiteral("删除"), QStringLiteral("取消"));
    two.OnInitDialog();
    QTimer::singleShot(0, &two, [&] { test::Key(&two, Qt::Key_Escape); });
    EXPECT_EQ(two.DoModal(), 2);  // (the cross: the class manager's road, its limit tip)
}

}  // namespace
}  // namespace marrowfin
