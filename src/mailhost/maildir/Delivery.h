#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace quillet::mailhost {

// Stores a new message in a mail folder: writes it into "tmp", syncs it to disk, and moves it into
// "cur" without ever replacing a file. `flags` are the letters of its name, in alphabetical order.
// Returns the path of the message; after an error nothing is left. Any thread.
platform::Result<std::string> deliver(const std::string& folder,
                                      std::string_view message,
                                      std::string_view flags);

}  // namespace quillet::mailhost
