#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quillet::platform {

// `format` with each of "%@", "%lu" and "%ld" replaced by the next argument, which is already
// text (see Number::text). A place without an argument becomes "(null)", the text of an absent
// object; surplus arguments are ignored; "%%" is a percent sign.
std::string formatText(std::string_view format, std::initializer_list<std::string_view> arguments);

// The text that stands for an absent object in a format.
inline constexpr std::string_view kAbsentText = "(null)";

}  // namespace quillet::platform
