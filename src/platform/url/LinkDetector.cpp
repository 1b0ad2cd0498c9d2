#include "platform/url/LinkDetector.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/base/Ascii.h"
#include "platform/url/LinkCharacters.h"
#include "platform/url/LinkHost.h"
#include "platform/url/LinkMailAddress.h"
#include "platform/url/LinkRest.h"

namespace quillet::platform {

namespace {

constexpr std::array<std::string_view, 3> kWebSchemes{"http", "https", "ftp"};
constexpr std::string_view kMailScheme = "mailto";
// Text right after one of these is a program or data, whatever links it seems to contain.
constexpr std::array<std::string_view, 3> kRefusedSchemes{"javascript", "file", "data"};

// One pass over a text. Every link contains one of three signs, ":", "@" or ".", and is read from
// there in both directions. Nothing after the sign is read twice: reading stops before the next
// sign of its kind, or what was read is remembered. Before the sign at most a few characters are
// read.
class LinkFinder {
public:
    explicit LinkFinder(std::string_view text) : text_(text) {}

    std::vector<TextLink> find() {
        while (at_ < text_.size()) {
            const char sign = text_[at_];
            const bool found = (sign == ':' && findAtColon()) || (sign == '@' && findAtAt()) ||
                               (sign == '.' && findAtDot());
            at_ += found ? 0 : 1;
        }
        return std::move(links_);
    }

private:
    enum class HostKind { Any, Domain };

    char before(std::size_t place) const { return place > 0 ? text_[place - 1] : ' '; }

    // Whether a word starts here, which is not the end of a longer one such as "git+http".
    bool startsWord(std::size_t start) const {
        const char previous = before(start);
        const bool joins = previous == '+' || previous == '-';
        return !isAsciiAlphanumeric(previous) && !(joins && isAsciiAlphanumeric(before(start - 1)));
    }

    // The start of the word that ends at `at_`, if it is `word` and not the end of a longer one.
    std::optional<std::size_t> startOf(std::string_view word) const {
        if (at_ - free_ < word.size()) {
            return std::nullopt;
        }
        const std::size_t start = at_ - word.size();
        const bool isIt = equalsIgnoringAsciiCase(text_.substr(start, word.size()), word);
        return isIt && startsWord(start) ? std::optional(start) : std::nullopt;
    }

    template <std::size_t count>
    std::optional<std::size_t> startOfAny(const std::array<std::string_view, count>& words) const {
        for (const std::string_view word : words) {
            if (const auto start = startOf(word)) {
                return start;
            }
        }
        return std::nullopt;
    }

    bool findAtColon() {
        if (!isAsciiAlphanumeric(before(at_))) {
            return false;
        }
        const bool hasAuthority = text_.substr(at_).starts_with("://");
        if (const auto start = startOf(kMailScheme)) {
            return findMailLink(*start);
        }
        if (const auto start = startOfAny(kWebSchemes); start && hasAuthority) {
            return findWebLink(*start);
        }
        // An authority here belongs to an unknown scheme.
        if (hasAuthority || startOfAny(kRefusedSchemes)) {
            skipToStop();
            return true;
        }
        return false;
    }

    void skipToStop() {
        ++at_;
        while (at_ < text_.size()) {
            const LinkCharacter character = linkCharacterAt(text_, at_);
            if (character.role == LinkRole::Stop) {
                break;
            }
            at_ += character.length;
        }
        free_ = at_;
    }

    bool findWebLink(std::size_t start) {
        constexpr std::string_view kSeparator = "://";
        const std::size_t authority = at_ + kSeparator.size();
        const std::size_t host = authority + userLengthAt(authority);
        std::string url(text_.substr(start, authority - start));
        appendUrlPart(text_.substr(authority, host - authority), url);
        return findHostAndRest(start, host, std::move(url), HostKind::Any);
    }

    // Bytes of the user and "@" before a host; 0 if they are missing.
    std::size_t userLengthAt(std::size_t start) const {
        constexpr std::string_view kOthers = "-._~!$&*+,;=:%";
        std::size_t at = start;
        while (at < text_.size() && (isAsciiAlphanumeric(text_[at]) ||
                                     kOthers.find(text_[at]) != std::string_view::npos)) {
            ++at;
        }
        return at < text_.size() && text_[at] == '@' ? at + 1 - start : 0;
    }

    // Reads a host, its port and the rest of the link. A host that must be a domain has at least
    // three parts and ends in a top-level domain.
    bool findHostAndRest(std::size_t start, std::size_t hostStart, std::string url, HostKind kind) {
        constexpr std::size_t kPartsOfDomain = 3;
        const std::optional<LinkHost> host = hostAt(text_.substr(hostStart));
        if (!host || (kind == HostKind::Domain &&
                      (host->labels < kPartsOfDomain || !host->endsInTopLevelDomain))) {
            return false;
        }
        std::size_t end = hostStart + host->length;
        url += host->name;
        // The dot of the root domain belongs to the host's name if a path follows.
        if (host->labels > 0 && text_.substr(end).starts_with("./")) {
            url += '.';
            ++end;
        }
        const std::size_t port = portLengthAt(text_.substr(end));
        url += text_.substr(end, port);
        end += port;
        addWithRest(start, end, std::move(url), "/?#");
        return true;
    }

    bool findMailLink(std::size_t start) {
        std::optional<LinkMailAddress> address = mailAddressAt(text_, at_ + 1);
        if (!address) {
            return false;
        }
        std::string url(text_.substr(start, at_ + 1 - start));
        std::size_t end = 0;
        while (address) {
            url += address->name;
            end = address->end;
            const bool goesOn = text_.substr(end).starts_with(',');
            address = goesOn ? mailAddressAt(text_, end + 1) : std::nullopt;
            if (address) {
                url += ',';
            }
        }
        addWithRest(start, end, std::move(url), "?");
        return true;
    }

    bool findAtDot() {
        const bool isWeb = startOf("www").has_value();
        const std::optional<std::size_t> start = startOf(isWeb ? "www" : "ftp");
        // A name that was read before and is not a link is not read again from its middle.
        if (!start || *start < namesRead_ ||
            std::string_view(".@/\\").find(before(*start)) != std::string_view::npos) {
            return false;
        }
        namesRead_ = *start + labelsLengthAt(text_.substr(*start));
        return findHostAndRest(*start, *start, isWeb ? "http://" : "ftp://", HostKind::Domain);
    }

    bool findAtAt() {
        const std::optional<LinkMailAddress> address = mailAddressAround(text_, free_, at_);
        if (!address) {
            return false;
        }
        add(address->start, address->end, "mailto:" + address->name);
        return true;
    }

    // Adds a link that continues at `end` if one of the characters `goesOn` is there.
    void addWithRest(std::size_t start, std::size_t end, std::string url, std::string_view goesOn) {
        const std::string_view rest = text_.substr(end);
        if (!rest.empty() && goesOn.find(rest.front()) != std::string_view::npos) {
            const std::size_t length = linkRestLength(rest, before(start));
            appendUrlPart(rest.substr(0, length), url);
            end += length;
        }
        add(start, end, std::move(url));
    }

    void add(std::size_t start, std::size_t end, std::string url) {
        links_.push_back({start, end - start, std::move(url)});
        at_ = end;
        free_ = end;
    }

    std::string_view text_;
    std::size_t at_ = 0;         // where the search for the next sign goes on
    std::size_t free_ = 0;       // end of the text that belongs to links or was skipped
    std::size_t namesRead_ = 0;  // end of the names without a scheme that were read
    std::vector<TextLink> links_;
};

}  // namespace

std::vector<TextLink> LinkDetector::linksIn(std::string_view text) {
    return LinkFinder(text).find();
}

}  // namespace quillet::platform
