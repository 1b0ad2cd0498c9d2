#include "platform/url/URL.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <filesystem>
#include <system_error>

#include "platform/base/Ascii.h"
#include "platform/url/PercentEncoding.h"
#include "platform/url/UriCharacters.h"

namespace quillet::platform {

namespace {

constexpr unsigned kRegisteredName = kUriUnreserved | kUriSubDelimiter;
constexpr unsigned kUserInformation = kRegisteredName | kUriColon;
constexpr unsigned kFragment = kUriPath | kUriQuestion;
constexpr unsigned kQuery = kFragment | kUriBracket;

// Whether every character is in one of `classes` or belongs to an escape.
bool consistsOf(std::string_view text, unsigned classes) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isUriCharacter(text[at], classes)) {
            continue;
        }
        if (text[at] != '%' || !isPercentEscape(text, at)) {
            return false;
        }
        at += 2;
    }
    return true;
}

bool isScheme(std::string_view text) {
    return !text.empty() && isAsciiLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return isAsciiAlphanumeric(character) || character == '+' || character == '-' ||
                      character == '.';
           });
}

bool isIPv6Address(std::string_view text) {
    std::array<char, INET6_ADDRSTRLEN> terminated{};
    if (text.size() >= terminated.size() || text.find('\0') != std::string_view::npos) {
        return false;
    }
    std::copy(text.begin(), text.end(), terminated.begin());
    in6_addr address;
    return inet_pton(AF_INET6, terminated.data(), &address) == 1;
}

// "v", a version in hexadecimal digits, "." and an address of that version.
bool isFutureAddress(std::string_view text) {
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || dot < 2 || (text.front() != 'v' && text.front() != 'V')) {
        return false;
    }
    const auto in = [](unsigned classes) {
        return [classes](char character) { return isUriCharacter(character, classes); };
    };
    const std::string_view version = text.substr(1, dot - 1);
    const std::string_view address = text.substr(dot + 1);
    return !address.empty() && std::all_of(version.begin(), version.end(), in(kUriHexDigit)) &&
           std::all_of(address.begin(), address.end(), in(kUserInformation));
}

// The length of the host that `text`, an authority without user information, begins with.
std::optional<std::size_t> hostLength(std::string_view text) {
    if (!text.starts_with('[')) {
        const std::size_t length = std::min(text.find(':'), text.size());
        return consistsOf(text.substr(0, length), kRegisteredName) ? std::optional(length)
                                                                   : std::nullopt;
    }
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view address = text.substr(1, close - 1);
    return isIPv6Address(address) || isFutureAddress(address) ? std::optional(close + 1)
                                                              : std::nullopt;
}

bool isPort(std::string_view text) {
    return text.empty() ||
           (text.front() == ':' && std::all_of(text.begin() + 1, text.end(), isAsciiDigit));
}

// The host of an authority, "user information@host:port". The host may be empty, the other parts
// may be missing. None when the authority is not valid.
std::optional<std::string_view> hostOf(std::string_view authority) {
    const std::size_t at = authority.find('@');
    if (at != std::string_view::npos) {
        if (!consistsOf(authority.substr(0, at), kUserInformation)) {
            return std::nullopt;
        }
        authority.remove_prefix(at + 1);
    }
    const std::optional<std::size_t> length = hostLength(authority);
    if (!length || !isPort(authority.substr(*length))) {
        return std::nullopt;
    }
    return authority.substr(0, *length);
}

// Cuts `text` at the first `separator` and returns what followed it.
std::string_view cutOff(std::string_view& text, char separator) {
    const std::size_t at = text.find(separator);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view behind = text.substr(at + 1);
    text = text.substr(0, at);
    return behind;
}

}  // namespace

std::optional<URL> URL::URLWithString(std::string_view text) {
    const std::optional<Parts> parts = partsOf(text);
    return parts ? std::optional(URL(text, *parts)) : std::nullopt;
}

URL URL::fileURLWithPath(std::string_view path) {
    std::string absolute;
    if (!path.starts_with('/')) {
        std::error_code error;  // the current folder may be gone
        const auto current = std::filesystem::current_path(error);
        absolute = ((error ? std::filesystem::path("/") : current) / path).native();
        path = absolute;
    }
    std::string text = "file://";
    appendPercentEncoded(path, PercentKeep::Path, text);
    return *URLWithString(text);
}

std::optional<URL::Parts> URL::partsOf(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    Parts parts;
    std::string_view rest = text;
    // A ":" before the first "/" ends a scheme: the first segment of a relative reference has no
    // ":".
    const std::size_t stop = text.find_first_of(":/?#");
    if (stop != std::string_view::npos && text[stop] == ':') {
        if (!isScheme(text.substr(0, stop))) {
            return std::nullopt;
        }
        parts.schemeLength = stop;
        rest.remove_prefix(stop + 1);
    }
    const std::string_view fragment = cutOff(rest, '#');
    const std::string_view query = cutOff(rest, '?');
    const auto spanOf = [&](std::string_view part) {
        return Span{static_cast<std::size_t>(part.data() - text.data()), part.size()};
    };
    if (rest.starts_with("//")) {
        const std::string_view authority = rest.substr(2, rest.find('/', 2) - 2);
        const std::optional<std::string_view> host = hostOf(authority);
        if (!host) {
            return std::nullopt;
        }
        parts.host = spanOf(*host);
        rest.remove_prefix(2 + authority.size());
    }
    parts.path = spanOf(rest);
    const bool valid =
        consistsOf(rest, kUriPath) && consistsOf(query, kQuery) && consistsOf(fragment, kFragment);
    return valid ? std::optional(parts) : std::nullopt;
}

std::string URL::path() const {
    std::string decoded;
    appendPercentDecoded(part(parts_.path), PlusSign::Itself, decoded);
    return decoded;
}

bool URL::isFileURL() const noexcept {
    return equalsIgnoringAsciiCase(scheme(), "file");
}

}  // namespace quillet::platform
