#pragma once
// The word an empty search box shows and searches: entry 0 of the hot words
// once the class table's refresh has read them, and afterwards the last search
// when the box keeps its words. Read and written on the panel's thread only.

#include <QString>
#include <string>
#include <vector>

namespace marrowfin {

extern QString g_defaultHotWord;

// A non-empty list replaces `hotWords` and its first word becomes the
// default; an empty one keeps both. True when the words were taken.
bool TakeHotWords(std::vector<QString>& hotWords, const std::vector<std::u16string>& words);

}  // namespace marrowfin
