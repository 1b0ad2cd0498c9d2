#pragma once

#include <string_view>

namespace quillet::mailhost {

// Whether a text can be the address of an account: one "@" between two parts, no "/", blank or
// control character, no "." in front and at most 200 bytes of UTF-8. It also names a folder.
bool isAccountAddress(std::string_view text);

}  // namespace quillet::mailhost
