// Finds the links of a text. Each must lie in the text behind the one before, and stand for a URL
// of a kind that is safe to click.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/foundation/LinkDetector.h"
#include "platform/foundation/URL.h"

namespace quillet::fuzz {

namespace {

using platform::TextLink;
using platform::URL;

bool isSafe(const URL& url) {
    std::string scheme(url.scheme());
    std::transform(scheme.begin(), scheme.end(), scheme.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return scheme == "http" || scheme == "https" || scheme == "ftp" || scheme == "mailto";
}

void findLinks(std::string_view text) {
    std::size_t end = 0;
    for (const TextLink& link : platform::LinkDetector::linksIn(text)) {
        require(link.offset >= end && link.length > 0, "links follow each other");
        end = link.offset + link.length;
        require(end <= text.size(), "a link is part of its text");
        const std::optional<URL> url = URL::URLWithString(link.absoluteString);
        require(url && isSafe(*url), "a link has a URL that is safe to click");
        const std::optional<URL> written =
            URL::URLWithString(text.substr(link.offset, link.length));
        require(!written || !isSafe(*written) || written == url, "a written URL stays as it is");
    }
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::fuzz::findLinks({reinterpret_cast<const char*>(data), size});
    return 0;
}
