// The scale rule, its buckets, the font heights, the text measure and the sheet.
#include <gtest/gtest.h>

#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <tuple>

#include "platform/profile.h"
#include "skin/measure_text.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "support/temp_home.h"

namespace marrowfin {
namespace {

TEST(SkinScale, OptionScreenRuleBucketsAndTruncation) {
    const std::tuple<const char*, int, int, float> cases[] = {
        // Option values: kept between 1.0 and 5.0, else 1.0; junk reads as 0; a leading number is read.
        {"1.19", 800, 600, 1.19f}, {"0.5", 3840, 2160, 1.0f}, {"6", 800, 600, 1.0f}, {"5", 800, 600, 5.0f},
        {"abc", 3840, 2160, 1.0f}, {"", 3840, 2160, 1.0f}, {"1.5x", 800, 600, 1.5f},
        // The screen rule, with no lower bound.
        {"-1", 1920, 1080, 1.28f}, {"-1", 1800, 1200, 1.0f}, {"-1", 2560, 1440, 1.70f}, {"-1", 3840, 2160, 2.56f},
        {"-1", 1900, 700, 0.87f}, {"-1", 1200, 1801, 0.8f},
    };
    for (const auto& [option, width, height, rate] : cases)
        EXPECT_FLOAT_EQ(RateFromOption(option, width, height), rate) << option << " " << width << "x" << height;
    // Buckets at their edges; 2.53 as a float widens to 2.5299999..., below the bound.
    const std::tuple<float, const char*, float> buckets[] = {
        {1.19f, "_1", 1.0f}, {1.2f, "_2", 1.5f}, {1.85f, "_2", 1.5f}, {1.86f, "_3", 2.5f},
        {2.53f, "_3", 2.5f}, {2.54f, "_4", 3.5f}, {5.0f, "_4", 3.5f}, {0.87f, "_1", 1.0f},
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
    EXPECT_EQ(ScaleUnits(-7), -10);
    EXPECT_EQ(ScaleRect(3, 5, 9, 11), QRect(4, 7, 9, 9));
    SetSkinRateForTest(1.28f);
    EXPECT_EQ(ScaleUnits(755), 966);
    EXPECT_EQ(SheetPixels(89), 133) << "133.5 truncates";
    SetSkinRateForTest(1.0f);
}

TEST(SkinFonts, HeightsFollowTheRateAndTheFaceIsCjk) {
    const std::pair<float, int> heights[] = {{0.87f, 18}, {1.0f, 18}, {1.5f, 22}, {1.28f, 21},
                                             {1.99f, 26}, {2.0f, 26}, {2.56f, 36}, {5.0f, 80}};
    for (const auto& [rate, height] : heights) EXPECT_EQ(FontHeightForRate(rate), height) << rate;
    // The faces in their cells are in the pictures; underlining is not.
    EXPECT_TRUE(Font(SkinFont::Underlined).underline());
    // Without a CJK face every Chinese text of the module would be boxes.
    ASSERT_TRUE(HasCjkFont()) << "no CJK font installed; family in use: " << SkinFontFamily().toStdString();
    QFontInfo info(Font(SkinFont::Normal));
    EXPECT_TRUE(PreferredFontFamilies().contains(info.family(), Qt::CaseInsensitive)) << info.family().toStdString();
}

TEST(MeasureText, CountsGbkByteClasses) {
    SetSkinRateForTest(1.0f);
    // Text, one-byte and two-byte characters: full-width brackets are two bytes,
    // an emoji has no GBK form (one '?'), é is two bytes in GBK.
    const std::tuple<QString, int, int> texts[] = {{QStringLiteral("AB画图"), 2, 2}, {QStringLiteral("（）"), 0, 2},
                                                   {QString::fromUtf8("\xF0\x9F\x98\x80"), 1, 0},
                                                   {QStringLiteral("é"), 0, 1}};
    for (const auto& [text, single, doubled] : texts) {
        EXPECT_EQ(CountGbkClasses(text).single, single) << text.toStdString();
        EXPECT_EQ(CountGbkClasses(text).doubled, doubled) << text.toStdString();
    }
    // Every one-byte character counts as a D, whatever its own width.
    EXPECT_EQ(MeasureText(QStringLiteral("iii")), MeasureText(QStringLiteral("DDD")));
    EXPECT_EQ(MeasureText(QString()), 0);
    const int atOne = MeasureText(QStringLiteral("图块"));
    SetSkinRateForTest(2.0f);
    EXPECT_GT(MeasureText(QStringLiteral("图块")), atOne) << "the font follows the rate";
    SetSkinRateForTest(1.0f);
}

TEST(SkinSheet, LoadsByBucketOrDrawsNothing) {
    SetSkinRateForTest(1.0f);
    UnloadSkinSheetForTest();
    QImage target(20, 20, QImage::Format_ARGB32);
    target.fill(Qt::white);
    QPainter p(&target);
    DrawCell(p, QRect(0, 0, 20, 20), 0, 0, 10, 10);  // no sheet: nothing
    p.end();
    EXPECT_EQ(target.pixel(5, 5), qRgb(255, 255, 255));
    EXPECT_FALSE(LoadSkinSheetFrom(QStringLiteral("/nonexistent/images_1.png")));
    EXPECT_TRUE(SkinSheet().isNull());
    // The real sheets the build rasterised lie beside this program (_1 and _2 are in the pictures).
    const QImage one(ModuleFolder() + "/BrindleSkin/images_1.png");
    EXPECT_EQ(QImage(ModuleFolder() + "/BrindleSkin/images_4.png").width(), static_cast<int>(one.width() * 3.5));
}

}  // namespace
}  // namespace marrowfin
