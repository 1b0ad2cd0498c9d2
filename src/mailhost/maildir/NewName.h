#pragma once

#include <string>
#include <string_view>

namespace quillet::mailhost {

// newMaildirName() of now, this machine and this process. Any thread.
std::string newNameFor(std::string_view oldName);

}  // namespace quillet::mailhost
