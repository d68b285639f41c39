#include "skin/skin_scale.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>

#include "platform/paths.h"
#include "platform/profile.h"
#include "skin/skin_fonts.h"

namespace marrowfin {

namespace {
float g_rate = 1.0f;
float g_sheetScale = 1.0f;
QString& SuffixStore() {
    static QString suffix;
    return suffix;
}

void ApplyRate(float rate) {
    g_rate = rate;
    SkinBucket bucket = BucketForRate(rate);
    g_sheetScale = bucket.sheetScale;
    SuffixStore() = bucket.suffix;
    MakeSkinFonts(rate);
}
}  // namespace

float Rate() { return g_rate; }
float SheetScale() { return g_sheetScale; }
const QString& SkinSuffix() { return SuffixStore(); }

float RateFromOption(const QString& option, int screenWidth, int screenHeight) {
    if (option != QLatin1String("-1")) {
        // Like the C runtime's reading of a decimal: a leading number, else 0.
        QString text = option.trimmed();
        int end = 0;
        while (end < text.size() &&
               (text[end].isDigit() || text[end] == u'.' || (end == 0 && (text[end] == u'-' || text[end] == u'+'))))
            ++end;
        bool ok = false;
        double value = text.left(end).toDouble(&ok);
        if (!ok) value = 0.0;
        float rate = static_cast<float>(value);
        return (rate < 1.0f || rate > 5.0f) ? 1.0f : rate;
    }
    if (screenWidth > 1800 || screenHeight > 1800) {
        double smaller = std::min(screenHeight / 800.0, screenWidth / 1500.0);
        float hundredths = static_cast<float>(smaller) * 100.0f;
        return static_cast<float>(static_cast<int>(hundredths)) / 100.0f;
    }
    return 1.0f;
}

SkinBucket BucketForRate(float rate) {
    double r = rate;
    if (r < 1.2) return {QStringLiteral("_1"), 1.0f, 1};
    if (r < 1.86) return {QStringLiteral("_2"), 1.5f, 2};
    if (r < 2.53) return {QStringLiteral("_3"), 2.5f, 3};
    return {QStringLiteral("_4"), 3.5f, 4};
}

void InitSkinScale(int screenWidth, int screenHeight) {
    QString option = QString::fromStdU16String(GetOptionString(u"Rate", u"-1"));
    ApplyRate(RateFromOption(option, screenWidth, screenHeight));
}

void InitSkinScaleFromScreen() {
    QSize size(0, 0);
    if (QScreen* screen = QGuiApplication::primaryScreen()) size = screen->size();
    InitSkinScale(size.width(), size.height());
}

void SetSkinRateForTest(float rate) { ApplyRate(rate); }

int ScaleUnits(int n) { return static_cast<int>(static_cast<float>(n) * g_rate); }

QRect ScaleRect(int left, int top, int right, int bottom) {
    int l = ScaleUnits(left), t = ScaleUnits(top);
    return QRect(l, t, ScaleUnits(right) - l, ScaleUnits(bottom) - t);
}

QRect ScaleBox(int x, int y, int width, int height) {
    return QRect(ScaleUnits(x), ScaleUnits(y), ScaleUnits(width), ScaleUnits(height));
}

int SheetPixels(int sheetUnits) { return static_cast<int>(static_cast<float>(sheetUnits) * g_sheetScale); }

QString ModuleFolder() {
    static const QString folder = QString::fromStdU16String(HostFolder());
    return folder;
}

}  // namespace marrowfin
