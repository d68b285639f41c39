#include "panel/dialog/hot_words.h"

namespace marrowfin {

QString g_defaultHotWord;

bool TakeHotWords(std::vector<QString>& hotWords, const std::vector<std::u16string>& words) {
    if (words.empty()) return false;
    hotWords.clear();
    for (const std::u16string& word : words) hotWords.push_back(QString::fromStdU16String(word));
    g_defaultHotWord = hotWords.front();
    return true;
}

}  // namespace marrowfin
