#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillet::platform {

// A link in a text: its bytes there, and the URL that it stands for.
struct TextLink {
    std::size_t offset = 0;
    std::size_t length = 0;
    // A valid URI reference with a scheme, hence ASCII: the text itself where that already is one.
    // A missing scheme is put in front ("http://", "ftp://", "mailto:"), a host in other letters is
    // written as IDNA tells, everything else that no URL may hold is percent-encoded in UTF-8.
    std::string absoluteString;
};

// Finds the links that people write into plain text. docs/links.md tells what counts as one.
namespace LinkDetector {

// The links of a UTF-8 text in text order; they never overlap. Time is linear in the text's size,
// whatever it holds; bytes that are not UTF-8 end a link and are otherwise passed over. Any thread.
std::vector<TextLink> linksIn(std::string_view text);

}  // namespace LinkDetector

}  // namespace quillet::platform
