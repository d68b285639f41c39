#pragma once
// The word an empty search box shows and searches: entry 0 of the hot words
// once the class table's refresh has read them, and afterwards the last search
// when the box keeps its words. Read and written on the panel's thread only.

#include <QString>

namespace marrowfin {

extern QString g_defaultHotWord;

}  // namespace marrowfin
