#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// Whether a number is a character: at most U+10FFFF and no surrogate.
bool isUnicodeScalar(std::uint32_t code) noexcept;

// Writes one character in UTF-8, 1 to 4 bytes, and returns their number; what is no Unicode scalar
// becomes U+FFFD.
std::size_t writeUtf8(std::uint32_t code, char* at) noexcept;

// Appends UTF-16 bytes as UTF-8. Lone surrogates become U+FFFD; a last odd byte is left out.
void appendUtf16AsUtf8(std::string_view bytes, std::endian order, std::string& text);

// The place of the first byte that is not part of valid UTF-8 (overlong forms, surrogates and
// numbers above U+10FFFF are not valid); none where all are.
std::optional<std::size_t> firstInvalidUtf8(std::string_view text) noexcept;

// `text` with U+FFFD in place of each byte that is not part of valid UTF-8.
std::string validUtf8(std::string text);

// Bytes of the valid UTF-8 sequence that `text` starts with, 0 where it starts with none.
std::size_t utf8SequenceLength(std::string_view text) noexcept;

}  // namespace quillet::platform
