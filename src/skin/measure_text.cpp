#include "skin/measure_text.h"

#include <QFontMetrics>
#include <string>

#include "platform/text.h"
#include "skin/skin_fonts.h"

namespace marrowfin {

ByteClassCount CountGbkClasses(const QString& text) {
    ByteClassCount count;
    const std::u16string wide = text.toStdU16String();
    size_t i = 0;
    while (i < wide.size()) {
        char16_t c = wide[i];
        if (c < 0x80) {
            ++count.single;
            ++i;
            continue;
        }
        // A surrogate pair is one character to the code page.
        size_t len = (c >= 0xD800 && c < 0xDC00 && i + 1 < wide.size()) ? 2 : 1;
        std::string bytes;
        bool lossy = false;
        if (Utf16ToCodePage(std::u16string_view(wide).substr(i, len), 936, bytes, &lossy) && !lossy &&
            bytes.size() == 2)
            ++count.doubled;
        else ++count.single;
        i += len;
    }
    return count;
}

int MeasureText(const QString& text) {
    ByteClassCount count = CountGbkClasses(text);
    QFontMetrics metrics(Font(SkinFont::Normal));
    return count.single * metrics.horizontalAdvance(QChar(u'D')) +
           count.doubled * metrics.horizontalAdvance(QChar(0x753B));
}

}  // namespace marrowfin
