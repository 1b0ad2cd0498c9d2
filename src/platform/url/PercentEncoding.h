#pragma once

#include <string>
#include <string_view>

// Percent escapes of URIs. Text is bytes here, UTF-8 or not.
namespace quillet::platform {

// Which characters are not encoded: only the unreserved ones, or all that a path may contain.
enum class PercentKeep { Unreserved, Path };

// Appends `text`; every other byte becomes "%" and two upper-case hexadecimal digits.
void appendPercentEncoded(std::string_view text, PercentKeep keep, std::string& to);

// The meaning of a literal "+": itself, or a space as in queries.
enum class PlusSign : char { Itself = '+', Space = ' ' };

// Appends `text` with each escape replaced by its byte. False if a "%" is not followed by two
// hexadecimal digits; then `to` holds useless text.
bool appendPercentDecoded(std::string_view text, PlusSign plus, std::string& to);

}  // namespace quillet::platform
