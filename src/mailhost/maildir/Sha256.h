#pragma once

#include <string>
#include <string_view>

namespace quillet::mailhost {

// The SHA-256 of `bytes` in 64 lower-case hexadecimal digits. Any thread.
std::string sha256(std::string_view bytes);

}  // namespace quillet::mailhost
