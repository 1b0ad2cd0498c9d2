#pragma once

#include <string>
#include <string_view>

namespace quillet::platform {

// Any bytes, such as a path, as one line of UTF-8 for a terminal. Characters that break the line,
// turn its direction or control the terminal become blanks, invalid UTF-8 becomes U+FFFD.
std::string printableLine(std::string_view text);

// Writes printableLine(line) and a line break to standard error. Any thread.
void writeErrorLine(std::string_view line);

}  // namespace quillet::platform
