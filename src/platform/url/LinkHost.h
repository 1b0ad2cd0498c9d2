#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A host in a text.
struct LinkHost {
    std::size_t length = 0;  // bytes of the text
    std::string name;        // as in a URL: ASCII, with the brackets of an address
    std::size_t labels = 0;  // parts between dots; 0 for an address in brackets
    // Whether the last label can be a top-level domain, which is a name and not a number.
    bool endsInTopLevelDomain = false;
};

// The host that the text begins with: labels of letters, digits, "-" and "_" in any script, or an
// IPv6 address in brackets. Punctuation at its end is left out. None when the text does not begin
// with a host, when IDNA refuses it, or when "@" or "://" follows: then it is something else.
std::optional<LinkHost> hostAt(std::string_view text);

// Bytes of the labels and single dots that the text begins with, as far as hostAt reads them.
std::size_t labelsLengthAt(std::string_view text);

// Bytes of the ":" and port number that the text begins with; 0 if it begins with something else.
std::size_t portLengthAt(std::string_view text);

}  // namespace quillet::platform
