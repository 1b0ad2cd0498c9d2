#pragma once

#include <string>
#include <string_view>

// Percent escapes of URIs. Text is bytes here, UTF-8 or not.
namespace quillet::platform {

// What is kept as it is: unreserved characters alone, or all that may stand in a path.
enum class PercentKeep { Unreserved, Path };

// Appends `text`; every byte that is not kept becomes "%" and two upper-case hexadecimal digits.
void appendPercentEncoded(std::string_view text, PercentKeep keep, std::string& to);

// What a literal "+" means: itself, or a space as in queries.
enum class PlusSign : char { Itself = '+', Space = ' ' };

// Appends `text` with the byte in place of each escape. False at a "%" without two hexadecimal
// digits behind it; what was appended until then is of no use.
bool appendPercentDecoded(std::string_view text, PlusSign plus, std::string& to);

}  // namespace quillet::platform
