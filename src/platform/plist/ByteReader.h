#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/base/ByteBuffer.h"

namespace quillet::platform {

// Big-endian number of `width` (1 to 8) bytes at `at`. Reads up to 8 bytes from there, which must
// be readable: ByteBuffer's padding sees to it.
inline std::uint64_t bigEndianNumber(const char* at, std::size_t width) noexcept {
    constexpr std::size_t kWidest = 8;
    std::uint64_t number = 0;
    std::memcpy(&number, at, kWidest);
    if constexpr (std::endian::native == std::endian::little) {
        number = __builtin_bswap64(number);
    }
    return number >> (8 * (kWidest - width));
}

// Numbers of a file that says itself where they lie. The bytes are those of a ByteBuffer.
class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

    std::size_t size() const noexcept { return bytes_.size(); }
    const char* data() const noexcept { return bytes_.data(); }

    // Whether `length` bytes lie at `offset` and before `end`.
    static bool fits(std::uint64_t offset, std::uint64_t length, std::uint64_t end) noexcept {
        return offset <= end && length <= end - offset;
    }

private:
    std::string_view bytes_;
};

}  // namespace quillet::platform
