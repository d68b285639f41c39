#include "markup/text_buffer.h"

#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace marrowfin {
namespace {

constexpr size_t kHugePage = size_t{2} << 20;
// Below this the page faults don't matter beside the parse.
constexpr size_t kHugeFrom = 4 * kHugePage;

}  // namespace

TextBuffer AllocateText(size_t units) {
    const size_t bytes = units * sizeof(char16_t);
    if (bytes < kHugeFrom) return TextBuffer(new char16_t[units], TextRelease{false});
    const size_t rounded = (bytes + kHugePage - 1) & ~(kHugePage - 1);
    void* p = ::operator new (rounded, std::align_val_t{kHugePage});
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    // Only a hint: without huge pages the buffer works the same.
    (void)madvise(p, rounded, MADV_HUGEPAGE);
#endif
    return TextBuffer(static_cast<char16_t*>(p), TextRelease{true});
}

void TextRelease::operator()(char16_t* p) const noexcept {
    if (huge) ::operator delete (p, std::align_val_t{kHugePage});
    else delete[] p;
}

}  // namespace marrowfin
