#include "platform/url/LinkCharacters.h"

#include <array>
#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kAscii = 128;

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
        code == kZeroWidthNonJoiner + 1) {  // the joiner: both are used inside words
        return LinkRole::Plain;
    }
    const bool isMark = (category & (U_GC_PO_MASK | U_GC_PD_MASK | U_GC_PC_MASK)) != 0;
    return isMark ? LinkRole::Punctuation : LinkRole::Stop;
}

LinkRole roleOf(UChar32 code) {
    return code < static_cast<UChar32>(kAscii) ? kAsciiRoles[static_cast<std::size_t>(code)]
                                               : roleBeyondAscii(code);
}

LinkCharacter linkCharacterOf(const Utf8Character& character) {
    return character.code < 0 ? LinkCharacter()
                              : LinkCharacter{roleOf(character.code),
                                              static_cast<char32_t>(character.code),
                                              character.length};
}

}  // namespace

LinkCharacter linkCharacterAt(std::string_view text, std::size_t at) {
    return linkCharacterOf(firstUtf8Character(text.substr(at)));
}

LinkCharacter linkCharacterBefore(std::string_view text, std::size_t end) {
    return linkCharacterOf(lastUtf8Character(text.substr(0, end)));
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

}  // namespace quillet::platform
