#pragma once
// The skin sheet: one picture holding every small skin image, loaded once
// from BrindleSkin/images<suffix>.png beside the program.

#include <QImage>
#include <QRect>
#include <QString>

class QPainter;

namespace marrowfin {

// The loaded sheet; a null image when none was loaded or the file is missing.
const QImage& SkinSheet();
// The path of the sheet file for the current bucket.
QString SkinSheetPath();
// Loads SkinSheetPath() (or `path`); false, with an empty sheet, on failure.
bool LoadSkinSheet();
bool LoadSkinSheetFrom(const QString& path);
void UnloadSkinSheetForTest();

// Stretches the pixel rectangle (x, y, width, height) of the sheet into
// `target`; nothing without a sheet.
void DrawCell(QPainter& painter, const QRect& target, int x, int y, int width, int height);
// A cell given in sheet units (x, y, width, height), each turned into sheet
// pixels on its own, drawn into `target` (pixels).
void DrawSheetCell(QPainter& painter, const QRect& target, int x, int y, int width, int height);

// Another picture of the skin folder (placeholders, scroll bar pieces, the
// panel icon), e.g. "placeholder_a" gives BrindleSkin/placeholder_a<suffix>.png.
QString SkinPicturePath(const QString& stem, bool withSuffix);
// Loads once and keeps it; a null image when missing.
const QImage& SkinPicture(const QString& stem, bool withSuffix);

}  // namespace marrowfin
