#pragma once

#include <string>
#include <string_view>

namespace quillet::platform {

// The text of HTML (UTF-8, a whole document or a part of one) on one line, without markup, head,
// scripts and styles, with single blanks between words. Replaces numeric character references and
// the names of "&", "<", ">", quotes and the no-break space; others stay as they are. Markup
// without an end runs to the end of the document. Linear time; any thread.
std::string textOfHtml(std::string_view html);

}  // namespace quillet::platform
