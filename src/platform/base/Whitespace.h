#pragma once

#include <string_view>

namespace quillet::platform {

// `text` (UTF-8) without white space and line breaks at both ends: Unicode's spaces (category Zs),
// the tabulator, line feed to carriage return, U+0085, U+2028 and U+2029.
std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept;

}  // namespace quillet::platform
