#pragma once
// The eight named fonts, made from Rate once and kept for the process.

#include <QFont>
#include <QStringList>

namespace marrowfin {

enum class SkinFont { Normal, Underlined, Bold, Medium, MediumBold, Large, LargeBold, Title };

// The pixel height h of the normal font at a rate.
int FontHeightForRate(float rate);
// The faces tried in order for "微软雅黑"; the first installed one is used.
QStringList PreferredFontFamilies();
// The family in use: the first installed preferred face, else the default sans.
QString SkinFontFamily();
// True when the family in use is one of the CJK faces and draws "画".
bool HasCjkFont();

// The pixel (em) size whose character cell is at most `cellHeight` high; for
// a face other than Microsoft YaHei also at most YaHei's em in that cell
// (cell * 100 / 132), so that texts are no wider than the layout expects.
int PixelSizeForCellHeight(int cellHeight);
// The cell height of a named font at the current rate: h, h+2, h+4 or h+12.
int FontCellHeight(SkinFont which);

void MakeSkinFonts(float rate);
// The font by name; made at rate 1.0 when InitSkinScale hasn't run.
const QFont& Font(SkinFont which);

}  // namespace marrowfin
