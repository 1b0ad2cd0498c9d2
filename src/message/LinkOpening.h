#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Error.h"

namespace quillet::message {

// Whether a link in a message may be opened: its scheme is http, https or mailto.
bool mayOpen(std::string_view url);

// Hands a link to the program that the desktop has for it, from a process of its own, and waits
// until that program is started. An error if it may not be opened or no program takes it. Call it
// in a process of one thread.
std::optional<platform::Error> openLink(const std::string& url);

}  // namespace quillet::message
