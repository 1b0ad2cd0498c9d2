#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace quillet {

// The path of the staging folder of a service word. An error when the word does not name a folder
// that may be emptied, or the container is missing. Any thread.
platform::Result<std::string> stagingFolder(std::string_view service);

}  // namespace quillet
