#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "mailhost/accounts/Configuration.h"
#include "mailhost/accounts/Discovery.h"

namespace quillet::mailhost {

// Where the host's configuration comes from: the file, or what is found if the user has none. One
// thread.
class HostConfiguration {
public:
    // `file`: the one of the command line, which must exist; none: the user's own, which may be
    // missing.
    HostConfiguration(const std::optional<std::string>& file, UserFolders folders);

    const std::string& file() const { return file_; }

    // The configuration as it is now, or lines for the user that say what is wrong with the file.
    // Logs what keeps accounts from being found, unless it did so the last time. An account that
    // was found before stays while its Maildir is missing, for instance because a disk is not
    // there.
    std::variant<Configuration, std::vector<std::string>> read();
    // What read() returned last, unless something was wrong with it.
    const Configuration& current() const { return current_; }
    // Whether the file was changed, made or removed since the last read().
    bool isChanged() const;

private:
    std::variant<Configuration, std::vector<std::string>> readNow();
    Configuration found();

    UserFolders folders_;
    std::string file_;
    bool mustExist_;
    Configuration current_;
    std::optional<std::string> contents_;  // as read() found them
    std::vector<std::string> toldProblems_;
    Configuration lastFound_;
};

// Accounts as they are found without a configuration file. Main thread only.
Discovery discover(const UserFolders& folders);

}  // namespace quillet::mailhost
