// Finds the links of a text. Each link must follow the one before and have a URL that is safe to
// click. Marking links up must not change a word of the text.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/extension/HtmlText.h"
#include "platform/extension/StyledText.h"
#include "platform/url/LinkDetector.h"
#include "platform/url/URL.h"

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

void markLinksUp(std::string_view text) {
    const platform::StyledText plain{std::string(text), {}};
    const auto linked = platform::StyledText::withLinks(std::string(text));
    require(linked.plainString() == text, "the text stays as it is");
    require(platform::textOfHtml(linked.htmlRepresentation()) ==
                platform::textOfHtml(plain.htmlRepresentation()),
            "anchors change no word");
    require(platform::textOfHtml(text).find('\n') == std::string::npos, "HTML is read as one line");
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    quillet::fuzz::findLinks(text);
    quillet::fuzz::markLinksUp(text);
    return 0;
}
