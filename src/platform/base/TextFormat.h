#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quillet::platform {

// `format` with each "%@", "%lu" and "%ld" replaced by the next argument, which is text already
// (see Number::text). A place whose argument is missing becomes "(null)", surplus arguments are
// ignored,
// "%%" becomes a percent sign.
std::string formatText(std::string_view format, std::initializer_list<std::string_view> arguments);

// What formatText writes for an absent object.
inline constexpr std::string_view kAbsentText = "(null)";

}  // namespace quillet::platform
