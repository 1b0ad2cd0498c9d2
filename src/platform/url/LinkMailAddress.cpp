#include "platform/url/LinkMailAddress.h"

#include "platform/base/Ascii.h"
#include "platform/url/LinkCharacters.h"
#include "platform/url/LinkHost.h"
#include "platform/url/LinkRest.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kLongestLocalPart = 64;  // bytes

bool isLocalMark(char character) {
    return std::string_view("._%+-&").find(character) != std::string_view::npos;
}

bool isLocalCharacter(const LinkCharacter& character) {
    if (character.code < 0x80) {
        const char ascii = static_cast<char>(character.code);
        return isAsciiAlphanumeric(ascii) || isLocalMark(ascii);
    }
    return character.role == LinkRole::Plain;
}

// Whether a local part that begins with `following` may have `character` before it. `following` is
// "@" while the local part is empty.
bool continuesLocalPart(const LinkCharacter& character, char32_t following) {
    if (character.code == '.') {
        return following != '.' && following != '@';
    }
    // The sentence may touch an address in other letters without a space.
    const bool isOtherWord =
        following < 0x80 && following != '@' && isWrittenWithoutSpaces(character.code);
    return isLocalCharacter(character) && !isOtherWord;
}

// The start of the local part before the "@" at `sign`, or none when it is empty or too long.
std::optional<std::size_t> localPartStart(std::string_view text,
                                          std::size_t least,
                                          std::size_t sign) {
    std::size_t start = sign;
    char32_t following = '@';
    while (start > least) {
        const LinkCharacter character = linkCharacterBefore(text, start);
        if (!continuesLocalPart(character, following)) {
            break;
        }
        following = character.code;
        start -= character.length;
        if (sign - start > kLongestLocalPart) {
            return std::nullopt;
        }
    }
    return start < sign ? std::optional(start) : std::nullopt;
}

std::optional<LinkMailAddress> addressOf(std::string_view text,
                                         std::size_t start,
                                         std::size_t sign) {
    constexpr std::size_t kLeastLabels = 2;
    const std::optional<LinkHost> host = hostAt(text.substr(sign + 1));
    if (!host || host->labels < kLeastLabels || !host->endsInTopLevelDomain) {
        return std::nullopt;
    }
    LinkMailAddress address{start, sign + 1 + host->length, {}};
    appendUrlPart(text.substr(start, sign - start), address.name);
    address.name += '@';
    address.name += host->name;
    return address;
}

// Whether the text before `start` leaves open where the address begins: "o'brien@…" may be one
// address, or an elided word before one; a second "@" belongs to something else.
bool isUnclearBefore(std::string_view text, std::size_t start) {
    const std::string_view front = text.substr(0, start);
    const bool isApostrophe = front.ends_with('\'') && front.size() > 1;
    return front.ends_with('@') || (isApostrophe && isAsciiAlphanumeric(front[front.size() - 2]));
}

}  // namespace

std::optional<LinkMailAddress> mailAddressAt(std::string_view text, std::size_t start) {
    const std::size_t length = text.substr(start, kLongestLocalPart + 1).find('@');
    if (length == std::string_view::npos ||
        localPartStart(text, start, start + length) != std::optional(start)) {
        return std::nullopt;
    }
    return addressOf(text, start, start + length);
}

std::optional<LinkMailAddress> mailAddressAround(std::string_view text,
                                                 std::size_t least,
                                                 std::size_t sign) {
    std::optional<std::size_t> start = localPartStart(text, least, sign);
    if (!start || isUnclearBefore(text, *start)) {
        return std::nullopt;
    }
    // Leading marks belong to the text, such as "_" for emphasis or "-" of a list; "+" begins
    // numbers.
    while (text[*start] != '+' && isLocalMark(text[*start])) {
        ++*start;
    }
    return *start < sign ? addressOf(text, *start, sign) : std::nullopt;
}

}  // namespace quillet::platform
