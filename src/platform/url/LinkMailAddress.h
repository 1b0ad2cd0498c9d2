#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A mail address in a text: where it stands, and its form in a URL (ASCII, percent-encoded).
struct LinkMailAddress {
    std::size_t start = 0;
    std::size_t end = 0;
    std::string name;
};

// The mail address that is written out from `start` on; none where there is none.
std::optional<LinkMailAddress> mailAddressAt(std::string_view text, std::size_t start);

// The mail address around the "@" at `sign`, out of running text that may be read back to `least`.
// None also where it cannot be told where the address begins. Looks at a fixed number of bytes
// before the sign.
std::optional<LinkMailAddress> mailAddressAround(std::string_view text,
                                                 std::size_t least,
                                                 std::size_t sign);

}  // namespace quillet::platform
