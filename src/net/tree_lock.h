#pragma once
// The gallery tree has no lock of its own: the panel and the synchronisation
// keep out of each other by order. The one reader on another thread is the
// download worker resolving a block's URL, so rebuilds that free nodes take
// this lock exclusively and that worker takes it shared.

#include <shared_mutex>

namespace marrowfin {

std::shared_mutex& TreeLock();

}  // namespace marrowfin
