#include "markup/start_tag_wide.h"

#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace marrowfin {

#if defined(__x86_64__)

WideTags WideTagLevel() {
    static const WideTags level = [] {
        if (!__builtin_cpu_supports("pclmul")) return WideTags::None;
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")) return WideTags::Avx512;
        if (__builtin_cpu_supports("avx2")) return WideTags::Avx2;
        return WideTags::None;
    }();
    return level;
}

namespace {

// The units of 64 from a position that steer a start tag's scan, as bit
// masks: bit i for unit i.
struct TagMarks {
    uint64_t quotes;
    uint64_t equals;
    uint64_t ends;  // '>'
};

#define MARROWFIN_AVX512 __attribute__((target("avx512f,avx512bw,pclmul")))
#define MARROWFIN_AVX2 __attribute__((target("avx2,pclmul")))

// Each marker reads the 64 units from `t`, all of which must lie in the text.
struct Avx512 {
    MARROWFIN_AVX512 static uint64_t Eq(__m512i lo, __m512i hi, char16_t c) {
        const __m512i n = _mm512_set1_epi16(static_cast<short>(c));
        return static_cast<uint64_t>(_mm512_cmpeq_epi16_mask(lo, n)) |
               static_cast<uint64_t>(_mm512_cmpeq_epi16_mask(hi, n)) << 32;
    }
    MARROWFIN_AVX512 static TagMarks Mark(const char16_t* t) {
        const __m512i lo = _mm512_loadu_si512(t);
        const __m512i hi = _mm512_loadu_si512(t + 32);
        return {Eq(lo, hi, u'"'), Eq(lo, hi, u'='), Eq(lo, hi, u'>')};
    }
};

struct Avx2 {
    // Two compares of 16 units packed to bytes (the pack works per 128-bit
    // half, hence the permute) give one mask bit per unit. No PEXT: it is
    // slow on some processors that have AVX2.
    MARROWFIN_AVX2 static uint64_t Eq32(__m256i a, __m256i b, __m256i n) {
        const __m256i packed = _mm256_packs_epi16(_mm256_cmpeq_epi16(a, n), _mm256_cmpeq_epi16(b, n));
        return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_permute4x64_epi64(packed, 0xD8)));
    }
    MARROWFIN_AVX2 static uint64_t Eq(const __m256i (&v)[4], char16_t c) {
        const __m256i n = _mm256_set1_epi16(static_cast<short>(c));
        return Eq32(v[0], v[1], n) | Eq32(v[2], v[3], n) << 32;
    }
    MARROWFIN_AVX2 static TagMarks Mark(const char16_t* t) {
        const __m256i v[4] = {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(t)),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(t + 16)),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(t + 32)),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(t + 48))};
        return {Eq(v, u'"'), Eq(v, u'='), Eq(v, u'>')};
    }
};

// Bit i set where an odd number of x's bits 0..i are set: with the quotes
// as x, the units from an opening quote up to its closing one.
__attribute__((target("pclmul"))) inline uint64_t PrefixXor(uint64_t x) {
    return static_cast<uint64_t>(
        _mm_cvtsi128_si64(_mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<int64_t>(x)), _mm_set1_epi8(-1), 0)));
}

// Every '=' outside values straight before a '"' and every opening '"'
// straight behind one: the values are then the pairs of double quotes and
// the tag ends at the first '>' outside them.
// Written once and inlined into a function per marker that carries the
// marker's instruction set, so that the marker inlines too.
template <class Marker>
[[gnu::always_inline]] inline size_t UsualTagEnd(const char16_t* t, size_t length, size_t p) {
    uint64_t inside = 0;  // all ones when a value runs on from the last block
    uint64_t equalsBefore = 0;  // 1 when the last block ended on a '=' outside values
    for (size_t base = p; base + 64 <= length; base += 64) {
        const TagMarks marks = Marker::Mark(t + base);
        const uint64_t values = PrefixXor(marks.quotes) ^ inside;  // opening quote in, closing quote out
        const uint64_t equals = marks.equals & ~values;
        const uint64_t strays = (marks.quotes & values) ^ (equals << 1 | equalsBefore);
        const uint64_t ends = marks.ends & ~values;
        if (ends != 0) {
            const unsigned end = static_cast<unsigned>(__builtin_ctzll(ends));
            if ((strays & ((uint64_t{1} << end) - 1)) != 0) return 0;
            return base + end;
        }
        if (strays != 0) return 0;
        inside = 0 - (values >> 63);
        equalsBefore = equals >> 63;
    }
    return 0;
}

MARROWFIN_AVX512 size_t UsualTagEndAvx512(const char16_t* t, size_t length, size_t p) {
    return UsualTagEnd<Avx512>(t, length, p);
}
MARROWFIN_AVX2 size_t UsualTagEndAvx2(const char16_t* t, size_t length, size_t p) {
    return UsualTagEnd<Avx2>(t, length, p);
}

}  // namespace

size_t UsualStartTagEnd(const char16_t* t, size_t length, size_t p, WideTags level) {
    // A name ending in '=' would keep the first '=' behind it from opening
    // a value, which the usual road doesn't look for.
    if (t[p - 1] == u'=') return 0;
    switch (level) {
        case WideTags::Avx512: return UsualTagEndAvx512(t, length, p);
        case WideTags::Avx2: return UsualTagEndAvx2(t, length, p);
        case WideTags::None: break;
    }
    return 0;
}

#else

WideTags WideTagLevel() { return WideTags::None; }
size_t UsualStartTagEnd(const char16_t*, size_t, size_t, WideTags) { return 0; }

#endif

}  // namespace marrowfin
