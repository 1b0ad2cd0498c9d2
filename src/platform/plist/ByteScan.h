#pragma once

#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Scans of XML text, a block of bytes at a time. They may read up to 16 bytes from any place they
// reach, without using them, so ByteBuffer's zero padding must follow the text. The padding also
// ends the scans that have no end parameter.
namespace quillet::platform {

#if defined(__SSE2__)
// Which of the 16 bytes are "<", "&", carriage return or zero, one bit a byte.
inline unsigned markupMask(const char* at) noexcept {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')),
                                                    _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&'))),
                                       _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')),
                                                    _mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
    return static_cast<unsigned>(_mm_movemask_epi8(found));
}
#endif

// The first "<", "&", carriage return or zero byte at or after `at`.
inline const char* findMarkup(const char* at) noexcept {
#if defined(__SSE2__)
    constexpr int kBlock = 16;
    for (;; at += kBlock) {
        if (const unsigned mask = markupMask(at); mask != 0) {
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

// Copies from `from` up to the place that findMarkup returns, and returns that place. Writes up to
// 15 bytes more than it copies.
inline const char* copyToMarkup(const char* from, char* to) noexcept {
#if defined(__SSE2__)
    constexpr std::ptrdiff_t kBlock = 16;
    for (;;) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
        if (const unsigned mask = markupMask(from); mask != 0) {
            return from + __builtin_ctz(mask);
        }
        from += kBlock;
        to += kBlock;
    }
#else
    const char* found = findMarkup(from);
    std::memcpy(to, from, static_cast<std::size_t>(found - from));
    return found;
#endif
}

// The first "<", "&", byte below a blank (also zero, line ends and tab) or byte above 0x7F at or
// after `at`.
inline const char* findTextStop(const char* at) noexcept {
#if defined(__SSE2__)
    constexpr int kBlock = 16;
    for (;; at += kBlock) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        // Bytes above 0x7F count as negative.
        const __m128i found = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')),
                                           _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')),
                                                        _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&'))));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (mask != 0) {
            return at + __builtin_ctz(mask);
        }
    }
#else
    while (static_cast<signed char>(*at) >= ' ' && *at != '<' && *at != '&') {
        ++at;
    }
    return at;
#endif
}

// The first byte from `at` on that is not ASCII or is a control character other than tab, line feed
// and carriage return. Returns `end` or a later place if there is no such byte before the end.
inline const char* findUnusual(const char* at, const char* end) noexcept {
#if defined(__SSE2__)
    constexpr int kBlock = 16;
    for (; at < end; at += kBlock) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i low = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
        const __m128i space = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\t')),
                                                        _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n'))),
                                           _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(space, low)));
        if (mask != 0) {
            return at + __builtin_ctz(mask);
        }
    }
    return end;
#else
    for (; at < end; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte >= 0x80 || (byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r')) {
            return at;
        }
    }
    return end;
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
