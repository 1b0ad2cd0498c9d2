#include "platform/url/LinkHost.h"

#include <algorithm>
#include <array>
#include <memory>
#include <unicode/uidna.h>

#include "platform/base/Ascii.h"
#include "platform/url/LinkCharacters.h"
#include "platform/url/URL.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kLongestName = 253;
constexpr std::size_t kLongestLabel = 63;

bool isHostCharacter(const LinkCharacter& character) {
    if (character.code < 0x80) {
        const char ascii = static_cast<char>(character.code);
        return isAsciiAlphanumeric(ascii) || ascii == '-' || ascii == '_';
    }
    // Punctuation counts only if some language uses it inside words: middle dots and the like.
    constexpr std::u32string_view kInsideWords = U"\u00B7\u0375\u05F3\u05F4\u30FB";
    return character.role == LinkRole::Plain ||
           kInsideWords.find(character.code) != std::u32string_view::npos;
}

std::string_view lastLabel(std::string_view name) {
    return name.substr(name.rfind('.') + 1);  // all of it when it has no dot
}

// The name without what touches its end and belongs to the sentence: after a top-level domain such
// as "com" a word of a script without spaces, or a symbol such as an arrow or a face.
std::string_view withoutTouchingWords(std::string_view name) {
    const std::string_view last = lastLabel(name);
    if (last.empty() || !isAsciiLetter(last.front())) {
        return name;
    }
    const std::size_t start = name.size() - last.size();
    for (std::size_t at = 0; at < last.size();) {
        const LinkCharacter character = linkCharacterAt(last, at);
        if (isWrittenWithoutSpaces(character.code) || isSymbol(character.code)) {
            return name.substr(0, start + at);
        }
        at += character.length;
    }
    return name;
}

std::string_view withoutEndingPunctuation(std::string_view name) {
    while (!name.empty()) {
        const LinkCharacter last = linkCharacterBefore(name, name.size());
        if (last.role == LinkRole::Plain && last.code != '-') {
            break;
        }
        name.remove_suffix(last.length);
    }
    return name;
}

bool isTopLevelDomain(std::string_view label) {
    return !isAsciiText(label) || equalsIgnoringAsciiCase(label.substr(0, 4), "xn--") ||
           (label.size() > 1 && std::all_of(label.begin(), label.end(), isAsciiLetter));
}

// Whether no label is too long, and the number of labels. In ASCII a label takes at least one
// character for each of its characters.
bool countLabels(std::string_view name, std::size_t& labels) {
    labels = 1;
    std::size_t characters = 0;
    for (const char byte : name) {
        const bool continues = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
        characters = byte == '.' ? 0 : characters + (continues ? 0 : 1);
        labels += byte == '.' ? 1 : 0;
        if (characters > kLongestLabel) {
            return false;
        }
    }
    return true;
}

// The IDNA form of the name in ASCII, or none when it is not the name of a host.
std::optional<std::string> asciiName(std::string_view name) {
    static const std::unique_ptr<UIDNA, decltype(&uidna_close)> converter = [] {
        UErrorCode failure = U_ZERO_ERROR;
        // The strict rules refuse a character that is mapped to "a/c", which would start a path.
        constexpr std::uint32_t kOptions = UIDNA_USE_STD3_RULES | UIDNA_CHECK_BIDI |
                                           UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII;
        return std::unique_ptr<UIDNA, decltype(&uidna_close)>(uidna_openUTS46(kOptions, &failure),
                                                              &uidna_close);
    }();
    std::array<char, kLongestName> ascii{};
    UIDNAInfo found = UIDNA_INFO_INITIALIZER;
    UErrorCode failure = U_ZERO_ERROR;
    const std::int32_t length = uidna_nameToASCII_UTF8(converter.get(),
                                                       name.data(),
                                                       static_cast<std::int32_t>(name.size()),
                                                       ascii.data(),
                                                       static_cast<std::int32_t>(ascii.size()),
                                                       &found,
                                                       &failure);
    if (U_FAILURE(failure) || found.errors != 0) {
        return std::nullopt;
    }
    return std::string(ascii.data(), static_cast<std::size_t>(length));
}

std::optional<LinkHost> namedHostAt(std::string_view text) {
    const std::string_view labels = withoutEndingPunctuation(text.substr(0, labelsLengthAt(text)));
    const std::string_view name = withoutEndingPunctuation(withoutTouchingWords(labels));
    LinkHost host;
    // A character of a host takes at most four bytes.
    if (name.empty() || name.front() == '-' || name.front() == '_' ||
        name.size() > 4 * kLongestName || !countLabels(name, host.labels)) {
        return std::nullopt;
    }
    const std::optional<std::string> ascii =
        isAsciiText(name) ? std::string(name) : asciiName(name);
    if (!ascii || ascii->size() > kLongestName) {
        return std::nullopt;
    }
    host.name = *ascii;
    host.length = name.size();
    host.endsInTopLevelDomain = isTopLevelDomain(lastLabel(name));
    return host;
}

std::optional<LinkHost> addressInBracketsAt(std::string_view text) {
    constexpr std::size_t kLongestAddress = 64;
    const std::size_t end = text.substr(0, kLongestAddress).find(']');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string address(text.substr(0, end + 1));
    if (!URL::URLWithString("//" + address)) {
        return std::nullopt;
    }
    return LinkHost{address.size(), address};
}

}  // namespace

std::size_t labelsLengthAt(std::string_view text) {
    std::size_t at = 0;
    bool labelIsEmpty = true;
    while (at < text.size()) {
        const LinkCharacter character = linkCharacterAt(text, at);
        const bool isDot = character.code == '.';
        if (isDot ? labelIsEmpty : !isHostCharacter(character)) {
            break;
        }
        labelIsEmpty = isDot;
        at += character.length;
    }
    return at;
}

std::optional<LinkHost> hostAt(std::string_view text) {
    std::optional<LinkHost> host =
        text.starts_with('[') ? addressInBracketsAt(text) : namedHostAt(text);
    if (!host) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(host->length);
    if (rest.starts_with('@') || rest.starts_with("://")) {
        return std::nullopt;
    }
    return host;
}

std::size_t portLengthAt(std::string_view text) {
    constexpr unsigned kLargestPort = 65535;
    if (!text.starts_with(':')) {
        return 0;
    }
    unsigned port = 0;
    std::size_t at = 1;
    while (at < text.size() && isAsciiDigit(text[at]) && port <= kLargestPort) {
        port = 10 * port + static_cast<unsigned>(text[at] - '0');
        ++at;
    }
    return at > 1 && port <= kLargestPort ? at : 0;
}

}  // namespace quillet::platform
