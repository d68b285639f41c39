#include "markup/utf8_decoder.h"

#include "platform/text.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(__x86_64__)
#include <immintrin.h>
#endif

namespace marrowfin {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

#if defined(__x86_64__)
// Runs of three-byte forms (CJK), four at a time: the twelve bytes are checked
// against the pattern 1110xxxx 10xxxxxx 10xxxxxx, gathered into one 32-bit
// lane per character by a byte shuffle, and stored as four units when none is
// overlong or a surrogate. Returns the bytes taken, a multiple of three.
__attribute__((target("ssse3"))) size_t DecodeThreeByteRun(const unsigned char* s, size_t n, char16_t* out) {
    const __m128i patternMask = _mm_setr_epi8(
        static_cast<char>(0xF0), static_cast<char>(0xC0), static_cast<char>(0xC0), static_cast<char>(0xF0),
        static_cast<char>(0xC0), static_cast<char>(0xC0), static_cast<char>(0xF0), static_cast<char>(0xC0),
        static_cast<char>(0xC0), static_cast<char>(0xF0), static_cast<char>(0xC0), static_cast<char>(0xC0), 0, 0, 0, 0);
    const __m128i pattern = _mm_setr_epi8(
        static_cast<char>(0xE0), static_cast<char>(0x80), static_cast<char>(0x80), static_cast<char>(0xE0),
        static_cast<char>(0x80), static_cast<char>(0x80), static_cast<char>(0xE0), static_cast<char>(0x80),
        static_cast<char>(0x80), static_cast<char>(0xE0), static_cast<char>(0x80), static_cast<char>(0x80), 0, 0, 0, 0);
    // Lane i: third byte in bits 0-7, second in 8-15, lead in 16-23.
    const __m128i gather = _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1);
    const __m128i narrow = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
    size_t i = 0;
    // Sixteen bytes are read for twelve used.
    while (i + 16 <= n) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(v, patternMask), pattern)) != 0xFFFF) break;
        const __m128i lanes = _mm_shuffle_epi8(v, gather);
        const __m128i cp = _mm_or_si128(_mm_or_si128(_mm_and_si128(lanes, _mm_set1_epi32(0x3F)),
                                                     _mm_and_si128(_mm_srli_epi32(lanes, 2), _mm_set1_epi32(0xFC0))),
                                        _mm_and_si128(_mm_srli_epi32(lanes, 4), _mm_set1_epi32(0xF000)));
        const __m128i overlong = _mm_cmplt_epi32(cp, _mm_set1_epi32(0x800));
        const __m128i surrogate = _mm_cmpeq_epi32(_mm_and_si128(cp, _mm_set1_epi32(0xF800)), _mm_set1_epi32(0xD800));
        if (_mm_movemask_epi8(_mm_or_si128(overlong, surrogate)) != 0) break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(cp, narrow));
        out += 4;
        i += 12;
    }
    return i;
}

bool HasSsse3() {
    static const bool has = __builtin_cpu_supports("ssse3");
    return has;
}

// Mixed runs of one-, two- and three-byte forms (ASCII markup between short
// CJK words), 64 bytes a block: each byte is classed into a bit mask, the
// continuations are checked against those the leads call for, and then, in
// two steps of 32 bytes, every character is decoded in the 16-bit lane of its
// last byte and those lanes are packed together and stored. Only the block's
// loads lie on the path from one block to the next. Stops before anything
// else (NUL, four-byte forms, ill-formed bytes, overlong forms, surrogates),
// which the caller decodes one at a time. `at` must be a character boundary
// at least two bytes into `s`, `out` must have room for `n` units. Returns
// the positions in `s` and `out` behind what is decoded.
// gcc 12 takes the deliberately undefined inputs of the AVX-512 intrinsics
// for uninitialised variables.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
struct Decoded {
    size_t in;
    size_t out;
};
__attribute__((target("avx512f,avx512bw,avx512vbmi2"))) Decoded DecodeMixedRun(const unsigned char* s, size_t n,
                                                                               size_t i, char16_t* out, size_t o) {
    while (i + 64 <= n) {
        const __m512i v = _mm512_loadu_si512(s + i);
        const uint64_t ascii = _mm512_cmpgt_epi8_mask(v, _mm512_setzero_si512());
        if (ascii == ~uint64_t{0}) {
            _mm512_storeu_si512(out + o, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(v)));
            _mm512_storeu_si512(out + o + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(v, 1)));
            i += 64;
            o += 64;
            continue;
        }
        // Where the next block starts when this one has no fault: behind its
        // last whole character, told by its last two bytes alone. Read apart
        // from the block's masks, it lets the next block's loads start before
        // this block is decoded, rather than wait for the masks each time.
        const unsigned back = s[i + 63] >= 0xC0 ? 1u : (s[i + 62] & 0xF0) == 0xE0 ? 2u : 0u;
        // Signed bytes: 0x80..0xBF below -64 (0xA0.. of them above -97),
        // 0xC2.. above -63, 0xE0.. above -33, 0xF0.. above -17; ASCII lies
        // above all of them.
        const uint64_t cont = _mm512_cmplt_epi8_mask(v, _mm512_set1_epi8(-64));
        const uint64_t from2 = _mm512_cmpgt_epi8_mask(v, _mm512_set1_epi8(-63));
        const uint64_t from3 = _mm512_cmpgt_epi8_mask(v, _mm512_set1_epi8(-33));
        const uint64_t from4 = _mm512_cmpgt_epi8_mask(v, _mm512_set1_epi8(-17));
        const uint64_t highCont = _mm512_mask_cmpgt_epi8_mask(cont, v, _mm512_set1_epi8(-97));
        const uint64_t leadE0 = _mm512_cmpeq_epi8_mask(v, _mm512_set1_epi8(static_cast<char>(0xE0)));
        const uint64_t leadED = _mm512_cmpeq_epi8_mask(v, _mm512_set1_epi8(static_cast<char>(0xED)));
        const uint64_t lead2 = from2 & ~from3;
        const uint64_t lead3 = from3 & ~from4;
        const uint64_t ends = ascii | (lead2 << 1) | (lead3 << 2);
        // NUL, 0xC0, 0xC1 and 0xF0 up are in no class; a continuation no lead
        // calls for, or a lead without its continuations, breaks the pattern,
        // as do E0 with 80..9F (overlong) and ED with A0..BF (surrogate).
        // Leads in the last two bytes reach into the next block: not checked
        // here, as their characters are left for it.
        const uint64_t faults = ~(ascii | cont | lead2 | lead3) |
                                (cont ^ ((lead2 << 1) | (lead3 << 1) | (lead3 << 2))) |
                                (((leadE0 & ~(highCont >> 1)) | (leadED & (highCont >> 1))) & (~uint64_t{0} >> 1));
        uint64_t take = ends;
        // Characters through the last one complete before the first fault.
        if (faults != 0) take &= (faults & (0 - faults)) - 1;
        if (take == 0) break;
        for (int c = 0; c < 2; ++c) {
            const unsigned char* p = s + i + 32 * c;
            const __m512i b0 = _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
            const __m512i b1 = _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p - 1)));
            const __m512i b2 = _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p - 2)));
            const __m512i low6 = _mm512_and_si512(b0, _mm512_set1_epi16(0x3F));
            const __m512i cp3 =
                _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(b2, 12),
                                                _mm512_slli_epi16(_mm512_and_si512(b1, _mm512_set1_epi16(0x3F)), 6)),
                                low6);
            const __m512i cp2 =
                _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(b1, _mm512_set1_epi16(0x1F)), 6), low6);
            const __mmask32 end3 = static_cast<__mmask32>((lead3 << 2) >> (32 * c));
            const __mmask32 end2 = static_cast<__mmask32>((lead2 << 1) >> (32 * c));
            __m512i cp = _mm512_mask_blend_epi16(end2, b0, cp2);
            cp = _mm512_mask_blend_epi16(end3, cp, cp3);
            const __mmask32 keep = static_cast<__mmask32>(take >> (32 * c));
            _mm512_storeu_si512(out + o, _mm512_maskz_compress_epi16(keep, cp));
            o += static_cast<size_t>(__builtin_popcount(keep));
        }
        if (faults != 0) {
            i += 64 - static_cast<unsigned>(__builtin_clzll(take));
            break;  // the caller decodes the faulty byte
        }
        i += 64 - back;
    }
    return {i, o};
}
#pragma GCC diagnostic pop

bool HasAvx512() {
    static const bool has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                            __builtin_cpu_supports("avx512vbmi2");
    return has;
}
#endif

}  // namespace

// One loop on purpose: the ASCII stretch, the wide runs and the single
// characters hand the same two positions back and forth on every turn, and
// keeping them in registers is what makes the decoder fast.
size_t DecodeUtf8Into(const unsigned char* s, size_t n, char16_t* out, size_t& nulls) {
    size_t i = 0;
    size_t o = 0;
    nulls = 0;
    while (i < n) {
#if defined(__SSE2__)
        // Sixteen bytes at a time: all of them widened and stored (the output
        // has room, as it is never ahead of the input), and the position moved
        // over the ASCII bytes before the first other byte or NUL.
        const __m128i zero = _mm_setzero_si128();
        while (i + 16 <= n) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_unpacklo_epi8(v, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o + 8), _mm_unpackhi_epi8(v, zero));
            const unsigned stop =
                static_cast<unsigned>(_mm_movemask_epi8(v) | _mm_movemask_epi8(_mm_cmpeq_epi8(v, zero)));
            if (stop == 0) {
                i += 16;
                o += 16;
                continue;
            }
            const unsigned k = static_cast<unsigned>(__builtin_ctz(stop));
            i += k;
            o += k;
            break;
        }
        if (i >= n) break;
#endif
        // Scalar until the next ASCII byte: runs of CJK text stay here.
        do {
            const unsigned char b = s[i];
            if (b < 0x80) {
                if (b == 0) ++nulls;
                else out[o++] = b;
                ++i;
                break;
            }
#if defined(__x86_64__)
            if (i >= 2 && HasAvx512()) {
                const Decoded d = DecodeMixedRun(s, n, i, out, o);
                if (d.in != i) {
                    i = d.in;
                    o = d.out;
                    continue;
                }
            }
            if (b >= 0xE0 && b < 0xF0 && HasSsse3()) {
                const size_t taken = DecodeThreeByteRun(s + i, n - i, out + o);
                if (taken != 0) {
                    i += taken;
                    o += taken / 3;
                    continue;
                }
            }
#endif
            // Two three-byte forms at a time while the text is CJK.
            const size_t pairsFrom = i;
            while (i + 8 <= n) {
                uint64_t w;
                std::memcpy(&w, s + i, 8);
                if ((w & 0x0000C0C0F0C0C0F0ull) != 0x00008080E08080E0ull) break;
                const uint32_t c1 = static_cast<uint32_t>(((w & 0x0F) << 12) | ((w >> 2) & 0xFC0) | ((w >> 16) & 0x3F));
                const uint32_t c2 =
                    static_cast<uint32_t>((((w >> 24) & 0x0F) << 12) | ((w >> 26) & 0xFC0) | ((w >> 40) & 0x3F));
                if (c1 < 0x800 || c1 - 0xD800u < 0x800u || c2 < 0x800 || c2 - 0xD800u < 0x800u) break;
                out[o] = static_cast<char16_t>(c1);
                out[o + 1] = static_cast<char16_t>(c2);
                o += 2;
                i += 6;
            }
            if (i != pairsFrom) continue;  // `b` is stale; look at the next byte afresh
            // Runs of three-byte forms (CJK), each checked with one load:
            // lead 1110xxxx and two continuations 10xxxxxx, no overlong form,
            // no surrogate.
            if (i + 4 <= n) {
                uint32_t w;
                std::memcpy(&w, s + i, 4);
                if ((w & 0x00C0C0F0u) == 0x008080E0u) {
                    const uint32_t cp = ((w & 0x0Fu) << 12) | ((w & 0x3F00u) >> 2) | ((w >> 16) & 0x3Fu);
                    if (cp >= 0x800 && cp - 0xD800u >= 0x800u) {
                        out[o++] = static_cast<char16_t>(cp);
                        i += 3;
                        continue;
                    }
                }
            }
            if (b >= 0xE0 && b < 0xF0 && i + 3 <= n && (s[i + 1] & 0xC0) == 0x80 && (s[i + 2] & 0xC0) == 0x80) {
                const uint32_t cp = ((b & 0x0Fu) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3Fu);
                if (cp >= 0x800 && (cp < 0xD800 || cp > 0xDFFF)) {
                    out[o++] = static_cast<char16_t>(cp);
                    i += 3;
                    continue;
                }
            } else if (b >= 0xC2 && b < 0xE0 && i + 2 <= n && (s[i + 1] & 0xC0) == 0x80) {
                out[o++] = static_cast<char16_t>(((b & 0x1Fu) << 6) | (s[i + 1] & 0x3Fu));
                i += 2;
                continue;
            }
            uint32_t cp = 0;
            const int len = DecodeUtf8Sequence(s + i, n - i, cp);
            const bool ok = len != 0;
            if (!ok) {
                out[o++] = kReplacement;
                ++i;
                continue;
            }
            if (cp >= 0x10000) {
                cp -= 0x10000;
                out[o++] = static_cast<char16_t>(0xD800 + (cp >> 10));
                out[o++] = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
            } else {
                out[o++] = static_cast<char16_t>(cp);
            }
            i += len;
        } while (i < n);
    }
    return o;
}

}  // namespace marrowfin
