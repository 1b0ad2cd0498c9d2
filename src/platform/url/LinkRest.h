#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::platform {

// Bytes of the path, query and fragment that `text` begins with, as far as they belong to a link:
// up to a stop or an unmatched closing bracket, without the punctuation at the end. `before` is the
// byte before the whole link: emphasis that opens there closes after the link.
std::size_t linkRestLength(std::string_view text, char before);

// Appends a part of a URL and percent-encodes what it may not contain. "%" with two hexadecimal
// digits is taken as an escape of the writer's.
void appendUrlPart(std::string_view part, std::string& url);

}  // namespace quillet::platform
