#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillet::mailhost {

enum class Layout { Auto, Verbatim, MaildirPlusPlus, Legacy, KMail };

// An account as the configuration file describes it. Folders are names as people write them
// ("Archive/2026", UTF-8) or absolute paths; "~/" in front is resolved.
struct AccountConfiguration {
    std::string address;  // also the name of the account's folder in the container
    std::string name;     // may be empty
    std::string maildir;  // absolute path; "~" is resolved
    Layout layout = Layout::Auto;
    // Empty lists: found by the folders' names.
    std::vector<std::string> inbox;
    std::vector<std::string> archive;  // the first one takes archived messages
    std::vector<std::string> trash;    // the first one takes deleted messages
    std::vector<std::string> todo;
    std::vector<std::string> memo;
    bool todoIsFlagged = false;            // "todo = flagged"; see also AccountFolders
    bool onlyUnread = false;               // "show = unread"
    std::vector<std::string> afterChange;  // words of a command; empty: none

    bool operator==(const AccountConfiguration&) const = default;
};

struct Configuration {
    std::string open = "auto";  // what shows a message; see docs/mail-host.md
    bool notices = true;
    bool notify = false;
    std::vector<AccountConfiguration> accounts;

    bool operator==(const Configuration&) const = default;
};

// What is wrong with a configuration; `line` counts from 1.
struct ConfigurationProblem {
    std::size_t line = 0;
    std::string text;
};

// The home folder and the folders of the base directories, all absolute; no "/" at the end.
struct UserFolders {
    std::string home;
    std::string config;  // $XDG_CONFIG_HOME, else ~/.config
    std::string data;    // $XDG_DATA_HOME, else ~/.local/share
    std::string state;   // $XDG_STATE_HOME, else ~/.local/state

    // From the environment. An unknown home folder is "/".
    static UserFolders ofEnvironment();
};

// Reads the text of a configuration file. Unknown sections and keys are problems, and so are
// values that make no sense, accounts that come twice and ones without a Maildir; all problems of
// the file are returned. Any bytes are accepted. Any thread.
std::variant<Configuration, std::vector<ConfigurationProblem>> readConfiguration(
    std::string_view text, const UserFolders& folders);

// The text of a file that readConfiguration() reads as the same configuration, for people. Leaves
// out what is as it would be anyway; `home` is written as "~".
std::string configurationText(const Configuration& configuration, const UserFolders& folders);

}  // namespace quillet::mailhost
