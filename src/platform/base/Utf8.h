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

// Writes one character in UTF-8 and returns the number of its bytes, 1 to 4. A number that is not a
// Unicode scalar is written as U+FFFD.
std::size_t writeUtf8(std::uint32_t code, char* at) noexcept;

// Appends UTF-16 bytes as UTF-8. Lone surrogates become U+FFFD; an odd last byte is left out.
void appendUtf16AsUtf8(std::string_view bytes, std::endian order, std::string& text);

// The place of the first byte that is not part of valid UTF-8, or none when all bytes are. Overlong
// forms, surrogates and numbers above U+10FFFF are not valid.
std::optional<std::size_t> firstInvalidUtf8(std::string_view text) noexcept;

// `text` with U+FFFD in place of each byte that is not part of valid UTF-8.
std::string validUtf8(std::string text);

// A character of a text and the number of its bytes. A byte that is not part of valid UTF-8 is one
// with a negative code.
struct Utf8Character {
    std::int32_t code = -1;
    std::size_t length = 1;
};

// The character at the start or the end of `text`, which is not empty.
Utf8Character firstUtf8Character(std::string_view text) noexcept;
Utf8Character lastUtf8Character(std::string_view text) noexcept;

// `text` without white space and line breaks at both ends: Unicode's spaces (category Zs), the
// tabulator, line feed to carriage return, U+0085, U+2028 and U+2029.
std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept;

}  // namespace quillet::platform
