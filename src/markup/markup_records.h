#pragma once
// Result records of a MarkupDocument: each an empty element in the same
// markup, appended in order until the result text holds 1000 characters.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace marrowfin {

struct RecordAttribute {
    std::u16string_view name;
    std::u16string_view value;
};

constexpr size_t kResultTextCap = 1000;

void AppendResultRecord(std::u16string& result, std::u16string_view name,
                        std::initializer_list<RecordAttribute> attributes = {});
std::u16string DecimalText(uint64_t value);

}  // namespace marrowfin
