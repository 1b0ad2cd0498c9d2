#pragma once

#include <string>
#include <string_view>

namespace quillet::platform {

// A text of any bytes, a path for instance, as one line of UTF-8 for a terminal: whatever could
// break the line, turn its direction or tell the terminal to do something becomes a blank, and what
// is not UTF-8 becomes U+FFFD.
std::string printableLine(std::string_view text);

// Writes printableLine(line) and a line break to standard error. Any thread.
void writeErrorLine(std::string_view line);

}  // namespace quillet::platform
