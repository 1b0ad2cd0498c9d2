#pragma once

#include <string>
#include <string_view>

namespace quillet::message {

// The name under which an attachment is shown and offered for saving: `given` without folders,
// control characters and leading dots, at most 150 bytes, the extension kept; or a name by the
// type if nothing is left of it. Any thread.
std::string attachmentName(std::string_view given, std::string_view type);

}  // namespace quillet::message
