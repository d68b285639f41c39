#include "markup/markup_records.h"

#include "markup/markup_text.h"

namespace marrowfin {

void AppendResultRecord(std::u16string& result, std::u16string_view name,
                        std::initializer_list<RecordAttribute> attributes) {
    // Once the cap is reached the list is left as it stands, so a document
    // full of errors cannot make the result text grow without bound.
    if (result.size() >= kResultTextCap) return;
    result += u'<';
    result += name;
    for (const RecordAttribute& a : attributes) {
        result += u' ';
        result += a.name;
        result += u"=\"";
        EncodeMarkupText(a.value, result, true);
        result += u'"';
    }
    result += u"/>";
}

std::u16string DecimalText(uint64_t value) {
    char16_t digits[24];
    int n = 0;
    do {
        digits[n++] = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
    } while (value != 0);
    std::u16string out;
    out.reserve(n);
    while (n > 0) out += digits[--n];
    return out;
}

}  // namespace marrowfin
