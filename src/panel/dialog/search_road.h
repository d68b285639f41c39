#pragma once
// The panel's side of a search run: the generation counter, and the message
// that brings a run's outcome back from its worker.

#include <atomic>
#include <cstdint>

#include "panel/model/panel_numbers.h"
#include "platform/window_messages.h"
#include "search/block_search.h"

namespace marrowfin {

// Number of the newest search run, process-wide. A run that is no longer the
// newest stages nothing and its outcome is dropped.
extern std::atomic<int> g_searchGeneration;

using SearchOutcomePayload = OwnedValue<SearchOutcome>;

}  // namespace marrowfin
