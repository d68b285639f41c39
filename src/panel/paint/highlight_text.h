#pragma once
// The highlight rule: a text cut at every occurrence of a key, the key
// pieces drawn in the accent colour.

#include <QString>
#include <QStringList>

namespace marrowfin {

// The pieces of `text` in order, keys included. An empty key, or a text
// without it, gives the text as one piece; an empty text gives none.
QStringList SplitAtKey(const QString& text, const QString& key);

}  // namespace marrowfin
