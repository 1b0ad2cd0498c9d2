#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A mail address in a text: its place in bytes, and its form in a URL (ASCII, percent-encoded).
struct LinkMailAddress {
    std::size_t start = 0;
    std::size_t end = 0;
    std::string name;
};

// The mail address that starts at `start`, or none.
std::optional<LinkMailAddress> mailAddressAt(std::string_view text, std::size_t start);

// The mail address around the "@" at `sign` in running text, which may be read back to `least`.
// None also when it is unclear where the address begins. Reads a limited number of bytes before the
// sign.
std::optional<LinkMailAddress> mailAddressAround(std::string_view text,
                                                 std::size_t least,
                                                 std::size_t sign);

}  // namespace quillet::platform
