#pragma once
// Window timers by fixed id, as the panel and the scroll bar use them: each
// tick arrives at the window as a WindowMessageEvent with the timer message
// and the id in wParam. Starting an id that runs replaces it, so a burst of
// restarts collapses into one tick.

#include <cstdint>

#include "platform/window_messages.h"

namespace marrowfin {

// Starts (or restarts) timer `id` of the window every `intervalMs`. False when
// the handle names no live window. Call on the window's thread.
bool SetTimer(WindowHandle window, std::uintptr_t id, unsigned intervalMs);
// Stops timer `id`; false when it wasn't running.
bool KillTimer(WindowHandle window, std::uintptr_t id);
// Whether timer `id` of the window runs.
bool IsTimerRunning(WindowHandle window, std::uintptr_t id);

}  // namespace marrowfin
