#pragma once

#include <cstdint>
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

}  // namespace quillet::platform
