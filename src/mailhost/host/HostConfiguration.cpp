#include "mailhost/host/HostConfiguration.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include "mailhost/maildir/MessageHeader.h"

#include "platform/base/Log.h"
#include "platform/files/FileManager.h"

namespace quillet::mailhost {

namespace {

constexpr std::size_t kLargestConfiguration = std::size_t{1024} * 1024;  // bytes

bool hasAccount(const Configuration& configuration, const std::string& address) {
    const auto& accounts = configuration.accounts;
    return std::any_of(accounts.begin(), accounts.end(), [&](const AccountConfiguration& account) {
        return account.address == address;
    });
}

// An Inbox that gets mail for two addresses keeps the one that was commonest first.
std::string addressOfInbox(const std::string& inbox) {
    static std::map<std::string, std::string> known;
    std::string& address = known[inbox];
    if (address.empty()) {
        address = commonestDeliveredTo(inbox);
    }
    return address;
}

}  // namespace

HostConfiguration::HostConfiguration(const std::optional<std::string>& file, UserFolders folders)
    : folders_(std::move(folders)),
      file_(file.value_or(folders_.config + "/quillet/mail-host.conf")),
      mustExist_(file.has_value()) {}

std::variant<Configuration, std::vector<std::string>> HostConfiguration::read() {
    auto read = readNow();
    if (const auto* const configuration = std::get_if<Configuration>(&read)) {
        current_ = *configuration;
    }
    return read;
}

std::variant<Configuration, std::vector<std::string>> HostConfiguration::readNow() {
    platform::ByteBuffer bytes;
    const auto error = platform::FileManager::readFile(file_, bytes, kLargestConfiguration);
    contents_ = error ? std::nullopt : std::optional<std::string>(bytes.view());
    if (error && (mustExist_ || error->code != ENOENT)) {
        return std::vector{error->description()};
    }
    if (error) {
        return found();
    }
    auto read = readConfiguration(*contents_, folders_);
    if (auto* const configuration = std::get_if<Configuration>(&read)) {
        return std::move(*configuration);
    }
    std::vector<std::string> lines;
    for (const ConfigurationProblem& problem : std::get<1>(read)) {
        lines.push_back(file_ + ":" + std::to_string(problem.line) + ": " + problem.text);
    }
    return lines;
}

bool HostConfiguration::isChanged() const {
    platform::ByteBuffer bytes;
    const auto error = platform::FileManager::readFile(file_, bytes, kLargestConfiguration);
    return contents_ != (error ? std::nullopt : std::optional<std::string>(bytes.view()));
}

Configuration HostConfiguration::found() {
    Discovery discovery = discover(folders_);
    if (std::exchange(toldProblems_, discovery.problems) != discovery.problems) {
        for (const std::string& problem : discovery.problems) {
            platform::Log::write("MailHost %@", {problem});
        }
    }
    for (const AccountConfiguration& known : lastFound_.accounts) {
        const bool isFound = hasAccount(discovery.configuration, known.address);
        if (!isFound && !platform::FileManager::folderExists(known.maildir)) {
            discovery.configuration.accounts.push_back(known);
        }
    }
    lastFound_ = discovery.configuration;
    return std::move(discovery.configuration);
}

Discovery discover(const UserFolders& folders) {
    return discoverAccounts(folders, addressOfInbox);
}

}  // namespace quillet::mailhost
