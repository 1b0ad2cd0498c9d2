#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A host as it stands in a text.
struct LinkHost {
    std::size_t length = 0;  // bytes of the text
    std::string name;        // as a URL holds it: ASCII, brackets of an address included
    std::size_t labels = 0;  // parts between dots; 0 for an address in brackets
    // Whether the last label can be a top-level domain: a name, not a number.
    bool endsInTopLevelDomain = false;
};

// The host that the text begins with: labels of letters, digits, "-" and "_" in any script, or an
// IPv6 address in brackets. Punctuation at its end is left out. None where there is none, where
// IDNA refuses it, and where "@" or "://" follows, since then it is something else.
std::optional<LinkHost> hostAt(std::string_view text);

// Bytes of the labels and single dots that the text begins with: as far as hostAt reads them.
std::size_t labelsLengthAt(std::string_view text);

// Bytes of the ":" and port number that the text begins with; 0 where it begins with none.
std::size_t portLengthAt(std::string_view text);

}  // namespace quillet::platform
