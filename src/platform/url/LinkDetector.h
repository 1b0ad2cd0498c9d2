#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillet::platform {

// A link in a text: its range in bytes, and its URL.
struct TextLink {
    std::size_t offset = 0;
    std::size_t length = 0;
    // A valid URI reference with a scheme, hence ASCII: the text itself if it already is one. A
    // missing scheme is added ("http://", "ftp://", "mailto:"), a host in other letters is written
    // in its IDNA form, and everything else that a URL may not contain is percent-encoded.
    std::string absoluteString;
};

// Finds the links that people write into plain text. docs/links.md says what counts as a link.
namespace LinkDetector {

// The links of a UTF-8 text in text order; they never overlap. Time is linear in the text's size,
// whatever it contains. Bytes that are not UTF-8 end a link and are otherwise skipped. Any thread.
std::vector<TextLink> linksIn(std::string_view text);

}  // namespace LinkDetector

}  // namespace quillet::platform
