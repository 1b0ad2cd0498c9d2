#include "platform/url/LinkRest.h"

#include <array>

#include "platform/url/LinkCharacters.h"
#include "platform/url/PercentEncoding.h"
#include "platform/url/UriCharacters.h"

namespace quillet::platform {

namespace {

// The number of leading bytes that may belong to a link.
std::size_t runLength(std::string_view text) {
    constexpr std::string_view kOpening = "([{";
    constexpr std::string_view kClosing = ")]}";
    std::array<std::size_t, kOpening.size()> open{};
    std::size_t at = 0;
    while (at < text.size()) {
        const LinkCharacter character = linkCharacterAt(text, at);
        if (character.role == LinkRole::Stop) {
            break;
        }
        if (character.role == LinkRole::Opening) {
            ++open[kOpening.find(text[at])];
        } else if (character.role == LinkRole::Closing) {
            std::size_t& count = open[kClosing.find(text[at])];
            if (count == 0) {
                break;
            }
            --count;
        }
        at += character.length;
    }
    return at;
}

}  // namespace

std::size_t linkRestLength(std::string_view text, char before) {
    std::size_t end = runLength(text);
    while (end > 0) {
        const LinkCharacter last = linkCharacterBefore(text, end);
        const bool closesEmphasis =
            last.role == LinkRole::Emphasis && last.code == static_cast<unsigned char>(before);
        if (last.role != LinkRole::Punctuation && last.role != LinkRole::Opening &&
            !closesEmphasis) {
            break;
        }
        end -= last.length;
    }
    return end;
}

void appendUrlPart(std::string_view part, std::string& url) {
    // A URL tolerates brackets in its query, and no second "#".
    bool isQuery = false;
    bool isFragment = false;
    for (std::size_t at = 0; at < part.size(); ++at) {
        const char character = part[at];
        const bool startsFragment = character == '#' && !isFragment;
        if (startsFragment || isUriCharacter(character, kUriPath | kUriQuestion) ||
            (isQuery && isUriCharacter(character, kUriBracket)) ||
            (character == '%' && isPercentEscape(part, at))) {
            url += character;
        } else {
            appendPercentEncoded(part.substr(at, 1), PercentKeep::Unreserved, url);
        }
        isFragment = isFragment || startsFragment;
        isQuery = !isFragment && (isQuery || character == '?');
    }
}

}  // namespace quillet::platform
