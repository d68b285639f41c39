#pragma once
// What the navigation files of the panel share.

#include <QWidget>

namespace marrowfin {

// Subclass buttons stand in two rows of nine.
inline constexpr int kSubclassRow = 9;

inline void SetShown(QWidget* widget, bool shown) {
    if (widget) widget->setVisible(shown);
}

}  // namespace marrowfin
