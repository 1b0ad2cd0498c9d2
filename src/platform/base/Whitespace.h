#pragma once

#include <string_view>

namespace quillet::platform {

// `text` (UTF-8) without the white space and line ends at both of its ends: the spaces of Unicode
// (category Zs), the tabulator, line feed to carriage return, U+0085, U+2028 and U+2029.
std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept;

}  // namespace quillet::platform
