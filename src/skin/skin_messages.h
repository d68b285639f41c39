#pragma once
// Message numbers the skin controls post to their owners: MsgPanelCommand and
// MsgPanelEvent with their codes come from the panel's table of numbers,
// which holds numbers only; the scroll message is the skin's own.

#include <cstdint>

#include "panel/model/panel_numbers.h"

namespace marrowfin {

// The vertical scroll message and its codes, as the owners of a scroll bar read them.
inline constexpr uint32_t WM_VSCROLL_MESSAGE = 0x0115;
enum ScrollCode : uint32_t {
    SB_LINEUP = 0,
    SB_LINEDOWN = 1,
    SB_PAGEUP = 2,
    SB_PAGEDOWN = 3,
    SB_THUMBPOSITION = 4,
    SB_THUMBTRACK = 5,
    SB_TOP = 6,
    SB_BOTTOM = 7,
};

}  // namespace marrowfin
