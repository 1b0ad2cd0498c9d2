#pragma once

#include <string_view>

namespace quillet {

// The scheme of the URLs that host applications open: commands and drafts.
inline constexpr std::string_view kHostScheme = "quillet";

}  // namespace quillet
