#pragma once
// The rate of a skin test, with the sheet of its bucket loaded from beside the program.

#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin::test {

inline void UseRate(float rate) {
    SetSkinRateForTest(rate);
    LoadSkinSheet();
}

}  // namespace marrowfin::test
