#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mailhost/accounts/Configuration.h"

namespace quillet::mailhost {

// A Maildir that mbsync synchronises with a mail server.
struct MbsyncAccount {
    std::string user;     // at the server; often the mail address, empty if unknown
    std::string maildir;  // absolute
    std::string inbox;    // its absolute path; empty: as the folders' names say
    Layout layout = Layout::Auto;
};

// Reads a configuration of mbsync: the Maildir stores that a channel ties to an IMAP store, in the
// order of the channels, each once for each user. What is wrong in the file is skipped. `home` is
// what "~" and relative paths stand for. Any bytes are accepted.
std::vector<MbsyncAccount> readMbsyncConfiguration(std::string_view text, const std::string& home);

}  // namespace quillet::mailhost
