#include "panel/dialog/hot_words.h"

namespace marrowfin {

QString g_defaultHotWord;

}  // namespace marrowfin
