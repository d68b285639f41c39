#pragma once
// The panel's colours, one name per use.

#include <QColor>

namespace marrowfin::panel_colours {

inline QColor Accent() { return QColor(0x29, 0x75, 0xE6); }
inline QColor OuterFrame() { return QColor(0x00, 0x82, 0xF0); }
inline QColor Band() { return QColor(0xF2, 0xF3, 0xF5); }
inline QColor Text() { return QColor(0x33, 0x33, 0x33); }
inline QColor TitleHint() { return QColor(0x66, 0x66, 0x66); }
inline QColor GreyText() { return QColor(0x99, 0x99, 0x99); }
inline QColor Placeholder() { return QColor(0xBF, 0xBF, 0xBF); }
inline QColor Separator() { return QColor(0x88, 0x88, 0x88); }
inline QColor SearchBoxFill() { return QColor(0xDB, 0xEE, 0xFC); }
inline QColor HoverButtonFill() { return QColor(0xCE, 0xE8, 0xFE); }
inline QColor ClassText() { return QColor(0x5A, 0x5B, 0x5B); }
inline QColor Boutique() { return QColor(0xBB, 0x9D, 0x6A); }
inline QColor ProgressTrack() { return QColor(0xC1, 0xC1, 0xC1); }

}  // namespace marrowfin::panel_colours
