#pragma once
// Bit masks of 64 units of text at a time with AVX-512, for the wide roads
// of the tokeniser and the attribute reader. Only for processors where
// WideTagScanAvailable() holds.

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstdint>

#define MARROWFIN_WIDE __attribute__((target("avx512f,avx512bw,pclmul,bmi,bmi2")))

namespace marrowfin::wide {

struct Block {
    __m512i lo;
    __m512i hi;
};

// The 64 units from `t`, all of which must lie in the text.
MARROWFIN_WIDE inline Block LoadBlock(const char16_t* t) { return {_mm512_loadu_si512(t), _mm512_loadu_si512(t + 32)}; }

// Bit i set where unit i of the block is `c`.
MARROWFIN_WIDE inline uint64_t Marks(const Block& b, char16_t c) {
    const __m512i n = _mm512_set1_epi16(static_cast<short>(c));
    return static_cast<uint64_t>(_mm512_cmpeq_epi16_mask(b.lo, n)) |
           static_cast<uint64_t>(_mm512_cmpeq_epi16_mask(b.hi, n)) << 32;
}

// Bit i set where an odd number of x's bits 0..i are set: with the quotes
// as x, the units from an opening quote up to its closing one.
MARROWFIN_WIDE inline uint64_t PrefixXor(uint64_t x) {
    return static_cast<uint64_t>(
        _mm_cvtsi128_si64(_mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<int64_t>(x)), _mm_set1_epi8(-1), 0)));
}

}  // namespace marrowfin::wide

#endif
