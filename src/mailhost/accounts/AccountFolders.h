#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mailhost/accounts/Configuration.h"

namespace quillet::mailhost {

// A mail folder: what has "cur".
struct MailFolder {
    std::string name;  // as people write it, decoded, "/" between levels ("Archive/2026", UTF-8)
    std::string path;
};

// The folders of an account by what they are for.
struct AccountFolders {
    std::vector<MailFolder> inbox;
    std::vector<MailFolder> todo;
    std::vector<MailFolder> memo;
    std::optional<MailFolder> archive;
    std::optional<MailFolder> trash;
    std::optional<MailFolder> drafts;
    // Whether the flagged messages of the Inbox are to do: configured, or there is neither a
    // configuration of what is to do nor a folder for it.
    bool todoIsFlagged = false;
    std::vector<std::string> problems;  // one line each: a folder that is missing or doubtful
};

// All mail folders below `maildir`, by name. Layout::Auto: as the folders look. Any thread.
std::vector<MailFolder> mailFolders(const std::string& maildir, Layout layout);

// Finds the folders of an account: those that the configuration names, the others by their names
// in many languages. If two folders fit a role, none is taken, and a problem says so. Archive,
// Trash, Drafts and Junk are never among those that are shown. Folders that do not exist (yet) are
// kept if the configuration names them. Any thread.
AccountFolders findFolders(const AccountConfiguration& account);

}  // namespace quillet::mailhost
