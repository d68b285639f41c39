#pragma once
// The two process-wide scale numbers: `Rate` (pixels per base unit of the
// 755 by 454 layout) and `SheetScale` (pixels of the skin sheet per sheet
// unit), with the bucket suffix of the sheet file. Set once by InitSkinScale
// on the GUI thread before any skin window exists; read freely afterwards.

#include <QRect>
#include <QString>

namespace marrowfin {

float Rate();
float SheetScale();
// "_1" to "_4"; empty before InitSkinScale.
const QString& SkinSuffix();

// The rule alone, for a given option text and screen size: the option when
// it isn't "-1" (below 1.0 or above 5.0 gives 1.0, junk reads as 0), else the
// screen rule for screens above 1800 pixels in either direction.
float RateFromOption(const QString& option, int screenWidth, int screenHeight);

struct SkinBucket {
    QString suffix;
    float sheetScale;
    int resourceStep;  // the sheet scale rounded up: 1 to 4
};
SkinBucket BucketForRate(float rate);

// Reads the option `Rate`, sets Rate, the bucket and the fonts.
void InitSkinScale(int screenWidth, int screenHeight);
// The same with the primary screen's size.
void InitSkinScaleFromScreen();
// Tests set a rate directly (the bucket and fonts follow).
void SetSkinRateForTest(float rate);

// n times Rate in float arithmetic, truncated toward zero.
int ScaleUnits(int n);
// Left, top, right, bottom in base units, each scaled on its own.
QRect ScaleRect(int left, int top, int right, int bottom);
// x, y, width, height in base units, each scaled on its own.
QRect ScaleBox(int x, int y, int width, int height);
// A sheet coordinate (sheet units) as sheet pixels, truncated.
int SheetPixels(int sheetUnits);

// The folder of the running program, where BrindleSkin/ lies.
QString ModuleFolder();

}  // namespace marrowfin
