#pragma once

#include <string>
#include <string_view>

namespace quillet::mailhost {

struct NotmuchConfiguration {
    std::string mailRoot;  // absolute; empty if it is not given
    std::string name;      // of the user
    std::string address;   // the user's primary one
};

// Reads a configuration of notmuch. What is missing or wrong is empty. Any bytes are accepted.
NotmuchConfiguration readNotmuchConfiguration(std::string_view text, const std::string& home);

}  // namespace quillet::mailhost
