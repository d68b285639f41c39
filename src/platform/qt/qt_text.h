#pragma once
// The one crossing between the data layers' UTF-16 strings and Qt's. Both are
// UTF-16, so nothing is re-encoded; only the owner changes.

#include <QString>
#include <string>
#include <string_view>

namespace marrowfin {

inline QString ToQString(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::u16string ToU16String(const QString& text) { return text.toStdU16String(); }

}  // namespace marrowfin
