#include "platform/url/LinkCharacters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kAscii = 128;
constexpr std::size_t kLongestSequence = 4;  // bytes of a character in UTF-8

constexpr std::array<LinkRole, kAscii> asciiRoles() {
    std::array<LinkRole, kAscii> roles{};  // all stops
    for (std::size_t code = '!'; code < kAscii - 1; ++code) {
        roles[code] = LinkRole::Plain;
    }
    const auto set = [&](std::string_view characters, LinkRole role) {
        for (const char character : characters) {
            roles[static_cast<unsigned char>(character)] = role;
        }
    };
    set("\"'<>`\\^|", LinkRole::Stop);
    set(".,;:!?", LinkRole::Punctuation);
    set("*_~", LinkRole::Emphasis);
    set("([{", LinkRole::Opening);
    set(")]}", LinkRole::Closing);
    return roles;
}

constexpr std::array<LinkRole, kAscii> kAsciiRoles = asciiRoles();

// Blocks whose punctuation and symbols are those of Chinese, Japanese and Korean typesetting.
bool isOfCjkTypesetting(UChar32 code) {
    return (code >= 0x3000 && code <= 0x303F) || (code >= 0xFE10 && code <= 0xFE1F) ||
           (code >= 0xFE30 && code <= 0xFE6F) || (code >= 0xFF00 && code <= 0xFFEF);
}

LinkRole roleBeyondAscii(UChar32 code) {
    constexpr UChar32 kZeroWidthNonJoiner = 0x200C;
    constexpr UChar32 kReplacement = 0xFFFD;
    if (code == kReplacement) {
        return LinkRole::Stop;
    }
    const std::uint32_t category = U_GET_GC_MASK(code);
    if ((category & (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0) {
        return LinkRole::Plain;
    }
    if (isOfCjkTypesetting(code)) {
        return LinkRole::Stop;
    }
    if ((category & U_GC_S_MASK) != 0 || code == kZeroWidthNonJoiner ||
        code == kZeroWidthNonJoiner + 1) {  // the joiner: both belong to the spelling of words
        return LinkRole::Plain;
    }
    const bool isMark = (category & (U_GC_PO_MASK | U_GC_PD_MASK | U_GC_PC_MASK)) != 0;
    return isMark ? LinkRole::Punctuation : LinkRole::Stop;
}

LinkRole roleOf(UChar32 code) {
    return code < static_cast<UChar32>(kAscii) ? kAsciiRoles[static_cast<std::size_t>(code)]
                                               : roleBeyondAscii(code);
}

// The character of a valid UTF-8 sequence.
UChar32 codeOf(std::string_view sequence) {
    const auto lead = static_cast<unsigned char>(sequence.front());
    UChar32 code = sequence.size() == 1 ? lead : lead & (0x7F >> sequence.size());
    for (const char byte : sequence.substr(1)) {
        code = (code << 6) | (static_cast<unsigned char>(byte) & 0x3F);
    }
    return code;
}

}  // namespace

LinkCharacter linkCharacterAt(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(at, kLongestSequence);
    const std::size_t length = utf8SequenceLength(rest);
    if (length == 0) {
        return {};
    }
    const UChar32 code = codeOf(rest.substr(0, length));
    return {roleOf(code), static_cast<char32_t>(code), length};
}

LinkCharacter linkCharacterBefore(std::string_view text, std::size_t end) {
    for (std::size_t length = 1; length <= std::min(end, kLongestSequence); ++length) {
        if (utf8SequenceLength(text.substr(end - length, length)) == length) {
            return linkCharacterAt(text, end - length);
        }
    }
    return {};
}

bool isWrittenWithoutSpaces(char32_t code) {
    if (code < kAscii) {
        return false;
    }
    UErrorCode ignored = U_ZERO_ERROR;
    switch (uscript_getScript(static_cast<UChar32>(code), &ignored)) {
        case USCRIPT_HAN:
        case USCRIPT_HIRAGANA:
        case USCRIPT_KATAKANA:
        case USCRIPT_BOPOMOFO:
        case USCRIPT_HANGUL:
        case USCRIPT_THAI:
        case USCRIPT_LAO:
        case USCRIPT_KHMER:
        case USCRIPT_MYANMAR:
            return true;
        default:
            return false;
    }
}

bool isSymbol(char32_t code) {
    return (U_GET_GC_MASK(static_cast<UChar32>(code)) & U_GC_S_MASK) != 0;
}

bool isAsciiDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

bool isAsciiLetter(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isAsciiAlphanumeric(char character) noexcept {
    return isAsciiDigit(character) || isAsciiLetter(character);
}

bool equalsIgnoringAsciiCase(std::string_view text, std::string_view lowerCase) noexcept {
    constexpr char kCaseBit = 'a' - 'A';
    return std::equal(text.begin(),
                      text.end(),
                      lowerCase.begin(),
                      lowerCase.end(),
                      [](char character, char lower) {
                          const bool isUpper = character >= 'A' && character <= 'Z';
                          return (isUpper ? character + kCaseBit : character) == lower;
                      });
}

}  // namespace quillet::platform
