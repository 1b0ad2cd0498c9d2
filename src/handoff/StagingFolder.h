#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace quillet {

// The path of the staging folder of a service word. An error where the word names no folder that
// may be emptied, or there is no container. Any thread.
platform::Result<std::string> stagingFolder(std::string_view service);

}  // namespace quillet
