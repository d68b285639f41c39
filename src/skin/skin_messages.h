#pragma once
// Message numbers the skin controls post to their owners. The panel's table
// of numbers (panel/model/panel_numbers.h) includes this header and adds the
// rest of its commands and events to the same namespaces, so each number is
// named once and the skin needs nothing above it.

#include <cstdint>

namespace marrowfin {

inline constexpr uint32_t MsgPanelCommand = 0x9dc;  // wParam: a PanelCommand
inline constexpr uint32_t MsgPanelEvent = 0x9dd;  // wParam: a PanelEvent

// What a collection folder's button tells the panel; lParam: the button's handle.
namespace PanelCommand {
inline constexpr std::uintptr_t RenameFolder = 2;  // double-click
}  // namespace PanelCommand
namespace PanelEvent {
inline constexpr std::uintptr_t FolderMenu = 9;  // right press
}  // namespace PanelEvent

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
