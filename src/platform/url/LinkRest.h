#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::platform {

// Bytes of the path, query and fragment that `text` begins with, as far as they belong to a link:
// up to a stop or a bracket that closes none of their own, without the punctuation at their end.
// `before` is the byte before the whole link: emphasis that was opened there is closed behind it.
std::size_t linkRestLength(std::string_view text, char before);

// Appends a part of a URL, percent-encoding what may not stand there. "%" with two hexadecimal
// digits is taken as an escape that the writer made.
void appendUrlPart(std::string_view part, std::string& url);

}  // namespace quillet::platform
