#pragma once

#include <algorithm>
#include <string_view>

// Tests of ASCII characters, whatever the locale. Bytes above 0x7F belong to no class.
namespace quillet::platform {

constexpr bool isAscii(char character) noexcept {
    return static_cast<unsigned char>(character) < 0x80;
}

constexpr bool isAsciiText(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), isAscii);
}

constexpr bool isAsciiDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

constexpr bool isAsciiLetter(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

constexpr bool isAsciiAlphanumeric(char character) noexcept {
    return isAsciiDigit(character) || isAsciiLetter(character);
}

constexpr char asciiLowerCase(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                : character;
}

// Whether two texts differ at most in the case of ASCII letters.
constexpr bool equalsIgnoringAsciiCase(std::string_view left, std::string_view right) noexcept {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(), [](char one, char other) {
            return asciiLowerCase(one) == asciiLowerCase(other);
        });
}

// `text` without the characters of `set` at its start, or at both of its ends.
constexpr std::string_view trimmedStart(std::string_view text, std::string_view set) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(set), text.size()));
    return text;
}

constexpr std::string_view trimmed(std::string_view text, std::string_view set) noexcept {
    text = trimmedStart(text, set);
    return text.substr(0, text.find_last_not_of(set) + 1);
}

}  // namespace quillet::platform
