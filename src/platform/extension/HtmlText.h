#pragma once

#include <string>
#include <string_view>

namespace quillet::platform {

// What HTML (UTF-8, a whole document or a part of one) says on one line: its text without markup,
// words parted by single blanks, without the head, scripts and styles. Character references by
// number and those of "&", "<", ">", quotes and the blank that does not break are read; others stay
// as they are written. Markup that does not end takes the rest with it. Linear time; any thread.
std::string textOfHtml(std::string_view html);

}  // namespace quillet::platform
