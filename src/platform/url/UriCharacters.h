#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// The classes of characters in a URI (RFC 3986), one bit each. A URI contains no byte without a
// class, except the "%" of an escape.
namespace quillet::platform {

enum UriClass : std::uint8_t {
    kUriUnreserved = 1,    // letters, digits, "-", ".", "_", "~"
    kUriSubDelimiter = 2,  // "!", "$", "&", "'", "(", ")", "*", "+", ",", ";", "="
    kUriColon = 4,
    kUriAt = 8,
    kUriSlash = 16,
    kUriQuestion = 32,
    kUriBracket = 64,
    kUriHexDigit = 128,
    kUriPath = kUriUnreserved | kUriSubDelimiter | kUriColon | kUriAt | kUriSlash,
};

constexpr std::array<std::uint8_t, 256> makeUriClasses() {
    std::array<std::uint8_t, 256> classes{};
    const auto add = [&](std::string_view characters, UriClass which) {
        for (const char character : characters) {
            classes[static_cast<unsigned char>(character)] |= which;
        }
    };
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~", kUriUnreserved);
    add("!$&'()*+,;=", kUriSubDelimiter);
    add(":", kUriColon);
    add("@", kUriAt);
    add("/", kUriSlash);
    add("?", kUriQuestion);
    add("[]", kUriBracket);
    add("0123456789ABCDEFabcdef", kUriHexDigit);
    return classes;
}

inline constexpr std::array<std::uint8_t, 256> kUriClasses = makeUriClasses();

// Whether a character is in one of `classes`, a set of UriClass bits.
constexpr bool isUriCharacter(char character, unsigned classes) noexcept {
    return (kUriClasses[static_cast<unsigned char>(character)] & classes) != 0;
}

// The value of each hexadecimal digit; -1 for other characters.
constexpr std::array<std::int8_t, 256> makeHexValues() {
    std::array<std::int8_t, 256> values{};
    for (std::size_t byte = 0; byte < values.size(); ++byte) {
        const bool isDigit = isUriCharacter(static_cast<char>(byte), kUriHexDigit);
        const std::size_t value = byte <= '9' ? byte - '0' : (byte & 7U) + 9;
        values[byte] = isDigit ? static_cast<std::int8_t>(value) : std::int8_t{-1};
    }
    return values;
}

inline constexpr std::array<std::int8_t, 256> kHexValues = makeHexValues();

// The byte of the escape at the start of `text`, which begins with "%"; negative if two hexadecimal
// digits do not follow.
constexpr int escapedByte(std::string_view text) noexcept {
    return text.size() < 3 ? -1
                           : kHexValues[static_cast<unsigned char>(text[1])] * 16 |
                                 kHexValues[static_cast<unsigned char>(text[2])];
}

// Whether the "%" at `at` begins an escape.
constexpr bool isPercentEscape(std::string_view text, std::size_t at) noexcept {
    return escapedByte(text.substr(at)) >= 0;
}

}  // namespace quillet::platform
