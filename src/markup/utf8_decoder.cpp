#include "markup/utf8_decoder.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace marrowfin {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

inline int SequenceLength(unsigned char b) {
    if (b < 0xC0) return 0;  // a continuation byte cannot lead
    if (b < 0xE0) return 2;
    if (b < 0xF0) return 3;
    if (b < 0xF8) return 4;
    return 0;
}

}  // namespace

size_t DecodeUtf8Into(const unsigned char* s, size_t n, char16_t* out, size_t& nulls) {
    size_t i = 0;
    size_t o = 0;
    nulls = 0;
    while (i < n) {
#if defined(__SSE2__)
        // Sixteen ASCII bytes without NUL at a time: widened with zeros.
        const __m128i zero = _mm_setzero_si128();
        while (i + 16 <= n) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
            if (_mm_movemask_epi8(v) != 0 || _mm_movemask_epi8(_mm_cmpeq_epi8(v, zero)) != 0) break;
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_unpacklo_epi8(v, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o + 8), _mm_unpackhi_epi8(v, zero));
            i += 16;
            o += 16;
        }
        if (i >= n) break;
#endif
        // Scalar until a run of ASCII begins: CJK text and the short ASCII
        // stretches between its runs stay here.
        unsigned asciiRun = 0;
        do {
            const unsigned char b = s[i];
            if (b < 0x80) {
                if (b == 0) ++nulls;
                else out[o++] = b;
                ++i;
                if (++asciiRun == 16) break;
                continue;
            }
            asciiRun = 0;
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
            const int len = SequenceLength(b);
            bool ok = len > 1 && i + len <= n;
            uint32_t cp = 0;
            if (ok) {
                cp = b & (0xFF >> (len + 1));
                for (int k = 1; k < len && ok; ++k) {
                    if ((s[i + k] & 0xC0) != 0x80) ok = false;
                    else cp = (cp << 6) | (s[i + k] & 0x3F);
                }
                // Overlong forms, surrogates and values past U+10FFFF are not characters.
                static constexpr uint32_t kMin[5] = {0, 0, 0x80, 0x800, 0x10000};
                if (ok && (cp < kMin[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) ok = false;
            }
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
