#pragma once
// The storage of a document's text. Big texts (an all-galleries reply runs to
// tens of megabytes of UTF-16) are placed on 2 MB boundaries and marked for
// huge pages, so that filling them costs a few hundred page faults instead
// of thousands; small texts come from the ordinary heap.

#include <cstddef>
#include <memory>

namespace marrowfin {

struct TextRelease {
    bool huge = false;
    void operator()(char16_t* p) const noexcept;
};
using TextBuffer = std::unique_ptr<char16_t[], TextRelease>;

// Room for `units` code units, not initialised.
TextBuffer AllocateText(size_t units);

}  // namespace marrowfin
