#pragma once
// The background refresh of the class table: a detached worker fetches the
// table, stores it as the cached file when it parses, tells the panel to
// reapply it, then fetches the hot words and hands them over.

#include <cstdint>
#include <string>
#include <vector>

#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"

namespace marrowfin {

enum ClassTableRefreshCode : std::uintptr_t {
    ClassTableCached = 0,  // the cached file is as new as it gets: start timer 1004
    HotWordsFetched = 1,  // payload: HotWordsPayload, never empty
};

// The hot words travel inside the posted message and belong to whoever holds
// the message: the worker keeps no reference once it has posted, so the panel
// is the only thread that ever sees the array afterwards.
using HotWordsPayload = OwnedValue<std::vector<std::u16string>>;

// The worker's steps on the calling thread (tests run it directly).
void RunClassTableRefresh(WindowHandle panel);
// Starts RunClassTableRefresh on a panel worker; without a thread the
// panel is told to reapply its cached table, as after a failed request.
void StartClassTableRefresh(WindowHandle panel);

}  // namespace marrowfin
