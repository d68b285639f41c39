#pragma once
// Text width by character class: a character that takes one byte in the GBK
// code page counts as the width of "D", one that takes two as that of "画",
// both in the normal font.

#include <QString>

namespace marrowfin {

struct ByteClassCount {
    int single = 0;
    int doubled = 0;
};
// Counts characters by their GBK byte length; unmappable ones count as one
// byte (they become '?').
ByteClassCount CountGbkClasses(const QString& text);
int MeasureText(const QString& text);

}  // namespace marrowfin
