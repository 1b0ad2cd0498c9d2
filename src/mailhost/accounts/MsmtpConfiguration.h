#pragma once

#include <string>
#include <string_view>

namespace quillet::mailhost {

// The sender ("from") of the default account in a configuration of msmtp, else of its only account;
// empty if there is none. Any bytes are accepted.
std::string readMsmtpSender(std::string_view text);

}  // namespace quillet::mailhost
