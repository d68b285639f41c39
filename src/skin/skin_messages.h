#pragma once
// Message numbers the skin controls post to their owners.

#include <cstdint>

namespace marrowfin {

inline constexpr uint32_t MsgPanelCommand = 0x9dc;
inline constexpr uint32_t MsgPanelEvent = 0x9dd;

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
