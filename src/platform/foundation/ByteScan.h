#pragma once

#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Scans of XML text, a block of bytes at a time. They may read (and never use) up to 16 bytes from
// any place they come to, so the text needs ByteBuffer's padding of zero bytes behind it, which
// also ends every scan.
namespace quillet::platform {

// The first "<", "&", carriage return or zero byte at or behind `at`.
inline const char* findMarkup(const char* at) noexcept {
#if defined(__SSE2__)
    constexpr int kBlock = 16;
    for (;; at += kBlock) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i found =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')),
                                      _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&'))),
                         _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')),
                                      _mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (mask != 0) {
            return at + __builtin_ctz(mask);
        }
    }
#else
    while (*at != '<' && *at != '&' && *at != '\r' && *at != '\0') {
        ++at;
    }
    return at;
#endif
}

// Whether the `length` bytes at two places are the same.
inline bool sameBytes(const char* left, const char* right, std::size_t length) noexcept {
#if defined(__SSE2__)
    constexpr std::size_t kBlock = 16;
    for (;;) {
        const __m128i equal =
            _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(left)),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(right)));
        const unsigned different = ~static_cast<unsigned>(_mm_movemask_epi8(equal)) & 0xFFFFU;
        if (length <= kBlock) {
            return (different & ((1U << length) - 1)) == 0;
        }
        if (different != 0) {
            return false;
        }
        left += kBlock;
        right += kBlock;
        length -= kBlock;
    }
#else
    return std::memcmp(left, right, length) == 0;
#endif
}

}  // namespace quillet::platform
