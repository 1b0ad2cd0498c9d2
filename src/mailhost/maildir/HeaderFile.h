#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace quillet::mailhost {

// The start of a message file, to the empty line or to kLongestHeader, and perhaps a little more.
// Symbolic links are not followed (ELOOP), anything but a regular file is an error (EINVAL), and
// nothing is waited for. Any thread.
platform::Result<std::string> readHeaderBytes(const std::string& path);

// The field "date" of parseHeader() alone, which costs a part of that. Any thread.
std::optional<std::int64_t> parseHeaderDate(std::string_view bytes);

}  // namespace quillet::mailhost
