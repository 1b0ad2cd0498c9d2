#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mailhost/accounts/Configuration.h"

namespace quillet::mailhost {

// Accounts that were found in the files of other programs, and what kept others from being found:
// one line each, which says what to write into the configuration.
struct Discovery {
    Configuration configuration;
    std::vector<std::string> problems;
};

// Looks for Maildir accounts: in the configuration of mbsync, of notmuch ($NOTMUCH_CONFIG counts),
// in ~/.local/share/mail, ~/Mail, ~/Maildir and KMail's own folders, in this order. A Maildir or an
// address that was found before is skipped. The address is the user of an mbsync account. If one
// Maildir alone is left without, it gets the sender of msmtp, else notmuch's primary address;
// otherwise each gets what `commonestAddress` answers for the path of its Inbox (empty: unknown).
// Any thread.
Discovery discoverAccounts(
    const UserFolders& folders,
    const std::function<std::string(const std::string& inbox)>& commonestAddress);

}  // namespace quillet::mailhost
